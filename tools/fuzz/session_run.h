// Runs one planned fuzz session against a fresh engine process and judges everything it prints.
#pragma once

#include <string>
#include <vector>

#include "tools/fuzz/session_plan.h"

namespace tavrin::fuzz {

struct RunSettings {
  std::string engine;       // path of the engine program
  std::string stderrPath;   // where the engine's standard error is collected
  bool verbose = false;     // echo every line sent and received
};

struct SessionReport {
  std::string failure;                   // empty when the session passed
  std::vector<std::string> transcript;   // "[ms] > sent" and "[ms] < received", in order
  int commands = 0;                      // lines sent
};

SessionReport runSession(const SessionPlan& plan, const RunSettings& settings);

}  // namespace tavrin::fuzz
