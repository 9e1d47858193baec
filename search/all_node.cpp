// Expected all nodes (depth >= 8): null move and razoring, no internal deepening, no singular test.
#include "search/deep_node.h"

namespace tavrin {

template <Color Us>
int allNode(Position& pos, int beta, int depth) {
  // Steps 1-5. Mate-distance pruning, best-move slot, stop, fifty-move rule, repetition, table probe.
  const Key key = pos.st().key;
  Move ttMove = 0;
  int score;
  if (nodeOpening(pos, key, beta, depth, ttMove, score)) return score;
  bestMoveSlot(pos) = ttMove;

  // Step 6. Null move (permission bit 1).
  if (nullMoveStep<Us, DeepKind::All>(pos, beta, depth, ttMove, NoMove, key, 2, score)) return score;

  // Step 9. Razoring of the move list.
  const int razor = razorLevel(pos.st().staticEval, beta, depth, params::RazorCutAllOffset);

  // Steps 10-12. Move loop; a fail-high is stored as a weak lower bound, a fail-low as an upper.
  return deepMoveLoop<Us, DeepKind::All>(pos, beta, depth, ttMove, 0, NoMove, key, razor);
}

int allSearchWhite(Position& pos, int beta, int depth) { return allNode<White>(pos, beta, depth); }
int allSearchBlack(Position& pos, int beta, int depth) { return allNode<Black>(pos, beta, depth); }

}  // namespace tavrin
