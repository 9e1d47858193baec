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

// The pieces of both FEN readers (the strict one above, the engine's position command):
// The square two characters name, file a-h then rank 1-8; -1 for anything else (the position
// command's move text reads its squares with it too). Nothing past a character outside those
// ranges is read, so a text that ends early is safe.
constexpr int squareFromText(const char* text) {
  return text[0] >= 'a' && text[0] <= 'h' && text[1] >= '1' && text[1] <= '8'
             ? makeSquare(text[0] - 'a', text[1] - '1')
             : -1;
}
// The piece code a placement letter puts on a square (a bishop by the colour of its square), 0
// for any other character.
int pieceFromLetter(char letter, int square);
// The rights of a castling field: "-" or letters of "KQkq". With inOrder only the letters in
// that order, each once, are read; otherwise any order. -1 for anything else.
int readCastlingField(const char* field, bool inOrder);
// An en-passant square is real only behind a pawn of the side not to move that has just made its
// double step (the square and the pawn's origin empty) and beside which a pawn of the side to
// move stands to take it; the make records no other.
bool enPassantPlausible(const std::uint8_t (&board)[64], int sideToMove, int square);

}  // namespace tavrin
