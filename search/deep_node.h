// Steps shared by the deep null-window members (cut, all and exclusion nodes): the null move
// with its verification, razoring of the move list, and the move loop with its prunings,
// reductions, history and killer updates and table stores; and the cut-off bookkeeping and the
// exchange-futility test that the shallow and PV members use too.
#pragma once

#include <algorithm>

#include "eval/attack_summary.h"
#include "search/history.h"
#include "search/move_picker.h"
#include "search/node.h"
#include "search/split_point.h"

namespace tavrin {

enum class DeepKind { Cut, All, Excluded };

// The role of a deep node's null-window children: a cut node's are all nodes, the others' cut.
template <DeepKind K>
constexpr Role childRole() { return K == DeepKind::Cut ? Role::All : Role::Cut; }

// Re-searches this very node at a smaller depth (null-move verification): the same member.
template <Color Us, DeepKind K>
inline int researchNode(Position& pos, int beta, int depth, Move excluded) {
  if constexpr (K == DeepKind::Cut) return cutSearch<Us>(pos, beta, depth);
  else if constexpr (K == DeepKind::All) return allSearch<Us>(pos, beta, depth);
  else return excludedSearch<Us>(pos, beta, depth, excluded);
}

// Step 6. Null move. True when it decides the node (score set); the caller then returns score.
// Its child gets no evaluation: the attack sets survive the null make's copy, and the summary
// recomputes the side-relative sets (pins, exemptions, threats) for the new side to move.
template <Color Us, DeepKind K>
inline bool nullMoveStep(Position& pos, int beta, int depth, Move ttMove, Move excluded, Key storeKey,
                         int permissionBit, int& score) {
  constexpr Color Them = ~Us;
  StateEntry& st = pos.st();
  const int eval = st.staticEval;
  // (An exclusion search run by an evasion node's singular test stands in check: there the null
  // move would leave the king capturable, and it is never tried.)
  if (eval < beta || !(st.nullBits & permissionBit) || kingAttackers<Us>(st)) return false;

  const int nullDepth = depth - params::NullBaseReduction -
                        std::min(eval - beta, params::NullExtraCap) / params::NullExtraDivisor;
  makeNullMove(pos);
  computeAttackSummary(pos);
  int v = -nullWindowChild<Them, childRole<K>()>(pos, 1 - beta, nullDepth);
  unmakeNullMove(pos);
  if (pos.stopFlag) { score = 0; return true; }
  if (v < beta) return false;

  if (nullDepth - params::NullVerifyReduction > params::NullVerifyMinDepth) {
    const std::uint8_t saved = st.nullBits;
    st.nullBits = 0;
    int verified = researchNode<Us, K>(pos, beta, nullDepth - params::NullVerifyReduction, excluded);
    st.nullBits = saved;
    if (pos.stopFlag) { score = 0; return true; }
    if (verified < beta) return false;
  }
  if (!ttMove) storeLower(storeKey, depth, v, NoMove);
  score = v;
  return true;
}

// The bookkeeping of a cut-off by m: a quiet move earns its history bonus and a killer slot; m
// fills the best-move slot.
inline void recordCutoff(Position& pos, Move m, int piece, int depth, bool quiet) {
  if (quiet) {
    historyBonus(piece, moveTo(m), depth);
    updateKillers(pos.st(), m);
  }
  bestMoveSlot(pos) = m;
}

// Exchange futility's move test: a quiet move that loses the exchange, unless it goes to the line's
// last target or to a check-candidate square or the picker marked it safe.
template <Color Us>
inline bool futileExchange(const Position& pos, MoveWord w) {
  const Move m = wordMove(w);
  const int to = moveTo(m);
  return to != pos.search.lastTarget && !(pos.st().checkCandidates & bit(to)) && !(w & 0x8000) &&
         exchangeLoses<Us>(pos, m);
}

// Step 9. Razoring: how far the static evaluation lies below beta decides the picker's start.
// Returns 0 (normal sequence), 1 (reduced sequence) or 2 (reduced, without pawn captures).
inline int razorLevel(int eval, int beta, int depth, int offset) {
  if (depth >= params::PrunableDepth) return 0;
  const int gap = beta - eval;
  if (gap < (3 * depth - offset) * params::RazorScale) return 0;
  return gap >= (3 * depth - params::RazorPawnOffset) * params::RazorScale ? 2 : 1;
}

// Steps 10 to 12: the move loop of a deep null-window node.
template <Color Us, DeepKind K>
int deepMoveLoop(Position& pos, int beta, int depth, Move ttMove, int ttExtension, Move excluded,
                 Key storeKey, int razor) {
  using T = ColorTraits<Us>;
  constexpr Color Them = ~Us;
  constexpr Role ChildRole = childRole<K>();
  StateEntry& st = pos.st();
  const int eval = st.staticEval;
  const bool prunable = depth < params::PrunableDepth;

  MovePicker mp;
  if (razor) {
    Bitboard targets = captureTargets<Us>(pos);
    if (razor == 2) targets &= ~pos.pieces[T::EnemyPawn];
    mp.init(StageReducedTtMove, ttMove, targets);
  } else {
    mp.init(StageTtMove, ttMove);
  }

  int n = razor ? 1 : 0;   // moves searched or pruned, the razoring flag counting as one
  int threshold = beta + params::FutilityBase + (razor ? params::FutilityStep : 0);
  int searched = 0;
  bool splitRefused = false;

  for (;;) {
    // A node that has searched its first move may offer the rest to idle threads.
    if (Split.splitEnabled && Split.splitAllowed && !splitRefused && searched > 0 &&
        depth >= params::MinSplitDepth && mp.stage >= StageGenCaptures && mp.stage <= StageQuiet) {
      int splitValue;
      if (trySplit(pos, &mp, depth, beta, beta - 1, SplitNonPvNode, splitValue)) return splitValue;
      splitRefused = true;
    }

    const MoveWord w = nextMove<Us>(pos, mp);
    if (!w) break;
    const Move m = wordMove(w);
    if (m == excluded) continue;
    const int from = moveFrom(m), to = moveTo(m);
    const bool quietStage = mp.inQuietStage();

    if (isReversal(pos, from, to, beta)) {
      ++n, threshold += params::FutilityStep;
      continue;
    }
    if (prunable && quietStage) {
      // Gain futility: even the best gain ever seen for this move cannot reach the threshold.
      if (n > params::FutilityMinMoves && !(w & 0xE000) && !(st.checkCandidates & bit(from)) &&
          GainTable[pos.board[from] * 4096 + (m & 0xFFF)] + (params::GainMarginShift << (depth - 6)) +
                  eval < threshold) {
        ++n, threshold += params::FutilityStep;
        continue;
      }
      // Exchange futility: a quiet move that loses material when the node is not far ahead.
      if (eval + (params::ExchangeMarginShift << (depth - 6)) < beta + params::ExchangeFutilityBase &&
          futileExchange<Us>(pos, w)) {
        ++n, threshold += params::FutilityStep;
        continue;
      }
    }

    const int piece = pos.board[from];
    const bool quiet = isQuietMove(pos, m);
    int extension = m == ttMove ? ttExtension : 0;
    if (!extension && isPassedPawnPush<Us>(pos, m, 5)) extension = 1;

    if (!makeAndEvaluate<Us>(pos, m, beta - params::LazyMargin, beta + params::LazyMargin)) continue;
    const LastTargetScope lastTarget(pos, m);

    int score;
    if (pos.st().evalFinal) {
      score = -pos.st().staticEval;
    } else if (childInCheck<Them>(pos)) {
      score = -evasionSearch<Them>(pos, 1 - beta, depth - 1);
    } else {
      // Move-count pruning: late moves whose result stays far below beta.
      if (n > params::FutilityMinMoves && prunable && pos.st().capturedPiece == 0 &&
          moveKind(m) != EnPassantMove &&
          (params::MoveCountMarginShift << (depth - 6)) - pos.st().staticEval <
              n + beta - params::MoveCountOffset) {
        undoMove<Us>(pos, m);
        ++n, threshold += params::FutilityStep;
        continue;
      }
      // Late-move reduction by floor(log2 k), k the running move counter.
      score = lateMoveChild<Us, ChildRole>(pos, beta, depth - 2 + extension,
                                           quietStage && n >= params::LmrMinMoves, log2Floor(n + 1));
    }
    undoMove<Us>(pos, m);
    ++n, threshold += params::FutilityStep;
    ++searched;
    if (pos.stopFlag) return 0;

    if (score >= beta) {
      // Step 11. Cut-off.
      recordCutoff(pos, m, piece, depth, quiet);
      if constexpr (K == DeepKind::All) storeWeakLower(storeKey, depth, score, m);
      else storeLower(storeKey, depth, score, m);
      return score;
    }
    if (quiet && eval > beta - params::HistoryPenaltyMargin) historyPenalty(piece, to, depth);
  }

  // Step 12. Every move failed low.
  if constexpr (K == DeepKind::Cut) storeWeakUpper(storeKey, depth, beta - 1);
  else storeUpper(storeKey, depth, beta - 1);
  return beta - 1;
}

// Step 8. Singular extension of the table move: how many half-plies it earns (0 to 4).
template <Color Us>
inline int singularExtension(Position& pos, int beta, int depth, Move ttMove) {
  if (depth < params::SingularMinDepth || !ttMove || !pseudoLegal<Us>(pos, ttMove)) return 0;
  const int h = std::min(depth / 2, params::SingularMaxReduction);
  int extension = 0;
  const int beta1 = beta - depth;
  int v = excludedSearch<Us>(pos, beta1, depth - h, ttMove);
  if (!pos.stopFlag && v < beta1) {
    extension = 4 * pos.ply <= depth ? 2 : 1;
    const int beta2 = beta - 2 * depth;
    v = excludedSearch<Us>(pos, beta2, depth - h, ttMove);
    if (!pos.stopFlag && v < beta2) extension += 8 * pos.ply <= depth ? 2 : 1;
  }
  bestMoveSlot(pos) = ttMove;
  return extension;
}

}  // namespace tavrin
