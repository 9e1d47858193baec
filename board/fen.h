// A small FEN reader and writer for tools, tests and the match runner.
#pragma once

#include <string>

#include "board/position.h"

namespace tavrin {

// Sets pos (already prepared by initPosition) from a FEN. Returns false, leaving the position
// unusable until the next successful set-up, when the text is not a playable position: bad
// fields, a king missing or doubled, pawns on the first or last rank, more than sixteen men
// or eight pawns on a side, or the side not to move in check. The move counters may be left
// out. Castling rights without their king and rook, and an en-passant square no pawn can
// capture on, are dropped, as a move would have left them.
bool setFromFen(Position& pos, const char* fen);

// The FEN of a position (bishops print as B/b whatever their code).
std::string toFen(const Position& pos);

}  // namespace tavrin
