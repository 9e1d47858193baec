// Relaxed atomic access to data that search threads share without locks by intent (the hash
// tables, the ordering tables, the stop flags and node counters): on x86 these are the plain
// loads and stores, and a torn or stale value only weakens the search, never corrupts it.
#pragma once

#include <atomic>
#include <cstdint>

namespace tavrin {

template <class T>
inline T relaxedLoad(const T& x) {
  return std::atomic_ref<T>(const_cast<T&>(x)).load(std::memory_order_relaxed);
}

template <class T>
inline void relaxedStore(T& x, T v) {
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
