// The root's stop rules between iterations of a timed search.
#include "search/stop_rules.h"

#include <cstdlib>

#include "common/globals.h"

namespace tavrin {

namespace {
// The first iteration has no best move to change from.
constexpr int NoChangeYet = 1 << 20;
}  // namespace

void recordIteration(IterationHistory& h, Move best, int score, std::int64_t elapsed) {
  const bool first = h.completed == 0;
  const int change = first ? 0 : score - h.score;
  h.scoreDrop = change < 0 ? -change : 0;
  h.scoreChange = std::abs(change);
  if (!first && best == h.bestMove) {
    ++h.stableIterations;
    ++h.sinceBestMoveChange;
  } else {
    h.stableIterations = 0;
    h.sinceBestMoveChange = first ? NoChangeYet : 0;
  }
  h.bestMove = best;
  h.score = score;
  h.lastDuration = elapsed - h.finishedAt;
  h.finishedAt = elapsed;
  ++h.completed;
}

bool scoreFalling(const IterationHistory& h, bool failedLow, const StopRuleParams& p) {
  return failedLow || h.scoreDrop >= p.scoreDropMargin;
}

bool bestMoveUnsettled(const IterationHistory& h, bool changedNow, const StopRuleParams& p) {
  return changedNow || h.sinceBestMoveChange < p.unsettledIterations;
}

bool stopAfterIteration(const IterationHistory& h, const StopTargets& t, std::int64_t elapsed, int rootMoves,
                        bool held, const StopRuleParams& p) {
  // Nothing to choose, or a choice that has not moved for many iterations: a quarter is enough.
  if (elapsed >= t.quarter) {
    if (rootMoves == 1) return true;
    if (!held && h.stableIterations >= p.stableIterations && h.scoreChange <= p.stableScoreMargin)
      return true;
  }
  if (!held) return elapsed >= t.threeQuarter;
  // An unsettled search runs on past the three-quarter target, up to a few soft targets, but does
  // not begin an iteration that would most likely be cut off by the hard limit.
  if (t.soft != NoLimit && elapsed >= t.soft * p.heldSoftTargetFactor) return true;
  if (p.nextIterationGrowth > 0 && elapsed >= t.threeQuarter && t.hard != NoLimit &&
      elapsed + h.lastDuration * p.nextIterationGrowth > t.hard)
    return true;
  return false;
}

}  // namespace tavrin
