// Child-process plumbing for engines: spawn with pipes, polled line reads, orderly shutdown.
// This is the match runner's only file that talks to the operating system directly.
#include "tools/match/engine_process.h"

#include <cerrno>
#include <cstring>
#include <thread>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdio>
#include <mutex>
#else
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;
#endif

namespace tavrin::match {

EngineProcess::~EngineProcess() { stop(100); }

EngineProcess::ReadStatus EngineProcess::readLine(std::string& line,
                                                  SteadyClock::time_point deadline) {
  for (;;) {
    std::size_t eol = buffer_.find('\n');
    if (eol != std::string::npos) {
      line.assign(buffer_, 0, eol);
      buffer_.erase(0, eol + 1);
      if (!line.empty() && line.back() == '\r') line.pop_back();
      return ReadStatus::Line;
    }
    if (!outputOpen()) return ReadStatus::Closed;
    auto now = SteadyClock::now();
    if (now >= deadline) return ReadStatus::Timeout;
    auto wait = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - now).count() + 1;
    char chunk[4096];
    long n = readChunk(chunk, sizeof chunk, wait > 1000000 ? 1000000 : wait);
    if (n > 0) {
      // A line longer than 1 MB is nonsense; keep memory bounded.
      if (buffer_.size() > (1u << 20)) buffer_.clear();
      buffer_.append(chunk, std::size_t(n));
    } else if (n < 0) {
      closeOutput();
      if (!buffer_.empty()) {  // a last line without its newline
        line.swap(buffer_);
        buffer_.clear();
        return ReadStatus::Line;
      }
      return ReadStatus::Closed;
    }
  }
}

void EngineProcess::stop(int graceMillis) {
  if (!running()) {
    closeFds();
    return;
  }
  if (graceMillis > 0) {
    send("quit");
    auto until = SteadyClock::now() + std::chrono::milliseconds(graceMillis);
    while (SteadyClock::now() < until) {
      if (exited()) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  kill();
}

#ifdef _WIN32

// A write to an engine that has gone fails with an error here; there is no signal to ignore.
void ignoreBrokenPipes() {}

namespace {

// One argument as the C runtime of the child splits its command line: quoted when it holds a
// blank or a quote, backslashes doubled before a quote.
void appendArgument(std::string& line, const std::string& arg) {
  if (!line.empty()) line += ' ';
  if (!arg.empty() && arg.find_first_of(" \t\"") == std::string::npos) {
    line += arg;
    return;
  }
  line += '"';
  std::size_t backslashes = 0;
  for (char c : arg) {
    if (c == '\\') {
      ++backslashes;
      continue;
    }
    line.append(c == '"' ? 2 * backslashes + 1 : backslashes, '\\');
    backslashes = 0;
    line += c;
  }
  line.append(2 * backslashes, '\\');
  line += '"';
}

// Engines are started from several threads; the child's ends of the pipes are made inheritable
// only inside this lock, so that no other child inherits them and keeps a dead engine's pipe open.
std::mutex StartLock;

void closeHandle(void*& h) {
  if (h) CloseHandle(h);
  h = nullptr;
}

std::string describeExitCode(DWORD code) {
  char text[48];
  if (code >= 0xC0000000u)
    std::snprintf(text, sizeof text, "crashed with exception 0x%08lX", static_cast<unsigned long>(code));
  else
    std::snprintf(text, sizeof text, "exit status %lu", static_cast<unsigned long>(code));
  return text;
}

}  // namespace

bool EngineProcess::running() const { return process_ != nullptr; }
bool EngineProcess::outputOpen() const { return fromChild_ != nullptr; }
void EngineProcess::closeOutput() { closeHandle(fromChild_); }
void EngineProcess::closeInput() { closeHandle(toChild_); }

bool EngineProcess::start(const std::string& command, const std::vector<std::string>& args,
                          const std::string& workDir, const std::string& stderrPath) {
  stop(0);
  exitText_.clear();
  buffer_.clear();
  HANDLE childIn = nullptr, toChild = nullptr, fromChild = nullptr, childOut = nullptr;
  if (!CreatePipe(&childIn, &toChild, nullptr, 0)) return false;
  if (!CreatePipe(&fromChild, &childOut, nullptr, 0)) {
    CloseHandle(childIn);
    CloseHandle(toChild);
    return false;
  }
  const bool toNull = stderrPath.empty() || stderrPath == "/dev/null";
  HANDLE nul = CreateFileA(toNull ? "NUL" : stderrPath.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                           nullptr, toNull ? OPEN_EXISTING : CREATE_ALWAYS, 0, nullptr);

  std::string line;
  appendArgument(line, command);
  for (const std::string& a : args) appendArgument(line, a);
  std::vector<char> commandLine(line.begin(), line.end());
  commandLine.push_back(0);

  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = childIn;
  startup.hStdOutput = childOut;
  startup.hStdError = nul != INVALID_HANDLE_VALUE ? nul : nullptr;
  PROCESS_INFORMATION info{};
  BOOL created;
  DWORD error = 0;
  {
    std::lock_guard<std::mutex> lock(StartLock);
    for (HANDLE h : {childIn, childOut, nul})
      if (h && h != INVALID_HANDLE_VALUE) SetHandleInformation(h, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    created = CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                             nullptr, workDir.empty() ? nullptr : workDir.c_str(), &startup, &info);
    if (!created) error = GetLastError();
    CloseHandle(childIn);
    CloseHandle(childOut);
    if (nul != INVALID_HANDLE_VALUE) CloseHandle(nul);
  }
  if (!created) {
    CloseHandle(toChild);
    CloseHandle(fromChild);
    exitText_ = "cannot start: error " + std::to_string(error);
    return false;
  }
  CloseHandle(info.hThread);
  process_ = info.hProcess;
  toChild_ = toChild;
  fromChild_ = fromChild;
  return true;
}

bool EngineProcess::send(const std::string& line) {
  if (!toChild_) return false;
  std::string text = line + "\n";
  const char* p = text.data();
  std::size_t left = text.size();
  while (left > 0) {
    DWORD put = 0;
    if (!WriteFile(toChild_, p, DWORD(left), &put, nullptr)) return false;  // the engine is gone
    p += put;
    left -= put;
  }
  return true;
}

// Anonymous pipes cannot be waited on: the output is peeked every millisecond.
long EngineProcess::readChunk(char* chunk, std::size_t size, long long waitMillis) {
  const auto until = SteadyClock::now() + std::chrono::milliseconds(waitMillis);
  for (;;) {
    DWORD available = 0;
    if (!PeekNamedPipe(fromChild_, nullptr, 0, nullptr, &available, nullptr)) return -1;
    if (available > 0) {
      DWORD got = 0;
      if (!ReadFile(fromChild_, chunk, DWORD(available < size ? available : size), &got, nullptr)) return -1;
      return long(got);
    }
    if (SteadyClock::now() >= until) return 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

bool EngineProcess::exited() {
  if (!process_) return true;
  if (WaitForSingleObject(process_, 0) != WAIT_OBJECT_0) return false;
  DWORD code = 0;
  if (GetExitCodeProcess(process_, &code)) exitText_ = describeExitCode(code);
  closeHandle(process_);
  closeFds();
  return true;
}

void EngineProcess::closeFds() {
  closeHandle(toChild_);
  closeHandle(fromChild_);
}

void EngineProcess::kill() {
  if (process_) {
    TerminateProcess(process_, 1);
    WaitForSingleObject(process_, INFINITE);
    DWORD code = 0;
    if (exitText_.empty() && GetExitCodeProcess(process_, &code)) exitText_ = describeExitCode(code);
    closeHandle(process_);
  }
  closeFds();
  buffer_.clear();
}

#else

void ignoreBrokenPipes() { signal(SIGPIPE, SIG_IGN); }

bool EngineProcess::start(const std::string& command, const std::vector<std::string>& args,
                          const std::string& workDir, const std::string& stderrPath) {
  stop(0);
  exitText_.clear();
  buffer_.clear();
  // Close-on-exec everywhere: engines started by other threads must not inherit our pipe ends,
  // or a dead engine's pipe would never report end of file.
  int in[2], out[2];
  if (pipe2(in, O_CLOEXEC) != 0) return false;
  if (pipe2(out, O_CLOEXEC) != 0) {
    ::close(in[0]);
    ::close(in[1]);
    return false;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_addopen(&actions, 2, stderrPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (!workDir.empty()) posix_spawn_file_actions_addchdir_np(&actions, workDir.c_str());

  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(command.c_str()));
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);

  pid_t pid = -1;
  int rc = posix_spawnp(&pid, command.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(in[0]);
  ::close(out[1]);
  if (rc != 0) {
    ::close(in[1]);
    ::close(out[0]);
    exitText_ = std::string("cannot start: ") + std::strerror(rc);
    return false;
  }
  pid_ = pid;
  toChild_ = in[1];
  fromChild_ = out[0];
  fcntl(fromChild_, F_SETFL, fcntl(fromChild_, F_GETFL) | O_NONBLOCK);
  return true;
}

bool EngineProcess::send(const std::string& line) {
  if (toChild_ < 0) return false;
  std::string text = line + "\n";
  const char* p = text.data();
  std::size_t left = text.size();
  while (left > 0) {
    ssize_t n = ::write(toChild_, p, left);
    if (n < 0) {
      if (errno == EINTR) continue;
      if (errno == EAGAIN) {
        pollfd fd{toChild_, POLLOUT, 0};
        if (poll(&fd, 1, 1000) <= 0) return false;
        continue;
      }
      return false;  // EPIPE: the engine is gone (SIGPIPE is ignored by the runner)
    }
    p += n;
    left -= std::size_t(n);
  }
  return true;
}

void EngineProcess::closeInput() {
  if (toChild_ >= 0) ::close(toChild_);
  toChild_ = -1;
}

bool EngineProcess::running() const { return pid_ > 0; }
bool EngineProcess::outputOpen() const { return fromChild_ >= 0; }

void EngineProcess::closeOutput() {
  if (fromChild_ >= 0) ::close(fromChild_);
  fromChild_ = -1;
}

long EngineProcess::readChunk(char* chunk, std::size_t size, long long waitMillis) {
  pollfd fd{fromChild_, POLLIN, 0};
  int r = poll(&fd, 1, int(waitMillis));
  if (r < 0 && errno != EINTR) return -1;
  if (r <= 0) return 0;
  ssize_t n = ::read(fromChild_, chunk, size);
  if (n > 0) return long(n);
  return n == 0 || (errno != EINTR && errno != EAGAIN) ? -1 : 0;
}

static std::string describeStatus(int status) {
  if (WIFEXITED(status)) return "exit status " + std::to_string(WEXITSTATUS(status));
  if (WIFSIGNALED(status)) return std::string("killed by signal ") + strsignal(WTERMSIG(status));
  return "ended";
}

bool EngineProcess::exited() {
  if (pid_ <= 0) return true;
  int status = 0;
  pid_t r = waitpid(pid_, &status, WNOHANG);
  if (r == pid_ || (r < 0 && errno == ECHILD)) {
    if (r == pid_) exitText_ = describeStatus(status);
    pid_ = -1;
    closeFds();
    return true;
  }
  return false;
}

void EngineProcess::closeFds() {
  if (toChild_ >= 0) ::close(toChild_);
  if (fromChild_ >= 0) ::close(fromChild_);
  toChild_ = fromChild_ = -1;
}

void EngineProcess::kill() {
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    int status = 0;
    if (waitpid(pid_, &status, 0) == pid_ && exitText_.empty()) exitText_ = describeStatus(status);
    pid_ = -1;
  }
  closeFds();
  buffer_.clear();
}

#endif

}  // namespace tavrin::match
