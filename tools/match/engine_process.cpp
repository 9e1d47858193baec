// Child-process plumbing for engines: spawn with pipes, polled line reads, orderly shutdown.
// This is the match runner's only file that talks to the operating system directly.
#include "tools/match/engine_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>

extern char** environ;

namespace tavrin::match {

void ignoreBrokenPipes() { signal(SIGPIPE, SIG_IGN); }

EngineProcess::~EngineProcess() { stop(100); }

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
    if (fromChild_ < 0) return ReadStatus::Closed;
    auto now = SteadyClock::now();
    if (now >= deadline) return ReadStatus::Timeout;
    auto wait = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - now).count() + 1;
    pollfd fd{fromChild_, POLLIN, 0};
    int r = poll(&fd, 1, int(wait > 1000000 ? 1000000 : wait));
    if (r < 0 && errno != EINTR) return ReadStatus::Closed;
    if (r <= 0) continue;
    char chunk[4096];
    ssize_t n = ::read(fromChild_, chunk, sizeof chunk);
    if (n > 0) {
      // A line longer than 1 MB is nonsense; keep memory bounded.
      if (buffer_.size() > (1u << 20)) buffer_.clear();
      buffer_.append(chunk, std::size_t(n));
    } else if (n == 0 || (errno != EINTR && errno != EAGAIN)) {
      ::close(fromChild_);
      fromChild_ = -1;
      if (!buffer_.empty()) {  // a last line without its newline
        line.swap(buffer_);
        buffer_.clear();
        return ReadStatus::Line;
      }
      return ReadStatus::Closed;
    }
  }
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

void EngineProcess::stop(int graceMillis) {
  if (pid_ <= 0) {
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

}  // namespace tavrin::match
