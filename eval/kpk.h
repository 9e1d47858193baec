// The king-and-pawn-against-king bitbase, built at start-up by retrograde iteration.
#pragma once

namespace tavrin {

void buildKpkBitbase();

// Is the position won for the side with the pawn? Squares as on the board; pawnIsWhite tells the
// pawn's colour and strongToMove whether the side with the pawn is to move.
bool kpkWins(int strongKing, int pawn, int weakKing, bool pawnIsWhite, bool strongToMove);

}  // namespace tavrin
