// The few operating-system services the engine needs: clocks, input readiness, aligned memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavrin {

// Sets standard output up for the protocol (called once, before the first line is printed).
void prepareStandardStreams();
// Wall clock in microseconds: a monotonic millisecond clock times 1000.
std::int64_t wallClockMicros();
// True when standard input has bytes waiting or has reached its end (a read will not block).
bool stdinReadable();
// Reads up to n bytes from standard input; returns the count, 0 at end of input.
long readStdin(char* buffer, std::size_t n);
// 64-byte aligned allocation of zeroed memory, and its release. Blocks of 2 MB and more are backed
// by large pages where the system offers them (and the process may use them).
void* alignedAlloc(std::size_t bytes);
void alignedFree(void* p);
// Raise and lower the timer resolution around a search (no-ops where not needed).
void timerBegin();
void timerEnd();

}  // namespace tavrin
