// Start-up tables: rotations, attacks, keys and their generator, capture keys, piece-square rows.
#include <gtest/gtest.h>

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/make_move.h"
#include "board/zobrist.h"
#include "tests/test_support.h"
#include "eval/psq_tables.h"

namespace tavrin::test {
namespace {

Bitboard squares(std::initializer_list<int> list) {
  Bitboard b = 0;
  for (int s : list) b |= bit(s);
  return b;
}

// A position record with only the given occupancy (for slider lookups).
Position& withOccupancy(Position& pos, Bitboard occupied) {
  pos.occupied = occupied;
  pos.occupiedFileMajor = pos.occupiedAntiDiag = pos.occupiedDiag = 0;
  for (Bitboard b = occupied; b;) {
    int sq = popLowest(b);
    pos.occupiedFileMajor |= Rot.setFileMajor[sq];
    pos.occupiedAntiDiag |= Rot.setAntiDiag[sq];
    pos.occupiedDiag |= Rot.setDiag[sq];
  }
  return pos;
}

TEST(Rotations, NumberingsAsLaidOut) {
  ensureBoardTables();
  const int antiRank1[8] = {0, 2, 5, 9, 14, 20, 27, 35}, antiRank8[8] = {28, 36, 43, 49, 54, 58, 61, 63};
  const int diagRank1[8] = {28, 21, 15, 10, 6, 3, 1, 0}, diagRank8[8] = {63, 62, 60, 57, 53, 48, 42, 35};
  for (int f = 0; f < 8; ++f) {
    EXPECT_EQ(Rot.antiDiagIndex[f], antiRank1[f]);
    EXPECT_EQ(Rot.antiDiagIndex[56 + f], antiRank8[f]);
    EXPECT_EQ(Rot.diagIndex[f], diagRank1[f]);
    EXPECT_EQ(Rot.diagIndex[56 + f], diagRank8[f]);
    EXPECT_EQ(Rot.fileMajorIndex[makeSquare(f, 7)], f * 8);
  }
  EXPECT_EQ(Rot.antiDiagIndex[H1], 35);
  EXPECT_EQ(Rot.diagIndex[A1], 28);
  for (int sq = 0; sq < 64; ++sq) {
    EXPECT_EQ(Rot.antiDiagSquare[Rot.antiDiagIndex[sq]], sq);
    EXPECT_EQ(Rot.diagSquare[Rot.diagIndex[sq]], sq);
    EXPECT_EQ(Rot.fileMajorSquare[Rot.fileMajorIndex[sq]], sq);
    EXPECT_EQ(Rot.rankShift[sq], (sq & 0x38) + 1);
  }
}

TEST(AttackTables, EdgeCases) {
  BoardFixture f;
  Position& pos = f.pos;
  withOccupancy(pos, 0);
  EXPECT_EQ(rookAttacks(A1, pos), (Rank1 | FileA) & ~bit(A1));
  EXPECT_EQ(popCount(rookAttacks(A1, pos)), 14);
  withOccupancy(pos, bit(F6));
  EXPECT_TRUE(bishopAttacks(D4, pos) & bit(F6));
  EXPECT_FALSE(bishopAttacks(D4, pos) & bit(G7));
  EXPECT_EQ(knightAttacks(A1), squares({B3, C2}));
  EXPECT_EQ(knightAttacks(H8), squares({G6, F7}));
  EXPECT_EQ(kingAttacks(E1), squares({D1, F1, D2, E2, F2}));
  for (int sq = 0; sq < 64; ++sq) EXPECT_FALSE(knightAttacks(sq) & (fileOf(sq) < 2 ? FileH | (FileH >> 1) : 0));
  // The short diagonal b1-a2: pieces on the neighbouring diagonal change nothing.
  withOccupancy(pos, 0);
  const Bitboard emptyB1 = bishopAttacks(B1, pos);
  withOccupancy(pos, squares({A3, C1, B2}));
  EXPECT_EQ(bishopAttacks(B1, pos) & squares({A2}), emptyB1 & squares({A2}));
  withOccupancy(pos, squares({A3, C1}));
  EXPECT_EQ(bishopAttacks(B1, pos), emptyB1);
}

TEST(AttackTables, LookupsAgreeWithSlowSlidersOnRandomBoards) {
  BoardFixture f;
  std::uint64_t x = 0x9E3779B97F4A7C15ULL;
  for (int i = 0; i < 2000; ++i) {
    x ^= x << 13, x ^= x >> 7, x ^= x << 17;
    const Bitboard occ = x & (x >> 3) & (x >> 5);  // sparse boards
    withOccupancy(f.pos, occ);
    for (int sq = 0; sq < 64; ++sq) {
      ASSERT_EQ(rookAttacks(sq, f.pos), slowRookAttacks(sq, occ)) << sq << " " << occ;
      ASSERT_EQ(bishopAttacks(sq, f.pos), slowBishopAttacks(sq, occ)) << sq << " " << occ;
    }
  }
}

TEST(AttackTables, BetweenAndLine) {
  ensureBoardTables();
  EXPECT_EQ(Attacks.between[A1][D4], squares({B2, C3}));
  EXPECT_EQ(Attacks.between[E1][E8], squares({E2, E3, E4, E5, E6, E7}));
  EXPECT_EQ(Attacks.between[A1][B3], 0u);
  EXPECT_EQ(Attacks.line[C3][E5], slowBishopAttacks(A1, 0) | bit(A1));
  EXPECT_EQ(Attacks.kingEscape[E1][E8], kingAttacks(E1));     // nothing beyond e1 on the file
  EXPECT_EQ(Attacks.kingEscape[E4][E8], kingAttacks(E4) & ~bit(E3));
  EXPECT_EQ(Attacks.kingEscape[E4][B7], kingAttacks(E4) & ~bit(F3));
  EXPECT_EQ(Attacks.kingEscape[E4][F6], kingAttacks(E4));     // a knight's square: no line
  EXPECT_EQ(CastleMask[A1], 13);
  EXPECT_EQ(CastleMask[E1], 12);
  EXPECT_EQ(CastleMask[H1], 14);
  EXPECT_EQ(CastleMask[A8], 7);
  EXPECT_EQ(CastleMask[E8], 3);
  EXPECT_EQ(CastleMask[H8], 11);
  EXPECT_EQ(CastleMask[D4], 15);
}

TEST(ZobristKeys, GeneratorAndDrawingOrder) {
  ensureBoardTables();
  KeyGenerator rng;
  const std::uint16_t first = rng.step();
  EXPECT_EQ(first, std::uint16_t((0x3C514B7BD8BC3E2DULL + 0x7FC59FA3ULL) >> 32));
  KeyGenerator replay;
  EXPECT_EQ(replay.next64() >> 48, first);
  // The side key is the first draw, then castling 1, 2, 4, 8.
  KeyGenerator order;
  EXPECT_EQ(Zobrist.side, order.next64());
  EXPECT_EQ(Zobrist.castling[1], order.next64());
  EXPECT_EQ(Zobrist.castling[2], order.next64());
  EXPECT_EQ(Zobrist.castling[4], order.next64());
  EXPECT_EQ(Zobrist.castling[8], order.next64());
  EXPECT_EQ(Zobrist.pieceSquare[0][0], order.next64());
  for (int i = 1; i < 16 * 64 - 1; ++i) order.next64();
  EXPECT_EQ(Zobrist.pieceSquare[15][63], order.next64());
  for (int file = 0; file < 8; ++file) EXPECT_EQ(Zobrist.enPassant[file], order.next64());
  EXPECT_EQ(EvalNoiseSeed, order.next64());
  EXPECT_EQ(Zobrist.castling[0], 0u);
  EXPECT_EQ(Zobrist.castling[5], Zobrist.castling[1] ^ Zobrist.castling[4]);
  EXPECT_EQ(Zobrist.castling[15], Zobrist.castling[3] ^ Zobrist.castling[12]);
}

TEST(ZobristKeys, StartPositionKeysAndMaterial) {
  BoardFixture f;
  setStartPosition(f.pos);
  const StateEntry& st = *f.pos.state;
  EXPECT_EQ(f.pos.state, f.pos.stateStack + 1);
  Key pieces = 0, pawnsAndKings = 0;
  for (int sq = 0; sq < 64; ++sq)
    if (int c = f.pos.board[sq]) {
      pieces ^= Zobrist.pieceSquare[c][sq];
      if (kindOf(c) == Pawn || kindOf(c) == King) pawnsAndKings ^= Zobrist.pieceSquare[c][sq];
    }
  EXPECT_EQ(st.key, pieces ^ Zobrist.castling[15] ^ Zobrist.side);
  EXPECT_EQ(st.pawnKey, pawnsAndKings ^ Zobrist.castling[15] ^ PawnKeySalt);
  EXPECT_EQ(st.materialKey & 0xFF, 32u);
  EXPECT_EQ(f.pos.board[C1], WhiteBishopDark);
  EXPECT_EQ(f.pos.board[F1], WhiteBishopLight);
  EXPECT_EQ(f.pos.board[C8], BlackBishopLight);
  EXPECT_EQ(f.pos.board[F8], BlackBishopDark);
  // Material index: 1 queen, 2 rooks, one bishop of each colour, 2 knights, 8 pawns a side.
  EXPECT_EQ(st.materialKey >> 8, 1u + 2 + 2 * 4 + 2 * 12 + 36 + 72 + 144 + 288 + 2 * 576 + 2 * 1728 + 8 * 5184 + 8 * 46656);
}

TEST(ZobristKeys, SetUpDetailsTableDriven) {
  struct Case {
    const char* fen;
    bool unusual;
  };
  const Case cases[] = {
      {"4k3/8/8/8/8/8/8/QQ2K3 w - - 0 1", true},
      {"4k3/8/8/8/8/8/8/NN2K3 w - - 0 1", false},
      {"4k3/8/8/8/8/8/8/NNN1K3 w - - 0 1", true},
      {"4k3/8/8/8/8/8/8/RRR1K3 w - - 0 1", true},
      {"4k3/8/8/8/8/8/8/B1B1K3 w - - 0 1", true},   // two dark-squared bishops
      {"4k3/8/8/8/8/8/8/BB2K3 w - - 0 1", false},   // one of each colour
      {"4k3/8/8/8/8/8/8/qq2K3 w - - 0 1", true},
  };
  BoardFixture f;
  for (const Case& c : cases) {
    f.set(c.fen);
    EXPECT_EQ((f.pos.state->materialKey & 0x80000000u) != 0, c.unusual) << c.fen;
  }
  // Positions that differ only by the en-passant square differ in key.
  f.set("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 2");
  const Key withEp = f.pos.state->key;
  f.set("4k3/8/8/3pP3/8/8/8/4K3 w - - 0 2");
  EXPECT_EQ(withEp, f.pos.state->key ^ Zobrist.enPassant[3]);
}

TEST(CaptureKeys, TableEntries) {
  ensureBoardTables();
  struct Case {
    int attacker, victim;
    std::uint32_t key;
  };
  const Case cases[] = {
      {WhitePawn, BlackPawn, 0xB0100000}, {WhitePawn, BlackQueen, 0xD0200000},
      {WhiteKnight, BlackBishopDark, 0xBF100000}, {WhiteBishopLight, BlackKnight, 0xB6100000},
      {WhiteRook, BlackRook, 0xC5100000}, {WhiteQueen, BlackPawn, 0xAC000000},
      {WhiteKing, BlackQueen, 0xCB000000}, {BlackPawn, WhiteKnight, 0xB8200000},
      {BlackQueen, WhiteQueen, 0xCC100000}, {BlackBishopDark, WhiteRook, 0xC6200000},
      {WhitePawn, NoPiece, 0x06008000}, {BlackKing, NoPiece, 0x07000000}, {WhiteBishopDark, NoPiece, 0x04008000},
      {WhiteQueen, NoPiece, 0x02008000},
  };
  for (const Case& c : cases) EXPECT_EQ(CaptureKey[c.attacker][c.victim], c.key) << c.attacker << " " << c.victim;
}

TEST(PieceSquareTables, RowsAsBuilt) {
  ensureBoardTables();
  for (int sq = 0; sq < 64; ++sq) {
    EXPECT_EQ(PieceSquare[0][sq], 0);
    EXPECT_EQ(PieceSquare[8][sq], 0);
    for (int code = 1; code < 8; ++code) EXPECT_EQ(PieceSquare[code + 8][sq], -PieceSquare[code][63 - sq]);
  }
  for (int f = 0; f < 8; ++f) {
    EXPECT_EQ(PieceSquare[WhitePawn][f], 0);
    EXPECT_EQ(PieceSquare[WhitePawn][56 + f], 0);
    EXPECT_EQ(PieceSquare[BlackPawn][f], 0);
    EXPECT_EQ(PieceSquare[BlackPawn][56 + f], 0);
  }
  EXPECT_EQ(PieceSquare[BlackPawn][A7], -PieceSquare[WhitePawn][H2]);
  EXPECT_EQ(middlegameOf(PieceSquare[WhitePawn][E4]), 3);
  EXPECT_EQ(endgameOf(PieceSquare[WhitePawn][E4]), -13);
  EXPECT_EQ(middlegameOf(PieceSquare[WhitePawn][A2]), -28);
  EXPECT_EQ(endgameOf(PieceSquare[WhitePawn][A2]), -5);
  EXPECT_EQ(middlegameOf(PieceSquare[WhiteKnight][A8]), -120);
  EXPECT_EQ(middlegameOf(PieceSquare[WhiteKnight][H8]), -120);
  // a8: d1 = |0 + 7 - 7| = 0, d2 = 7: ND 2 + -10, NEF -4, NER -3.
  EXPECT_EQ(endgameOf(PieceSquare[WhiteKnight][A8]), 2 - 10 - 4 - 3);
  // d4: NF 5 + NR 5; d1 = 1, d2 = 0: ND 1 + 2, NEF 4, NER 1.
  EXPECT_EQ(middlegameOf(PieceSquare[WhiteKnight][D4]), 10);
  EXPECT_EQ(endgameOf(PieceSquare[WhiteKnight][D4]), 8);
  // c1: d1 = |2 - 7| = 5, d2 = 2: BD -7 + 1, BR -5; BE -3 + 1.
  EXPECT_EQ(middlegameOf(PieceSquare[WhiteBishopDark][C1]), -11);
  EXPECT_EQ(endgameOf(PieceSquare[WhiteBishopDark][C1]), -2);
  EXPECT_EQ(PieceSquare[WhiteBishopLight][C1], PieceSquare[WhiteBishopDark][C1]);
  EXPECT_EQ(middlegameOf(PieceSquare[WhiteRook][D1]), 10);
  EXPECT_EQ(endgameOf(PieceSquare[WhiteRook][D8]), -2);
  // d1: d1 = 4, d2 = 3: QD -2 + 0, QC 2 + -2, first rank -5; QE -4 + -3 + 0.
  EXPECT_EQ(middlegameOf(PieceSquare[WhiteQueen][D1]), -7);
  EXPECT_EQ(endgameOf(PieceSquare[WhiteQueen][D1]), -7);
  // g1: KF 55 + KR 4; KEF 0, d1 = 1, d2 = 6: KD 0 + -20, KER -30.
  EXPECT_EQ(middlegameOf(PieceSquare[WhiteKing][G1]), 59);
  EXPECT_EQ(endgameOf(PieceSquare[WhiteKing][G1]), -50);
}

}  // namespace
}  // namespace tavrin::test
