// The node family of the search: the members of every role for both colours, and the small
// steps that the roles share (mate-distance pruning, draw returns, the table probe, make with
// evaluation, child selection, extensions).
#pragma once

#include "board/bitboard.h"
#include "board/zobrist.h"
#include "eval/evaluate.h"
#include "search/colour_ops.h"
#include "search/params.h"
#include "search/tt.h"

namespace tavrin {

// --- The members ---------------------------------------------------------------------------------
int pvSearchWhite(Position& pos, int alpha, int beta, int depth);
int pvSearchBlack(Position& pos, int alpha, int beta, int depth);
int cutSearchWhite(Position& pos, int beta, int depth);
int cutSearchBlack(Position& pos, int beta, int depth);
int allSearchWhite(Position& pos, int beta, int depth);
int allSearchBlack(Position& pos, int beta, int depth);
int excludedSearchWhite(Position& pos, int beta, int depth, Move excluded);
int excludedSearchBlack(Position& pos, int beta, int depth, Move excluded);
int shallowSearchWhite(Position& pos, int beta, int depth);
int shallowSearchBlack(Position& pos, int beta, int depth);
int evasionSearchWhite(Position& pos, int beta, int depth);
int evasionSearchBlack(Position& pos, int beta, int depth);
int quiesceWhite(Position& pos, int beta, int depth);
int quiesceBlack(Position& pos, int beta, int depth);
int quiesceEvasionWhite(Position& pos, int beta, int depth);
int quiesceEvasionBlack(Position& pos, int beta, int depth);
int pvQuiesceWhite(Position& pos, int alpha, int beta, int depth);
int pvQuiesceBlack(Position& pos, int alpha, int beta, int depth);

// Compile-time choice of a colour's member.
template <Color C> inline int pvSearch(Position& p, int a, int b, int d) {
  if constexpr (C == White) return pvSearchWhite(p, a, b, d); else return pvSearchBlack(p, a, b, d);
}
template <Color C> inline int cutSearch(Position& p, int b, int d) {
  if constexpr (C == White) return cutSearchWhite(p, b, d); else return cutSearchBlack(p, b, d);
}
template <Color C> inline int allSearch(Position& p, int b, int d) {
  if constexpr (C == White) return allSearchWhite(p, b, d); else return allSearchBlack(p, b, d);
}
template <Color C> inline int excludedSearch(Position& p, int b, int d, Move x) {
  if constexpr (C == White) return excludedSearchWhite(p, b, d, x); else return excludedSearchBlack(p, b, d, x);
}
template <Color C> inline int shallowSearch(Position& p, int b, int d) {
  if constexpr (C == White) return shallowSearchWhite(p, b, d); else return shallowSearchBlack(p, b, d);
}
template <Color C> inline int evasionSearch(Position& p, int b, int d) {
  if constexpr (C == White) return evasionSearchWhite(p, b, d); else return evasionSearchBlack(p, b, d);
}
template <Color C> inline int quiesce(Position& p, int b, int d) {
  if constexpr (C == White) return quiesceWhite(p, b, d); else return quiesceBlack(p, b, d);
}
template <Color C> inline int quiesceEvasion(Position& p, int b, int d) {
  if constexpr (C == White) return quiesceEvasionWhite(p, b, d); else return quiesceEvasionBlack(p, b, d);
}
template <Color C> inline int pvQuiesce(Position& p, int a, int b, int d) {
  if constexpr (C == White) return pvQuiesceWhite(p, a, b, d); else return pvQuiesceBlack(p, a, b, d);
}

// Roles of the deep null-window members, for choosing a child's member.
enum class Role { Cut, All };

// --- Shared steps --------------------------------------------------------------------------------

// Mate-distance pruning for a null window: true with the score when no result can matter.
inline bool mateDistancePrune(const Position& pos, int beta, int& score) {
  if (beta <= pos.ply - MateScore) { score = beta; return true; }
  if (beta - 1 > MateScore - pos.ply) { score = beta - 1; return true; }
  return false;
}

// An earlier occurrence of the position 4, 6, 8 ... plies back within the fifty-move window.
inline bool isRepetition(const Position& pos) {
  int limit = pos.st().rule50;
  if (limit < 4) return false;
  const std::uint64_t n = pos.historyCount;
  const Key key = pos.st().key;
  for (int i = 4; i <= limit && std::uint64_t(i) <= n; i += 2)
    if (pos.keyHistory[n - i] == key) return true;
  return false;
}

// Fifty-move rule or repetition: the node is a draw.
inline bool isRuleDraw(const Position& pos) {
  return pos.st().rule50 >= 100 || isRepetition(pos);
}

// Keeps the selective depth and guards the 8-bit ply counter.
inline bool plyExhausted(Position& pos) {
  if (pos.ply > pos.search.selDepth) pos.search.selDepth = pos.ply;
  return pos.ply >= params::MaxSearchPly;
}

// The table probe of the null-window nodes. Sets ttMove to the move of the matching entry with
// the deepest lower bound; true with the score when an entry decides the node.
inline bool probeNode(Position& pos, Key key, int depth, int beta, Move& ttMove, int& score) {
  TtEntry* e = ttBucket(key);
  const std::uint32_t check = ttCheck(key);
  int moveDepth = -1;
  for (int i = 0; i < TtBucketEntries; ++i, ++e) {
    if (e->key != check) continue;
    if (e->move && e->depthLower > moveDepth) {
      ttMove = e->move;
      moveDepth = e->depthLower;
    }
    if (e->depthLower >= depth && e->valueLower >= beta && ((pos.st().nullBits & 1) || e->move)) {
      e->age = ttAge();
      score = e->valueLower;
      return true;
    }
    if (e->depthUpper >= depth && e->valueUpper < beta) {
      e->age = ttAge();
      score = e->valueUpper;
      return true;
    }
  }
  return false;
}

// The table move only (PV nodes, which never cut on the table).
inline Move probeMove(Key key) {
  TtEntry* e = ttBucket(key);
  const std::uint32_t check = ttCheck(key);
  Move m = 0;
  int moveDepth = -1;
  for (int i = 0; i < TtBucketEntries; ++i, ++e)
    if (e->key == check && e->move && e->depthLower > moveDepth) m = e->move, moveDepth = e->depthLower;
  return m;
}

// The best-move slot of a node is the next entry's move field.
inline Move& bestMoveSlot(Position& pos) { return pos.state[1].move; }

// Makes the move and evaluates the child with the lazy window around the mover's beta. An
// illegal move (own king attacked) is taken back at once and false returned.
template <Color Us>
inline bool makeAndEvaluate(Position& pos, Move m, int lower, int upper) {
  doMove<Us>(pos, m);
  evaluate(pos, lower, upper, m);
  if (kingAttackers<Us>(pos.st())) {
    undoMove<Us>(pos, m);
    return false;
  }
  pos.st().nullBits = 3;
  return true;
}

// While a capture's subtree is searched, its destination is the line's last target (a square
// the exchange futility never prunes moves to). Constructed right after the move is made.
struct LastTargetScope {
  Position& pos;
  int saved;
  LastTargetScope(Position& p, Move m) : pos(p), saved(p.search.lastTarget) {
    if (p.st().captured || moveKind(m) == EnPassantMove) p.search.lastTarget = moveTo(m);
  }
  ~LastTargetScope() { pos.search.lastTarget = saved; }
  LastTargetScope(const LastTargetScope&) = delete;
  LastTargetScope& operator=(const LastTargetScope&) = delete;
};

// Is the side to move (who just received the move) in check?
template <Color Them>
inline bool childInCheck(const Position& pos) { return kingAttackers<Them>(pos.st()) != 0; }

// The null-window child by its depth: quiescence, shallow member, or the deep member of the
// given role. The child is not in check.
template <Color Them, Role R>
inline int nullWindowChild(Position& pos, int beta, int depth) {
  if (depth <= 2) return quiesce<Them>(pos, beta, 0);
  if (depth <= 7) return shallowSearch<Them>(pos, beta, depth);
  if constexpr (R == Role::Cut) return cutSearch<Them>(pos, beta, depth);
  else return allSearch<Them>(pos, beta, depth);
}

// A pawn advancing to relative rank minRank or beyond with no enemy pawn ahead of it on its own
// or a neighbouring file. Tested before the move is made.
template <Color Us>
inline bool isPassedPawnPush(const Position& pos, Move m, int minRank) {
  using T = ColorTraits<Us>;
  const int from = moveFrom(m), to = moveTo(m);
  if (pos.board[from] != T::OwnPawn || T::RelativeRank(to) < minRank) return false;
  if (T::RelativeRank(to) == 7) return true;   // a promotion has nothing ahead of it
  const int file = fileOf(to), rank = rankOf(to);
  Bitboard files = fileMask(file);
  if (file > 0) files |= fileMask(file - 1);
  if (file < 7) files |= fileMask(file + 1);
  Bitboard ahead = Us == White ? ~Bitboard(0) << (8 * (rank + 1)) : (Bitboard(1) << (8 * rank)) - 1;
  return (pos.pieces[T::EnemyPawn] & files & ahead) == 0;
}

// The side to move has a piece other than pawns and king (null move is no zugzwang trap then).
template <Color Us>
inline bool hasNonPawnMaterial(const Position& pos) {
  using T = ColorTraits<Us>;
  return (pos.pieces[T::OwnAll] & ~pos.pieces[T::OwnPawn] & ~pos.pieces[T::OwnKing]) != 0;
}

// Windows at mate distance: the evaluation-based shortcuts (static null move, the null move,
// the hopeless fail-low) judge material, not mates, and would hide a mate from the search.
inline bool losingMateBound(int beta) { return beta <= -MateThreshold; }
inline bool winningMateBound(int beta) { return beta > MateThreshold; }

// floor(log2 k) for k >= 1.
inline int log2Floor(int k) { return bitScanReverse(Bitboard(k)); }

// The probe key of an exclusion search: the excluded move's squares are mixed in so that the
// search never shares entries with the normal search of the position.
inline Key exclusionKey(Key key, Move excluded) {
  // Piece codes 0 and 8 name no piece: their keys are drawn but otherwise unused.
  return key ^ Zobrist.pieceSquare[0][moveFrom(excluded)] ^ Zobrist.pieceSquare[8][moveTo(excluded)];
}

}  // namespace tavrin
