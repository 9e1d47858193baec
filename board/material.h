// Per-piece-code constants of the material signature and the unusual-material test.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "board/bitboard.h"
#include "board/position.h"

namespace tavrin {

// Low byte: game phase (knight and bishop 1, rook 3, queen 6); above it a mixed-radix index
// into the material table.
constexpr std::uint32_t MaterialConstant[16] = {
    0, 1327104, 147457, 0, 9217, 18433, 1027, 262,
    0, 11943936, 442369, 0, 36865, 73729, 3075, 518,
};
constexpr std::uint32_t UnusualMaterial = 0x80000000u;
constexpr std::uint32_t PhaseBits = 0xFF;          // the low byte: the game phase
constexpr int MaterialIndexShift = 8;              // the table index starts above it

// No knight, bishop, rook or queen on the board: the phase byte adds up to 0.
constexpr bool kingsAndPawnsOnly(std::uint32_t materialKey) { return (materialKey & PhaseBits) == 0; }

// True when either side has material the table cannot index: two queens, three rooks, two
// bishops on one square colour or three knights.
inline bool unusualMaterial(const Position& pos) {
  for (int offset : {0, 8}) {
    if (popCount(pos.pieces[Queen + offset]) >= 2 || popCount(pos.pieces[Rook + offset]) >= 3 ||
        popCount(pos.pieces[BishopLight + offset]) >= 2 ||
        popCount(pos.pieces[BishopDark + offset]) >= 2 || popCount(pos.pieces[Knight + offset]) >= 3)
      return true;
  }
  return false;
}

}  // namespace tavrin
