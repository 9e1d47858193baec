// Shallow nodes (3 <= depth <= 7): static null-move pruning, razoring and the shallow picker
// sequence, gain and exchange futility and move-count pruning with margins for small depths.
#include "search/deep_node.h"

namespace tavrin {

template <Color Us>
int shallowNode(Position& pos, int beta, int depth) {
  constexpr Color Them = ~Us;
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
  int n = razor ? 1 : 0;
  int threshold = beta + params::ShallowFutilityBase;
  while (const MoveWord w = nextMove<Us>(pos, mp)) {
    const Move m = wordMove(w);
    const int from = moveFrom(m), to = moveTo(m);
    const bool quietStage = mp.inQuietStage();

    if (isReversal(pos, from, to, beta)) {
      ++n, threshold += params::FutilityStep;
      continue;
    }
    if (quietStage) {
      // Gain futility with the margin 2 * depth.
      if (n > params::FutilityMinMoves && !(w & 0xE000) && hasPieces &&
          !((st.quietExemptions | st.checkCandidates) & bit(from)) &&
          GainTable[pos.board[from] * 4096 + (m & 0xFFF)] + params::ShallowGainPerDepth * depth + eval <
              threshold) {
        ++n, threshold += params::FutilityStep;
        continue;
      }
      // Exchange futility.
      if (eval + params::ShallowExchangePerDepth * depth < beta + params::ExchangeFutilityBase &&
          futileExchange<Us>(pos, w)) {
        ++n, threshold += params::FutilityStep;
        continue;
      }
    }

    const int piece = pos.board[from];
    const bool quiet = isQuietMove(pos, m);
    const int extension = isPassedPawnPush<Us>(pos, m, 5) ? 1 : 0;
    if (!makeAndEvaluate<Us>(pos, m, beta - params::LazyMargin, beta + params::LazyMargin)) continue;
    const LastTargetScope lastTarget(pos, m);

    if (pos.st().evalFinal) {
      score = -pos.st().staticEval;
    } else if (childInCheck<Them>(pos)) {
      score = -evasionSearch<Them>(pos, 1 - beta, depth - 1);
    } else {
      // Move-count pruning.
      if (n > params::ShallowMoveCountBase + depth && pos.st().capturedPiece == 0 &&
          moveKind(m) != EnPassantMove &&
          params::ShallowMoveCountPerDepth * depth - pos.st().staticEval < n + beta - params::MoveCountOffset) {
        undoMove<Us>(pos, m);
        ++n, threshold += params::FutilityStep;
        continue;
      }
      score = lateMoveChild<Us, Role::Cut>(pos, beta, depth - 2 + extension,
                                           quietStage && n >= params::LmrMinMoves, log2Floor(n + 1));
    }
    undoMove<Us>(pos, m);
    ++n, threshold += params::FutilityStep;
    if (pos.stopFlag) return 0;

    if (score > best) {
      if (score >= beta) {
        // Step 11. Cut-off.
        recordCutoff(pos, m, piece, depth, quiet);
        storeLower(key, depth, score, m);
        return score;
      }
      best = score;
    }
    if (quiet && eval > beta - params::HistoryPenaltyMargin) historyPenalty(piece, to, depth);
  }

  // Step 12. Every move failed low.
  storeUpper(key, depth, best);
  return best;
}

int shallowSearchWhite(Position& pos, int beta, int depth) { return shallowNode<White>(pos, beta, depth); }
int shallowSearchBlack(Position& pos, int beta, int depth) { return shallowNode<Black>(pos, beta, depth); }

}  // namespace tavrin
