// The packed piece-square table by piece code and square, White's point of view.
#pragma once

#include "board/types.h"

namespace tavrin {

extern Packed PieceSquare[16][64];

// Builds the White rows from their short arrays, then the Black rows by the half-turn rule.
void initPieceSquareTables();

}  // namespace tavrin
