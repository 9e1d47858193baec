// The node family of the search: the members of every role for both colours, and the small
// steps that the roles share (the preludes of mate distance, draws and the table probe, make with
// evaluation, child selection with the late-move re-search, the reversal test, extensions).
#pragma once

#include <algorithm>

#include "board/bitboard.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/zobrist.h"
#include "eval/evaluate.h"
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

// Compile-time choice of a colour's member: `pvSearch<Them>(...)` calls the instance directly.
template <Color C> inline constexpr auto pvSearch = C == White ? pvSearchWhite : pvSearchBlack;
template <Color C> inline constexpr auto cutSearch = C == White ? cutSearchWhite : cutSearchBlack;
template <Color C> inline constexpr auto allSearch = C == White ? allSearchWhite : allSearchBlack;
template <Color C> inline constexpr auto excludedSearch = C == White ? excludedSearchWhite : excludedSearchBlack;
template <Color C> inline constexpr auto shallowSearch = C == White ? shallowSearchWhite : shallowSearchBlack;
template <Color C> inline constexpr auto evasionSearch = C == White ? evasionSearchWhite : evasionSearchBlack;
template <Color C> inline constexpr auto quiesce = C == White ? quiesceWhite : quiesceBlack;
template <Color C> inline constexpr auto quiesceEvasion = C == White ? quiesceEvasionWhite : quiesceEvasionBlack;
template <Color C> inline constexpr auto pvQuiesce = C == White ? pvQuiesceWhite : pvQuiesceBlack;

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
// the deepest lower bound; true with the score when an entry decides the node. (Each field is
// loaded once: another thread may rewrite the entry meanwhile.)
inline bool probeNode(Position& pos, Key key, int depth, int beta, Move& ttMove, int& score) {
  TtEntry* e = ttBucket(key);
  const std::uint32_t check = ttCheck(key);
  int moveDepth = -1;
#pragma GCC unroll 4   // (the relaxed loads keep the compiler from unrolling it unasked)
  for (int i = 0; i < TtBucketEntries; ++i, ++e) {
    if (relaxedLoad(e->key) != check) continue;
    const Move move = relaxedLoad(e->move);
    const int depthLower = relaxedLoad(e->depthLower);
    if (move && depthLower > moveDepth) {
      ttMove = move;
      moveDepth = depthLower;
    }
    if (depthLower >= depth) {
      const int valueLower = relaxedLoad(e->valueLower);
      if (valueLower >= beta && ((pos.st().nullBits & 1) || move)) {
        relaxedStore(e->age, ttAge());
        score = valueLower;
        return true;
      }
    }
    if (relaxedLoad(e->depthUpper) >= depth) {
      const int valueUpper = relaxedLoad(e->valueUpper);
      if (valueUpper < beta) {
        relaxedStore(e->age, ttAge());
        score = valueUpper;
        return true;
      }
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
#pragma GCC unroll 4
  for (int i = 0; i < TtBucketEntries; ++i, ++e) {
    if (relaxedLoad(e->key) != check) continue;
    const Move move = relaxedLoad(e->move);
    if (!move) continue;
    const int depthLower = relaxedLoad(e->depthLower);
    if (depthLower > moveDepth) m = move, moveDepth = depthLower;
  }
  return m;
}

// The best-move slot of a node is the next entry's move field.
inline Move& bestMoveSlot(Position& pos) { return pos.state[1].move; }

// The guards after mate distance: the ply guard, the best-move slot cleared (searches only; the
// quiescence leaves it alone), stop and draws. True with the score when one decides the node.
template <bool Quiescence>
inline bool decidedByGuards(Position& pos, int& score) {
  if (plyExhausted(pos)) { score = pos.st().staticEval; return true; }
  if constexpr (!Quiescence) bestMoveSlot(pos) = 0;
  if (pos.stopFlag) { score = 0; return true; }
  if (isRuleDraw(pos)) { score = 0; return true; }
  return false;
}

// Steps 1 to 4 of the null-window members: mate distance, then the guards. True with the score
// when the node is decided before its table probe.
template <bool Quiescence = false>
inline bool nodePrelude(Position& pos, int beta, int& score) {
  return mateDistancePrune(pos, beta, score) || decidedByGuards<Quiescence>(pos, score);
}

// The same for a full window, which mate distance narrows in place.
template <bool Quiescence = false>
inline bool pvNodePrelude(Position& pos, int& alpha, int& beta, int& score) {
  alpha = std::max(alpha, pos.ply - MateScore);
  beta = std::min(beta, MateScore - pos.ply);
  if (alpha >= beta) { score = alpha; return true; }
  return decidedByGuards<Quiescence>(pos, score);
}

// Steps 1 to 5 of the cut, all, exclusion and evasion members: the prelude, then the table probe
// under `key`. True with the score when they decide the node.
inline bool nodeOpening(Position& pos, Key key, int beta, int depth, Move& ttMove, int& score) {
  return nodePrelude(pos, beta, score) || probeNode(pos, key, depth, beta, ttMove, score);
}

// Makes the move and evaluates the child with the lazy window around the mover's beta. An
// illegal move (own king attacked) is taken back at once and false returned.
// Requests the memory lines that the child of m reads first: its table bucket and its
// evaluation cache, pawn and material lines.
inline void prefetchChild(const Position& pos, Move m) {
  const ChildKeys next = childKeys(pos, m);
  prefetchBucket(next.key);
  prefetchEvaluation(next.key, next.pawnKey, next.materialKey);
}

template <Color Us>
inline bool makeAndEvaluate(Position& pos, Move m, int lower, int upper) {
  // The child's lines are requested before the make, and the bucket again once the key is
  // exact: the child probes it after the evaluation.
  prefetchChild(pos, m);
  makeMove<Us>(pos, m);
  prefetchBucket(pos.st().key);
  evaluate(pos, lower, upper, m);
  if (kingAttackers<Us>(pos.st())) {
    unmakeMove<Us>(pos, m);
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
    if (p.st().capturedPiece || moveKind(m) == EnPassantMove) p.search.lastTarget = moveTo(m);
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

// A null-window child first searched `reduction` shallower when `reduce` holds, and again at full
// depth unless that already failed low. The score is the mover's.
template <Color Us, Role R>
inline int lateMoveChild(Position& pos, int beta, int newDepth, bool reduce, int reduction) {
  constexpr Color Them = ~Us;
  if (reduce) {
    const int score = -nullWindowChild<Them, R>(pos, 1 - beta, newDepth - reduction);
    if (score < beta) return score;
  }
  return -nullWindowChild<Them, R>(pos, 1 - beta, newDepth);
}

// Reversal, pruned where beta is above 0: the exact way back of the side's own previous move onto an
// empty square, with the last two plies reversible.
inline bool isReversal(const Position& pos, int from, int to, int beta) {
  const Move ownPrevious = pos.state[-1].move;
  return beta > 0 && pos.st().rule50 >= 2 && from == moveTo(ownPrevious) && to == moveFrom(ownPrevious) &&
         pos.board[to] == NoPiece;
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

// Is there a legal move at all?
template <Color Us>
inline bool hasLegalMove(const Position& pos) {
  MoveWord list[MaxMoves];
  return generateLegal<Us>(pos, list) != list;
}

// floor(log2 k) for k >= 1.
inline int log2Floor(int k) { return bitScanReverse(Bitboard(k)); }

// The probe key of an exclusion search: the excluded move's squares are mixed in so that the
// search never shares entries with the normal search of the position.
inline Key exclusionKey(Key key, Move excluded) {
  // Piece codes 0 and 8 name no piece: their keys are drawn but otherwise unused.
  return key ^ Zobrist.pieceSquare[0][moveFrom(excluded)] ^ Zobrist.pieceSquare[8][moveTo(excluded)];
}

}  // namespace tavrin
