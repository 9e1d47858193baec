// Expected cut nodes (depth >= 8): null move, internal iterative deepening, singular extension.
#include "search/deep_node.h"

namespace tavrin {

template <Color Us>
int cutNode(Position& pos, int beta, int depth) {
  // Steps 1-5. Mate-distance pruning, best-move slot, stop, fifty-move rule, repetition, table probe.
  const Key key = pos.st().key;
  Move ttMove = 0;
  int score;
  if (nodeOpening(pos, key, beta, depth, ttMove, score)) return score;
  bestMoveSlot(pos) = ttMove;

  // Step 6. Null move (permission bit 1).
  if (nullMoveStep<Us, DeepKind::Cut>(pos, beta, depth, ttMove, NoMove, key, 2, score)) return score;

  // Step 7. Internal iterative deepening: a reduced search of this node finds a move to try first.
  if (!ttMove && depth >= params::IidMinDepth) {
    const int d = depth - params::IidReduction;
    int v = d > 7 ? cutSearch<Us>(pos, beta, d) : shallowSearch<Us>(pos, beta, d);
    if (pos.stopFlag) return 0;
    if (v >= beta) ttMove = bestMoveSlot(pos);
    bestMoveSlot(pos) = ttMove;
  }

  // Step 8. Singular extension of the table move.
  const int ttExtension = singularExtension<Us>(pos, beta, depth, ttMove);
  if (pos.stopFlag) return 0;

  // Step 9. Razoring of the move list.
  const int razor = razorLevel(pos.st().staticEval, beta, depth, params::RazorCutAllOffset);

  // Steps 10-12. Move loop, cut-off, fail-low store (weak upper bound).
  return deepMoveLoop<Us, DeepKind::Cut>(pos, beta, depth, ttMove, ttExtension, NoMove, key, razor);
}

int cutSearchWhite(Position& pos, int beta, int depth) { return cutNode<White>(pos, beta, depth); }
int cutSearchBlack(Position& pos, int beta, int depth) { return cutNode<Black>(pos, beta, depth); }

}  // namespace tavrin
