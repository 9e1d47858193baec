// The attack summary has two builders: the full evaluation hands over the attacks it computed,
// and the summary's own pass serves cache hits, lazy estimates and null moves. Both must leave the
// same fields, and those must agree with the board's direct computations.
#include <random>

#include "board/legality.h"
#include "eval/attack_summary.h"
#include "eval_test_support.h"

namespace tavrin::test {
namespace {

struct Summary {
  Bitboard attackedByWhite, attackedByBlack, whiteKingAttackers, blackKingAttackers, pinned, checkCandidates,
      quietExemptions, exchangeExclusion, pawnThreats;
  bool operator==(const Summary&) const = default;
};

Summary summaryOf(const StateEntry& st) {
  return {st.attackedByWhite, st.attackedByBlack, st.whiteKingAttackers, st.blackKingAttackers, st.pinned,
          st.checkCandidates, st.quietExemptions, st.exchangeExclusion, st.pawnThreats};
}

// Does the quiet move give check? Played and taken back.
bool givesCheck(Position& pos, Move m) {
  makeMoveAny(pos, m);
  const bool check = inCheck(pos);
  unmakeMove(pos, m);
  return check;
}

TEST(AttackSummary, EvaluationAndOwnPassAgreeWithTheBoard) {
  EvalFixture f;
  std::mt19937_64 rng(2026);
  MoveWord list[MaxMoves];
  int compared = 0;
  for (int game = 0; game < 60; ++game) {
    Position& pos = f.set(RandomGameStarts[game % std::size(RandomGameStarts)]);
    for (int ply = 0; ply < 80; ++ply) {
      // Pawn endings take the summary's own pass inside the evaluation as well.
      whiteEval(pos);
      const Summary fromEvaluation = summaryOf(pos.st());
      computeAttackSummary(pos);
      const Summary ownPass = summaryOf(pos.st());
      SCOPED_TRACE(toFen(pos));
      ASSERT_TRUE(fromEvaluation == ownPass);
      ++compared;

      const bool white = pos.sideToMove == White;
      EXPECT_EQ(ownPass.attackedByWhite, attackedSquares<White>(pos));
      EXPECT_EQ(ownPass.attackedByBlack, attackedSquares<Black>(pos));
      EXPECT_EQ(ownPass.whiteKingAttackers, attackersTo<Black>(pos, pos.whiteKingSquare));
      EXPECT_EQ(ownPass.blackKingAttackers, attackersTo<White>(pos, pos.blackKingSquare));
      EXPECT_EQ(ownPass.pinned, white ? pinnedPieces<White>(pos) : pinnedPieces<Black>(pos));

      MoveWord* end = generateLegalMoves(pos, list);
      // Every quiet move that checks starts from a check candidate (the search never prunes those).
      for (Move m : movesOf(list, end)) {
        const bool quiet = !pos.board[moveTo(m)] && moveKind(m) == NormalMove;
        if (quiet && givesCheck(pos, m)) {
          EXPECT_TRUE(ownPass.checkCandidates & bit(moveFrom(m))) << text(m);
        }
      }
      if (end == list) break;
      makeMoveAny(pos, moveOf(list[rng() % std::size_t(end - list)]));
    }
  }
  EXPECT_GT(compared, 2000);
}

}  // namespace
}  // namespace tavrin::test
