// Start-up builder of the rotated numberings, the attack tables, the line tables and the keys.
#include "board/attacks.h"

#include <algorithm>
#include <cstdlib>

#include "board/zobrist.h"

namespace tavrin {

RotationTables Rot;
AttackTables Attacks;

const std::uint8_t CastleMask[64] = {
    13, 15, 15, 15, 12, 15, 15, 14,  // a1 loses White's queen side, e1 both, h1 the king side
    15, 15, 15, 15, 15, 15, 15, 15,
    15, 15, 15, 15, 15, 15, 15, 15,
    15, 15, 15, 15, 15, 15, 15, 15,
    15, 15, 15, 15, 15, 15, 15, 15,
    15, 15, 15, 15, 15, 15, 15, 15,
    15, 15, 15, 15, 15, 15, 15, 15,
    7,  15, 15, 15, 3,  15, 15, 11,  // a8, e8, h8 likewise for Black
};

namespace {

// First rotated index of the diagonal with the given number (0..14) when the fifteen diagonals
// of lengths 1..8..1 are laid end to end.
constexpr int diagonalStart(int d) { return d <= 7 ? d * (d + 1) / 2 : 64 - (15 - d) * (16 - d) / 2; }

constexpr int fileMajorOf(int sq) { return fileOf(sq) * 8 + (7 - rankOf(sq)); }
// The a8-h1 direction: diagonals by file + rank, each in order of rising file.
constexpr int antiDiagOf(int sq) {
  int d = fileOf(sq) + rankOf(sq);
  return diagonalStart(d) + fileOf(sq) - std::max(0, d - 7);
}
// The a1-h8 direction: diagonals by (7 - file) + rank, each in order of rising file.
constexpr int diagOf(int sq) {
  int d = 7 - fileOf(sq) + rankOf(sq);
  return diagonalStart(d) + fileOf(sq) - std::max(0, 7 - d);
}

// Walks a line of `length` squares from `place` in both directions; `occupied(j)` tells whether
// line square j blocks. Returns the reached line squares as a bit set over 0..7.
template <typename Blocked>
unsigned walkLine(int place, int length, Blocked occupied) {
  unsigned reached = 0;
  for (int j = place + 1; j < length; ++j) {
    reached |= 1u << j;
    if (occupied(j)) break;
  }
  for (int j = place - 1; j >= 0; --j) {
    reached |= 1u << j;
    if (occupied(j)) break;
  }
  return reached;
}

void initRotations() {
  // Diagonal start (+1), length and place by rotated index: lengths 1..8 then 7..1.
  std::uint8_t startPlusOne[64];
  int index = 0;
  for (int d = 0; d < 15; ++d) {
    int length = d <= 7 ? d + 1 : 15 - d;
    for (int j = 0; j < length; ++j, ++index) {
      startPlusOne[index] = std::uint8_t(diagonalStart(d) + 1);
      Rot.diagLength[index] = std::uint8_t(length);
      Rot.diagPlace[index] = std::uint8_t(j);
    }
  }
  for (int sq = 0; sq < 64; ++sq) {
    int fm = fileMajorOf(sq), ad = antiDiagOf(sq), dg = diagOf(sq);
    Rot.fileMajorIndex[sq] = std::uint8_t(fm);
    Rot.antiDiagIndex[sq] = std::uint8_t(ad);
    Rot.diagIndex[sq] = std::uint8_t(dg);
    Rot.fileMajorSquare[fm] = std::uint8_t(sq);
    Rot.antiDiagSquare[ad] = std::uint8_t(sq);
    Rot.diagSquare[dg] = std::uint8_t(sq);
    Rot.setFileMajor[sq] = Bitboard(1) << fm;
    Rot.clearFileMajor[sq] = ~Rot.setFileMajor[sq];
    Rot.setAntiDiag[sq] = Bitboard(1) << ad;
    Rot.clearAntiDiag[sq] = ~Rot.setAntiDiag[sq];
    Rot.setDiag[sq] = Bitboard(1) << dg;
    Rot.clearDiag[sq] = ~Rot.setDiag[sq];
    Rot.rankShift[sq] = std::uint8_t((sq & 0x38) + 1);
    Rot.fileShift[sq] = std::uint8_t((fm & 0x38) + 1);
    // The one-square diagonals (h8 for one numbering, a8 for the other) would need a shift by
    // 64; their attack entries are empty whatever the pattern, so any in-range shift will do.
    Rot.antiDiagShift[sq] = std::uint8_t(std::min<int>(startPlusOne[ad], 63));
    Rot.diagShift[sq] = std::uint8_t(std::min<int>(startPlusOne[dg], 63));
  }
}

void initSliderTables() {
  for (int sq = 0; sq < 64; ++sq) {
    int f = fileOf(sq), r = rankOf(sq);
    for (int p = 0; p < 64; ++p) {
      // Pattern bit k tells whether line square k + 1 is occupied.
      auto blocked = [p](int j) { return j >= 1 && j <= 6 && ((p >> (j - 1)) & 1); };

      unsigned rankBits = walkLine(f, 8, blocked);
      Attacks.rank[sq][p] = Bitboard(rankBits) << (8 * r);

      // File line: square j of the line is rank 8 - j.
      unsigned fileBits = walkLine(7 - r, 8, blocked);
      Bitboard fileSet = 0;
      for (int j = 0; j < 8; ++j)
        if (fileBits & (1u << j)) fileSet |= bit(Rot.fileMajorSquare[f * 8 + j]);
      Attacks.file[sq][p] = fileSet;

      auto diagonal = [&](int rotated, const std::uint8_t* inverse) {
        int length = Rot.diagLength[rotated], place = Rot.diagPlace[rotated];
        int first = rotated - place;
        unsigned bits = walkLine(place, length, blocked);
        Bitboard set = 0;
        for (int j = 0; j < length; ++j)
          if (bits & (1u << j)) set |= bit(inverse[first + j]);
        return set;
      };
      Attacks.antiDiag[sq][p] = diagonal(Rot.antiDiagIndex[sq], Rot.antiDiagSquare);
      Attacks.diag[sq][p] = diagonal(Rot.diagIndex[sq], Rot.diagSquare);
    }
  }
}

void initLeaperTables() {
  static constexpr int KnightOffsets[8] = {6, 10, 15, 17, -6, -10, -15, -17};
  for (int s = 0; s < 64; ++s) {
    Bitboard knight = 0, king = 0;
    for (int offset : KnightOffsets) {
      int t = s + offset;
      if (t >= 0 && t <= 63 && std::abs(fileOf(t) - fileOf(s)) <= 2 && std::abs(rankOf(t) - rankOf(s)) <= 2)
        knight |= bit(t);
    }
    for (int t = 0; t < 64; ++t)
      if (std::max(std::abs(fileOf(t) - fileOf(s)), std::abs(rankOf(t) - rankOf(s))) == 1) king |= bit(t);
    Attacks.knight[s] = knight;
    Attacks.king[s] = king;
    Attacks.pawn[White][s] = pawnAttacks<White>(bit(s));
    Attacks.pawn[Black][s] = pawnAttacks<Black>(bit(s));
  }
}

void initLineTables() {
  for (int a = 0; a < 64; ++a)
    for (int b = 0; b < 64; ++b) {
      Attacks.between[a][b] = 0;
      Attacks.line[a][b] = 0;
      if (a == b) continue;
      if (slowRookAttacks(a, 0) & bit(b)) {
        Attacks.between[a][b] = slowRookAttacks(a, bit(b)) & slowRookAttacks(b, bit(a));
        Attacks.line[a][b] = (slowRookAttacks(a, 0) & slowRookAttacks(b, 0)) | bit(a) | bit(b);
      } else if (slowBishopAttacks(a, 0) & bit(b)) {
        Attacks.between[a][b] = slowBishopAttacks(a, bit(b)) & slowBishopAttacks(b, bit(a));
        Attacks.line[a][b] = (slowBishopAttacks(a, 0) & slowBishopAttacks(b, 0)) | bit(a) | bit(b);
      }
    }
  for (int k = 0; k < 64; ++k)
    for (int c = 0; c < 64; ++c) {
      Bitboard beyond = 0;
      for (Bitboard l = Attacks.line[c][k]; l;) {
        int s = popLowest(l);
        if (Attacks.between[c][s] & bit(k)) beyond |= bit(s);
      }
      Attacks.kingEscape[k][c] = Attacks.king[k] & ~beyond;
    }
}

Bitboard slide(int sq, Bitboard occupied, const int (*directions)[2]) {
  Bitboard attacks = 0;
  for (int d = 0; d < 4; ++d) {
    int f = fileOf(sq), r = rankOf(sq);
    for (;;) {
      f += directions[d][0], r += directions[d][1];
      if (f < 0 || f > 7 || r < 0 || r > 7) break;
      attacks |= bit(makeSquare(f, r));
      if (occupied & bit(makeSquare(f, r))) break;
    }
  }
  return attacks;
}

}  // namespace

Bitboard slowRookAttacks(int sq, Bitboard occupied) {
  static constexpr int Directions[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
  return slide(sq, occupied, Directions);
}

Bitboard slowBishopAttacks(int sq, Bitboard occupied) {
  static constexpr int Directions[4][2] = {{1, 1}, {-1, 1}, {1, -1}, {-1, -1}};
  return slide(sq, occupied, Directions);
}

void initBoardTables() {
  initRotations();
  initLeaperTables();
  initSliderTables();
  initLineTables();
  initZobrist();
}

}  // namespace tavrin
