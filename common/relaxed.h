// Relaxed atomic loads and stores for the tables that search threads share without locks: a torn
// entry is harmless by construction (entries are checked before use or only steer the search).
#pragma once

#include <atomic>
#include <type_traits>

namespace tavrin {

template <class T>
inline T relaxedLoad(const T& x) {
  return std::atomic_ref<T>(const_cast<T&>(x)).load(std::memory_order_relaxed);
}

// The value converts to the field's type as in a plain assignment.
template <class T>
inline void relaxedStore(T& x, std::type_identity_t<T> v) {
  std::atomic_ref<T>(x).store(v, std::memory_order_relaxed);
}

}  // namespace tavrin
