// When a timed search ends between iterations, and the two flags that hold back the input
// poll's three-quarter-target stop. The root records every completed iteration here; the rules
// read only that record and the targets, so they can be tested without a search.
#pragma once

#include <cstdint>

#include "board/types.h"
#include "search/params.h"

namespace tavrin {

// What the root knows about its completed iterations.
struct IterationHistory {
  int completed = 0;                // iterations completed so far
  Move bestMove = 0;                // best move of the last completed iteration
  int score = 0;                    // its score
  int scoreDrop = 0;                // how far that score fell below the one before (0 if it rose)
  int scoreChange = 0;              // |score - the one before|
  int stableIterations = 0;         // iterations in a row that ended with the same best move
  int sinceBestMoveChange = 0;      // iterations completed since one ended with a new best move
  std::int64_t finishedAt = 0;      // when the last one completed (µs since the search started)
  std::int64_t lastDuration = 0;    // how long it took
};

// The numbers the rules use; the engine plays with the defaults of search/params.h.
struct StopRuleParams {
  int stableIterations = params::StableIterations;
  int stableScoreMargin = params::StableScoreMargin;
  int scoreDropMargin = params::ScoreDropMargin;
  int unsettledIterations = params::UnsettledIterations;
  int heldSoftTargetFactor = params::HeldSoftTargetFactor;
  int nextIterationGrowth = params::NextIterationGrowth;
};

// Adds a completed iteration to the record.
void recordIteration(IterationHistory& h, Move best, int score, std::int64_t elapsed);

// The time targets of one search (µs since its start); NoLimit where the go command set none.
struct StopTargets {
  std::int64_t quarter;
  std::int64_t threeQuarter;
  std::int64_t soft;
  std::int64_t hard;
};

// The flags' values between iterations. The score is falling when the iteration failed low at the
// root (or, when the rules say so, ended clearly below the one before); the best move is unsettled
// when it changed during the iteration (or, when the rules say so, in one of the last few before it).
bool scoreFalling(const IterationHistory& h, bool failedLow, const StopRuleParams& p = {});
bool bestMoveUnsettled(const IterationHistory& h, bool changedNow, const StopRuleParams& p = {});

// Should the search end after the iteration just recorded? `held`: either flag is set.
// `rootMoves`: the number of legal root moves. (The poll applies the hard limit and the plain
// three-quarter stop itself.)
bool stopAfterIteration(const IterationHistory& h, const StopTargets& t, std::int64_t elapsed, int rootMoves,
                        bool held, const StopRuleParams& p = {});

}  // namespace tavrin
