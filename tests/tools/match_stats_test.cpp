// Match statistics, time controls and the clock, against hand-computed values.
#include <gtest/gtest.h>

#include <cmath>

#include "tools/match/stats.h"
#include "tools/match/time_control.h"

using namespace tavrin::match;

TEST(MatchStats, IntervalsAndLlr) {
  // 50 pairs: 107 half-points of 200, pair scores mean 0.535, variance 0.055025.
  Tally t;
  t.wins = 37, t.draws = 33, t.losses = 30;
  t.penta = {2, 10, 20, 15, 3};
  EloEstimate e = estimateElo(t);
  EXPECT_NEAR(e.elo, 24.3603, 1e-3);
  EXPECT_NEAR(e.lower, -20.8848, 1e-3);   // score 0.535 -+ 1.96 sqrt(0.055025 / 50)
  EXPECT_NEAR(e.upper, 70.4506, 1e-3);
  EXPECT_EQ(formatElo(e.elo), "+24.4");
  EXPECT_EQ(formatElo(estimateElo(Tally{10, 0, 0, {}}).elo), "+inf");
  EXPECT_NEAR(sprtLlr(t, 0, 5), 0.205310, 1e-5);
  EXPECT_NEAR(sprtLlr(t, -5, 5), 0.457661, 1e-5);
  EXPECT_NEAR(SprtSettings().lowerBound(), -2.944439, 1e-6);
  EXPECT_NEAR(SprtSettings().upperBound(), 2.944439, 1e-6);
  // Without pairs the interval comes from the games, and there is nothing to test yet.
  Tally games;
  games.wins = 30, games.draws = 40, games.losses = 30;
  e = estimateElo(games);
  EXPECT_NEAR(e.lower, -53.1580, 1e-3);
  EXPECT_NEAR(e.upper, 53.1580, 1e-3);
  EXPECT_EQ(sprtLlr(games, 0, 5), 0.0);
  Tally same;
  same.penta = {0, 0, 7, 0, 0};
  EXPECT_EQ(sprtLlr(same, 0, 5), 0.0);   // no spread
}

TEST(MatchClock, ParsesTimeControls) {
  const struct {
    const char* text;
    long long base, inc;
    int moves;
  } good[] = {
      {"10+0.1", 10000, 100, 0}, {"5+0.05", 5000, 50, 0}, {"60", 60000, 0, 0},
      {"40/60+0.5", 60000, 500, 40}, {"0.5", 500, 0, 0},
  };
  for (const auto& c : good) {
    TimeControl tc;
    ASSERT_TRUE(parseClock(c.text, tc)) << c.text;
    EXPECT_EQ(tc.baseMs, c.base) << c.text;
    EXPECT_EQ(tc.incMs, c.inc) << c.text;
    EXPECT_EQ(tc.movesPerPeriod, c.moves) << c.text;
    EXPECT_EQ(tc.pgnText(), c.text);
  }
  for (const char* text : {"", "+", "10+", "1a+2", "0+0", "0.5/10"}) {
    TimeControl tc;
    EXPECT_FALSE(parseClock(text, tc)) << text;
  }
  TimeControl st;
  ASSERT_TRUE(parseSeconds("0.1", st.moveTimeMs));
  EXPECT_EQ(st.pgnText(), "0.1/move");
  EXPECT_EQ(TimeControl().pgnText(), "-");
}

TEST(MatchClock, ChargesMovesAndDetectsTimeLoss) {
  TimeControl tc;
  ASSERT_TRUE(parseClock("1+0.1", tc));
  GameClock clock;
  clock.reset(tc);
  EXPECT_EQ(clock.allowanceMs(), 1000);
  EXPECT_TRUE(clock.charge(300, 50));
  EXPECT_EQ(clock.remainingMs(), 800);
  EXPECT_TRUE(clock.charge(840, 50));   // 40 ms over, forgiven by the margin
  EXPECT_EQ(clock.remainingMs(), 101);  // never below 1 ms, then the increment
  EXPECT_FALSE(clock.charge(200, 50));  // 99 ms over: lost on time

  ASSERT_TRUE(parseClock("2/1", tc));
  clock.reset(tc);
  EXPECT_EQ(clock.movesToGo(), 2);
  EXPECT_TRUE(clock.charge(400, 0));
  EXPECT_EQ(clock.movesToGo(), 1);
  EXPECT_TRUE(clock.charge(400, 0));
  EXPECT_EQ(clock.movesToGo(), 2);      // a new period: the base is added again
  EXPECT_EQ(clock.remainingMs(), 1200);

  TimeControl fixed;
  fixed.moveTimeMs = 100;
  clock.reset(fixed);
  EXPECT_TRUE(clock.charge(140, 50));
  EXPECT_FALSE(clock.charge(151, 50));
  TimeControl nodes;
  nodes.nodes = 1000;
  clock.reset(nodes);
  EXPECT_TRUE(clock.charge(100000, 50));   // untimed
}
