// Operating-system services: clocks, input readiness, raw input and aligned memory. The only
// file of the engine that includes an operating-system header.
#include "common/platform.h"

#include <cstdlib>
#include <cstring>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#include <conio.h>
#include <fcntl.h>
#include <io.h>
#include <malloc.h>
#include <mmsystem.h>

#include <cstdio>
#else
#include <cerrno>
#include <poll.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>
#endif

namespace tavrin {

namespace {
// Hash tables are handed out in whole cache lines.
constexpr std::size_t Alignment = 64;
std::size_t roundUp(std::size_t bytes, std::size_t unit = Alignment) { return (bytes + unit - 1) / unit * unit; }

// Blocks of this size or more are backed by large pages where the system offers them: a table
// of 126 MB then costs 63 page faults instead of 32,000, and fewer misses of the address cache.
constexpr std::size_t LargePage = std::size_t(2) << 20;

// The large-page blocks handed out, with their sizes, for their release.
struct LargeBlock {
  void* p;
  std::size_t bytes;
};
LargeBlock LargeBlocks[8];

bool rememberLargeBlock(void* p, std::size_t bytes) {
  for (LargeBlock& b : LargeBlocks)
    if (!b.p) {
      b = {p, bytes};
      return true;
    }
  return false;
}

// The size of a large-page block given out at p (0 when p is none), forgotten on the way.
std::size_t forgetLargeBlock(void* p) {
  for (LargeBlock& b : LargeBlocks)
    if (b.p == p) {
      const std::size_t bytes = b.bytes;
      b = {};
      return bytes;
    }
  return 0;
}
}  // namespace

#ifdef _WIN32

void prepareStandardStreams() {
  // Output bytes as written: "\n" ends a line on every platform, as GUIs reading a pipe expect.
  _setmode(_fileno(stdout), _O_BINARY);
}

std::int64_t wallClockMicros() { return std::int64_t(timeGetTime()) * 1000; }

namespace {

enum class InputKind { Console, Pipe, Other };

struct StandardInput {
  HANDLE handle;
  InputKind kind;
};

// Copies standard input into a pipe of the engine's own, whose end the engine then reads and
// peeks, and closes that pipe at the end of input. Only for an input pipe that cannot be peeked:
// a Unix pipe handed to the program by wine is one (PeekNamedPipe answers "not supported" there,
// and a readiness test that always says yes would block the search in the next read).
DWORD WINAPI relayInput(void* target) {
  HANDLE from = GetStdHandle(STD_INPUT_HANDLE);
  HANDLE to = static_cast<HANDLE>(target);
  char chunk[4096];
  DWORD got = 0;
  while (ReadFile(from, chunk, sizeof chunk, &got, nullptr) && got > 0) {
    DWORD done = 0, put = 0;
    while (done < got && WriteFile(to, chunk + done, got - done, &put, nullptr)) done += put;
    if (done < got) break;
  }
  CloseHandle(to);
  // The thread never returns: the engine ends the process as soon as it meets the closed pipe,
  // and under wine a thread still on its way out then (holding the loader's lock) can leave the
  // process hanging in its exit until it is killed. A sleeping thread is simply ended with it.
  for (;;) Sleep(INFINITE);
}

HANDLE relayedInput() {
  HANDLE readEnd, writeEnd;
  if (!CreatePipe(&readEnd, &writeEnd, nullptr, 1 << 20)) return nullptr;
  HANDLE thread = CreateThread(nullptr, 0, relayInput, writeEnd, 0, nullptr);
  if (!thread) {
    CloseHandle(readEnd);
    CloseHandle(writeEnd);
    return nullptr;
  }
  CloseHandle(thread);
  return readEnd;
}

// The kind of standard input, decided on first use and kept: a console gets window and mouse
// input switched off and its pending events dropped.
const StandardInput& standardInput() {
  static const StandardInput input = [] {
    StandardInput in{GetStdHandle(STD_INPUT_HANDLE), InputKind::Other};
    DWORD mode = 0;
    if (GetConsoleMode(in.handle, &mode)) {
      SetConsoleMode(in.handle, mode & ~DWORD(ENABLE_WINDOW_INPUT | ENABLE_MOUSE_INPUT));
      FlushConsoleInputBuffer(in.handle);
      in.kind = InputKind::Console;
    } else if (GetFileType(in.handle) == FILE_TYPE_PIPE) {
      in.kind = InputKind::Pipe;
      DWORD available = 0;
      if (!PeekNamedPipe(in.handle, nullptr, 0, nullptr, &available, nullptr) &&
          GetLastError() != ERROR_BROKEN_PIPE)
        if (HANDLE relayed = relayedInput()) in.handle = relayed;
    }
    return in;
  }();
  return input;
}

}  // namespace

bool stdinReadable() {
  const StandardInput& input = standardInput();
  switch (input.kind) {
    case InputKind::Console:
      return _kbhit() != 0;
    case InputKind::Pipe: {
      // A failed peek (the writer has gone) says yes: the read then meets the end of input.
      DWORD available = 0;
      if (!PeekNamedPipe(input.handle, nullptr, 0, nullptr, &available, nullptr)) return true;
      return available > 0;
    }
    case InputKind::Other:
      break;
  }
  return true;  // a file or a device: a read never waits
}

// Raw reads on the handle that the readiness test looks at, so that both see the same bytes and
// no C library buffer holds a line back (a "stop" right behind "go" is seen by the next test).
long readStdin(char* buffer, std::size_t n) {
  constexpr std::size_t MaxReadBytes = std::size_t(1) << 30;   // one ReadFile call's count fits a DWORD
  const StandardInput& input = standardInput();
  DWORD got = 0;
  // Consoles hand out typed lines ending in "\r\n"; the line reader drops the carriage return.
  if (!ReadFile(input.handle, buffer, DWORD(n > MaxReadBytes ? MaxReadBytes : n), &got, nullptr)) return 0;
  return long(got);
}

namespace {
// Large pages need the "lock pages in memory" right; asked for once, they are used only when the
// account holds it.
SIZE_T largePageSize() {
  static SIZE_T size = [] {
    const SIZE_T minimum = GetLargePageMinimum();
    if (!minimum) return SIZE_T(0);
    HANDLE token;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token)) return SIZE_T(0);
    TOKEN_PRIVILEGES privileges{};
    privileges.PrivilegeCount = 1;
    privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    bool granted = LookupPrivilegeValueA(nullptr, "SeLockMemoryPrivilege", &privileges.Privileges[0].Luid) &&
                   AdjustTokenPrivileges(token, FALSE, &privileges, 0, nullptr, nullptr) &&
                   GetLastError() == ERROR_SUCCESS;
    CloseHandle(token);
    return granted ? minimum : SIZE_T(0);
  }();
  return size;
}
}  // namespace

void* alignedAlloc(std::size_t bytes) {
  if (bytes >= LargePage) {
    if (const SIZE_T page = largePageSize()) {
      const std::size_t size = roundUp(bytes, page);
      void* p = VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT | MEM_LARGE_PAGES, PAGE_READWRITE);
      if (p && rememberLargeBlock(p, size)) return p;   // committed pages arrive zeroed
      if (p) VirtualFree(p, 0, MEM_RELEASE);
    }
  }
  std::size_t size = roundUp(bytes ? bytes : 1);
  void* p = _aligned_malloc(size, Alignment);
  if (p) std::memset(p, 0, size);
  return p;
}

void alignedFree(void* p) {
  if (forgetLargeBlock(p)) VirtualFree(p, 0, MEM_RELEASE);
  else _aligned_free(p);
}

void timerBegin() { timeBeginPeriod(1); }
void timerEnd() { timeEndPeriod(1); }

#else

void prepareStandardStreams() {}

std::int64_t wallClockMicros() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  // Millisecond resolution, like the clock the time allocation was tuned with.
  return (std::int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000) * 1000;
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
  if (bytes >= LargePage) {
    // A block aligned to a large page and marked for them (transparent huge pages); mapped pages
    // arrive zeroed. The slack in front of and behind the aligned block goes back at once.
    const std::size_t size = roundUp(bytes, LargePage);
    void* raw = mmap(nullptr, size + LargePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw != MAP_FAILED) {
      const auto start = reinterpret_cast<std::uintptr_t>(raw);
      const auto aligned = roundUp(start, LargePage);
      if (aligned > start) munmap(raw, aligned - start);
      if (const std::size_t tail = start + LargePage - aligned) munmap(reinterpret_cast<void*>(aligned + size), tail);
      void* p = reinterpret_cast<void*>(aligned);
#ifdef MADV_HUGEPAGE
      madvise(p, size, MADV_HUGEPAGE);
#endif
      if (rememberLargeBlock(p, size)) return p;
      munmap(p, size);
    }
  }
  void* raw = std::calloc(roundUp(bytes ? bytes : 1) + Alignment, 1);
  if (!raw) return nullptr;
  auto aligned = (reinterpret_cast<std::uintptr_t>(raw) + Alignment) & ~std::uintptr_t(Alignment - 1);
  reinterpret_cast<void**>(aligned)[-1] = raw;
  return reinterpret_cast<void*>(aligned);
}

void alignedFree(void* p) {
  if (const std::size_t bytes = forgetLargeBlock(p)) munmap(p, bytes);
  else if (p) std::free(static_cast<void**>(p)[-1]);
}

void timerBegin() {}
void timerEnd() {}

#endif

}  // namespace tavrin
