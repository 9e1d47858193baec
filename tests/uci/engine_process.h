// Runs the built engine as a child process with pipes on its standard input and output, for
// byte-exact protocol exchanges with generous time-outs. TAVRIN_ENGINE_COMMAND in the environment
// names another engine command, split at blanks (e.g. "wine build-win/tavrin.exe"); the default is
// the engine of this build. TAVRIN_TEST_THREADS sets the engine's Threads option first.
#pragma once

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace tavrin::test {

class EngineProcess {
 public:
  explicit EngineProcess(const std::vector<std::string>& command = engineCommand()) {
    std::signal(SIGPIPE, SIG_IGN);  // writing to an engine that has quit must not kill the test
    std::vector<char*> argv;
    for (const std::string& word : command) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    int toChild[2], fromChild[2];
    if (command.empty() || pipe(toChild) != 0 || pipe(fromChild) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      dup2(toChild[0], 0);
      dup2(fromChild[1], 1);
      close(toChild[0]), close(toChild[1]), close(fromChild[0]), close(fromChild[1]);
      execvp(argv[0], argv.data());
      _exit(127);
    }
    close(toChild[0]);
    close(fromChild[1]);
    in_ = toChild[1];
    out_ = fromChild[0];
    // TAVRIN_TEST_THREADS runs every exchange with that many search threads (it answers nothing).
    if (const char* threads = std::getenv("TAVRIN_TEST_THREADS"); threads && *threads)
      sendLine(std::string("setoption name Threads value ") + threads);
  }
  ~EngineProcess() {
    closeInput();
    if (pid_ > 0 && !exited_) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    if (out_ >= 0) close(out_);
  }
  EngineProcess(const EngineProcess&) = delete;
  EngineProcess& operator=(const EngineProcess&) = delete;

  bool started() const { return pid_ > 0; }

  // The engine command: TAVRIN_ENGINE_COMMAND split at blanks, or the engine of this build.
  static const std::vector<std::string>& engineCommand() {
    static const std::vector<std::string> command = [] {
      std::vector<std::string> words;
      const char* text = std::getenv("TAVRIN_ENGINE_COMMAND");
      if (!text || !*text) return std::vector<std::string>{TAVRIN_ENGINE_PATH};
      std::string word;
      for (const char* p = text;; ++p) {
        if (*p && *p != ' ' && *p != '\t') {
          word += *p;
          continue;
        }
        if (!word.empty()) words.push_back(word);
        word.clear();
        if (!*p) break;
      }
      return words;
    }();
    return command;
  }

  // Exchanges run with several search threads (TAVRIN_TEST_THREADS above 1): node counts and the
  // lines of a search then vary from run to run.
  static bool severalThreads() {
    const char* threads = std::getenv("TAVRIN_TEST_THREADS");
    return threads && std::atoi(threads) > 1;
  }

  // True when the engine is a Windows program (run under wine): its command names an .exe.
  static bool windowsEngine() {
    for (const std::string& word : engineCommand())
      if (word.size() > 4 && word.compare(word.size() - 4, 4, ".exe") == 0) return true;
    return false;
  }

  // Writes raw bytes (no newline added).
  void send(const std::string& text) {
    std::size_t done = 0;
    while (in_ >= 0 && done < text.size()) {
      ssize_t n = write(in_, text.data() + done, text.size() - done);
      if (n <= 0) break;
      done += std::size_t(n);
    }
  }
  void sendLine(const std::string& line) { send(line + "\n"); }
  void closeInput() {
    if (in_ >= 0) close(in_);
    in_ = -1;
  }

  // The next output line without its newline, or nothing on time-out or end of output.
  std::optional<std::string> readLine(int timeoutMs) {
    const long long deadline = nowMs() + timeoutMs;
    for (;;) {
      std::size_t nl = pending_.find('\n');
      if (nl != std::string::npos) {
        std::string line = pending_.substr(0, nl);
        pending_.erase(0, nl + 1);
        return line;
      }
      long long left = deadline - nowMs();
      if (left <= 0 || out_ < 0) return std::nullopt;
      pollfd p{out_, POLLIN, 0};
      if (poll(&p, 1, int(left)) <= 0) continue;
      char buffer[4096];
      ssize_t n = read(out_, buffer, sizeof buffer);
      if (n <= 0) return std::nullopt;
      pending_.append(buffer, std::size_t(n));
    }
  }

  // Reads lines until one starts with prefix (returned), collecting everything read on the way.
  std::optional<std::string> readUntil(const std::string& prefix, int timeoutMs,
                                       std::vector<std::string>* seen = nullptr) {
    const long long deadline = nowMs() + timeoutMs;
    for (;;) {
      long long left = deadline - nowMs();
      if (left <= 0) return std::nullopt;
      auto line = readLine(int(left));
      if (!line) return std::nullopt;
      if (seen) seen->push_back(*line);
      if (line->compare(0, prefix.size(), prefix) == 0) return line;
    }
  }

  // Sends a search command and returns every line up to and including "bestmove" (everything
  // read when no answer comes in time).
  std::vector<std::string> search(const std::string& go, int timeoutMs) {
    sendLine(go);
    std::vector<std::string> seen;
    readUntil("bestmove ", timeoutMs, &seen);
    return seen;
  }

  // Exit status once the process has ended, or -1 when it does not end in time (then killed).
  int waitExit(int timeoutMs) {
    const long long deadline = nowMs() + timeoutMs;
    int status = 0;
    while (nowMs() < deadline) {
      pid_t r = waitpid(pid_, &status, WNOHANG);
      if (r == pid_) {
        exited_ = true;
        if (WIFEXITED(status)) return WEXITSTATUS(status);
        return 128 + (WIFSIGNALED(status) ? WTERMSIG(status) : 0);
      }
      usleep(2000);
    }
    return -1;
  }

  static long long nowMs() {
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return (long long)t.tv_sec * 1000 + t.tv_nsec / 1000000;
  }

 private:
  pid_t pid_ = -1;
  int in_ = -1, out_ = -1;
  bool exited_ = false;
  std::string pending_;
};

}  // namespace tavrin::test
