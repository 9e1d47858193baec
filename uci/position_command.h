// The position command, the FEN reader and the reading of move text.
#pragma once

#include "board/position.h"

namespace tavrin {

// Handles the text after "position ".
void positionCommand(Position& pos, const char* text);
// Reads a FEN (six blank-separated fields) into pos; returns the text after the FEN.
const char* readFen(Position& pos, const char* fen);
// The move named by a 4- or 5-character move text in this position (not checked for legality);
// NoMove when a square of the text is off the board. The fifth character, when there is one, may
// add a promotion.
Move readMoveText(const Position& pos, const char* text);
// Plays each word of the list that matches a legal move; other words are skipped.
void playMoveList(Position& pos, const char* text);

}  // namespace tavrin

namespace tavrin {

// Can a search be started here? Exactly one king per side, at most 16 pieces and 8 pawns per
// side, no pawn on the first or last rank, and the side not to move not in check.
bool positionPlayable(const Position& pos);

}  // namespace tavrin
