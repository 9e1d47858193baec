// A fuzz session written out before it runs: the command lines, the waits between them and what
// each go must produce. Nothing in a plan depends on the engine's answers, so a seed replays it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/fuzz/output_check.h"

namespace tavrin::fuzz {

enum class SearchMode {
  Bounded,     // a limit ends it; stop may end it sooner
  Unbounded,   // no limit the engine must honour (plain go, absurd clocks): ended by stop
  Infinite,    // go infinite: no bestmove before stop
  Ponder,      // go ponder with a clock: no bestmove before stop or ponderhit
};

struct GoExpectation {
  SearchMode mode = SearchMode::Bounded;
  SearchRoot root;
  // Bounded: time from go to bestmove; Ponder: time from ponderhit to bestmove.
  int allowanceMillis = 0;
  // The same go sent again while this one was pending: up to that many more bestmove lines.
  int repeats = 0;
};

struct Step {
  enum class Kind {
    Send,            // any line with no answer to count
    Go,              // starts search `go`
    GoAgain,         // the go line once more while search `go` is pending
    Stop,
    PonderHit,
    IsReady,         // readyok due within `millis`
    Uci,             // uciok due
    Pause,           // read output for `millis`
    AwaitBestMove,   // search `go` must have answered (by its mode's deadline)
    AwaitReady,      // every isready so far must have been answered
    AwaitUciOk,
    Quit,            // ends the session: "quit"
    Close,           // ends the session: end of input
  };
  Kind kind = Kind::Send;
  std::string line;
  int millis = 0;
  int go = -1;
};

struct SessionPlan {
  std::vector<Step> steps;
  std::vector<GoExpectation> goes;
  int commandCount() const;
};

SessionPlan planSession(std::uint64_t seed);

}  // namespace tavrin::fuzz
