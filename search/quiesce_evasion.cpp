// Quiescence of a side in check: evasions, restricted to captures when far below beta; a side
// with no legal evasion at all is mated.
#include "search/quiesce_common.h"

namespace tavrin {

template <Color Us>
int quiesceEvasionNode(Position& pos, int beta, int depth) {
  using T = ColorTraits<Us>;
  using picker_detail::selectBest;

  // Steps 1-3 as in quiescence: mate distance, the ply guard, stop, draws, table probe.
  int score;
  Move ttMove = 0;
  if (quiescePrelude(pos, beta, ttMove, score)) return score;
  const Key key = pos.st().key;

  // Step 4. The evasion set. Far below beta only captures are tried; their value then bounds
  // the node from above, so the best score starts at the estimate instead of a mate.
  const int v = pos.st().staticEval + params::QuiesceEvasionTempo;
  Bitboard mask = ~Bitboard(0);
  int best = pos.ply - MateScore;
  if (v < beta) {
    mask = pos.pieces[T::EnemyAll];
    best = v;
    if (beta - params::EvasionDeltaPawn > v) {
      mask &= ~pos.pieces[T::EnemyPawn];
      best = v + params::EvasionDeltaPawn;
      if (beta - params::EvasionDeltaMinor > v)
        mask &= ~(pos.pieces[T::EnemyKnight] | pos.pieces[T::EnemyBishopLight] |
                  pos.pieces[T::EnemyBishopDark]);
    }
  }

  // Step 5. Generate; a single forced reply costs no depth.
  MoveWord list[MaxMoves];
  MoveWord* end = generateEvasions<Us>(pos, list, mask);
  if (end - list > 1) --depth;
  promoteTableMove(list, end, ttMove);

  // Step 6. Evasions by selection; a cut-off is stored as a lower bound.
  int legal = 0;
  for (MoveWord* cur = list; cur < end; ++cur)
    if (quiesceMoveDecides<Us>(pos, moveOf(selectBest(cur, end)), key, beta, depth, best, score, legal))
      return score;

  // No legal evasion was searched: when none exists beyond the restricted set either, the side is
  // mated, whatever the estimate said.
  if (!legal && mask != ~Bitboard(0) && !hasLegalMove<Us>(pos)) best = pos.ply - MateScore;

  // Step 7. Fail low.
  storeUpper(key, params::QuiesceStoreDepth, best);
  return best;
}

int quiesceEvasionWhite(Position& pos, int beta, int depth) { return quiesceEvasionNode<White>(pos, beta, depth); }
int quiesceEvasionBlack(Position& pos, int beta, int depth) { return quiesceEvasionNode<Black>(pos, beta, depth); }

}  // namespace tavrin
