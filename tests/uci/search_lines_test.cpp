// What fixed-depth searches print through the protocol: the lines of MultiPV 3, and the same
// answers after ucinewgame as from a fresh process.
#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tests/uci/engine_process.h"

using tavrin::test::EngineProcess;

namespace {

constexpr int Reply = 30000;   // generous: the sanitizer build or wine

// The word after the blank-framed name in the line, or "" without one.
std::string field(const std::string& line, const std::string& name) {
  const std::size_t at = line.find(" " + name + " ");
  if (at == std::string::npos) return "";
  const std::size_t begin = at + name.size() + 2;
  return line.substr(begin, line.find(' ', begin) - begin);
}

// A PV line without its time and speed fields.
std::string withoutTiming(std::string line) {
  for (const std::string name : {"time", "nps"})
    if (const std::size_t at = line.find(" " + name + " "); at != std::string::npos)
      line.erase(at, name.size() + 2 + field(line, name).size());
  return line;
}

struct Case {
  const char* position;
  int depth;
};

// Every line of the search, up to and including bestmove.
std::vector<std::string> searchLines(EngineProcess& e, const Case& c) {
  e.sendLine(c.position);
  std::vector<std::string> lines = e.search("go depth " + std::to_string(c.depth), Reply);
  EXPECT_TRUE(!lines.empty() && lines.back().compare(0, 9, "bestmove ") == 0) << c.position;
  return lines;
}

// MultiPV 3. The repeat rule of the PV output (no line with the depth, node count or moves of the
// line before) lets one line per iteration through: the first, made once the iteration's first
// root move is searched. That move is the best move of the iteration before, so each line opens
// with the previous iteration's best move (the answer itself is on no line when the last iteration
// changed it), and no line carries a "multipv" field. Each search runs in a fresh process.
struct MultiPvSearch {
  std::vector<std::string> pvLines;   // in order, each checked to follow its "info depth" line
  std::string bestMove;
};

MultiPvSearch multiPvSearch(const Case& c) {
  EngineProcess e;
  e.sendLine("setoption name MultiPV value 3");
  MultiPvSearch r;
  int iteration = 0;
  for (const std::string& line : searchLines(e, c)) {
    EXPECT_EQ(line.find("multipv"), std::string::npos) << line;
    if (line.compare(0, 11, "info depth ") == 0) iteration = std::stoi(line.substr(11));
    if (line.find(" pv ") != std::string::npos) {
      EXPECT_EQ(field(line, "depth"), std::to_string(iteration)) << line;
      r.pvLines.push_back(line);
    }
    r.bestMove = field(" " + line, "bestmove");
  }
  return r;
}

TEST(ProtocolMultiPv, OneLinePerIterationOpeningWithTheBestMoveOfTheIterationBefore) {
  if (EngineProcess::severalThreads()) GTEST_SKIP() << "compares the node counts of two searches";
  const Case cases[] = {
      {"position startpos moves e2e4", 6},
      {"position fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 5},
      {"position fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 6},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.position);
    const MultiPvSearch shorter = multiPvSearch(c), longer = multiPvSearch({c.position, c.depth + 1});
    ASSERT_EQ(int(shorter.pvLines.size()), c.depth);
    ASSERT_EQ(int(longer.pvLines.size()), c.depth + 1);
    for (int d = 1; d <= c.depth + 1; ++d)
      EXPECT_EQ(field(longer.pvLines[std::size_t(d - 1)], "depth"), std::to_string(d));
    // The iterations both searches run print the same lines (time and speed aside).
    for (std::size_t i = 0; i < shorter.pvLines.size(); ++i)
      EXPECT_EQ(withoutTiming(shorter.pvLines[i]), withoutTiming(longer.pvLines[i]));
    // The shorter search's answer opens the longer search's line of the next iteration.
    EXPECT_EQ(field(longer.pvLines.back(), "pv"), shorter.bestMove);
  }
}

// ucinewgame forgets every earlier search: searches that each follow ucinewgame answer in one
// process (the last node count and the bestmove line) as each does in a fresh process. Whatever
// a search leaves that ucinewgame does not clear (history, killers, hash tables, evaluation
// cache) changes a node count.
std::pair<std::string, std::string> newGameSearch(EngineProcess& e, const Case& c) {
  e.sendLine("ucinewgame");
  std::pair<std::string, std::string> answer;
  for (const std::string& line : searchLines(e, c)) {
    if (!field(line, "nodes").empty()) answer.first = field(line, "nodes");
    answer.second = line;
  }
  return answer;
}

// The killers live in the search record's state entries above the root: before ucinewgame cleared
// them, a later search of a position whose killers still fitted searched differently.
TEST(ProtocolNewGame, SearchesAfterUcinewgameMatchFreshProcesses) {
  if (EngineProcess::severalThreads()) GTEST_SKIP() << "compares the node counts of two searches";
  const Case cases[] = {
      {"position startpos", 8},
      {"position startpos moves e2e4 e7e5 g1f3", 8},
      {"position startpos moves d2d4 d7d5 c2c4", 7},
      {"position fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 6},
      {"position fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 8},
  };
  std::vector<std::pair<std::string, std::string>> fresh;
  for (const Case& c : cases) {
    EngineProcess e;
    fresh.push_back(newGameSearch(e, c));
  }
  // Every position after every other one: the list forwards, then backwards.
  EngineProcess e;
  const int n = int(std::size(cases));
  for (int step = 0; step < 2 * n; ++step) {
    const int i = step < n ? step : 2 * n - 1 - step;
    EXPECT_EQ(newGameSearch(e, cases[i]), fresh[std::size_t(i)]) << "search " << step + 1 << ": " << cases[i].position;
  }
}

}  // namespace
