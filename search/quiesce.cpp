// Quiescence search of a side not in check: captures with delta pruning, then quiet checks in
// the first two plies; and the PV quiescence pair that serves the PV nodes at the horizon.
#include <algorithm>

#include "search/quiesce_common.h"

namespace tavrin {

template <Color Us>
int quiesceNode(Position& pos, int beta, int depth) {
  constexpr Color Them = ~Us;
  using picker_detail::selectBest;

  // Step 1. Mate-distance pruning; the ply guard.
  int score;
  if (mateDistancePrune(pos, beta, score)) return score;
  if (plyExhausted(pos)) return pos.st().staticEval;

  // Step 2. Stop, fifty-move rule, repetition.
  if (pos.stopFlag) return 0;
  if (isRuleDraw(pos)) return 0;

  // Step 3. Table probe.
  const Key key = pos.st().key;
  Move ttMove = 0;
  if (probeQuiesce(key, beta - 1, beta, ttMove, score)) return score;

  // Step 4. Stand pat.
  const int staticEval = pos.st().staticEval;
  int best = staticEval + params::QuiesceTempo;
  if (best >= beta) return best;

  // Step 5. Delta pruning by target set.
  Bitboard targets = quiesceTargets<Us>(pos, beta, best);

  // Step 6. Captures of the remaining targets, the table move first.
  MoveWord list[MaxMoves];
  MoveWord* end = genCaptures<Us>(pos, list, targets);
  promoteTableMove(list, end, ttMove);

  // Step 7. Captures by selection.
  for (MoveWord* cur = list; cur < end; ++cur) {
    MoveWord w = selectBest(cur, end);
    if (losingCapture<Us>(pos, w)) continue;
    const Move m = wordMove(w);
    if (!makeAndEvaluate<Us>(pos, m, beta - params::QuiesceLazyMargin, beta + params::QuiesceLazyMargin))
      continue;
    if (pos.st().evalFinal)
      score = -pos.st().staticEval;
    else if (childInCheck<Them>(pos))
      score = -quiesceEvasion<Them>(pos, 1 - beta, depth - 1);
    else
      score = -quiesce<Them>(pos, 1 - beta, depth - 1);
    undoMove<Us>(pos, m);
    if (pos.stopFlag) return 0;
    if (score > best) {
      // Step 8. Cut-off.
      if (score >= beta) {
        storeLower(key, params::QuiesceStoreDepth, score, m);
        return score;
      }
      best = score;
    }
  }

  // Step 9. Quiet checks in the first two quiescence plies.
  if (quietChecksAllowed(staticEval, beta, depth)) {
    end = genQuietChecks<Us>(pos, list);
    for (MoveWord* cur = list; cur < end; ++cur) {
      const Move m = wordMove(*cur);
      if (!makeAndEvaluate<Us>(pos, m, beta - params::QuiesceLazyMargin, beta + params::QuiesceLazyMargin))
        continue;
      if (pos.st().evalFinal)
        score = -pos.st().staticEval;
      else if (childInCheck<Them>(pos))
        score = -quiesceEvasion<Them>(pos, 1 - beta, depth - 1);
      else
        score = -quiesce<Them>(pos, 1 - beta, depth - 1);
      undoMove<Us>(pos, m);
      if (pos.stopFlag) return 0;
      if (score > best) {
        if (score >= beta) {
          storeLower(key, params::QuiesceStoreDepth, score, m);
          return score;
        }
        best = score;
      }
    }
  }

  // Step 10. Every move failed low.
  storeUpper(key, params::QuiesceStoreDepth, best);
  return best;
}

// The PV quiescence: the same rules with a full window; exact results are stored as such.
template <Color Us>
int pvQuiesceNode(Position& pos, int alpha, int beta, int depth) {
  constexpr Color Them = ~Us;
  using picker_detail::selectBest;

  // Step 1. Mate-distance pruning; the ply guard.
  alpha = std::max(alpha, pos.ply - MateScore);
  beta = std::min(beta, MateScore - pos.ply);
  if (alpha >= beta) return alpha;
  if (plyExhausted(pos)) return pos.st().staticEval;

  // Step 2. Stop, fifty-move rule, repetition.
  if (pos.stopFlag) return 0;
  if (isRuleDraw(pos)) return 0;

  // Step 3. Table probe.
  const Key key = pos.st().key;
  Move ttMove = 0;
  int score;
  if (probeQuiesce(key, alpha, beta, ttMove, score)) return score;

  // Step 4. Stand pat.
  const int staticEval = pos.st().staticEval;
  const int alphaIn = alpha;
  int best = staticEval + params::QuiesceTempo;
  if (best >= beta) return best;
  if (best > alpha) alpha = best;
  Move bestMove = 0;

  // Step 5. Delta pruning by target set, measured against the lower edge of the window.
  int deltaBest = best;
  Bitboard targets = quiesceTargets<Us>(pos, alpha + 1, deltaBest);
  if (deltaBest > best) {
    best = deltaBest;
    if (best >= beta) return best;
    if (best > alpha) alpha = best;
  }

  // Step 6. Captures, the table move first.
  MoveWord list[MaxMoves];
  MoveWord* end = genCaptures<Us>(pos, list, targets);
  promoteTableMove(list, end, ttMove);

  // Step 7. Captures by selection: full-window children, null-window evasion children.
  for (MoveWord* cur = list; cur < end; ++cur) {
    MoveWord w = selectBest(cur, end);
    if (losingCapture<Us>(pos, w)) continue;
    const Move m = wordMove(w);
    if (!makeAndEvaluate<Us>(pos, m, alpha - params::QuiesceLazyMargin, beta + params::QuiesceLazyMargin))
      continue;
    if (pos.st().evalFinal)
      score = -pos.st().staticEval;
    else if (childInCheck<Them>(pos))
      score = -quiesceEvasion<Them>(pos, -alpha, depth - 1);
    else
      score = -pvQuiesce<Them>(pos, -beta, -alpha, depth - 1);
    undoMove<Us>(pos, m);
    if (pos.stopFlag) return 0;
    if (score > best) {
      best = score;
      if (score > alpha) {
        bestMove = m;
        // Step 8. Cut-off.
        if (score >= beta) {
          storeLower(key, params::QuiesceStoreDepth, score, m);
          return score;
        }
        alpha = score;
      }
    }
  }

  // Step 9. Quiet checks in the first two plies.
  if (quietChecksAllowed(staticEval, alpha + 1, depth)) {
    end = genQuietChecks<Us>(pos, list);
    for (MoveWord* cur = list; cur < end; ++cur) {
      const Move m = wordMove(*cur);
      if (!makeAndEvaluate<Us>(pos, m, alpha - params::QuiesceLazyMargin, beta + params::QuiesceLazyMargin))
        continue;
      if (pos.st().evalFinal)
        score = -pos.st().staticEval;
      else if (childInCheck<Them>(pos))
        score = -quiesceEvasion<Them>(pos, -alpha, depth - 1);
      else
        score = -pvQuiesce<Them>(pos, -beta, -alpha, depth - 1);
      undoMove<Us>(pos, m);
      if (pos.stopFlag) return 0;
      if (score > best) {
        best = score;
        if (score > alpha) {
          bestMove = m;
          if (score >= beta) {
            storeLower(key, params::QuiesceStoreDepth, score, m);
            return score;
          }
          alpha = score;
        }
      }
    }
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
