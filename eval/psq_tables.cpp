// The packed piece-square table, built at start-up from short per-file, per-rank and
// per-diagonal arrays for each White piece kind; Black rows are White's turned half a turn.
#include "eval/psq_tables.h"

#include <cstdlib>

namespace tavrin {


namespace {

using Row = int[8];

// Pawns: the middlegame file array is deliberately asymmetric.
constexpr Row PawnFileMg = {-25, -12, -3, 3, 4, -2, -8, -22};
constexpr Row PawnRankMg = {0, -3, -2, -1, 1, 2, 3, 0};
constexpr Row PawnFileEg = {-2, -5, -8, -11, -11, -8, -5, -2};
constexpr Row PawnRankEg = {0, -3, -3, -2, -1, 0, 2, 0};

constexpr Row KnightFileMg = {-30, -12, 1, 5, 5, 1, -12, -30};
constexpr Row KnightRankMg = {-16, -8, 3, 5, 8, 7, 5, -5};
constexpr Row KnightDiagEg = {2, 1, 0, -1, -2, -4, -7, -10};
constexpr Row KnightFileEg = {-4, -1, 2, 4, 4, 2, -1, -4};
constexpr Row KnightRankEg = {-10, -5, -2, 1, 3, 5, 2, -3};
constexpr int KnightCornerMg = -120;  // a8 and h8

constexpr Row BishopDiagMg = {10, 5, 1, -3, -5, -7, -8, -12};
constexpr Row BishopRankMg = {-5, 0, 0, 0, 0, 0, 0, 0};
constexpr Row BishopDiagEg = {4, 3, 1, 0, -3, -3, -4, -4};

constexpr Row RookFileMg = {-5, 0, 5, 10, 10, 5, 0, -5};
constexpr Row RookRankEg = {0, 0, 0, 0, 1, 1, 1, -2};

constexpr Row QueenDiagMg = {4, 2, 1, 0, -2, -5, -8, -12};
constexpr Row QueenDiagEg = {1, 0, -1, -3, -4, -6, -8, -12};
constexpr Row QueenCentre = {-2, 0, 1, 2, 2, 1, 0, -2};  // for file and rank alike
constexpr int QueenFirstRankMg = -5;

constexpr Row KingFileMg = {35, 55, 15, -5, -5, 15, 55, 35};
constexpr Row KingRankMg = {4, 1, -2, -5, -10, -15, -25, -35};
constexpr Row KingFileEg = {-20, 0, 12, 25, 25, 12, 0, -20};
constexpr Row KingDiagEg = {2, 0, -2, -5, -8, -12, -20, -30};
constexpr Row KingRankEg = {-30, -5, 0, 5, 10, 5, 0, -10};

struct Coordinates {
  int f, r, d1, d2;  // file, rank, distances from the a8-h1 and a1-h8 long diagonals
  explicit Coordinates(int sq)
      : f(sq & 7), r(sq >> 3), d1(std::abs(f + r - 7)), d2(std::abs(f - r)) {}
};

Packed pawnValue(int sq) {
  Coordinates c(sq);
  if (c.r == 0 || c.r == 7) return 0;
  return pack(PawnFileMg[c.f] + PawnRankMg[c.r], PawnFileEg[c.f] + PawnRankEg[c.r]);
}

Packed knightValue(int sq) {
  Coordinates c(sq);
  int mg = (sq == 56 || sq == 63) ? KnightCornerMg : KnightFileMg[c.f] + KnightRankMg[c.r];
  int eg = KnightDiagEg[c.d1] + KnightDiagEg[c.d2] + KnightFileEg[c.f] + KnightRankEg[c.r];
  return pack(mg, eg);
}

Packed bishopValue(int sq) {
  Coordinates c(sq);
  return pack(BishopDiagMg[c.d1] + BishopDiagMg[c.d2] + BishopRankMg[c.r],
              BishopDiagEg[c.d1] + BishopDiagEg[c.d2]);
}

Packed rookValue(int sq) {
  Coordinates c(sq);
  return pack(RookFileMg[c.f], RookRankEg[c.r]);
}

Packed queenValue(int sq) {
  Coordinates c(sq);
  int centre = QueenCentre[c.f] + QueenCentre[c.r];
  int mg = QueenDiagMg[c.d1] + QueenDiagMg[c.d2] + centre + (c.r == 0 ? QueenFirstRankMg : 0);
  int eg = QueenDiagEg[c.d1] + QueenDiagEg[c.d2] + centre;
  return pack(mg, eg);
}

Packed kingValue(int sq) {
  Coordinates c(sq);
  return pack(KingFileMg[c.f] + KingRankMg[c.r],
              KingFileEg[c.f] + KingDiagEg[c.d1] + KingDiagEg[c.d2] + KingRankEg[c.r]);
}

}  // namespace

void initPieceSquareTables() {
  struct Builder {
    int code;
    Packed (*value)(int);
  };
  // White rows in build order: pawn, knight, both bishops, rook, queen, king.
  static constexpr Builder Builders[] = {
      {WhitePawn, pawnValue},        {WhiteKnight, knightValue}, {WhiteBishopLight, bishopValue},
      {WhiteBishopDark, bishopValue}, {WhiteRook, rookValue},     {WhiteQueen, queenValue},
      {WhiteKing, kingValue},
  };
  for (int sq = 0; sq < 64; ++sq) PieceSquare[NoPiece][sq] = PieceSquare[AllBlack][sq] = 0;
  for (const Builder& b : Builders)
    for (int sq = 0; sq < 64; ++sq) PieceSquare[b.code][sq] = b.value(sq);
  // Black rows: the White value of the square turned by half a turn, negated.
  for (int code = WhitePawn; code <= WhiteQueen; ++code)
    for (int sq = 0; sq < 64; ++sq) PieceSquare[code + 8][sq] = -PieceSquare[code][63 - sq];
}

}  // namespace tavrin
