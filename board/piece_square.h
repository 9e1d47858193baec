// The packed piece-square table by piece code and square, White's point of view. The evaluation
// fills it at start-up; make and unmake keep each position's sum of it up to date.
#pragma once

#include "board/types.h"

namespace tavrin {

inline Packed PieceSquare[16][64];

}  // namespace tavrin
