// Make and unmake over random games: exact restoration and incremental state against the board.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "board/legality.h"
#include "board/make_move.h"
#include "eval/attack_summary.h"
#include "tests/test_support.h"

namespace tavrin::test {
namespace {

constexpr int Games = scaled(1000, 60);

// The board part of the record, the stack pointer, the key count and the current entry, byte for
// byte: everything a make and its unmake must leave as they found it.
struct Snapshot {
  std::string boardPart, entry;
  const StateEntry* state;
  std::uint64_t historyCount;
  explicit Snapshot(const Position& pos)
      : boardPart(reinterpret_cast<const char*>(&pos), BoardPartBytes),
        entry(reinterpret_cast<const char*>(pos.state), sizeof(StateEntry)),
        state(pos.state),
        historyCount(pos.historyCount) {}
  bool operator==(const Snapshot&) const = default;
};

// Every invariant that ties the bitboards, the rotated occupancies and the king squares to board[].
void expectConsistent(const Position& pos, const std::string& where) {
  Bitboard all[2] = {0, 0};
  for (int c = 1; c < 16; ++c) {
    if (c == 8) continue;
    Bitboard fromBoard = 0;
    for (int sq = 0; sq < 64; ++sq)
      if (pos.board[sq] == c) fromBoard |= bit(sq);
    ASSERT_EQ(pos.pieces[c], fromBoard) << where << " piece " << c;
    all[c < 8] |= fromBoard;
  }
  ASSERT_EQ(pos.pieces[AllWhite], all[1]) << where;
  ASSERT_EQ(pos.pieces[AllBlack], all[0]) << where;
  ASSERT_EQ(pos.occupied, all[0] | all[1]) << where;
  Bitboard fm = 0, ad = 0, dg = 0;
  for (Bitboard b = pos.occupied; b;) {
    int sq = popLowest(b);
    fm |= Rot.setFileMajor[sq], ad |= Rot.setAntiDiag[sq], dg |= Rot.setDiag[sq];
  }
  ASSERT_EQ(pos.occupiedFileMajor, fm) << where;
  ASSERT_EQ(pos.occupiedAntiDiag, ad) << where;
  ASSERT_EQ(pos.occupiedDiag, dg) << where;
  ASSERT_EQ(bit(pos.whiteKingSquare), pos.pieces[WhiteKing]) << where;
  ASSERT_EQ(bit(pos.blackKingSquare), pos.pieces[BlackKing]) << where;
  for (int sq = 0; sq < 64; ++sq) {
    if (kindOf(pos.board[sq]) == BishopLight || kindOf(pos.board[sq]) == BishopDark) {
      ASSERT_EQ(kindOf(pos.board[sq]) == BishopDark, isDarkSquare(sq)) << where << " bishop code on " << sq;
    }
  }
}

void expectDerivedStateMatches(const Position& pos, const std::string& where) {
  DerivedState d = computeDerivedState(pos);
  const StateEntry& st = *pos.state;
  ASSERT_EQ(st.key, d.key) << where;
  ASSERT_EQ(st.pawnKey, d.pawnKey) << where;
  ASSERT_EQ(st.psqScore, d.psqScore) << where;
  // A promotion may set the unusual flag before counts alone would; never the other way round.
  ASSERT_EQ(st.materialKey & ~0x80000000u, d.materialKey & ~0x80000000u) << where;
  if (d.materialKey & 0x80000000u) {
    ASSERT_TRUE(st.materialKey & 0x80000000u) << where;
  }
  ASSERT_EQ(pos.keyHistory[pos.historyCount], st.key) << where;
}

TEST(MakeUnmake, RandomGamesRestoreEverythingAndKeepIncrementalState) {
  BoardFixture f;
  std::mt19937_64 rng(20260101);
  MoveWord list[MaxMoves];
  for (int game = 0; game < Games; ++game) {
    f.set(RandomGameStarts[game % std::size(RandomGameStarts)]);
    Position& pos = f.pos;
    std::vector<Move> played;
    for (int ply = 0; ply < 120; ++ply) {
      MoveWord* end = generateLegalMoves(pos, list);
      if (end == list) break;
      // Try every move of this position once: make, check, unmake, compare.
      const Snapshot before(pos);
      for (MoveWord* w = list; w != end; ++w) {
        const Move m = moveOf(*w);
        const ChildKeys predicted = childKeys(pos, m);
        const std::uint8_t castle = pos.st().castle;
        makeMoveAny(pos, m);
        expectDerivedStateMatches(pos, "after " + std::to_string(m) + " in " + toFen(pos));
        // The early keys are exact for ordinary moves that keep the castling rights and leave no
        // en-passant square.
        if (moveKind(m) == NormalMove && pos.st().castle == castle && !pos.st().epSquare) {
          ASSERT_EQ(predicted.key, pos.st().key) << toFen(pos);
          ASSERT_EQ(predicted.pawnKey, pos.st().pawnKey) << toFen(pos);
          ASSERT_EQ(predicted.materialKey, pos.st().materialKey) << toFen(pos);
        }
        ASSERT_FALSE(leftOwnKingInCheck(pos)) << toFen(pos);
        unmakeMove(pos, m);
        ASSERT_TRUE(Snapshot(pos) == before) << "unmake of " << m << " in " << toFen(pos);
      }
      const Move m = moveOf(list[rng() % std::size_t(end - list)]);
      makeMoveAny(pos, m);
      played.push_back(m);
      expectConsistent(pos, toFen(pos));
    }
    // Take the whole game back and land exactly where it started.
    while (!played.empty()) {
      unmakeMove(pos, played.back());
      played.pop_back();
    }
    ASSERT_EQ(pos.historyCount, 0u);
    ASSERT_EQ(pos.state, pos.stateStack + 1);
    expectDerivedStateMatches(pos, "game start");
  }
}

TEST(MakeUnmake, NullMoveFlipsSideAndEnPassantOnly) {
  BoardFixture f;
  Position& pos = f.set("rnbqkbnr/ppp1pppp/8/8/3pP3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 3");
  ASSERT_EQ(pos.state->epSquare, E3);
  const int staticEval = pos.state->staticEval;
  const Snapshot before(pos);
  pos.state->staticEval = 40;
  makeNullMove(pos);
  EXPECT_EQ(pos.sideToMove, White);
  EXPECT_EQ(pos.state->epSquare, 0);
  EXPECT_EQ(pos.state->staticEval, -56);
  EXPECT_EQ(pos.state->move, NoMove);
  EXPECT_EQ(pos.state->rule50, 1);
  EXPECT_EQ(pos.state->attackedByWhite, pos.state[-1].attackedByWhite);
  expectDerivedStateMatches(pos, "null move");
  unmakeNullMove(pos);
  pos.state->staticEval = staticEval;
  EXPECT_TRUE(Snapshot(pos) == before);
}

struct MakeCase {
  const char* fen;
  Move move;
  int castle, epSquare, rule50, captured;
  int pieceOnTo;
  bool unusual = false;
};

TEST(MakeUnmake, IncrementalCases) {
  const MakeCase cases[] = {
      // A rook taken on h8 removes Black's king side right.
      {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 5 10", makeMove(H1, H8), WhiteQueenSide | BlackQueenSide, 0, 0,
       BlackRook, WhiteRook},
      // Castling resets the fifty-move counter.
      {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 5 10", makeMove(E1, G1, CastlingMove), BlackKingSide | BlackQueenSide, 0,
       0, 0, WhiteKing},
      // No black pawn beside e4: no en-passant square.
      {"4k3/8/8/8/8/8/4P3/4K3 w - - 3 1", makeMove(E2, E4), 0, 0, 0, 0, WhitePawn},
      // A black pawn on d4: e3 is recorded.
      {"4k3/8/8/8/3p4/8/4P3/4K3 w - - 3 1", makeMove(E2, E4), 0, E3, 0, 0, WhitePawn},
      // Promotions to a bishop take the code of the square.
      {"4k3/2P5/8/8/8/8/8/4K3 w - - 0 1", makeMove(C7, C8, PromoteBishop), 0, 0, 0, 0, WhiteBishopLight},
      {"7k/3P4/8/8/8/8/8/4K3 w - - 0 1", makeMove(D7, D8, PromoteBishop), 0, 0, 0, 0, WhiteBishopDark},
      {"4k3/8/8/8/8/8/3p4/K7 b - - 0 1", makeMove(D2, D1, PromoteBishop), 0, 0, 0, 0, BlackBishopLight},
      // A second knight by promotion counts as unusual material before counts alone would say so.
      {"4k3/1P6/8/8/8/8/8/1N2K3 w - - 0 1", makeMove(B7, B8, PromoteKnight), 0, 0, 0, 0, WhiteKnight, true},
      // En passant stores no captured piece.
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 2", makeMove(E5, D6, EnPassantMove), 0, 0, 0, 0, WhitePawn},
      {"4k3/8/8/8/8/8/8/4K2R w K - 7 1", makeMove(H1, H5), 0, 0, 8, 0, WhiteRook},
  };
  BoardFixture f;
  for (const MakeCase& c : cases) {
    Position& pos = f.set(c.fen);
    makeMoveAny(pos, c.move);
    EXPECT_EQ(pos.state->castle, c.castle) << c.fen;
    EXPECT_EQ(pos.state->epSquare, c.epSquare) << c.fen;
    EXPECT_EQ(pos.state->rule50, c.rule50) << c.fen;
    EXPECT_EQ(pos.state->capturedPiece, c.captured) << c.fen;
    EXPECT_EQ(pos.board[moveTo(c.move)], c.pieceOnTo) << c.fen;
    EXPECT_EQ((pos.state->materialKey & 0x80000000u) != 0, c.unusual) << c.fen;
    expectDerivedStateMatches(pos, c.fen);
  }
}

}  // namespace
}  // namespace tavrin::test
