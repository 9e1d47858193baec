// Steps shared by the quiescence members: the table probe and the delta-pruned target set.
#pragma once

#include "search/move_picker.h"
#include "search/node.h"

namespace tavrin {

// Quiescence probe: any stored depth suffices. True with the score when a bound decides.
inline bool probeQuiesce(Key key, int alpha, int beta, Move& ttMove, int& score) {
  TtEntry* e = ttBucket(key);
  const std::uint32_t check = ttCheck(key);
  int moveDepth = -1;
  for (int i = 0; i < TtBucketEntries; ++i, ++e) {
    if (e->key != check) continue;
    if (e->depthLower && e->valueLower >= beta) { score = e->valueLower; return true; }
    if (e->depthUpper && e->valueUpper <= alpha) { score = e->valueUpper; return true; }
    if (e->move && e->depthLower > moveDepth) ttMove = e->move, moveDepth = e->depthLower;
  }
  return false;
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
    if (wordMove(*p) == ttMove) {
      *p |= 0xFFFF0000u;
      return;
    }
}

// A capture that needs the exchange test (no winning/equal flag, not the table move) and loses.
template <Color Us>
inline bool losingCapture(const Position& pos, MoveWord w) {
  if ((w & 0x300000u) || w >= 0xFFFF0000u) return false;
  const Move m = wordMove(w);
  if (pos.st().exchangeExclusion & bit(moveFrom(m))) return false;
  return exchangeLoses<Us>(pos, m);
}

// Quiet checks are tried in the first two quiescence plies when eval is not too far below beta.
inline bool quietChecksAllowed(int staticEval, int beta, int depth) {
  return depth >= -1 &&
         staticEval >= beta - (params::QuietCheckBase << (depth + 4)) - params::QuietCheckOffset;
}

}  // namespace tavrin
