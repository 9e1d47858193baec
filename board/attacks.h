// Attack tables: rotated-occupancy lookups for sliders, plain tables for knights and kings.
#pragma once

#include "board/bitboard.h"
#include "board/position.h"

namespace tavrin {

// Per-square tables of the rotated numberings (built once by initAttackTables).
struct RotationTables {
  Bitboard setFileMajor[64], clearFileMajor[64];
  Bitboard setAntiDiag[64], clearAntiDiag[64];
  Bitboard setDiag[64], clearDiag[64];
  std::uint8_t rankShift[64], fileShift[64], antiDiagShift[64], diagShift[64];
  std::uint8_t fileMajorIndex[64], antiDiagIndex[64], diagIndex[64];  // square -> rotated index
  std::uint8_t fileMajorSquare[64], antiDiagSquare[64], diagSquare[64];  // rotated index -> square
  std::uint8_t diagLength[64], diagPlace[64];  // by rotated index, for both diagonal numberings
};

struct AttackTables {
  Bitboard rank[64][64];
  Bitboard file[64][64];
  Bitboard antiDiag[64][64];
  Bitboard diag[64][64];
  Bitboard knight[64];
  Bitboard king[64];
  Bitboard between[64][64];    // squares strictly between two squares on a line, else 0
  Bitboard line[64][64];       // the whole line through two squares on a line, else 0
  Bitboard pawn[2][64];        // squares a pawn of the colour (index = Color) attacks from s
  // King squares next to k that a slider checking from c does not x-ray through the king:
  // the king attacks of k minus the square beyond k on the line from c (all of them when c
  // and k share no line).
  Bitboard kingEscape[64][64];
};

extern RotationTables Rot;
extern AttackTables Attacks;

// Builds every board table: rotations, attacks, line tables, castling masks and the Zobrist keys.
void initBoardTables();

inline Bitboard knightAttacks(int sq) { return Attacks.knight[sq]; }
inline Bitboard kingAttacks(int sq) { return Attacks.king[sq]; }

inline Bitboard rookAttacks(int sq, const Position& pos) {
  return Attacks.rank[sq][(pos.occupied >> Rot.rankShift[sq]) & 63] |
         Attacks.file[sq][(pos.occupiedFileMajor >> Rot.fileShift[sq]) & 63];
}
inline Bitboard bishopAttacks(int sq, const Position& pos) {
  return Attacks.antiDiag[sq][(pos.occupiedAntiDiag >> Rot.antiDiagShift[sq]) & 63] |
         Attacks.diag[sq][(pos.occupiedDiag >> Rot.diagShift[sq]) & 63];
}
inline Bitboard queenAttacks(int sq, const Position& pos) {
  return rookAttacks(sq, pos) | bishopAttacks(sq, pos);
}

// The four occupancy boards of a position as one value, so that exchange and legality code can
// take pieces off a copy and still look sliders up through the rotated tables.
struct Occupancy {
  Bitboard plain, fileMajor, antiDiag, diag;

  static Occupancy of(const Position& pos) {
    return {pos.occupied, pos.occupiedFileMajor, pos.occupiedAntiDiag, pos.occupiedDiag};
  }
  // Toggles one square in all four boards.
  void toggle(int sq) {
    plain ^= Bitboard(1) << sq;
    fileMajor ^= Rot.setFileMajor[sq];
    antiDiag ^= Rot.setAntiDiag[sq];
    diag ^= Rot.setDiag[sq];
  }
};

inline Bitboard rookAttacks(int sq, const Occupancy& o) {
  return Attacks.rank[sq][(o.plain >> Rot.rankShift[sq]) & 63] |
         Attacks.file[sq][(o.fileMajor >> Rot.fileShift[sq]) & 63];
}
inline Bitboard bishopAttacks(int sq, const Occupancy& o) {
  return Attacks.antiDiag[sq][(o.antiDiag >> Rot.antiDiagShift[sq]) & 63] |
         Attacks.diag[sq][(o.diag >> Rot.diagShift[sq]) & 63];
}

// Slider attacks on an empty board.
inline Bitboard rookPseudoAttacks(int sq) { return Attacks.rank[sq][0] | Attacks.file[sq][0]; }
inline Bitboard bishopPseudoAttacks(int sq) { return Attacks.antiDiag[sq][0] | Attacks.diag[sq][0]; }

// Slider attacks for an arbitrary occupancy (slower: loops). For tests, set-up and x-ray work
// outside the hot paths.
Bitboard slowRookAttacks(int sq, Bitboard occupied);
Bitboard slowBishopAttacks(int sq, Bitboard occupied);

// The castling-rights mask of each square: the rights that survive a move from or to it.
extern const std::uint8_t CastleMask[64];

}  // namespace tavrin
