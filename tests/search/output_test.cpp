// Search output: score text, the PV walk through the tables, the PV line's rules.
#include <string>

#include "board/make_move.h"
#include "tests/search/search_support.h"

namespace tavrin::test {
namespace {

TEST(SearchOutput, ScoreText) {
  const struct {
    int score;
    const char* text;
  } cases[] = {
      {0, "cp 0"},          {-35, "cp -35"},      {21488, "cp 21488"}, {21489, "mate 256"},
      {21999, "mate 1"},    {21998, "mate 1"},    {21997, "mate 2"},   {-21998, "mate -1"},
      {-21999, "mate 0"},   {-21996, "mate -2"},  {-21488, "cp -21488"},
  };
  for (const auto& c : cases) EXPECT_EQ(std::string(scoreText(c.score)), c.text) << c.score;
}

class PvWalk : public ::testing::Test {
 protected:
  void SetUp() override {
    initEngineForTests();
    clearTables();
    ASSERT_TRUE(setFromFen(pos(), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"));
  }
  static Position& pos() { return SearchRecords[0]; }
  // Stores each move of the line as the exact result of the position before it.
  static void storeLine(const std::vector<Move>& line) {
    for (Move m : line) {
      storeExact(pos().st().key, 10, 0, m);
      makeRootMove(pos(), m);
    }
    for (auto it = line.rbegin(); it != line.rend(); ++it) unmakeMove(pos(), *it);
  }
};

TEST_F(PvWalk, FollowsThePvTableAndStopsAtACycle) {
  storeLine({makeMove(G1, F3), makeMove(G8, F6), makeMove(F3, G1), makeMove(F6, G8)});
  char out[2048];
  const Key before = pos().st().key;
  pvText(pos(), makeMove(G1, F3), out, sizeof out);
  EXPECT_STREQ(out, "g1f3 g8f6 f3g1 f6g8 g1f3");
  EXPECT_EQ(pos().st().key, before);   // every move taken back
}

TEST_F(PvWalk, DropsAStoredMoveThatIsNotPlayable) {
  storeLine({makeMove(E2, E4), makeMove(E7, E5)});
  makeRootMove(pos(), makeMove(E2, E4));
  makeRootMove(pos(), makeMove(E7, E5));
  storeExact(pos().st().key, 10, 0, makeMove(E4, E5));   // blocked pawn: not pseudo-legal
  unmakeMove(pos(), makeMove(E7, E5));
  unmakeMove(pos(), makeMove(E2, E4));
  char out[2048];
  pvText(pos(), makeMove(E2, E4), out, sizeof out);
  EXPECT_STREQ(out, "e2e4 e7e5");
}

// The line of a finished iteration: printed once per depth, the score of the first iteration
// shown as 0, and the PV cut to the iteration depth (two plies: 2 + 8 = 10 characters, the
// second move's blank included).
TEST_F(PvWalk, PvLineFormatAndCut) {
  const struct {
    std::vector<Move> pvTable;
    int iterationDepth, selDepth, score;
    std::uint64_t nodes;
    std::int64_t elapsed;   // microseconds
    const char* expected;
  } cases[] = {
      {{}, 2, 3, 40, 1000, 5000, "info time 5 nodes 1212 nps 242000 score cp 0 depth 1 seldepth 3 pv e2e4 \n"},
      {{makeMove(E2, E4), makeMove(E7, E5), makeMove(G1, F3), makeMove(B8, C6), makeMove(F1, B5)}, 4, 0, -21998, 0,
       0, "info time 0 nodes 0 nps 0 score mate -1 depth 2 seldepth 0 pv e2e4 e7e5  \n"},
  };
  for (const auto& c : cases) {
    clearTables();
    storeLine(c.pvTable);
    forgetLastPvLine();
    Root = RootResult{};
    Root.bestMove = makeMove(E2, E4);
    Root.iterationDepth = c.iterationDepth;
    Root.selDepth = c.selDepth;
    pos().nodes = c.nodes;
    testing::internal::CaptureStdout();
    printPvLine(pos(), c.elapsed, c.score);
    printPvLine(pos(), c.elapsed + 1000, c.score);   // same iteration depth: suppressed
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.expected);
    EXPECT_EQ(lastPrintedDepth(), c.iterationDepth);
  }
}

TEST_F(PvWalk, BestMoveLineWithPonderFromThePvTableOnly) {
  const struct {
    std::vector<Move> pvTable;
    const char* expected;
  } cases[] = {
      {{makeMove(E2, E4), makeMove(E7, E5)}, "bestmove e2e4 ponder e7e5\n"},
      {{}, "bestmove e2e4 ponder NULL\n"},
  };
  for (const auto& c : cases) {
    clearTables();
    storeLine(c.pvTable);
    Root = RootResult{};
    Root.bestMove = makeMove(E2, E4);
    testing::internal::CaptureStdout();
    printBestMove(pos());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.expected);
  }
  Root.bestMove = NoMove;
  testing::internal::CaptureStdout();
  printBestMove(pos());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "bestmove 0000\n");
}

}  // namespace
}  // namespace tavrin::test
