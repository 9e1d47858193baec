// Perft: counting the leaves of the legal-move tree, for the tool and the tests.
#include "board/perft.h"

#include "board/make_move.h"
#include "board/movegen.h"

namespace tavrin {

namespace {

template <Color Us, bool Bulk>
std::uint64_t perftNode(Position& pos, int depth) {
  MoveWord list[MaxMoves];
  MoveWord* const end = generateLegal<Us>(pos, list);
  if (Bulk && depth == 1) return std::uint64_t(end - list);
  std::uint64_t nodes = 0;
  for (MoveWord* w = list; w != end; ++w) {
    const Move m = moveOf(*w);
    makeMove<Us>(pos, m);
    nodes += depth == 1 ? 1 : perftNode<~Us, Bulk>(pos, depth - 1);
    unmakeMove<Us>(pos, m);
  }
  return nodes;
}

}  // namespace

std::uint64_t perft(Position& pos, int depth, bool bulk) {
  if (depth <= 0) return 1;
  if (pos.sideToMove == White) return bulk ? perftNode<White, true>(pos, depth) : perftNode<White, false>(pos, depth);
  return bulk ? perftNode<Black, true>(pos, depth) : perftNode<Black, false>(pos, depth);
}

}  // namespace tavrin
