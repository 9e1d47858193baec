// Bit operations on bitboards and the constant square, file and rank masks.
#pragma once

#include <bit>

#include "board/types.h"

namespace tavrin {

// Lowest and highest set bit of a non-zero bitboard, and the number of set bits.
inline int bitScanForward(Bitboard b) { return std::countr_zero(b); }
inline int bitScanReverse(Bitboard b) { return 63 - std::countl_zero(b); }
inline int popCount(Bitboard b) { return std::popcount(b); }

// Removes and returns the lowest square of a non-empty set.
inline int popLowest(Bitboard& b) {
  int sq = bitScanForward(b);
  b &= b - 1;
  return sq;
}

constexpr Bitboard bit(int sq) { return Bitboard(1) << sq; }
constexpr bool moreThanOne(Bitboard b) { return (b & (b - 1)) != 0; }

constexpr Bitboard FileA = 0x0101010101010101ULL;
constexpr Bitboard FileH = FileA << 7;
constexpr Bitboard Rank1 = 0xFFULL;
constexpr Bitboard Rank2Mask = Rank1 << 8;
constexpr Bitboard Rank3Mask = Rank1 << 16;
constexpr Bitboard Rank4Mask = Rank1 << 24;
constexpr Bitboard Rank5Mask = Rank1 << 32;
constexpr Bitboard Rank6Mask = Rank1 << 40;
constexpr Bitboard Rank7Mask = Rank1 << 48;
constexpr Bitboard Rank8 = Rank1 << 56;

constexpr Bitboard fileMask(int file) { return FileA << file; }
constexpr Bitboard rankMask(int rank) { return Rank1 << (8 * rank); }

// Shifts of a whole set by one step; pawn moves and pawn attacks are built from these.
template <int Delta>
constexpr Bitboard shift(Bitboard b) {
  if constexpr (Delta == 8) return b << 8;
  else if constexpr (Delta == -8) return b >> 8;
  else if constexpr (Delta == 16) return b << 16;
  else if constexpr (Delta == -16) return b >> 16;
  else if constexpr (Delta == 9) return (b & ~FileH) << 9;
  else if constexpr (Delta == 7) return (b & ~FileA) << 7;
  else if constexpr (Delta == -7) return (b & ~FileH) >> 7;
  else if constexpr (Delta == -9) return (b & ~FileA) >> 9;
  else if constexpr (Delta == 1) return (b & ~FileH) << 1;
  else if constexpr (Delta == -1) return (b & ~FileA) >> 1;
  else static_assert(Delta == 8, "unsupported shift");
}

// Squares attacked by a set of pawns of the given colour.
template <Color Us>
constexpr Bitboard pawnAttacks(Bitboard pawns) {
  if constexpr (Us == White) return shift<7>(pawns) | shift<9>(pawns);
  else return shift<-9>(pawns) | shift<-7>(pawns);
}

}  // namespace tavrin
