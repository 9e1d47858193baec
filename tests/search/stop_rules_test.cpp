// The root's stop rules of a timed search: the two flags over sequences of iterations, and the
// decision after an iteration on a table of cases, with every rule switched on (the engine's own
// numbers may leave some of them off).
#include <gtest/gtest.h>

#include <vector>

#include "common/globals.h"
#include "search/params.h"
#include "search/stop_rules.h"

namespace tavrin::test {
namespace {

// Every rule on: eight stable iterations within 10 centipawns, a drop of 16, a new best move
// unsettled for one more iteration, run on to three soft targets, and an iteration expected to
// take as long as the last.
constexpr StopRuleParams Rules{8, 10, 16, 1, 3, 1};

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

// The first flag: a fail-low, or a score clearly below the last iteration's.
TEST(StopRules, ScoreFallsOnFailLowOrADrop) {
  const int margin = Rules.scoreDropMargin;
  EXPECT_FALSE(scoreFalling(historyOf({{1, 50, 1}, {1, 50 - margin + 1, 2}}), false, Rules));
  EXPECT_TRUE(scoreFalling(historyOf({{1, 50, 1}, {1, 50 - margin, 2}}), false, Rules));
  EXPECT_TRUE(scoreFalling(historyOf({{1, 50, 1}, {1, 80, 2}}), true, Rules));
  EXPECT_FALSE(scoreFalling(historyOf({{1, 50, 1}}), false, Rules));   // nothing to fall from
  // The engine's numbers: only a fail-low counts, however far the score drops.
  EXPECT_FALSE(scoreFalling(historyOf({{1, 20000, 1}, {1, -20000, 2}}), false));
}

// The second flag: a new best move holds the stop during the iteration that found it and for as
// many completed iterations after it as the rules say.
TEST(StopRules, BestMoveUnsettledForTheGivenIterations) {
  for (int unsettled : {0, 1, 2, 3}) {
    StopRuleParams p = Rules;
    p.unsettledIterations = unsettled;
    IterationHistory h = steady(3, 5);
    EXPECT_FALSE(bestMoveUnsettled(h, false, p)) << unsettled;
    EXPECT_TRUE(bestMoveUnsettled(h, true, p)) << unsettled;   // changed in the iteration in progress
    recordIteration(h, 6, 20, 4000);                            // the iteration that changed it
    for (int after = 0; after < 5; ++after) {
      EXPECT_EQ(bestMoveUnsettled(h, false, p), after < unsettled) << unsettled << " " << after;
      recordIteration(h, 6, 20, 5000 + after);
    }
  }
  EXPECT_FALSE(bestMoveUnsettled(steady(1), false, Rules));   // the first iteration has nothing to change from
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
  const int stable = Rules.stableIterations;
  IterationHistory stableLong = steady(stable + 1);
  IterationHistory stableShort = steady(stable);
  IterationHistory stableMoving = historyOf({{1, 0, 1000}});
  for (int i = 0; i < stable; ++i) recordIteration(stableMoving, 1, (i + 1) * (Rules.stableScoreMargin + 1), 2000 + i);
  // A held search whose last iteration took 100 ms, and the last start that lets the next one end
  // by the hard limit.
  IterationHistory slow = historyOf({{1, 0, 50000}, {2, 0, 150000}});
  const std::int64_t lastStart = t.hard - Rules.nextIterationGrowth * slow.lastDuration;
  ASSERT_GT(lastStart, t.threeQuarter);
  ASSERT_LT(lastStart, t.soft * Rules.heldSoftTargetFactor);

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
    EXPECT_EQ(stopAfterIteration(c.history, t, c.elapsed, c.rootMoves, c.held, Rules), c.stop) << c.name;
}

// Without a clock (movetime, depth, nodes) only the poll ends the search.
TEST(StopRules, NoTargetsNoSoftStop) {
  const StopTargets none{NoLimit, NoLimit, NoLimit, 990000};
  for (bool held : {false, true}) {
    for (const StopRuleParams& p : {Rules, StopRuleParams{}}) {
      EXPECT_FALSE(stopAfterIteration(steady(20), none, 980000, 30, held, p));
      EXPECT_FALSE(stopAfterIteration(steady(20), none, 980000, 1, held, p));
    }
  }
}

// The engine's own numbers: a held search runs on to three soft targets whatever the hard limit,
// and an unheld one stops at three quarters.
TEST(StopRules, EngineNumbers) {
  const StopTargets t{25000, 75000, 100000, 330000};
  const IterationHistory slow = historyOf({{1, 0, 50000}, {2, 0, 250000}});
  EXPECT_FALSE(stopAfterIteration(slow, t, 299999, 30, true));
  EXPECT_TRUE(stopAfterIteration(slow, t, 300000, 30, true));
  EXPECT_TRUE(stopAfterIteration(slow, t, 75000, 30, false));
  EXPECT_TRUE(stopAfterIteration(steady(params::StableIterations + 1), t, 25000, 30, false));
  EXPECT_FALSE(stopAfterIteration(steady(params::StableIterations), t, 25000, 30, false));
}

}  // namespace
}  // namespace tavrin::test
