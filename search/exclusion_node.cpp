// Exclusion nodes: the singular-extension test, searching a node without its table move under a
// key of its own.
#include "search/deep_node.h"

namespace tavrin {

template <Color Us>
int excludedNode(Position& pos, int beta, int depth, Move excluded) {
  // Steps 1-5. Mate-distance pruning, best-move slot, stop, fifty-move rule, repetition, table
  // probe under the key mixed with the excluded move's squares.
  const Key key = exclusionKey(pos.st().key, excluded);
  Move ttMove = 0;
  int score;
  if (nodeOpening(pos, key, beta, depth, ttMove, score)) return score;
  if (ttMove == excluded) ttMove = 0;
  bestMoveSlot(pos) = ttMove;

  // Step 6. Null move (permission bit 0); its verification is this member with the same move.
  if (nullMoveStep<Us, DeepKind::Excluded>(pos, beta, depth, ttMove, excluded, key, 1, score))
    return score;

  // Step 9. Razoring of the move list.
  const int razor = razorLevel(pos.st().staticEval, beta, depth, params::RazorExclusionOffset);

  // Steps 10-12. Move loop without the excluded move; stores under the modified key.
  return deepMoveLoop<Us, DeepKind::Excluded>(pos, beta, depth, ttMove, 0, excluded, key, razor);
}

int excludedSearchWhite(Position& pos, int beta, int depth, Move excluded) {
  return excludedNode<White>(pos, beta, depth, excluded);
}
int excludedSearchBlack(Position& pos, int beta, int depth, Move excluded) {
  return excludedNode<Black>(pos, beta, depth, excluded);
}

}  // namespace tavrin
