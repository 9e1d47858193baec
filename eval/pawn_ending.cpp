// The pawn-ending evaluators (kings and pawns only), one per side to move: unstoppable passers by
// the rule of the square, king proximity to passers, and exact draws from the KPK bitbase.
#include "board/bitboard.h"
#include "common/globals.h"
#include "eval/attack_summary.h"
#include "eval/eval_internal.h"
#include "eval/kpk.h"
#include "eval/masks.h"
#include "eval/weights.h"

namespace tavrin {

namespace {

constexpr const EvalWeights& W = Weights;

struct PasserRace {
  int plies = 1000;   // plies until the first unstoppable passer of the colour promotes
};

// King proximity to the colour's passers and its fastest unstoppable passer. ToMove is the side
// to move of the whole position.
template <Color C, Color ToMove>
int passerTerms(const Position& pos, const PawnEntry& pe, PasserRace& race) {
  using T = ColorTraits<C>;
  constexpr Color Them = T::Them;
  int score = 0;
  const int ownKing = pos.kingSquare(C), enemyKing = pos.kingSquare(Them);
  forEachFrontPasser<C>(pos, pe, [&](int s) {
    int r = T::RelativeRank(s);
    if (r == 0 || r == 7) return;
    int stop = s + T::Up;
    int promotion = C == White ? makeSquare(fileOf(s), 7) : makeSquare(fileOf(s), 0);
    score += (distance(stop, enemyKing) - distance(stop, ownKing)) * W.PawnEndingKingToPasser * r;

    // Rule of the square: moves to promote against the enemy king's distance to the queening square.
    int moves = 7 - r;
    if (r == 1) moves = 5;
    if (Spans.forwardFile[C][s] & bit(ownKing)) moves++;
    int kingDist = distance(enemyKing, promotion) - (ToMove == Them ? 1 : 0);
    if (kingDist > moves) {
      int plies = 2 * moves - (ToMove == C ? 1 : 0);
      if (plies < race.plies) race.plies = plies;
    }
  });
  return score;
}

}  // namespace

template <Color Us>
void evaluatePawnEnding(Position& pos, const MaterialInfo& material, PawnEntry& pe) {
  StateEntry& st = pos.st();
  if (pe.storedKey() != st.pawnKey) evaluatePawns(pos, pe);
  computeAttackSummary(pos);
  st.evalFinal = 0;

  int whitePawns = pe.count[White], blackPawns = pe.count[Black];
  if (whitePawns + blackPawns == 0) {
    st.staticEval = 0;
    st.evalFinal = 1;
    return;
  }
  if (whitePawns + blackPawns == 1) {
    Color strong = whitePawns ? White : Black;
    int pawn = bitScanForward(pos.pieces[strong == White ? WhitePawn : BlackPawn]);
    int strongKing = pos.kingSquare(strong), weakKing = pos.kingSquare(~strong);
    if (!kpkWins(strongKing, pawn, weakKing, strong == White, Us == strong)) {
      st.staticEval = 0;
      st.evalFinal = 1;
      return;
    }
    int relativeRank = strong == White ? rankOf(pawn) : 7 - rankOf(pawn);
    int score = Engine.pawnValue + W.KpkWinBonus + 10 * relativeRank;
    st.staticEval = Us == strong ? score : -score;
    return;
  }

  PasserRace whiteRace, blackRace;
  int eg = endgameOf(st.psqScore) + endgameOf(pe.score);
  eg += passerTerms<White, Us>(pos, pe, whiteRace) - passerTerms<Black, Us>(pos, pe, blackRace);
  if (whiteRace.plies < blackRace.plies - 2 || (whiteRace.plies < 1000 && blackRace.plies == 1000))
    eg += W.UnstoppablePasser - 10 * whiteRace.plies;
  else if (blackRace.plies < whiteRace.plies - 2 || (blackRace.plies < 1000 && whiteRace.plies == 1000))
    eg -= W.UnstoppablePasser - 10 * blackRace.plies;

  int total = combineScore(eg, material, pe);
  if (total > EvalScoreLimit) total = EvalScoreLimit;
  if (total < -EvalScoreLimit) total = -EvalScoreLimit;
  st.staticEval = Us == White ? total : -total;
}

template void evaluatePawnEnding<White>(Position&, const MaterialInfo&, PawnEntry&);
template void evaluatePawnEnding<Black>(Position&, const MaterialInfo&, PawnEntry&);

void evaluatePawnEndingWhite(Position& pos, const MaterialInfo& material, PawnEntry& pawns) {
  evaluatePawnEnding<White>(pos, material, pawns);
}
void evaluatePawnEndingBlack(Position& pos, const MaterialInfo& material, PawnEntry& pawns) {
  evaluatePawnEnding<Black>(pos, material, pawns);
}

}  // namespace tavrin
