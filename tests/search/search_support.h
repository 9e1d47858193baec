// Shared set-up of the search tests: an initialised engine and a silent fixed-depth search.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "app/startup.h"
#include "board/fen.h"
#include "board/movegen.h"
#include "common/globals.h"
#include "eval/evaluate.h"
#include "search/bench.h"
#include "search/search.h"
#include "search/tt.h"
#include "tests/test_support.h"
#include "uci/output.h"

namespace tavrin::test {

inline void initEngineForTests() {
  initializeEngine();
  Settings.quiet = true;
}

struct SearchOutcome {
  bool ok = false;
  Move best = 0;
  int score = 0;
  std::uint64_t nodes = 0;
};

// Searches the FEN to depth plies from cleared tables, as the bench does.
inline SearchOutcome searchFen(const std::string& fen, int depth) {
  initEngineForTests();
  SearchOutcome r;
  r.ok = benchSearch(fen.c_str(), depth, r.nodes, r.best);
  r.score = Root.bestScore;
  return r;
}

}  // namespace tavrin::test
