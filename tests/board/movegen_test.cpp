// Staged generators against the legal list, the stored-move test, and the quiet generator's order.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <random>
#include <set>

#include "board/legality.h"
#include "board/make_move.h"
#include "eval/attack_summary.h"
#include "tests/test_support.h"

namespace tavrin::test {
namespace {

constexpr int Games = scaled(250, 12);

template <typename Generate>
std::vector<Move> generated(Generate generate) {
  MoveWord list[MaxMoves];
  MoveWord* end = generate(list);
  EXPECT_EQ(*end, 0u);
  EXPECT_LT(end - list, MaxMoves);
  return movesOf(list, end);
}

bool isLegal(Position& pos, Move m) {
  makeMoveAny(pos, m);
  bool legal = !leftOwnKingInCheck(pos);
  unmakeMove(pos, m);
  return legal;
}

std::set<Move> legalSet(Position& pos) {
  auto v = generated([&](MoveWord* l) { return generateLegalMoves(pos, l); });
  std::set<Move> s(v.begin(), v.end());
  EXPECT_EQ(s.size(), v.size()) << "duplicate in the legal list: " << toFen(pos);
  return s;
}

// The captures stage followed by the remaining stage, whether or not in check.
std::vector<Move> nonEvasionMoves(Position& pos) {
  const bool white = pos.sideToMove == White;
  const Bitboard enemies = pos.pieces[white ? AllBlack : AllWhite] & ~pos.pieces[white ? BlackKing : WhiteKing];
  auto captures = generated([&](MoveWord* l) {
    return white ? generateCapturesWhite(pos, l, enemies) : generateCapturesBlack(pos, l, enemies);
  });
  auto rest = generated([&](MoveWord* l) {
    return white ? generateRemaining<White>(pos, l, INT_MIN) : generateRemaining<Black>(pos, l, INT_MIN);
  });
  captures.insert(captures.end(), rest.begin(), rest.end());
  return captures;
}

// The pseudo-legal moves from the staged generators of the side to move, each exactly once.
std::vector<Move> stagedMoves(Position& pos) {
  const bool white = pos.sideToMove == White;
  const StateEntry& st = *pos.state;
  if (white ? st.whiteKingAttackers : st.blackKingAttackers)
    return generated([&](MoveWord* l) {
      return white ? generateEvasionsWhite(pos, l, ~Bitboard(0)) : generateEvasionsBlack(pos, l, ~Bitboard(0));
    });
  return nonEvasionMoves(pos);
}

// Walks random games; at every position runs the checks of `visit` with a fresh attack summary.
template <typename Visit>
void walkRandomGames(int games, std::uint64_t seed, Visit visit) {
  BoardFixture f;
  std::mt19937_64 rng(seed);
  MoveWord list[MaxMoves];
  for (int game = 0; game < games; ++game) {
    Position& pos = f.set(RandomGameStarts[game % std::size(RandomGameStarts)]);
    for (int ply = 0; ply < 100; ++ply) {
      computeAttackSummary(pos);
      visit(pos, rng);
      MoveWord* end = generateLegalMoves(pos, list);
      if (end == list) break;
      makeMoveAny(pos, moveOf(list[rng() % std::size_t(end - list)]));
    }
  }
}

TEST(MoveGeneration, StagedGeneratorsCoverTheLegalMovesExactlyOnce) {
  walkRandomGames(Games, 7, [](Position& pos, std::mt19937_64&) {
    std::vector<Move> staged = stagedMoves(pos);
    std::set<Move> unique(staged.begin(), staged.end());
    ASSERT_EQ(unique.size(), staged.size()) << "a move written twice: " << toFen(pos);
    std::set<Move> legalStaged;
    for (Move m : staged)
      if (isLegal(pos, m)) legalStaged.insert(m);
    ASSERT_EQ(legalStaged, legalSet(pos)) << toFen(pos);
  });
}

TEST(MoveGeneration, StoredMoveTestAcceptsGeneratedAndRejectsTheRest) {
  walkRandomGames(Games, 11, [](Position& pos, std::mt19937_64& rng) {
    const bool white = pos.sideToMove == White;
    auto test = [&](Move m) { return white ? isPseudoLegalWhite(pos, m) : isPseudoLegalBlack(pos, m); };
    for (Move m : legalSet(pos)) ASSERT_TRUE(test(m)) << m << " " << toFen(pos);
    const std::vector<Move> stages = nonEvasionMoves(pos);
    const std::set<Move> pseudo(stages.begin(), stages.end());
    const Bitboard own = pos.pieces[white ? AllWhite : AllBlack];
    static const int Kinds[] = {NormalMove, NormalMove, NormalMove, CastlingMove, EnPassantMove, 2,
                                PromoteKnight, PromoteBishop, PromoteRook, PromoteQueen};
    for (int i = 0; i < 200; ++i) {
      int from = int(rng() % 64);
      if (i % 2 == 0 && own) {  // half of them from an own piece, so that more get far
        Bitboard b = own;
        for (int skip = int(rng() % std::uint64_t(popCount(own))); skip > 0; --skip) b &= b - 1;
        from = bitScanForward(b);
      }
      const Move m = makeMove(from, int(rng() % 64), Kinds[rng() % std::size(Kinds)]);
      if (!test(m) || pseudo.count(m)) continue;
      // Accepted by design: a double step onto an enemy piece, castling while in check.
      const int piece = pos.board[from];
      const bool doubleStep = kindOf(piece) == Pawn && (moveFrom(m) ^ moveTo(m)) == 16;
      const bool castling = moveKind(m) == CastlingMove;
      ASSERT_TRUE(doubleStep || castling) << "accepted " << m << " in " << toFen(pos);
    }
  });
}

// The quiet list is the remaining list without castling and promotions; the quiet checks are
// exactly the legal quiet moves that give check. The remaining list's words never carry
// NonCaptureMark: the search's futility tests of its quiet stage read the move alone.
TEST(MoveGeneration, QuietListsAgreeWithTheRemainingAndTheLegalLists) {
  walkRandomGames(Games / 2, 13, [](Position& pos, std::mt19937_64&) {
    const bool white = pos.sideToMove == White;
    auto quiet = generated([&](MoveWord* l) {
      return white ? generateQuietWhite(pos, l, -32768) : generateQuietBlack(pos, l, -32768);
    });
    MoveWord rest[MaxMoves];
    const MoveWord* restEnd =
        white ? generateRemaining<White>(pos, rest, INT_MIN) : generateRemaining<Black>(pos, rest, INT_MIN);
    std::set<Move> expected;
    for (const MoveWord* w = rest; w != restEnd; ++w) {
      ASSERT_EQ(*w & NonCaptureMark, 0u) << toFen(pos);
      if (moveKind(moveOf(*w)) == NormalMove) expected.insert(moveOf(*w));
    }
    ASSERT_EQ(std::set<Move>(quiet.begin(), quiet.end()), expected) << toFen(pos);

    if (white ? pos.state->whiteKingAttackers : pos.state->blackKingAttackers) return;
    std::set<Move> checks, legalChecks;
    for (Move m : legalSet(pos)) {
      if (moveKind(m) != NormalMove || pos.board[moveTo(m)]) continue;
      makeMoveAny(pos, m);
      if (inCheck(pos)) checks.insert(m);
      unmakeMove(pos, m);
    }
    for (Move m : generated([&](MoveWord* l) {
           return white ? generateQuietChecksWhite(pos, l) : generateQuietChecksBlack(pos, l);
         }))
      if (isLegal(pos, m)) legalChecks.insert(m);
    ASSERT_EQ(legalChecks, checks) << toFen(pos);
  });
}

TEST(LegalGenerator, WordsSortCapturesFirstAndCarryTheBareMove) {
  BoardFixture f;
  Position& pos = f.set("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1");
  MoveWord list[MaxMoves];
  MoveWord* end = generateLegalMoves(pos, list);
  ASSERT_EQ(end - list, 48);
  for (MoveWord* w = list; w != end; ++w) {
    EXPECT_EQ(*w & NonCaptureMark, 0u);
    const bool capture = pos.board[moveTo(moveOf(*w))] != 0;
    EXPECT_EQ(*w >= 0xA0000000u, capture) << moveOf(*w);
  }
}

TEST(QuietGenerator, StartPositionOrderAndSort) {
  BoardFixture f;
  Position& pos = f.set("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1");
  std::memset(GainTable, 0, sizeof GainTable);
  MoveWord list[MaxMoves];
  MoveWord* end = generateQuietWhite(pos, list, 0);
  ASSERT_EQ(end - list, 20);
  for (MoveWord* w = list; w + 1 < end; ++w) EXPECT_GT(w[0], w[1]);  // descending move codes
  // With a negative gain on one move and a threshold below it, it sorts first (unsigned compare).
  GainTable[gainCell(WhitePawn, makeMove(A2, A3))] = -5;
  end = generateQuietWhite(pos, list, -10);
  ASSERT_EQ(end - list, 20);
  EXPECT_EQ(list[0], (MoveWord(std::uint16_t(-5)) << 16) | makeMove(A2, A3));
  // A threshold above every gain leaves nothing.
  end = generateQuietWhite(pos, list, 1);
  EXPECT_EQ(end, list);
  EXPECT_EQ(list[0], 0u);
  std::memset(GainTable, 0, sizeof GainTable);
}

TEST(QuietGenerator, KingAvoidsAttackedSquaresAndPromotingPawnsStayOut) {
  BoardFixture f;
  Position& pos = f.set("4k3/P7/8/8/8/1b5b/r7/4K3 w - - 0 1");
  computeAttackSummary(pos);
  std::memset(GainTable, 0, sizeof GainTable);
  MoveWord list[MaxMoves];
  MoveWord* end = generateQuietWhite(pos, list, -32768);
  EXPECT_EQ(end, list) << "every king square is attacked and a7 may only promote";
}

TEST(CaptureGenerator, PromotionsQueenAlwaysKnightOnlyWithCheck) {
  BoardFixture f;
  Position& pos = f.set("1n6/P3k3/8/8/8/8/8/4K3 w - - 0 1");
  computeAttackSummary(pos);
  auto moves = generated([&](MoveWord* l) { return generateCapturesWhite(pos, l, pos.pieces[AllBlack]); });
  std::set<Move> got(moves.begin(), moves.end());
  // A knight on a8 or b8 would not check the king on e7.
  EXPECT_EQ(got, (std::set<Move>{makeMove(A7, A8, PromoteQueen), makeMove(A7, B8, PromoteQueen)}));
  pos = f.set("1n6/P7/2k5/8/8/8/8/4K3 w - - 0 1");
  computeAttackSummary(pos);
  moves = generated([&](MoveWord* l) { return generateCapturesWhite(pos, l, pos.pieces[AllBlack]); });
  // a8=N attacks b6 and c7; b8=N attacks a6, c6 (the king), d7.
  EXPECT_EQ(std::set<Move>(moves.begin(), moves.end()),
            (std::set<Move>{makeMove(A7, A8, PromoteQueen), makeMove(A7, B8, PromoteQueen),
                            makeMove(A7, B8, PromoteKnight)}));
}

struct PseudoCase {
  const char* fen;
  Move move;
  bool accepted;
};

TEST(StoredMoveTest, EdgeCases) {
  const PseudoCase cases[] = {
      // Promotion kinds on the last rank only.
      {"4k3/P7/8/8/8/8/8/4K3 w - - 0 1", makeMove(A7, A8), false},
      {"4k3/P7/8/8/8/8/8/4K3 w - - 0 1", makeMove(A7, A8, PromoteRook), true},
      // Castling: g1 attacked rejects, e1 attacked (in check) is accepted.
      {"4k1r1/8/8/8/8/8/8/4K2R w K - 0 1", makeMove(E1, G1, CastlingMove), false},
      {"4k3/4r3/8/8/8/8/8/4K2R w K - 0 1", makeMove(E1, G1, CastlingMove), true},
      {"4k3/8/8/8/8/8/8/R3K3 w Q - 0 1", makeMove(E1, C1, CastlingMove), true},
      {"4k3/8/8/8/8/8/8/RN2K3 w Q - 0 1", makeMove(E1, C1, CastlingMove), false},
      // A double step onto an enemy knight is accepted by design; over a piece it is not.
      {"4k3/8/8/8/4n3/8/4P3/4K3 w - - 0 1", makeMove(E2, E4), true},
      {"4k3/8/8/8/8/4n3/4P3/4K3 w - - 0 1", makeMove(E2, E4), false},
      // En passant only onto the recorded square.
      {"4k3/8/8/3pP3/8/8/8/4K3 w - - 0 2", makeMove(E5, D6, EnPassantMove), false},
  };
  BoardFixture f;
  for (const PseudoCase& c : cases) {
    Position& pos = f.set(c.fen);
    computeAttackSummary(pos);
    bool got = pos.sideToMove == White ? isPseudoLegalWhite(pos, c.move) : isPseudoLegalBlack(pos, c.move);
    EXPECT_EQ(got, c.accepted) << c.fen << " move " << c.move;
  }
}

TEST(EvasionGenerator, OrderAgainstASingleChecker) {
  BoardFixture f;
  // Rook e8 checks the king on e1; pawn d2 cannot help, knight c3 can interpose on e2 or e4.
  Position& pos = f.set("4r1k1/8/8/8/8/2N5/3P4/4K3 w - - 0 1");
  computeAttackSummary(pos);
  auto moves = generated([&](MoveWord* l) { return generateEvasionsWhite(pos, l, ~Bitboard(0)); });
  std::vector<Move> want = {makeMove(E1, D1), makeMove(E1, F1), makeMove(E1, F2), makeMove(C3, E2),
                            makeMove(C3, E4)};
  EXPECT_EQ(moves, want);
}

}  // namespace
}  // namespace tavrin::test
