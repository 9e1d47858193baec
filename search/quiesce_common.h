// Steps shared by the quiescence members: the prelude with its table probe, the delta-pruned
// target set, the ordering and exchange filters, and the search of one move.
#pragma once

#include "search/move_picker.h"
#include "search/node.h"

namespace tavrin {

// Quiescence probe: any stored depth suffices. True with the score when a bound decides. (Each
// field is loaded once: another thread may rewrite the entry meanwhile.)
inline bool probeQuiesce(Key key, int alpha, int beta, Move& ttMove, int& score) {
  TtEntry* e = ttBucket(key);
  const std::uint32_t check = ttCheck(key);
  int moveDepth = -1;
#pragma GCC unroll 4
  for (int i = 0; i < TtBucketEntries; ++i, ++e) {
    if (relaxedLoad(e->key) != check) continue;
    const int depthLower = relaxedLoad(e->depthLower);
    if (depthLower) {
      const int valueLower = relaxedLoad(e->valueLower);
      if (valueLower >= beta) { score = valueLower; return true; }
    }
    if (relaxedLoad(e->depthUpper)) {
      const int valueUpper = relaxedLoad(e->valueUpper);
      if (valueUpper <= alpha) { score = valueUpper; return true; }
    }
    const Move move = relaxedLoad(e->move);
    if (move && depthLower > moveDepth) ttMove = move, moveDepth = depthLower;
  }
  return false;
}

// Steps 1 to 3 of the null-window quiescence members: mate distance, the guards (the best-move
// slot untouched), then the table probe. True with the score when they decide the node.
inline bool quiescePrelude(Position& pos, int beta, Move& ttMove, int& score) {
  return nodePrelude<true>(pos, beta, score) || probeQuiesce(pos.st().key, beta - 1, beta, ttMove, score);
}

// Delta pruning on the target set: captures that cannot lift best to beta are never generated.
// A pawn that can be won without search raises best instead.
template <Color Us>
inline Bitboard quiesceTargets(const Position& pos, int beta, int& best) {
  using T = ColorTraits<Us>;
  Bitboard targets = captureTargets<Us>(pos);
  if (beta - params::DeltaPawn > best) {
    targets &= ~pos.pieces[T::EnemyPawn];
    if (pos.pieces[T::EnemyPawn] & pos.st().pawnThreats) best += params::DeltaPawn;
    if (beta - params::DeltaMinor > best) {
      targets &= ~(pos.pieces[T::EnemyKnight] | pos.pieces[T::EnemyBishopLight] |
                   pos.pieces[T::EnemyBishopDark]);
      if (beta - params::DeltaRook > best) targets &= ~pos.pieces[T::EnemyRook];
    }
  }
  return targets;
}

// The table move, when in the list, gets every upper bit so that it is selected first.
inline void promoteTableMove(MoveWord* begin, MoveWord* end, Move ttMove) {
  if (!ttMove) return;
  for (MoveWord* p = begin; p < end; ++p)
    if (moveOf(*p) == ttMove) {
      *p |= TableMoveKey;
      return;
    }
}

// A capture that needs the exchange test (no winning/equal flag, not the table move) and loses.
template <Color Us>
inline bool losingCapture(const Position& pos, MoveWord w) {
  if (isWinningOrEvenCapture(w) || isPromotedTableMove(w)) return false;
  const Move m = moveOf(w);
  if (pos.st().exchangeExclusion & bit(moveFrom(m))) return false;
  return exchangeLoses<Us>(pos, m);
}

// Quiet checks are tried in the first two quiescence plies when eval is not too far below beta.
inline bool quietChecksAllowed(int staticEval, int beta, int depth) {
  return depth >= -1 &&
         staticEval >= beta - (params::QuietCheckBase << (depth + 4)) - params::QuietCheckOffset;
}

// Makes a quiescence move, scores the child for the mover and takes the move back; false when the
// move is illegal. The child is settled by its final evaluation, or searched by the evasion member
// when in check (null window at alpha), else by the quiescence (the PV member inside a PV window).
// A null window is alpha = beta - 1; the lazy evaluation window is the PV window or the one about beta.
template <Color Us, bool Pv>
inline bool quiesceMove(Position& pos, Move m, int alpha, int beta, int depth, int& score) {
  constexpr Color Them = ~Us;
  const int lazyLower = (Pv ? alpha : beta) - params::QuiesceLazyMargin;
  if (!makeAndEvaluate<Us>(pos, m, lazyLower, beta + params::QuiesceLazyMargin)) return false;
  if (pos.st().evalFinal)
    score = -pos.st().staticEval;
  else if (childInCheck<Them>(pos))
    score = -quiesceEvasion<Them>(pos, -alpha, depth);
  else if constexpr (Pv)
    score = -pvQuiesce<Them>(pos, -beta, -alpha, depth);
  else
    score = -quiesce<Them>(pos, -alpha, depth);
  unmakeMove<Us>(pos, m);
  return true;
}

// One move of a null-window quiescence member. True when it decides the node (a stop, or a
// cut-off, which is stored), the result then in score; otherwise best rises to the move's score.
// `legal` counts the moves that were legal.
template <Color Us>
inline bool quiesceMoveDecides(Position& pos, Move m, Key key, int beta, int depth, int& best, int& score,
                               int& legal) {
  if (!quiesceMove<Us, false>(pos, m, beta - 1, beta, depth, score)) return false;
  ++legal;
  if (pos.stopFlag) {
    score = 0;
    return true;
  }
  if (score > best) {
    if (score >= beta) {
      storeLower(key, params::QuiesceStoreDepth, score, m);
      return true;
    }
    best = score;
  }
  return false;
}

// Steps 6 to 9 of the quiescence members: the captures of the targets by selection, the table
// move first and losing captures skipped, then the quiet checks when checksAllowed() says so (asked
// after the captures, whose results may have moved the window). `decides` searches one move and
// tells whether it ended the node; true when one did.
template <Color Us, class Decides, class ChecksAllowed>
inline bool quiesceMoves(Position& pos, Bitboard targets, Move ttMove, Decides decides, ChecksAllowed checksAllowed) {
  MoveWord list[MaxMoves];
  MoveWord* end = generateCaptures<Us>(pos, list, targets);
  promoteTableMove(list, end, ttMove);
  for (MoveWord* cur = list; cur < end; ++cur) {
    const MoveWord w = picker_detail::selectBest(cur, end);
    prefetchChild(pos, moveOf(w));   // the exchange test runs while the lines arrive
    if (losingCapture<Us>(pos, w)) continue;
    if (decides(moveOf(w))) return true;
  }
  if (!checksAllowed()) return false;
  end = generateQuietChecks<Us>(pos, list);
  for (MoveWord* cur = list; cur < end; ++cur)
    if (decides(moveOf(*cur))) return true;
  return false;
}

}  // namespace tavrin
