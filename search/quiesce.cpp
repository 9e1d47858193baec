// Quiescence search of a side not in check: captures with delta pruning, then quiet checks in
// the first two plies; and the PV quiescence pair that serves the PV nodes at the horizon.
#include "search/quiesce_common.h"

namespace tavrin {

template <Color Us>
int quiesceNode(Position& pos, int beta, int depth) {
  // Steps 1-3. Mate-distance pruning, the ply guard, stop, fifty-move rule, repetition, table probe.
  int score;
  Move ttMove = 0;
  if (quiescePrelude(pos, beta, ttMove, score)) return score;
  const Key key = pos.st().key;

  // Step 4. Stand pat.
  const int staticEval = pos.st().staticEval;
  int best = staticEval + params::QuiesceTempo;
  if (best >= beta) return best;

  // Step 5. Delta pruning by target set.
  Bitboard targets = quiesceTargets<Us>(pos, beta, best);

  // Steps 6-9. Captures of the remaining targets by selection, the table move first, then quiet
  // checks in the first two quiescence plies; a cut-off is stored as a lower bound.
  int legal = 0;
  if (quiesceMoves<Us>(
          pos, targets, ttMove,
          [&](Move m) { return quiesceMoveDecides<Us>(pos, m, key, beta, depth - 1, best, score, legal); },
          [&] { return quietChecksAllowed(staticEval, beta, depth); }))
    return score;

  // Step 10. Every move failed low.
  storeUpper(key, params::QuiesceStoreDepth, best);
  return best;
}

// The PV quiescence: the same rules with a full window; exact results are stored as such. A PV
// node in check hands over here too: then every evasion is searched, and none legal is mate.
template <Color Us>
int pvQuiesceNode(Position& pos, int alpha, int beta, int depth) {
  // Steps 1-2. Mate-distance pruning, the ply guard, stop, fifty-move rule, repetition.
  int score;
  if (pvNodePrelude<true>(pos, alpha, beta, score)) return score;

  // Step 3. Table probe.
  const Key key = pos.st().key;
  Move ttMove = 0;
  if (probeQuiesce(key, alpha, beta, ttMove, score)) return score;

  const int alphaIn = alpha;
  int best;
  Move bestMove = 0;

  // One move with full-window children (null-window evasion children). True when it decides the
  // node (a stop, or a cut-off, which is stored), the result then in score.
  auto decides = [&](Move m, int childDepth) {
    if (!quiesceMove<Us, true>(pos, m, alpha, beta, childDepth, score)) return false;
    if (pos.stopFlag) {
      score = 0;
      return true;
    }
    if (score > best) {
      best = score;
      if (score > alpha) {
        bestMove = m;
        if (score >= beta) {
          storeLower(key, params::QuiesceStoreDepth, score, m);
          return true;
        }
        alpha = score;
      }
    }
    return false;
  };

  if (kingAttackers<Us>(pos.st())) {
    // In check: every evasion by selection, the table move first; a single reply costs no depth.
    best = pos.ply - MateScore;
    MoveWord list[MaxMoves];
    MoveWord* end = generateEvasions<Us>(pos, list, ~Bitboard(0));
    if (end - list > 1) --depth;
    promoteTableMove(list, end, ttMove);
    for (MoveWord* cur = list; cur < end; ++cur)
      if (decides(moveOf(picker_detail::selectBest(cur, end)), depth)) return score;
  } else {
    // Step 4. Stand pat.
    const int staticEval = pos.st().staticEval;
    best = staticEval + params::QuiesceTempo;
    if (best >= beta) return best;
    if (best > alpha) alpha = best;

    // Step 5. Delta pruning by target set, measured against the lower edge of the window.
    int deltaBest = best;
    Bitboard targets = quiesceTargets<Us>(pos, alpha + 1, deltaBest);
    if (deltaBest > best) {
      best = deltaBest;
      if (best >= beta) return best;
      if (best > alpha) alpha = best;
    }

    // Steps 6-9. Captures by selection, the table move first, then quiet checks in the first two
    // plies, measured against the lower edge of the window as it then stands.
    if (quiesceMoves<Us>(
            pos, targets, ttMove, [&](Move m) { return decides(m, depth - 1); },
            [&] { return quietChecksAllowed(staticEval, alpha + 1, depth); }))
      return score;
  }

  // Step 10. Exact result or upper bound.
  if (bestMove && best > alphaIn)
    storeExact(key, params::QuiesceStoreDepth, best, bestMove);
  else
    storeUpper(key, params::QuiesceStoreDepth, best);
  return best;
}

int quiesceWhite(Position& pos, int beta, int depth) { return quiesceNode<White>(pos, beta, depth); }
int quiesceBlack(Position& pos, int beta, int depth) { return quiesceNode<Black>(pos, beta, depth); }
int pvQuiesceWhite(Position& pos, int alpha, int beta, int depth) {
  return pvQuiesceNode<White>(pos, alpha, beta, depth);
}
int pvQuiesceBlack(Position& pos, int alpha, int beta, int depth) {
  return pvQuiesceNode<Black>(pos, alpha, beta, depth);
}

}  // namespace tavrin
