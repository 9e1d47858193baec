// PV nodes: full window, no null move, no pruning and no reductions; internal iterative deepening
// through the PV member itself; the first move searched with the full window, later ones with a
// null window at full depth and re-searched when they land inside the window; exact results go to
// both tables.
#include "search/deep_node.h"

namespace tavrin {

template <Color Us>
int pvNode(Position& pos, int alpha, int beta, int depth) {
  constexpr Color Them = ~Us;
  const bool inCheck = kingAttackers<Us>(pos.st()) != 0;

  // At the horizon the PV quiescence takes over (it answers a check with every evasion).
  if (depth <= 1) return pvQuiesce<Us>(pos, alpha, beta, 0);

  // Steps 1-4. Mate-distance pruning, the ply guard, best-move slot, stop, fifty-move rule, repetition.
  int score;
  if (pvNodePrelude(pos, alpha, beta, score)) return score;

  // Step 5. The table gives a move only: PV nodes never cut on it.
  const Key key = pos.st().key;
  Move ttMove = probeMove(key);
  bestMoveSlot(pos) = ttMove;

  // Step 7. Internal iterative deepening with a window widened by the depth. A node without a legal
  // move (mated or stalemate) stores nothing and so never gets a table move: its two reduced
  // searches of itself would call themselves twice at every level, without a move made or a poll,
  // slower and slower with each iteration. It is settled first.
  if (!ttMove && depth >= params::IidMinDepth) {
    if (!hasLegalMove<Us>(pos)) return inCheck ? pos.ply - MateScore : 0;
    if (depth >= params::PvIidDeepMinDepth) {
      pvSearch<Us>(pos, alpha - depth, beta + depth, depth - params::PvIidDeepReduction);
      if (pos.stopFlag) return 0;
    }
    pvSearch<Us>(pos, alpha - depth, beta + depth, depth - params::IidReduction);
    if (pos.stopFlag) return 0;
    ttMove = bestMoveSlot(pos);
  }

  // Step 8. Singular extension, measured against the lower edge of the window.
  const int ttExtension = singularExtension<Us>(pos, alpha + 1, depth, ttMove);
  if (pos.stopFlag) return 0;

  // Step 10. Move loop.
  StateEntry& st = pos.st();
  const int eval = st.staticEval;
  const int alphaIn = alpha;
  MovePicker mp;
  EvasionPicker ep;
  if (inCheck) ep.init<Us>(pos, ttMove);
  else mp.init(StageTtMove, ttMove);

  int best = -MateScore;
  Move bestMove = 0;
  int n = 0;
  bool splitRefused = false;
  for (;;) {
    // A node that has searched its first move may offer the rest to idle threads.
    if (!inCheck && Split.splitEnabled && Split.splitAllowed && !splitRefused && n > 0 &&
        depth >= params::MinSplitDepth && mp.stage >= StageGenCaptures && mp.stage <= StageQuiet) {
      int splitValue;
      if (trySplit(pos, &mp, depth, beta, alpha, SplitPvNode, splitValue)) return splitValue;
      splitRefused = true;
    }
    Move m;
    MoveWord w;
    if (inCheck) {
      m = ep.next();
      w = m;
    } else {
      w = nextMove<Us>(pos, mp);
      m = moveOf(w);
    }
    if (!m) break;
    const int piece = pos.board[moveFrom(m)];
    const bool quiet = isQuietMove(pos, m);
    int extension = m == ttMove ? ttExtension : 0;
    if (!extension && isPassedPawnPush<Us>(pos, m, 5)) extension = 1;

    if (!makeAndEvaluate<Us>(pos, m, alpha - params::LazyMargin, beta + params::LazyMargin)) continue;
    const LastTargetScope lastTarget(pos, m);
    const bool check = childInCheck<Them>(pos);
    const int newDepth = check ? depth - 1 : depth - 2 + extension;

    if (pos.st().evalFinal) {
      score = -pos.st().staticEval;
    } else if (n == 0) {
      score = -pvSearch<Them>(pos, -beta, -alpha, newDepth);
    } else {
      score = *childScore<Us>(pos, alpha + 1, depth,
                              [&]() -> std::optional<int> { return -nullWindowChild<Them, Role::Cut>(pos, -alpha, newDepth); });
      if (score > alpha && score < beta) score = -pvSearch<Them>(pos, -beta, -alpha, newDepth);
    }
    unmakeMove<Us>(pos, m);
    ++n;
    if (pos.stopFlag) return 0;

    if (score > best) {
      best = score;
      if (score > alpha) {
        bestMove = m;
        if (score >= beta) {
          // Step 11. Cut-off.
          recordCutoff(pos, m, piece, depth, quiet);
          storeLower(key, depth, score, m);
          return score;
        }
        alpha = score;
        continue;
      }
    }
    if (quiet && eval > alpha - params::HistoryPenaltyMargin)
      historyPenalty(piece, moveTo(m), depth);
  }

  // No legal move: mated or stalemate.
  if (n == 0) return inCheck ? pos.ply - MateScore : 0;

  // Step 12. Exact result, or every move failed low.
  if (bestMove && best > alphaIn) {
    bestMoveSlot(pos) = bestMove;
    storeExact(key, depth, best, bestMove);
  } else {
    storeUpper(key, depth, best);
  }
  return best;
}

int pvSearchWhite(Position& pos, int alpha, int beta, int depth) { return pvNode<White>(pos, alpha, beta, depth); }
int pvSearchBlack(Position& pos, int alpha, int beta, int depth) { return pvNode<Black>(pos, alpha, beta, depth); }

}  // namespace tavrin
