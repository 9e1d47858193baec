// The evaluation driver: static scores written into the current state entry.
#pragma once

#include "board/position.h"

namespace tavrin {

// Evaluates the position after lastMove (0 after a null move or at the root). lower and upper
// are the caller's window from the point of view of the side that made lastMove. Writes
// staticEval, positionalEval, lazyCount, decisiveEval, evalFlags and the attack summary.
void evaluate(Position& pos, int lower, int upper, Move lastMove);

// Asks the processor for the evaluation cache, pawn and material lines of these keys.
void prefetchEvaluation(Key key, Key pawnKey, std::uint32_t materialKey);

// Full-window evaluation used by set-up and the root.
inline void evaluateFull(Position& pos) { evaluate(pos, -32767, 32767, 0); }

// Builds the evaluation's constant tables (material table from Engine's piece values, the KPK
// bitbase). Start-up, after the piece-square tables; later calls do nothing.
void initEvaluation();

// Clears the evaluation cache, the gain table and the pawn table (new game).
void clearEvaluationTables();
// Clears only the gain table (first search of a game).
void clearGainTable();
// (Re)allocates and clears the pawn hash table: megabytes rounded down to a power of two.
void resizePawnTable(int megabytes);
// Seeds the evaluation's random generator of a record (start-up).
void seedEvaluationNoise(Position& pos);

}  // namespace tavrin
