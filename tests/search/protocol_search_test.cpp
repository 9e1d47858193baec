// Search results through the engine's own pipes: the mating move from either side, no move for
// a mated side. (Mate scores of short mates rarely reach a PV line: the line is printed once per
// iteration and never twice with the same text, so the score text is tested on the search.)
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/uci/engine_process.h"

namespace tavrin::test {
namespace {

TEST(ProtocolMates, MatingMoveFromEitherSide) {
  const struct {
    const char* fen;
    int depth;
    const char* bestmove;
  } cases[] = {
      {"6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1", 3, "bestmove d1d8 ponder "},
      {"3r2k1/5ppp/8/8/8/8/5PPP/6K1 b - - 0 1", 3, "bestmove d8d1 ponder "},
      {"k7/8/2K5/8/8/8/8/7R w - - 0 1", 4, "bestmove c6"},
      {"R5k1/5ppp/8/8/8/8/5PPP/6K1 b - - 0 1", 3, "bestmove 0000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fen);
    EngineProcess engine;
    ASSERT_TRUE(engine.started());
    engine.sendLine(std::string("position fen ") + c.fen);
    engine.sendLine("go depth " + std::to_string(c.depth));
    std::vector<std::string> lines;
    auto best = engine.readUntil("bestmove", 20000, &lines);
    ASSERT_TRUE(best.has_value());
    EXPECT_EQ(best->compare(0, std::string(c.bestmove).size(), c.bestmove), 0) << *best;
    engine.sendLine("quit");
    EXPECT_EQ(engine.waitExit(5000), 0);
  }
}

}  // namespace
}  // namespace tavrin::test
