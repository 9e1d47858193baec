// The root's stop rules of a timed search: the two flags over sequences of iterations, and the
// decision after an iteration on a table of cases.
#include <gtest/gtest.h>

#include <vector>

#include "common/globals.h"
#include "search/params.h"
#include "search/stop_rules.h"

namespace tavrin::test {
namespace {

struct Iteration {
  Move best;
  int score;
  std::int64_t elapsed;
};

IterationHistory historyOf(const std::vector<Iteration>& its) {
  IterationHistory h;
  for (const Iteration& it : its) recordIteration(h, it.best, it.score, it.elapsed);
  return h;
}

// Iterations with the same best move and score, one a millisecond.
IterationHistory steady(int count, Move best = 100, int score = 20) {
  std::vector<Iteration> its;
  for (int i = 1; i <= count; ++i) its.push_back({best, score, i * 1000});
  return historyOf(its);
}

TEST(StopRules, RecordCountsStabilityChangesAndDrops) {
  IterationHistory h = historyOf({{7, 30, 1000}, {7, 35, 3000}, {9, 10, 7000}, {9, 12, 15000}});
  EXPECT_EQ(h.completed, 4);
  EXPECT_EQ(h.stableIterations, 1);
  EXPECT_EQ(h.sinceBestMoveChange, 1);
  EXPECT_EQ(h.scoreDrop, 0);
  EXPECT_EQ(h.scoreChange, 2);
  EXPECT_EQ(h.lastDuration, 8000);
  EXPECT_EQ(h.finishedAt, 15000);
  recordIteration(h, 9, -10, 30000);
  EXPECT_EQ(h.scoreDrop, 22);
  EXPECT_EQ(h.scoreChange, 22);
  EXPECT_EQ(h.stableIterations, 2);
}

// The first flag: a fail-low, or a score clearly below the last iteration's.
TEST(StopRules, ScoreFallsOnFailLowOrADrop) {
  const int margin = params::ScoreDropMargin;
  EXPECT_FALSE(scoreFalling(historyOf({{1, 50, 1}, {1, 50 - margin + 1, 2}}), false));
  EXPECT_TRUE(scoreFalling(historyOf({{1, 50, 1}, {1, 50 - margin, 2}}), false));
  EXPECT_TRUE(scoreFalling(historyOf({{1, 50, 1}, {1, 80, 2}}), true));
  EXPECT_FALSE(scoreFalling(historyOf({{1, 50, 1}}), false));   // nothing to fall from
}

// The second flag: a new best move holds the stop for that iteration and the next one.
TEST(StopRules, BestMoveUnsettledForTwoIterations) {
  static_assert(params::UnsettledIterations == 2, "the sequence below assumes two");
  IterationHistory h = steady(3, 5);
  EXPECT_FALSE(bestMoveUnsettled(h, false));
  EXPECT_TRUE(bestMoveUnsettled(h, true));   // changed during the iteration in progress
  recordIteration(h, 6, 20, 4000);
  EXPECT_TRUE(bestMoveUnsettled(h, false));
  recordIteration(h, 6, 20, 5000);
  EXPECT_TRUE(bestMoveUnsettled(h, false));
  recordIteration(h, 6, 20, 6000);
  EXPECT_FALSE(bestMoveUnsettled(h, false));
  EXPECT_FALSE(bestMoveUnsettled(steady(1), false));   // the first iteration has nothing to change from
}

struct StopCase {
  const char* name;
  IterationHistory history;
  std::int64_t elapsed;
  int rootMoves;
  bool held;
  bool stop;
};

TEST(StopRules, DecisionAfterAnIteration) {
  // Soft target 100 ms: quarter 25, three-quarter 75, hard 330.
  const StopTargets t{25000, 75000, 100000, 330000};
  const int stable = params::StableIterations;
  IterationHistory stableLong = steady(stable + 1);
  IterationHistory stableShort = steady(stable);
  IterationHistory stableMoving = historyOf({{1, 0, 1000}});
  for (int i = 0; i < stable; ++i) recordIteration(stableMoving, 1, (i + 1) * (params::StableScoreMargin + 1), 2000 + i);
  // A held search whose last iteration took 100 ms, and the last start that lets the next one end
  // by the hard limit.
  IterationHistory slow = historyOf({{1, 0, 50000}, {2, 0, 150000}});
  const std::int64_t lastStart = t.hard - params::NextIterationGrowth * slow.lastDuration;
  ASSERT_GT(lastStart, t.threeQuarter);
  ASSERT_LT(lastStart, t.soft * params::HeldSoftTargetFactor);

  const StopCase cases[] = {
      {"one move, before the quarter", steady(1), 24999, 1, false, false},
      {"one move, at the quarter", steady(1), 25000, 1, true, true},
      {"stable long enough, at the quarter", stableLong, 25000, 30, false, true},
      {"stable long enough, before the quarter", stableLong, 24999, 30, false, false},
      {"stable long enough but held", stableLong, 25000, 30, true, false},
      {"stable one iteration short", stableShort, 25000, 30, false, false},
      {"stable move, moving score", stableMoving, 25000, 30, false, false},
      {"settled, before three quarters", steady(2), 74999, 30, false, false},
      {"settled, at three quarters", steady(2), 75000, 30, false, true},
      {"held past three quarters", steady(2), 90000, 30, true, false},
      {"held, at three soft targets", steady(2), 300000, 30, true, true},
      {"held, next iteration fits", slow, lastStart, 30, true, false},
      {"held, next iteration would pass the hard limit", slow, lastStart + 1, 30, true, true},
      {"held, before three quarters, iteration too long", slow, 74000, 30, true, false},
  };
  for (const StopCase& c : cases)
    EXPECT_EQ(stopAfterIteration(c.history, t, c.elapsed, c.rootMoves, c.held), c.stop) << c.name;
}

// Without a clock (movetime, depth, nodes) only the poll ends the search.
TEST(StopRules, NoTargetsNoSoftStop) {
  const StopTargets none{NoLimit, NoLimit, NoLimit, 990000};
  for (bool held : {false, true}) {
    EXPECT_FALSE(stopAfterIteration(steady(20), none, 980000, 30, held));
    EXPECT_FALSE(stopAfterIteration(steady(20), none, 980000, 1, held));
  }
}

}  // namespace
}  // namespace tavrin::test
