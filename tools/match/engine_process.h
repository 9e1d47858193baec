// A UCI engine running as a child process, spoken to through pipes with bounded waits.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace tavrin::match {

using SteadyClock = std::chrono::steady_clock;

// Writing to an engine that died must fail with an error, not kill the runner.
void ignoreBrokenPipes();

class EngineProcess {
 public:
  enum class ReadStatus { Line, Timeout, Closed };

  EngineProcess() = default;
  ~EngineProcess();
  EngineProcess(const EngineProcess&) = delete;
  EngineProcess& operator=(const EngineProcess&) = delete;

  // Starts the program with its arguments (no shell); stderr goes to the given file (created or
  // truncated), the null device by default.
  bool start(const std::string& command, const std::vector<std::string>& args,
             const std::string& workDir, const std::string& stderrPath = "/dev/null");
  bool running() const;

  // Sends one line (a newline is added). False when the pipe is broken.
  bool send(const std::string& line);
  // Closes the engine's standard input: it reads the end of input next.
  void closeInput();
  // Reads one line, waiting until the deadline at most.
  ReadStatus readLine(std::string& line, SteadyClock::time_point deadline);

  // Asks the engine to quit, waits a little, then kills it.
  void stop(int graceMillis = 300);
  // Kills at once.
  void kill();
  // True once the child has exited (reaps it); exitDescription tells how.
  bool exited();
  std::string exitDescription() const { return exitText_; }

 private:
  // Waits for output until waitMillis at most: the byte count read into chunk, 0 when nothing
  // came, -1 when the output has ended.
  long readChunk(char* chunk, std::size_t size, long long waitMillis);
  void closeFds();
#ifdef _WIN32
  void* process_ = nullptr;     // handles
  void* toChild_ = nullptr;
  void* fromChild_ = nullptr;
#else
  int pid_ = -1;
  int toChild_ = -1;
  int fromChild_ = -1;
#endif
  bool outputOpen() const;
  void closeOutput();
  std::string buffer_;
  std::string exitText_;
};

}  // namespace tavrin::match
