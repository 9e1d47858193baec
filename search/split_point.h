// Split points and the search records of the parallel search. A node that has searched its first
// move may offer the rest to idle threads: they copy its position, take moves from its move
// picker and report back. With one thread (the default) no thread is ever idle, so every split
// attempt fails and the caller goes on alone.
#pragma once

#include <cstdint>
#include <mutex>

#include "board/position.h"

namespace tavrin {

struct MovePicker;
struct SplitPoint;

enum SplitNodeType : int { SplitPvNode = 1, SplitNonPvNode = 2 };

// How the threads at a split point search its moves: the member of the node family's split
// search for the node's colour and role, and the splitting node's fixed values that it reads.
struct SplitTask {
  void (*searchMoves)(Position& record, SplitPoint& sp) = nullptr;
  const void* node = nullptr;
};

// A thread splits again below a split point of its own; this many may be open at once.
constexpr int SplitPointsPerThread = 8;

struct SplitPoint {
  std::int32_t alpha;
  std::int32_t beta;
  std::int32_t depth;
  std::int32_t nodeType;       // 1: principal-variation node
  std::int32_t bestValue;
  std::uint32_t bestMove;      // the move that raised bestValue above its start, else 0
  std::uint32_t counters[2];   // [0] moves handed out, [1] moves searched
  MovePicker* movePicker;      // the splitting node's move selection, shared by the workers
  std::uint8_t stopped;
  std::uint8_t active;
  std::mutex lock;             // guards the fields above while the split point is active
  SplitTask task;
  Position* master;            // the record that split
};

struct SplitGlobals {
  std::uint64_t threadCount = 1;
  std::uint64_t maxThreads = MaxThreads;
  Position* threadWork[MaxThreads] = {};      // the record each thread searches; 0 when idle
  std::uint8_t sleepRequested[MaxThreads] = {};  // the thread is to leave its idle loop for good
  std::uint64_t awakeCount = 1;
  std::uint64_t idleCount = 0;
  // The two switches of the split facility; a node offers a split only when both are set.
  std::uint8_t splitEnabled = 1;
  std::uint8_t splitAllowed = 1;
};
extern SplitGlobals Split;

// Start-up: one thread, no split point in use.
void initSplitPoints();
// Offers the rest of a node to idle threads; false when the caller must go on alone. When true,
// bestValue holds the result and the record's best-move slot the move that raised it (or 0).
bool trySplit(Position& record, MovePicker* movePicker, int depth, int beta, int alpha, int nodeType,
              int& bestValue, const SplitTask& task);
// Waits for work until the master record's workers are done (a thread of the pool, with no
// master, waits until it is retired). A waiting master helps the threads that work for it.
void idleLoop(Position* master, std::uint64_t threadIndex);
// A free record of the thread marked in use, or nullptr when all are taken.
Position* acquireRecord(std::uint64_t threadIndex);
// A worker record able to search from the master's node, or nullptr.
Position* copyForWorker(std::uint64_t threadIndex, Position& master);
// Hands a finished worker's result to the splitting record (under the split lock).
void mergeWorkerResult(Position& parent, Position& worker);
// Sets the record's stop flag and that of every record working for it, down the split tree.
void requestStop(Position& record);
// A cut-off at the split point: no more moves are handed out and every worker stops.
void stopSplitPoint(SplitPoint& sp);

// --- The thread pool ------------------------------------------------------------------------------

// Sets the number of search threads (1 to MaxThreads): extra threads are started once here and
// sleep between searches; with 1 every extra thread is retired. Never called during a search.
void setThreadCount(int count);
// Prepares every record for a search from root: the root record is the main thread's work, the
// other records' node counts and stop flags are cleared.
void beginParallelSearch(Position& root);
// Nodes searched by every record of the current search.
std::uint64_t searchNodeCount();
// Calls fn on every record that has a state stack (the search records and the workers' records).
void forEachSearchRecord(void (*fn)(Position&));

// What the parallel search did since the last reset (the bench reports it).
struct SplitStatistics {
  std::uint64_t splits = 0;          // split points that found workers
  std::uint64_t movesSearched = 0;   // moves searched at them, by all their threads
  std::int64_t idleMicros = 0;       // time threads spent waiting in the idle loop, summed
};
SplitStatistics splitStatistics();
void resetSplitStatistics();

}  // namespace tavrin
