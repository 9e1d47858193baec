// The search with several threads: the same answers to positions with one right move, every
// thread at work, and one thread afterwards exactly the search it was before.
#include "search/split_point.h"
#include "tests/search/search_support.h"

namespace tavrin::test {
namespace {

// Runs the body with the given thread count and goes back to one thread after it.
template <class Body>
void withThreads(int threads, Body body) {
  initEngineForTests();
  setThreadCount(threads);
  body();
  setThreadCount(1);
}

TEST(Threads, SeveralThreadsFindTheOneRightMove) {
  const struct {
    const char* fen;
    int depth;
    const char* best;
  } cases[] = {
      {"8/5k2/8/8/8/8/R7/1R4K1 w - - 0 1", 12, ""},                               // mate in 3
      {"1r4k1/r7/8/8/8/8/5K2/8 b - - 0 1", 12, ""},                               // mate in 3
      {"6k1/5ppp/8/8/8/8/1q3PPP/3R2K1 w - - 0 1", 12, "d1d8"},                  // mate beats the queen
      {"r1bqkb1r/pppp1ppp/2n2n2/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq - 4 4", 12, "h5f7"},  // scholar's mate
  };
  for (int threads : {2, 4}) {
    withThreads(threads, [&] {
      for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.fen) + " with " + std::to_string(threads) + " threads");
        const SearchOutcome r = searchFen(c.fen, c.depth);
        ASSERT_TRUE(r.ok);
        EXPECT_GT(r.score, MateScore - 100);
        if (*c.best) {
          EXPECT_EQ(text(r.best), c.best);
        }
      }
    });
  }
}

TEST(Threads, EveryThreadSearchesAndTheCountsAddUp) {
  withThreads(3, [] {
    const SearchOutcome r =
        searchFen("r1bq1rk1/pp2bppp/2n2n2/3p4/3P4/2NB1N2/PP3PPP/R1BQ1RK1 w - - 0 10", scaled(14, 11));
    ASSERT_TRUE(r.ok);
    EXPECT_NE(r.best, NoMove);
    // The count covers the other threads' records too.
    EXPECT_GT(r.nodes, SearchRecords[0].nodes);
    EXPECT_GT(SearchRecords[1].nodes + SearchRecords[2].nodes, 0u);
  });
}

TEST(Threads, OneThreadAgainIsTheSameSearch) {
  const char* fen = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";
  constexpr int Depth = scaled(9, 8);
  const SearchOutcome before = searchFen(fen, Depth);
  for (int threads : {2, 5}) withThreads(threads, [&] { searchFen(fen, Depth); });
  const SearchOutcome after = searchFen(fen, Depth);
  EXPECT_EQ(after.nodes, before.nodes);
  EXPECT_EQ(after.best, before.best);
  EXPECT_EQ(after.score, before.score);
}

}  // namespace
}  // namespace tavrin::test
