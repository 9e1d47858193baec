// PV nodes: full window, no null move, no pruning and no reductions; internal iterative deepening
// through the PV member itself; the first move searched with the full window, later ones with a
// null window at full depth and re-searched when they land inside the window; exact results go to
// both tables.
#include "search/deep_node.h"

namespace tavrin {

// The fixed values of a PV node's move loop, read by the threads that help at its split point.
struct PvLoop {
  int beta, depth, eval;
  Move ttMove;
  int ttExtension;
};

// One move of a PV node against the window (alpha, beta): the first with the full window, later
// ones with a null window and again with the full one when they land inside it. False when the
// move is illegal; otherwise the score is the mover's.
template <Color Us>
bool searchPvMove(Position& pos, const PvLoop& node, Move m, int alpha, bool first, int& score) {
  constexpr Color Them = ~Us;
  const int beta = node.beta;
  int extension = m == node.ttMove ? node.ttExtension : 0;
  if (!extension && isPassedPawnPush<Us>(pos, m, 5)) extension = 1;

  if (!makeAndEvaluate<Us>(pos, m, alpha - params::LazyMargin, beta + params::LazyMargin)) return false;
  {
    const LastTargetScope lastTarget(pos, m);
    const bool check = childInCheck<Them>(pos);
    const int newDepth = check ? node.depth - 1 : node.depth - 2 + extension;

    if (pos.st().evalFinal) {
      score = -pos.st().staticEval;
    } else if (first) {
      score = -pvSearch<Them>(pos, -beta, -alpha, newDepth);
    } else {
      score = *childScore<Us>(pos, alpha + 1, node.depth,
                              [&]() -> std::optional<int> { return -nullWindowChild<Them, Role::Cut>(pos, -alpha, newDepth); });
      if (score > alpha && score < beta) score = -pvSearch<Them>(pos, -beta, -alpha, newDepth);
    }
  }
  unmakeMove<Us>(pos, m);
  return true;
}

// The moves of a PV node's split point, searched by one of its threads against the split point's
// current alpha; a score above it raises it, one at beta or above stops every thread.
template <Color Us>
void pvSplitMoves(Position& pos, SplitPoint& sp) {
  const PvLoop& node = *static_cast<const PvLoop*>(sp.task.node);
  for (;;) {
    Move m;
    int alpha;
    {
      std::lock_guard<std::mutex> g(sp.lock);
      if (sp.stopped) return;
      const MoveWord w = nextMove<Us>(pos, *sp.movePicker);
      if (!w) return;
      m = moveOf(w);
      alpha = sp.alpha;
      ++sp.counters[0];
    }
    const int piece = pos.board[moveFrom(m)];
    const bool quiet = isQuietMove(pos, m);
    int score;
    if (!searchPvMove<Us>(pos, node, m, alpha, false, score)) continue;
    if (pos.stopFlag) return;
    bool raised, cutOff = false;
    {
      std::lock_guard<std::mutex> g(sp.lock);
      ++sp.counters[1];
      raised = score > sp.bestValue;
      if (raised) {
        sp.bestValue = score;
        sp.bestMove = m;
        cutOff = score >= node.beta;
        if (!cutOff) sp.alpha = score;
      }
    }
    if (cutOff) {
      stopSplitPoint(sp);
      return;
    }
    if (!raised && quiet && node.eval > alpha - params::HistoryPenaltyMargin)
      historyPenalty(piece, moveTo(m), node.depth);
  }
}

template <Color Us>
int pvNode(Position& pos, int alpha, int beta, int depth) {
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
  const int eval = pos.st().staticEval;
  const int alphaIn = alpha;
  const PvLoop node{beta, depth, eval, ttMove, ttExtension};
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
      if (trySplit(pos, &mp, depth, beta, alpha, SplitPvNode, splitValue, {pvSplitMoves<Us>, &node})) {
        if (pos.stopFlag) return splitValue;
        // The split's result stands as if the node had searched every move itself.
        best = splitValue;
        if (const Move m = bestMoveSlot(pos)) bestMove = m;
        if (best >= beta) {
          recordCutoff(pos, bestMove, pos.board[moveFrom(bestMove)], depth, isQuietMove(pos, bestMove));
          storeLower(key, depth, best, bestMove);
          return best;
        }
        break;
      }
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
    if (!searchPvMove<Us>(pos, node, m, alpha, n == 0, score)) continue;
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
