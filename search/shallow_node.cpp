// Shallow nodes (3 <= depth <= 7): static null-move pruning, razoring and the shallow picker
// sequence, gain and exchange futility and move-count pruning with margins for small depths.
#include "search/deep_node.h"

namespace tavrin {

template <Color Us>
int shallowNode(Position& pos, int beta, int depth) {
  using T = ColorTraits<Us>;

  // Steps 1-4. Mate-distance pruning, best-move slot, stop, fifty-move rule, repetition.
  int score;
  if (nodePrelude(pos, beta, score)) return score;
  StateEntry& st = pos.st();
  const int eval = st.staticEval;

  // Step 5a. Hopelessly behind: fail low before looking at the table.
  if (eval + params::ShallowFailLowMargin < beta) return beta - 1;

  // Step 5. Table probe.
  const Key key = st.key;
  Move ttMove = 0;
  if (probeNode(pos, key, depth, beta, ttMove, score)) return score;
  bestMoveSlot(pos) = ttMove;

  // Step 5b. Static null-move pruning: far enough ahead, the evaluation stands.
  if (eval - 2 * (params::ShallowStaticNullPerDepth * depth + params::ShallowStaticNullBase) >= beta) return eval;

  int best = std::min(eval, beta - 1);

  // Step 6. Null move (permission bit 1; never verified at these depths).
  if (nullMoveStep<Us, DeepKind::All>(pos, beta, depth, ttMove, NoMove, key, 2, score)) return score;

  // Step 9. The picker's sequence: reduced when far below beta, shallow when somewhat below.
  MovePicker mp;
  bool razor = false;
  if (eval + params::ShallowRazorPerDepth * depth + params::ShallowRazorBase < beta) {
    razor = true;
    Bitboard targets = captureTargets<Us>(pos);
    if (beta >= eval + params::ShallowRazorPawnPerDepth * depth + params::ShallowRazorPawnBase)
      targets &= ~pos.pieces[T::EnemyPawn];
    mp.init(StageReducedTtMove, ttMove, targets);
  } else if (depth <= params::ShallowSequenceMaxDepth && eval + params::ShallowSequencePerDepth * depth < beta) {
    mp.init(StageShallowTtMove, ttMove, 0,
            beta - eval + params::ShallowSequencePerDepth * depth + params::ShallowSequenceMarginExtra);
  } else {
    mp.init(StageTtMove, ttMove);
  }

  // Step 10. Move loop.
  const bool hasPieces = hasNonPawnMaterial<Us>(pos);
  MoveCount count{razor ? 1 : 0, beta + params::ShallowFutilityBase};
  while (const MoveWord w = nextMove<Us>(pos, mp)) {
    const Move m = moveOf(w);
    const int from = moveFrom(m), to = moveTo(m);
    const bool quietStage = mp.inQuietStage();

    if (isReversal(pos, from, to, beta)) {
      count.next();
      continue;
    }
    if (quietStage) {
      // Gain futility with the margin 2 * depth, from squares outside both exemption sets.
      if (count.n > params::FutilityMinMoves && hasPieces &&
          futileGain(pos, m, st.quietExemptions | st.checkCandidates, params::ShallowGainPerDepth * depth, eval,
                     count.threshold)) {
        count.next();
        continue;
      }
      // Exchange futility.
      if (eval + params::ShallowExchangePerDepth * depth < beta + params::ExchangeFutilityBase &&
          futileExchange<Us>(pos, m)) {
        count.next();
        continue;
      }
    }

    const int piece = pos.board[from];
    const bool quiet = isQuietMove(pos, m);
    const int extension = isPassedPawnPush<Us>(pos, m, 5) ? 1 : 0;
    if (!makeAndEvaluate<Us>(pos, m, beta - params::LazyMargin, beta + params::LazyMargin)) continue;
    const LastTargetScope lastTarget(pos, m);

    const std::optional<int> child = childScore<Us>(pos, beta, depth, [&]() -> std::optional<int> {
      // Move-count pruning.
      if (count.n > params::ShallowMoveCountBase + depth &&
          moveCountPrunes(pos, m, params::ShallowMoveCountPerDepth * depth, count.n, beta))
        return std::nullopt;
      return lateMoveChild<Us, Role::Cut>(pos, beta, depth - 2 + extension,
                                          quietStage && count.n >= params::LmrMinMoves, log2Floor(count.n + 1));
    });
    unmakeMove<Us>(pos, m);
    count.next();
    if (!child) continue;
    if (pos.stopFlag) return 0;

    // Step 11. Cut-off; otherwise the best score so far.
    if (cutOffOrFailLow(pos, m, piece, depth, quiet, *child, beta, eval,
                        [&] { storeLower(key, depth, *child, m); }))
      return *child;
    best = std::max(best, *child);
  }

  // Step 12. Every move failed low.
  storeUpper(key, depth, best);
  return best;
}

int shallowSearchWhite(Position& pos, int beta, int depth) { return shallowNode<White>(pos, beta, depth); }
int shallowSearchBlack(Position& pos, int beta, int depth) { return shallowNode<Black>(pos, beta, depth); }

}  // namespace tavrin
