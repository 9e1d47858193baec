// Steps shared by the deep null-window members (cut, all and exclusion nodes): the null move
// with its verification, razoring of the move list, and the move loop with its prunings,
// reductions, history and killer updates and table stores; and the cut-off bookkeeping and the
// exchange-futility test that the shallow and PV members use too.
#pragma once

#include <algorithm>
#include <optional>

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
  prefetchBucket(pos.st().key);
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

// --- Steps of the move loops that the members share ------------------------------------------

// Moves searched or pruned so far (n), and the futility threshold T that rises with each.
struct MoveCount {
  int n;
  int threshold;
  void next() { ++n, threshold += params::FutilityStep; }
};

// The largest positional gain seen for this move of this piece (the gain table of the evaluation).
inline int gainOf(const Position& pos, Move m) { return relaxedLoad(GainTable[gainCell(pos.board[moveFrom(m)], m)]); }

// Gain futility's move test: a move of the quiet stage, neither en passant nor a promotion, from a
// square outside `exempt`, whose best gain ever seen cannot lift the evaluation by `margin` to the
// threshold. (The quiet stage's words come from the remaining-moves generator, keyed by history:
// they never carry NonCaptureMark, so the move is all there is to test.)
inline bool futileGain(const Position& pos, Move m, Bitboard exempt, int margin, int eval, int threshold) {
  return !isEnPassantOrPromotion(m) && !(exempt & bit(moveFrom(m))) && gainOf(pos, m) + margin + eval < threshold;
}

// Move-count pruning's test on a child just made (not in check, not final): it captured nothing and
// its evaluation stays more than `margin` below what beta and the count ask for.
inline bool moveCountPrunes(const Position& pos, Move m, int margin, int n, int beta) {
  return pos.st().capturedPiece == 0 && moveKind(m) != EnPassantMove &&
         margin - pos.st().staticEval < n + beta - params::MoveCountOffset;
}

// The score of a child just made, for the mover: its final evaluation, the evasion search at
// depth - 1 when it is in check, else quietSearch(), which may give no score (the move was pruned
// after all; the caller then takes it back).
template <Color Us, class QuietSearch>
inline std::optional<int> childScore(Position& pos, int beta, int depth, QuietSearch quietSearch) {
  if (pos.st().evalFinal) return -pos.st().staticEval;
  if (childInCheck<~Us>(pos)) return -evasionSearch<~Us>(pos, 1 - beta, depth - 1);
  return quietSearch();
}

// Steps 10 (end) and 11 of the null-window members, after a searched move: a score at or above
// beta is a cut-off, with its history, killer and best-move bookkeeping and its store (store());
// a quiet move that failed low loses history while the node's evaluation is near beta. True on
// a cut-off.
template <class Store>
inline bool cutOffOrFailLow(Position& pos, Move m, int piece, int depth, bool quiet, int score, int beta, int eval,
                            Store store) {
  if (score >= beta) {
    recordCutoff(pos, m, piece, depth, quiet);
    store();
    return true;
  }
  if (quiet && eval > beta - params::HistoryPenaltyMargin) historyPenalty(piece, moveTo(m), depth);
  return false;
}

// Exchange futility's move test: a move of the quiet stage that loses the exchange, unless it goes
// to the line's last target or to a check-candidate square.
template <Color Us>
inline bool futileExchange(const Position& pos, Move m) {
  const int to = moveTo(m);
  return to != pos.search.lastTarget && !(pos.st().checkCandidates & bit(to)) && exchangeLoses<Us>(pos, m);
}

// Step 9. Razoring: how far the static evaluation lies below beta decides the picker's start.
// Returns 0 (normal sequence), 1 (reduced sequence) or 2 (reduced, without pawn captures).
inline int razorLevel(int eval, int beta, int depth, int offset) {
  if (depth >= params::PrunableDepth) return 0;
  const int gap = beta - eval;
  if (gap < (3 * depth - offset) * params::RazorScale) return 0;
  return gap >= (3 * depth - params::RazorPawnOffset) * params::RazorScale ? 2 : 1;
}

// The fixed values of a deep node's move loop, read by the threads that help at its split point.
struct DeepLoop {
  int beta, depth, eval;
  Move ttMove, excluded;
  int ttExtension;
  Key storeKey;
  bool prunable;
  MoveCount atSplit;   // the move count when the node split
};

enum class MoveResult { Illegal, Pruned, Searched };

// Step 10 for one move: the prunings before the make, the make with its evaluation and the
// child's search. `count` is the node's move count when m was picked; the score is the mover's.
template <Color Us, DeepKind K>
inline MoveResult searchDeepMove(Position& pos, const DeepLoop& node, Move m, bool quietStage, const MoveCount& count,
                                 int& score) {
  constexpr Role ChildRole = childRole<K>();
  const int beta = node.beta, depth = node.depth;
  const int from = moveFrom(m), to = moveTo(m);

  if (isReversal(pos, from, to, beta)) return MoveResult::Pruned;
  if (node.prunable && quietStage) {
    // Gain futility: even the best gain ever seen for this move cannot reach the threshold.
    if (count.n > params::FutilityMinMoves &&
        futileGain(pos, m, pos.st().checkCandidates, params::GainMarginShift << (depth - 6), node.eval, count.threshold))
      return MoveResult::Pruned;
    // Exchange futility: a quiet move that loses material when the node is not far ahead.
    if (node.eval + (params::ExchangeMarginShift << (depth - 6)) < beta + params::ExchangeFutilityBase &&
        futileExchange<Us>(pos, m))
      return MoveResult::Pruned;
  }

  int extension = m == node.ttMove ? node.ttExtension : 0;
  if (!extension && isPassedPawnPush<Us>(pos, m, 5)) extension = 1;

  if (!makeAndEvaluate<Us>(pos, m, beta - params::LazyMargin, beta + params::LazyMargin)) return MoveResult::Illegal;
  std::optional<int> result;
  {
    const LastTargetScope lastTarget(pos, m);
    result = childScore<Us>(pos, beta, depth, [&]() -> std::optional<int> {
      // Move-count pruning: late moves whose result stays far below beta.
      if (count.n > params::FutilityMinMoves && node.prunable &&
          moveCountPrunes(pos, m, params::MoveCountMarginShift << (depth - 6), count.n, beta))
        return std::nullopt;
      // Late-move reduction by floor(log2 k), k the running move counter.
      return lateMoveChild<Us, ChildRole>(pos, beta, depth - 2 + extension,
                                          quietStage && count.n >= params::LmrMinMoves, log2Floor(count.n + 1));
    });
  }
  unmakeMove<Us>(pos, m);
  if (!result) return MoveResult::Pruned;
  score = *result;
  return MoveResult::Searched;
}

// Steps 11 and 12's stores of a deep node: a fail-high as a lower bound (a weak one from an all
// node), a fail-low as an upper bound (a weak one from a cut node).
template <DeepKind K>
inline void storeDeepLower(const DeepLoop& node, int score, Move m) {
  if constexpr (K == DeepKind::All) storeWeakLower(node.storeKey, node.depth, score, m);
  else storeLower(node.storeKey, node.depth, score, m);
}
template <DeepKind K>
inline void storeDeepUpper(const DeepLoop& node) {
  if constexpr (K == DeepKind::Cut) storeWeakUpper(node.storeKey, node.depth, node.beta - 1);
  else storeUpper(node.storeKey, node.depth, node.beta - 1);
}

// The moves of a deep node's split point, searched by one of its threads: each takes the next
// move under the split point's lock with the move count it stands at, and a cut-off stops them all.
template <Color Us, DeepKind K>
void deepSplitMoves(Position& pos, SplitPoint& sp) {
  const DeepLoop& node = *static_cast<const DeepLoop*>(sp.task.node);
  for (;;) {
    Move m;
    bool quietStage;
    MoveCount count = node.atSplit;
    {
      std::lock_guard<std::mutex> g(sp.lock);
      if (sp.stopped) return;
      const MoveWord w = nextMove<Us>(pos, *sp.movePicker);
      if (!w) return;
      m = moveOf(w);
      if (m == node.excluded) continue;
      quietStage = sp.movePicker->inQuietStage();
      const std::uint32_t k = sp.counters[0]++;
      count.n += int(k);
      count.threshold += int(k) * params::FutilityStep;
    }
    const int piece = pos.board[moveFrom(m)];
    const bool quiet = isQuietMove(pos, m);
    int score;
    if (searchDeepMove<Us, K>(pos, node, m, quietStage, count, score) != MoveResult::Searched) continue;
    if (pos.stopFlag) return;
    bool cutOff;
    {
      std::lock_guard<std::mutex> g(sp.lock);
      ++sp.counters[1];
      cutOff = score >= node.beta && score > sp.bestValue;
      if (cutOff) {
        sp.bestValue = score;
        sp.bestMove = m;
      }
    }
    if (cutOff) {
      stopSplitPoint(sp);
      return;
    }
    if (quiet && node.eval > node.beta - params::HistoryPenaltyMargin) historyPenalty(piece, moveTo(m), node.depth);
  }
}

// After a split: the cut-off's bookkeeping and store, or the fail-low store, as if the node had
// searched every move itself. A record stopped from above keeps nothing.
template <DeepKind K>
inline int finishDeepSplit(Position& pos, const DeepLoop& node, int value) {
  if (pos.stopFlag) return value;
  if (value >= node.beta) {
    const Move m = bestMoveSlot(pos);
    recordCutoff(pos, m, pos.board[moveFrom(m)], node.depth, isQuietMove(pos, m));
    storeDeepLower<K>(node, value, m);
  } else {
    storeDeepUpper<K>(node);
  }
  return value;
}

// Steps 10 to 12: the move loop of a deep null-window node.
template <Color Us, DeepKind K>
int deepMoveLoop(Position& pos, int beta, int depth, Move ttMove, int ttExtension, Move excluded,
                 Key storeKey, int razor) {
  using T = ColorTraits<Us>;
  DeepLoop node{beta, depth, pos.st().staticEval, ttMove, excluded, ttExtension, storeKey,
                depth < params::PrunableDepth, {}};

  MovePicker mp;
  if (razor) {
    Bitboard targets = captureTargets<Us>(pos);
    if (razor == 2) targets &= ~pos.pieces[T::EnemyPawn];
    mp.init(StageReducedTtMove, ttMove, targets);
  } else {
    mp.init(StageTtMove, ttMove);
  }

  // Moves searched or pruned, the razoring flag counting as one.
  MoveCount count{razor ? 1 : 0, beta + params::FutilityBase + (razor ? params::FutilityStep : 0)};
  int searched = 0;
  bool splitRefused = false;

  for (;;) {
    // A node that has searched its first move may offer the rest to idle threads.
    if (Split.splitEnabled && Split.splitAllowed && !splitRefused && searched > 0 &&
        depth >= params::MinSplitDepth && mp.stage >= StageGenCaptures && mp.stage <= StageQuiet) {
      int splitValue;
      node.atSplit = count;
      if (trySplit(pos, &mp, depth, beta, beta - 1, SplitNonPvNode, splitValue, {deepSplitMoves<Us, K>, &node}))
        return finishDeepSplit<K>(pos, node, splitValue);
      splitRefused = true;
    }

    const MoveWord w = nextMove<Us>(pos, mp);
    if (!w) break;
    const Move m = moveOf(w);
    if (m == excluded) continue;
    const int piece = pos.board[moveFrom(m)];
    const bool quiet = isQuietMove(pos, m);
    int score;
    const MoveResult result = searchDeepMove<Us, K>(pos, node, m, mp.inQuietStage(), count, score);
    if (result == MoveResult::Illegal) continue;
    count.next();
    if (result == MoveResult::Pruned) continue;
    ++searched;
    if (pos.stopFlag) return 0;

    // Step 11. Cut-off.
    if (cutOffOrFailLow(pos, m, piece, depth, quiet, score, beta, node.eval,
                        [&] { storeDeepLower<K>(node, score, m); }))
      return score;
  }

  // Step 12. Every move failed low.
  storeDeepUpper<K>(node);
  return beta - 1;
}

// Step 8. Singular extension of the table move: how many half-plies it earns (0 to 4).
template <Color Us>
inline int singularExtension(Position& pos, int beta, int depth, Move ttMove) {
  if (depth < params::SingularMinDepth || !ttMove || !isPseudoLegal<Us>(pos, ttMove)) return 0;
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
