// Evasion nodes: the side to move is in check. No null move and no pruning; a node without a
// legal evasion is mated; late evasions are reduced.
#include "search/deep_node.h"

namespace tavrin {

template <Color Us>
int evasionNode(Position& pos, int beta, int depth) {
  // Steps 1-5. Mate-distance pruning, best-move slot, stop, fifty-move rule, repetition, table probe.
  const Key key = pos.st().key;
  Move ttMove = 0;
  int score;
  if (nodeOpening(pos, key, beta, depth, ttMove, score)) return score;
  bestMoveSlot(pos) = ttMove;

  // Step 8. Singular extension of the table move.
  const int ttExtension = singularExtension<Us>(pos, beta, depth, ttMove);
  if (pos.stopFlag) return 0;

  // Step 10. The evasions, table move first.
  EvasionPicker ep;
  ep.init<Us>(pos, ttMove);
  const int eval = pos.st().staticEval;
  int best = pos.ply - MateScore;
  int k = 0;
  while (const Move m = ep.next()) {
    const bool capture = pos.board[moveTo(m)] != NoPiece || moveKind(m) == EnPassantMove;
    const int piece = pos.board[moveFrom(m)];
    const bool quiet = isQuietMove(pos, m);
    int extension = m == ttMove ? ttExtension : 0;
    if (!extension && isPassedPawnPush<Us>(pos, m, 5)) extension = 1;
    if (!makeAndEvaluate<Us>(pos, m, beta - params::LazyMargin, beta + params::LazyMargin)) continue;
    const LastTargetScope lastTarget(pos, m);
    ++k;

    // Late evasions (not captures, not the table move) are reduced by a logarithm of k.
    const int child = *childScore<Us>(pos, beta, depth, [&]() -> std::optional<int> {
      return lateMoveChild<Us, Role::Cut>(pos, beta, depth - 2 + extension,
                                          k >= params::EvasionLmrMinMoves && !capture && m != ttMove,
                                          log2Floor(k) - params::EvasionLmrOffset);
    });
    unmakeMove<Us>(pos, m);
    if (pos.stopFlag) return 0;

    // Step 11. Cut-off: history and killers as in every node.
    if (cutOffOrFailLow(pos, m, piece, depth, quiet, child, beta, eval, [&] { storeLower(key, depth, child, m); }))
      return child;
    best = std::max(best, child);
  }

  // Step 12. Fail low (or mate: best is still ply - 22000).
  if (depth > 1) storeWeakUpper(key, depth, best);
  return best;
}

int evasionSearchWhite(Position& pos, int beta, int depth) { return evasionNode<White>(pos, beta, depth); }
int evasionSearchBlack(Position& pos, int beta, int depth) { return evasionNode<Black>(pos, beta, depth); }

}  // namespace tavrin
