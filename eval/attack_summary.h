// The attack summary: attacked squares and king attackers that the search reads after a make.
#pragma once

#include "board/position.h"

namespace tavrin {

// Fills attackedByWhite, attackedByBlack, whiteKingAttackers, blackKingAttackers, pinned,
// checkCandidates, quietExemptions, exchangeExclusion and pawnThreats of the current entry.
void computeAttackSummary(Position& pos);

}  // namespace tavrin
