// The search on known positions: mates found and scored from either side, mated and stalemated
// roots, clear tactical best moves, and no illegal move over many random positions.
#include <cstdint>
#include <random>
#include <string>

#include "board/make_move.h"
#include "search/node.h"
#include "tests/search/search_support.h"

namespace tavrin::test {
namespace {

constexpr int RandomPositions = scaled(200, 12);

TEST(SearchResults, MatesFromEitherSide) {
  const struct {
    const char* fen;
    int depth;
    const char* score;
    const char* best;   // empty when several moves mate equally fast
  } cases[] = {
      {"6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1", 3, "mate 1", "d1d8"},
      {"3r2k1/5ppp/8/8/8/8/5PPP/6K1 b - - 0 1", 3, "mate 1", "d8d1"},
      {"k7/8/2K5/8/8/8/8/7R w - - 0 1", 4, "mate 2", ""},
      {"7r/8/8/8/8/2k5/8/K7 b - - 0 1", 4, "mate 2", ""},
      {"8/5k2/8/8/8/8/R7/1R4K1 w - - 0 1", 10, "mate 3", ""},
      {"1r4k1/r7/8/8/8/8/5K2/8 b - - 0 1", 10, "mate 3", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fen);
    SearchOutcome r = searchFen(c.fen, c.depth);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(std::string(scoreText(r.score)), c.score);
    if (*c.best) {
      EXPECT_EQ(text(r.best), c.best);
    }
  }
}

TEST(SearchResults, MatedAndStalematedRootsGiveNoMove) {
  const struct {
    const char* fen;
    int score;
  } cases[] = {
      {"R5k1/5ppp/8/8/8/8/5PPP/6K1 b - - 0 1", -MateScore},   // back-rank mate
      {"7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", 0},                  // stalemate
      {"k7/8/1QK5/8/8/8/8/8 b - - 0 1", 0},                   // stalemate in the corner
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fen);
    SearchOutcome r = searchFen(c.fen, 4);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.best, NoMove);
    EXPECT_EQ(r.score, c.score);
    EXPECT_EQ(r.nodes, 0u);
  }
}

// A side in check with no legal evasion is mated, whatever window the horizon sees it with: the
// quiescence evasions (also when the estimate lies far below beta), the PV quiescence, and a PV
// node at depth 1 that hands over to it.
TEST(SearchResults, MateAtTheHorizonScoresAsMate) {
  initEngineForTests();
  clearTables();
  BoardFixture f;
  Position& pos = f.set("R5k1/5ppp/8/8/8/8/5PPP/6K1 b - - 0 1");
  pos.st().nullBits = 3;
  for (int beta : {-400, 0, 400}) {
    SCOPED_TRACE(beta);
    EXPECT_EQ(quiesceEvasionBlack(pos, beta, 0), -MateScore);
    EXPECT_EQ(pvQuiesceBlack(pos, beta - 100, beta, 0), -MateScore);
    EXPECT_EQ(pvSearchBlack(pos, beta - 100, beta, 1), -MateScore);
  }
}

TEST(SearchResults, TacticalBestMoves) {
  const struct {
    const char* fen;
    int depth;
    const char* best;
  } cases[] = {
      {"4k3/8/8/3q4/8/8/8/3QK3 w - - 0 1", 4, "d1d5"},                 // free queen
      {"4k3/pp6/8/3p4/4N3/8/PP6/4K3 b - - 0 1", 4, "d5e4"},                // free knight
      {"r3k3/8/8/1N6/8/8/8/4K3 w - - 0 1", 5, "b5c7"},                 // royal fork
      {"8/P7/8/8/8/8/6k1/K7 w - - 0 1", 4, "a7a8q"},                   // promotion
      {"4k3/8/8/8/3r4/8/3R4/3K4 w - - 0 1", 4, "d2d4"},                // hanging rook
      {"r1bqkb1r/pppp1ppp/2n2n2/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq - 4 4", 4, "h5f7"},
      {"6k1/5ppp/8/8/8/8/1q3PPP/3R2K1 w - - 0 1", 4, "d1d8"},          // mate beats the queen
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fen);
    SearchOutcome r = searchFen(c.fen, c.depth);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(text(r.best), c.best);
  }
}

TEST(SearchResults, NeverReturnsAnIllegalMove) {
  initEngineForTests();
  std::mt19937_64 rng(20261122);
  BoardFixture f;
  for (int game = 0; game < RandomPositions; ++game) {
    Position& scratch = f.set("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
    const int plies = 4 + int(rng() % 60);
    for (int i = 0; i < plies; ++i) {
      MoveWord list[MaxMoves];
      MoveWord* end = generateLegalMoves(scratch, list);
      if (end == list) break;
      makeRootMove(scratch, moveOf(list[rng() % std::size_t(end - list)]));
    }
    const std::string fen = toFen(scratch);
    SCOPED_TRACE(fen);
    MoveWord list[MaxMoves];
    MoveWord* end = generateLegalMoves(scratch, list);
    SearchOutcome r = searchFen(fen, 1 + game % 4);
    ASSERT_TRUE(r.ok);
    if (end == list) {
      EXPECT_EQ(r.best, NoMove);
      continue;
    }
    bool legal = false;
    for (MoveWord* p = list; p < end && !legal; ++p) legal = moveOf(*p) == r.best;
    EXPECT_TRUE(legal) << text(r.best);
  }
}

TEST(SearchResults, SameSearchTwiceGivesTheSameNodeCount) {
  const char* fen = "r1bqkb1r/pppp1ppp/2n2n2/4p3/4P3/2N2N2/PPPP1PPP/R1BQKB1R w KQkq - 4 4";
  SearchOutcome a = searchFen(fen, 6), b = searchFen(fen, 6);
  EXPECT_EQ(a.nodes, b.nodes);
  EXPECT_EQ(a.best, b.best);
}

}  // namespace
}  // namespace tavrin::test
