// Operating-system services: clocks, input readiness, raw input and aligned memory. The only
// file of the engine that includes an operating-system header.
#include "app/platform.h"

#include <cstdlib>
#include <cstring>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#include <conio.h>
#include <io.h>
#include <malloc.h>
#include <mmsystem.h>
#else
#include <cerrno>
#include <poll.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>
#endif

namespace tavrin {

namespace {
// Hash tables are handed out in whole cache lines.
constexpr std::size_t Alignment = 64;
std::size_t roundUp(std::size_t bytes) { return (bytes + Alignment - 1) / Alignment * Alignment; }
}  // namespace

#ifdef _WIN32

std::int64_t wallClockMicros() { return std::int64_t(timeGetTime()) * 1000; }

std::int64_t processCpuMicros() {
  FILETIME creation, exit, kernel, user;
  if (!GetProcessTimes(GetCurrentProcess(), &creation, &exit, &kernel, &user)) return 0;
  auto ticks = [](const FILETIME& t) { return (std::int64_t(t.dwHighDateTime) << 32) | t.dwLowDateTime; };
  return (ticks(kernel) + ticks(user)) / 10;
}

bool stdinReadable() {
  static HANDLE input = nullptr;
  static bool isPipe = false;
  if (!input) {
    input = GetStdHandle(STD_INPUT_HANDLE);
    DWORD mode;
    isPipe = !GetConsoleMode(input, &mode);
    if (!isPipe) {
      SetConsoleMode(input, mode & ~DWORD(ENABLE_WINDOW_INPUT | ENABLE_MOUSE_INPUT));
      FlushConsoleInputBuffer(input);
    }
  }
  if (isPipe) {
    DWORD available = 0;
    if (!PeekNamedPipe(input, nullptr, 0, nullptr, &available, nullptr)) return true;
    return available > 0;
  }
  return _kbhit() != 0;
}

long readStdin(char* buffer, std::size_t n) {
  int got = _read(0, buffer, unsigned(n > 0x40000000 ? 0x40000000 : n));
  return got > 0 ? got : 0;
}

void* alignedAlloc(std::size_t bytes) {
  std::size_t size = roundUp(bytes ? bytes : 1);
  void* p = _aligned_malloc(size, Alignment);
  if (p) std::memset(p, 0, size);
  return p;
}

void alignedFree(void* p) { _aligned_free(p); }

void timerBegin() { timeBeginPeriod(1); }
void timerEnd() { timeEndPeriod(1); }

#else

std::int64_t wallClockMicros() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  // Millisecond resolution, like the clock the time allocation was tuned with.
  return (std::int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000) * 1000;
}

std::int64_t processCpuMicros() {
  rusage usage;
  if (getrusage(RUSAGE_SELF, &usage) != 0) return 0;
  return (std::int64_t(usage.ru_utime.tv_sec) + usage.ru_stime.tv_sec) * 1000000 +
         usage.ru_utime.tv_usec + usage.ru_stime.tv_usec;
}

bool stdinReadable() {
  pollfd input{0, POLLIN, 0};
  int ready = poll(&input, 1, 0);
  // When readiness cannot be told, say yes: the read then meets the data, the end or the error.
  if (ready < 0) return errno != EINTR;
  return ready > 0;
}

long readStdin(char* buffer, std::size_t n) {
  for (;;) {
    ssize_t got = read(0, buffer, n);
    if (got >= 0) return long(got);
    if (errno != EINTR) return 0;
  }
}

// calloc hands out large blocks as fresh zero pages without writing them, so a big hash table
// costs no extra pass over its memory here; the block is aligned by hand and the pointer that
// calloc returned is kept just below it for the release.
void* alignedAlloc(std::size_t bytes) {
  void* raw = std::calloc(roundUp(bytes ? bytes : 1) + Alignment, 1);
  if (!raw) return nullptr;
  auto aligned = (reinterpret_cast<std::uintptr_t>(raw) + Alignment) & ~std::uintptr_t(Alignment - 1);
  reinterpret_cast<void**>(aligned)[-1] = raw;
  return reinterpret_cast<void*>(aligned);
}

void alignedFree(void* p) {
  if (p) std::free(static_cast<void**>(p)[-1]);
}

void timerBegin() {}
void timerEnd() {}

#endif

}  // namespace tavrin
