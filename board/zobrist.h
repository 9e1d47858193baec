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

// The 64-bit value drawn last (after the en-passant keys), for the evaluation's own random
// generator; evalNoiseState turns it into that generator's starting state.
extern std::uint64_t EvalNoiseSeed;
constexpr std::uint64_t evalNoiseState(std::uint64_t seed) {
  return seed * 0xC14EC464DF738005ULL + 0x85EF15402B4E274FULL;
}

// The key generator: a 64-bit linear congruential state; each step yields bits 32..47 of the
// new state, and a 64-bit number is four yields, most significant first.
struct KeyGenerator {
  std::uint64_t state = 1;
  std::uint16_t step() {
    state = state * 0x3C514B7BD8BC3E2DULL + 0x7FC59FA3ULL;
    return std::uint16_t(state >> 32);
  }
  std::uint64_t next64() {
    std::uint64_t r = std::uint64_t(step()) << 48;
    r |= std::uint64_t(step()) << 32;
    r |= std::uint64_t(step()) << 16;
    return r | step();
  }
};

// Draws every key in its fixed order from the generator with state 1.
void initZobrist();

}  // namespace tavrin
