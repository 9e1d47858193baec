// Split points and the shared records of the parallel search. The thread count is fixed at 1,
// so every split attempt fails and the caller searches on alone; the bookkeeping stays exact.
#pragma once

#include <cstdint>

#include "board/position.h"

namespace tavrin {

struct MovePicker;

enum SplitNodeType : int { SplitPvNode = 1, SplitNonPvNode = 2 };

struct SplitPoint {
  std::int32_t alpha;
  std::int32_t beta;
  std::int32_t depth;
  std::int32_t nodeType;       // 1: principal-variation node
  std::int32_t bestValue;
  std::uint32_t bestMove;
  std::uint32_t counters[2];
  MovePicker* movePicker;      // the splitting node's move selection, shared by the workers
  std::uint8_t stopped;
  std::uint8_t active;
};

struct SplitGlobals {
  std::uint64_t threadCount = 1;
  std::uint64_t maxThreads = 1;
  Position* threadWork[MaxThreads] = {};
  std::uint8_t sleepRequested[MaxThreads] = {};
  std::uint64_t awakeCount = 1;
  std::uint64_t idleCount = 0;
  // The two switches of the split facility; a node offers a split only when both are set.
  std::uint8_t splitEnabled = 1;
  std::uint8_t splitAllowed = 1;
};
extern SplitGlobals Split;
extern SplitPoint TheSplitPoint;

// Start-up: locks, events and the thread count (1).
void initSplitPoints();
// Offers the rest of a node to idle threads; false when the caller must go on alone.
bool trySplit(Position& record, MovePicker* movePicker, int depth, int beta, int alpha, int nodeType,
              int& bestValue);
// Waits for work (or, for a splitting thread, for its workers to finish).
void idleLoop(Position& record, std::uint64_t threadIndex);
// The thread's record marked in use, or nullptr when it is taken already.
Position* acquireRecord(std::uint64_t threadIndex);
// A worker record able to search from the master's node, or nullptr.
Position* copyForWorker(std::uint64_t threadIndex, Position& master);
// Hands a finished worker's result to the splitting record.
void mergeWorkerResult(Position& parent, Position& worker);
// Sets the record's stop flag, and that of whatever its split point leads to.
void requestStop(Position& record);

}  // namespace tavrin
