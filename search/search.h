// The interface between the command layer and the search.
#pragma once

#include "board/position.h"

namespace tavrin {

// Thrown by the stop handler (stop, ucinewgame, a spent limit) while a search runs; caught by
// the search starter, which then runs the finish step. The search runs on its own record, so
// unwinding it needs no clean-up.
struct SearchAborted {};

// Result of the root search, read by the output and the finish step.
struct RootResult {
  Move bestMove = 0;
  int bestScore = 0;
  int bestDepth = 0;          // half-plies at which bestMove was found
  int lastIterationScore = 0;
  int iterationDepth = 0;     // depth (half-plies) of the iteration in progress / last one
  int completedDepth = 0;     // deepest completed iteration (half-plies)
  int selDepth = 0;
};
extern RootResult Root;

// The search records of the parallel search; [0] is the one the search starter prepares.
extern Position SearchRecords[MaxThreads];

// Iterative deepening for the side to move of pos (dispatches to the colour's driver).
void runRootSearch(Position& pos);

// Clears the history table to its start value (2048 in every entry).
void clearHistory();

}  // namespace tavrin
