// The go parser: keywords, carry-over flags and the limits it leaves for the search.
#include <gtest/gtest.h>

#include <string>

#include "app/startup.h"
#include "common/globals.h"
#include "uci/go_command.h"
#include "uci/position_command.h"

using namespace tavrin;

namespace {

class GoCommand : public testing::Test {
 protected:
  static void SetUpTestSuite() { initializeEngine(); }
  void SetUp() override {
    Limits = SearchLimits{};
    Engine.firstSearch = 1;
    positionCommand(RootPosition, "startpos");
  }
  void go(const char* line) { parseGo(line, RootPosition); }
};

}  // namespace

// The allocation's figures (see time_allocation_test.cpp) reach the limits; movetime is its own.
TEST_F(GoCommand, ClockFigures) {
  go("go wtime 300000 movestogo 40");
  EXPECT_EQ(Limits.softTarget, 6279069);
  EXPECT_EQ(Limits.analysis, 0);
  go("go movetime 1000");
  EXPECT_EQ(Limits.hardLimit, 990000);
  EXPECT_EQ(Limits.softTarget, NoLimit);
  go("go movetime 5");
  EXPECT_EQ(Limits.hardLimit, -5000);
  go("go movetime -3");
  EXPECT_EQ(Limits.hardLimit, -9000);
}

TEST_F(GoCommand, TheSideToMovesClockCounts) {
  positionCommand(RootPosition, "startpos moves e2e4");
  go("go wtime 400 btime 60000");
  EXPECT_EQ(Limits.hardLimit, 9000000);
  go("go wtime 60000");   // no clock for Black: no time limit
  EXPECT_EQ(Limits.hardLimit, NoLimit);
  EXPECT_EQ(Limits.analysis, 1);
}

TEST_F(GoCommand, InfiniteAndPonder) {
  go("go infinite");
  EXPECT_EQ(Engine.infiniteMode, 1);
  EXPECT_EQ(Limits.analysis, 1);
  EXPECT_EQ(Limits.hardLimit, NoLimit);
  EXPECT_EQ(Limits.softTarget, NoLimit);
  go("go ponder");
  EXPECT_EQ(Engine.infiniteMode, 0);
  EXPECT_EQ(Engine.ponderMode, 1);
  EXPECT_EQ(Limits.threeQuarterTarget, NoLimit);
  go("go ponder wtime 60000 btime 60000");
  EXPECT_EQ(Engine.ponderMode, 1);
  EXPECT_EQ(Limits.threeQuarterTarget, 843750 * 3 / 4);   // the allocation overwrites it
  go("go depth 3");
  EXPECT_EQ(Engine.ponderMode, 0);
}

TEST_F(GoCommand, DepthAndNodeFlagsCarryOver) {
  go("go depth 5");
  EXPECT_EQ(Limits.depthLimit, 5);
  EXPECT_EQ(Limits.depthGiven, 1);
  go("go wtime 60000 btime 60000");   // the depth given last time still holds
  EXPECT_EQ(Limits.depthLimit, 5);
  EXPECT_EQ(Limits.depthGiven, 0);
  go("go wtime 60000 btime 60000");
  EXPECT_EQ(Limits.depthLimit, 192);
  go("go depth 0");
  EXPECT_EQ(Limits.depthLimit, 1);
  go("go depth -4");
  EXPECT_EQ(Limits.depthLimit, 1);
  go("go depth 7 wtime 1000");   // a later keyword clears the flag at once
  EXPECT_EQ(Limits.depthLimit, 7);
  EXPECT_EQ(Limits.depthGiven, 0);
  go("go");
  EXPECT_EQ(Limits.depthLimit, 192);
  go("go nodes 1000");
  EXPECT_EQ(Limits.nodeLimit, 1000);
  EXPECT_EQ(Limits.nodeLimitFlag, 1);
  go("go nodes 1000 wtime 5000");
  EXPECT_EQ(Limits.nodeLimitFlag, 0);
  go("go nodes 1000 ponder");   // not a valued keyword: the flag stays
  EXPECT_EQ(Limits.nodeLimitFlag, 1);
  go("go nodes 1000 infinite");
  EXPECT_EQ(Limits.nodeLimitFlag, 0);
  go("go nodes 123456789012");
  EXPECT_EQ(Limits.nodeLimit, 123456789012LL);
}

TEST_F(GoCommand, MissingAndOddNumbers) {
  go("go wtime");   // the clock reads 0: T = 1
  EXPECT_EQ(Limits.wtime, 0);
  EXPECT_EQ(Limits.softTarget, 5000);
  EXPECT_EQ(Limits.hardLimit, 10500);
  go("go depth");
  EXPECT_EQ(Limits.depthLimit, 1);
  go("go wtime x60000 btime 1000");
  EXPECT_EQ(Limits.wtime, 0);
  go("go wtime 60000 winc 3000000");   // the increment is computed in 32 bits and wraps negative
  EXPECT_LT(Limits.winc, 0);
  EXPECT_EQ(Limits.hardLimit, 9000000);
  go("go wtime 60000 winc 1000");
  EXPECT_EQ(Limits.winc, 1000000);
  go("go  wtime   60000\tbtime 60000  ");
  EXPECT_EQ(Limits.hardLimit, 9000000);
}

TEST_F(GoCommand, SearchMoves) {
  go("go searchmoves e2e4 d2d4 g1f3 depth 3 b1c3");
  EXPECT_EQ(Limits.searchMovesFlag, 1);
  EXPECT_EQ(Limits.depthLimit, 3);
  const Move expected[] = {makeMove(E2, E4), makeMove(D2, D4), makeMove(G1, F3), makeMove(B1, C3), NoMove};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(Limits.searchMoves[i], expected[i]) << i;
  positionCommand(RootPosition, "fen 4k3/P7/8/8/8/8/8/4K3 w - - 0 1");
  go("go searchmoves a7a8n");   // unlike a move list, a promotion letter is always read
  EXPECT_EQ(Limits.searchMoves[0], makeMove(A7, A8, PromoteKnight));
  go("go e2e4 depth 2");   // move words before searchmoves are ignored
  EXPECT_EQ(Limits.searchMovesFlag, 0);
  EXPECT_EQ(Limits.searchMoves[0], NoMove);
  std::string many = "go searchmoves";
  for (int i = 0; i < 1000; ++i) many += " e2e4";
  go(many.c_str());
  EXPECT_EQ(Limits.searchMoves[254], makeMove(E2, E4));
  EXPECT_EQ(Limits.searchMoves[255], NoMove);
}

// A word whose squares are off the board is no move: skipped like any unmatched word.
TEST_F(GoCommand, SearchMovesOffTheBoardAreSkipped) {
  const struct {
    const char* line;
    Move list[3];   // ended by NoMove
  } cases[] = {
      {"go searchmoves i1a4 e2e4", {makeMove(E2, E4), NoMove}},   // i1 is not read as a2
      {"go searchmoves e2m3 a9a8 a0a1 d2d4", {makeMove(D2, D4), NoMove}},
      {"go searchmoves e2e4 i0e4 g1f3", {makeMove(E2, E4), makeMove(G1, F3), NoMove}},
      {"go searchmoves i1a4", {NoMove}},
  };
  for (const auto& c : cases) {
    go(c.line);
    EXPECT_EQ(Limits.searchMovesFlag, 1) << c.line;
    for (int i = 0; i == 0 || c.list[i - 1]; ++i) EXPECT_EQ(Limits.searchMoves[i], c.list[i]) << c.line << " " << i;
  }
}
