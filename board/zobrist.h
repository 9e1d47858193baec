// Zobrist keys and the key generator that draws them at start-up.
#pragma once

#include "board/types.h"

namespace tavrin {

struct ZobristKeys {
  Key pieceSquare[16][64];   // by piece code and square (codes 0 and 8 drawn but unused)
  Key castling[16];          // by rights set; a set's key is the xor of its single rights
  Key enPassant[8];          // by file of the en-passant square
  Key side;                  // xored in when White is to move
};
extern ZobristKeys Zobrist;

constexpr Key PawnKeySalt = 0x74D3C012A8BF965EULL;

// The 64-bit seed drawn last, for the evaluation's own random generator.
extern std::uint64_t EvalNoiseSeed;

// Draws every key in its fixed order from the generator with state 1.
void initZobrist();

}  // namespace tavrin
