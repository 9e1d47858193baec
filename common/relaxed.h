// Relaxed atomic loads and stores for what search threads share without locks: the tables (a
// torn entry is harmless by construction: entries are checked before use or only steer the
// search), the node counters and the stop flags. On x86 these are the plain loads and stores.
#pragma once

#include <atomic>
#include <cstdint>
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

// A byte flag set by one thread and polled by another (a search record's stop flag).
struct RelaxedFlag {
  std::uint8_t value;
  operator std::uint8_t() const { return relaxedLoad(value); }
  RelaxedFlag& operator=(std::uint8_t v) {
    relaxedStore(value, v);
    return *this;
  }
};

}  // namespace tavrin
