// The packed piece-square table by piece code and square, White's point of view.
#pragma once

#include "board/piece_square.h"

namespace tavrin {

// Builds the White rows from their short arrays, then the Black rows by the half-turn rule.
void initPieceSquareTables();

}  // namespace tavrin
