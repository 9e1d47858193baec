// ucinewgame forgets every earlier search: a series of searches, each after ucinewgame, answers in
// one engine process exactly as each search does in a fresh process (node count and best move).
// Whatever a search leaves behind that ucinewgame does not clear (history, killers, gain table,
// hash tables, evaluation cache, pawn table, first-search flag) shows as a different node count.
#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tests/uci/engine_process.h"

using tavrin::test::EngineProcess;

namespace {

constexpr int Reply = 30000;   // generous: the sanitizer build or wine

struct Case {
  const char* position;
  int depth;
};

const Case Cases[] = {
    {"position startpos", 8},
    {"position startpos moves e2e4 e7e5 g1f3", 8},
    {"position startpos moves d2d4 d7d5 c2c4", 7},
    {"position fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 6},
    {"position fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 8},
};

// The node count of the last info line before bestmove, and the bestmove line.
std::pair<std::string, std::string> newGameSearch(EngineProcess& e, const Case& c) {
  e.sendLine("ucinewgame");
  e.sendLine(c.position);
  const std::vector<std::string> lines = e.search("go depth " + std::to_string(c.depth), Reply);
  std::string nodes;
  for (const std::string& line : lines)
    if (const std::size_t at = line.find(" nodes "); at != std::string::npos)
      nodes = line.substr(at + 7, line.find(' ', at + 7) - at - 7);
  const bool answered = !lines.empty() && lines.back().compare(0, 9, "bestmove ") == 0;
  EXPECT_TRUE(answered && !nodes.empty()) << c.position;
  return {nodes, answered ? lines.back() : ""};
}

// Disabled until ucinewgame clears the killers, which live in the search record's state entries
// above the root: a later search of a position whose killers still fit searches differently.
TEST(ProtocolNewGame, DISABLED_SearchesAfterUcinewgameMatchFreshProcesses) {
  std::vector<std::pair<std::string, std::string>> fresh;
  for (const Case& c : Cases) {
    EngineProcess e;
    fresh.push_back(newGameSearch(e, c));
  }
  // Every position after every other one: the list forwards, then backwards.
  EngineProcess e;
  const int n = int(std::size(Cases));
  for (int step = 0; step < 2 * n; ++step) {
    const int i = step < n ? step : 2 * n - 1 - step;
    EXPECT_EQ(newGameSearch(e, Cases[i]), fresh[std::size_t(i)]) << "search " << step + 1 << ": " << Cases[i].position;
  }
}

}  // namespace
