// What MultiPV 3 prints. The repeat rule of the PV output (no line with the depth, node count or
// moves of the line before) lets through one line per iteration: the first one, made when the
// iteration's first root move has been searched. That move is the best move of the iteration
// before, so the line printed for an iteration opens with the previous iteration's best move
// (the last iteration's best move, the answer, appears on no line when it changed), and no line
// carries a "multipv" field.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/uci/engine_process.h"

using tavrin::test::EngineProcess;

namespace {

constexpr int Reply = 30000;   // generous: the sanitizer build or wine

// The word after " name " in the line, or "" without one.
std::string field(const std::string& line, const std::string& name) {
  const std::size_t at = line.find(" " + name + " ");
  if (at == std::string::npos) return "";
  const std::size_t begin = at + name.size() + 2;
  return line.substr(begin, line.find(' ', begin) - begin);
}

// A PV line without its time and speed fields.
std::string withoutTiming(std::string line) {
  for (const std::string name : {"time", "nps"}) {
    const std::size_t at = line.find(" " + name + " ");
    if (at != std::string::npos) line.erase(at, name.size() + 2 + field(line, name).size());
  }
  return line;
}

struct MultiPvSearch {
  std::vector<std::string> pvLines;   // "info ... pv ..." lines, in order
  std::string bestMove;
};

// A fresh engine's MultiPV 3 search; checks on the way that each PV line follows the "info depth"
// line of its iteration and that nothing names a "multipv" field.
MultiPvSearch multiPvSearch(const std::string& position, int depth) {
  EngineProcess e;
  e.sendLine("setoption name MultiPV value 3");
  e.sendLine(position);
  MultiPvSearch r;
  int iteration = 0;
  for (const std::string& line : e.search("go depth " + std::to_string(depth), Reply)) {
    EXPECT_EQ(line.find("multipv"), std::string::npos) << line;
    if (line.compare(0, 11, "info depth ") == 0) iteration = std::stoi(line.substr(11));
    if (line.find(" pv ") != std::string::npos) {
      EXPECT_EQ(field(line, "depth"), std::to_string(iteration)) << line;
      r.pvLines.push_back(line);
    }
    if (line.compare(0, 9, "bestmove ") == 0) r.bestMove = field(" " + line, "bestmove");
  }
  EXPECT_FALSE(r.bestMove.empty()) << position;
  return r;
}

TEST(ProtocolMultiPv, OneLinePerIterationOpeningWithTheBestMoveOfTheIterationBefore) {
  const struct {
    const char* position;
    int depth;
  } cases[] = {
      {"position startpos moves e2e4", 6},
      {"position fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 5},
      {"position fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 6},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.position);
    const MultiPvSearch shorter = multiPvSearch(c.position, c.depth);
    const MultiPvSearch longer = multiPvSearch(c.position, c.depth + 1);
    ASSERT_EQ(int(longer.pvLines.size()), c.depth + 1);
    for (int d = 1; d <= c.depth + 1; ++d)
      EXPECT_EQ(field(longer.pvLines[std::size_t(d - 1)], "depth"), std::to_string(d));
    // The iterations the two searches share print the same lines (time and speed aside).
    ASSERT_EQ(int(shorter.pvLines.size()), c.depth);
    for (std::size_t i = 0; i < shorter.pvLines.size(); ++i)
      EXPECT_EQ(withoutTiming(shorter.pvLines[i]), withoutTiming(longer.pvLines[i]));
    // The shorter search's answer opens the longer search's line of the next iteration.
    EXPECT_EQ(field(longer.pvLines.back(), "pv"), shorter.bestMove);
  }
}

}  // namespace
