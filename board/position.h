// The board record of one searcher (Position) and one entry of its state stack (StateEntry).
#pragma once

#include <cstddef>
#include <cstdint>

#include "board/types.h"
#include "common/relaxed.h"

namespace tavrin {

// One entry of the state stack: everything a make changes that an unmake cannot cheaply undo.
// A make copies the first 32 bytes forward, a null make the first 64 (so the attack sets survive).
struct StateEntry {
  Key key;                      // Zobrist key of the position
  Key pawnKey;                  // pawns, both kings and the castling rights
  std::uint32_t materialKey;    // material signature; low byte the phase, bit 31 unusual material
  Packed psqScore;              // sum of piece-square values, White's point of view
  std::uint32_t reserved;
  std::uint8_t castle;          // castling rights
  std::uint8_t rule50;          // half-moves since the last capture or pawn move (null moves count)
  std::uint8_t epSquare;        // en-passant target, 0 = none
  std::uint8_t capturedPiece;       // piece captured by the move that led here (0 also for en passant)
  // Written by the evaluation's attack summary.
  Bitboard attackedByWhite;
  Bitboard attackedByBlack;
  Bitboard whiteKingAttackers;  // pieces attacking the white king
  Bitboard blackKingAttackers;  // pieces attacking the black king
  // Offset 64.
  std::int32_t staticEval;      // evaluation from the side to move's point of view
  std::int32_t positionalEval;  // White's point of view, evaluation minus material
  Bitboard pinned;              // side to move's pieces pinned against its own king
  Move move;                    // the move that led here; 0 after a null move; best-move slot of the parent
  std::uint8_t decisiveEval;    // a cached evaluation beyond +-15000 was used
  std::uint8_t lazyCount;       // lazy estimates in a row that led to staticEval; 0 after a full one
  std::uint8_t savedNullBits;   // copy of nullBits taken before a null move
  std::uint8_t nullBits;        // null-move permissions: bit 0 exclusion nodes, bit 1 cut and all nodes
  Move killer1;
  Move killer2;
  std::uint8_t evalFlags;       // material flags of the position (see the evaluation driver)
  std::uint8_t evalFinal;       // the static evaluation is the exact value, no search needed
  std::uint8_t spare[4];
  Bitboard checkCandidates;     // squares of pieces whose quiet moves may give check: never pruned
  Bitboard quietExemptions;     // second exemption set of the shallow-node futility
  Bitboard exchangeExclusion;   // captures from these squares need no exchange test in quiescence
  Bitboard pawnThreats;         // squares on which the side to move can win a pawn
};

// The pieces attacking a colour's king, as the last attack summary or check computation left them.
template <Color C>
inline Bitboard kingAttackers(const StateEntry& st) {
  return C == White ? st.whiteKingAttackers : st.blackKingAttackers;
}

static_assert(sizeof(StateEntry) == 128, "a state entry is 128 bytes");
static_assert(offsetof(StateEntry, capturedPiece) == 31, "a make copies the first 32 bytes");
static_assert(offsetof(StateEntry, attackedByWhite) == 32);
static_assert(offsetof(StateEntry, staticEval) == 64, "a null make copies the first 64 bytes");
static_assert(offsetof(StateEntry, move) == 80);
static_assert(offsetof(StateEntry, decisiveEval) < offsetof(StateEntry, lazyCount) &&
              offsetof(StateEntry, lazyCount) < offsetof(StateEntry, evalFlags));

// The game position plus what a search needs in its record.
constexpr int StateStackEntries = 4352;   // enough for MaxGamePlies moves and a full-depth search
constexpr int KeyHistorySize = 4352;
constexpr int MaxGamePlies = 4000;        // the position command plays no more moves than this
constexpr int MaxThreads = 64;        // the Threads option's upper bound
// A worker record's stack: it starts at a split node and goes at most MaxSearchPly plies deeper.
constexpr int WorkerStackEntries = 256;

struct SplitPoint;

// The search's own fields in the board part of a Position (copied with the board).
struct SearchArea {
  std::int32_t lastTarget;      // destination of the last capture on the searched line (-1 none)
  std::int32_t selDepth;        // deepest ply reached in this search
  std::uint8_t spare[120];
};
static_assert(sizeof(SearchArea) == 128);

struct Position {
  std::uint8_t board[64];       // piece code on each square
  Bitboard pieces[16];          // by piece code; [0] all white, [8] all black
  Bitboard occupied;
  Bitboard occupiedFileMajor;   // occupancy in the file-major numbering
  Bitboard occupiedAntiDiag;    // occupancy in the anti-diagonal numbering
  Bitboard occupiedDiag;        // occupancy in the diagonal numbering
  SearchArea search;
  std::uint8_t sideToMove;      // 1 White, 0 Black
  std::uint8_t whiteKingSquare;
  std::uint8_t blackKingSquare;
  std::uint8_t ply;             // plies from the root of the search
  // Everything above is the board part, copied when a search record is prepared.
  StateEntry* state;            // current entry
  StateEntry* stateStack;       // base of the stack
  std::uint32_t stackEntries;   // entries of the stack
  Key keyHistory[KeyHistorySize];
  std::uint64_t historyCount;   // index of the newest key in keyHistory
  std::uint64_t recordIndex;    // 0 for the main search record
  std::uint64_t nodes;          // written by the owning thread only (relaxed), read by the others
  // Parallel search bookkeeping: the stop flag is polled by the record's own thread and set by
  // others; the fields after it change under the split lock.
  std::uint64_t threadIndex;
  RelaxedFlag stopFlag;
  std::uint8_t searchingSplit;
  std::uint8_t inUse;
  std::int32_t workerCount;
  Position* parent;
  Position* workers[MaxThreads];
  SplitPoint* splitPoint;
  std::uint64_t noiseState;     // the evaluation's random generator for this record

  StateEntry& st() { return *state; }
  const StateEntry& st() const { return *state; }
  StateEntry& previous() { return state[-1]; }
  Color side() const { return Color(sideToMove); }
  int kingSquare(Color c) const { return c == White ? whiteKingSquare : blackKingSquare; }
};

constexpr std::size_t BoardPartBytes = offsetof(Position, state);

// The record's node count, safe to read while its thread searches (the counters of all threads are
// summed this way).
inline std::uint64_t nodeCount(const Position& pos) { return relaxedLoad(pos.nodes); }
// One more node: a relaxed load and store, not a locked increment, since only the owner writes.
inline void countNode(Position& pos) { relaxedStore(pos.nodes, relaxedLoad(pos.nodes) + 1); }

// Allocates the state stack of a record (once, at start-up) and clears the record. A worker
// record of the parallel search gets a short stack.
void initPosition(Position& pos, int stackEntries = StateStackEntries);
// Frees the state stack of a record that initPosition allocated (tests and tools).
void releasePosition(Position& pos);
// Sets the start position: board, stack (second entry current), keys, material and evaluation.
void setStartPosition(Position& pos);
// The men on a board can make a position the engine plays from: one king a side, at most sixteen
// men and eight pawns a side, no pawn on the first or last rank, no unknown piece code.
bool boardPlayable(const std::uint8_t (&board)[64]);
// The full evaluation that fills a rebuilt position's evaluation fields: installed by the
// evaluation at start-up (until then it does nothing).
extern void (*EvaluatePosition)(Position& pos);
// Rebuilds bitboards, occupancies, king squares, keys, material signature and piece-square sum
// from board[], sideToMove and the current entry's castle/epSquare/rule50, then evaluates.
void recomputeFromBoard(Position& pos);
// Fills the given entry's key, pawn key, material key and psq sum from the board, without
// touching the position (the oracle of the make/unmake tests).
struct DerivedState {
  Key key, pawnKey;
  std::uint32_t materialKey;
  Packed psqScore;
};
DerivedState computeDerivedState(const Position& pos);

}  // namespace tavrin
