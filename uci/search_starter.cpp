// The search starter: prepares the search's own record from the root position, runs the root
// search until it ends or is aborted, then the finish step with its waits and the best move.
#include <cstring>

#include "app/console.h"
#include "app/platform.h"
#include "search/search.h"
#include "search/tt.h"
#include "uci/globals.h"
#include "uci/go_command.h"
#include "uci/output.h"
#include "uci/position_command.h"

namespace tavrin {

namespace {

// What the finish step needs to print from the root again: the board part and the two stack
// entries the search started from. A nested go during an infinite or ponder wait reuses the
// search record and the result, so the outer search restores both before its best-move line.
struct RootSnapshot {
  std::uint8_t board[BoardPartBytes];
  StateEntry entries[2];
  std::uint64_t nodes;
  RootResult result;
};

void takeSnapshot(RootSnapshot& s, const Position& rec) {
  std::memcpy(s.board, &rec, BoardPartBytes);
  std::memcpy(s.entries, rec.stateStack, sizeof s.entries);
}

// Puts the record back at the root (the search is abandoned wherever it was).
void restoreSnapshot(const RootSnapshot& s, Position& rec) {
  std::memcpy(static_cast<void*>(&rec), s.board, BoardPartBytes);
  std::memcpy(static_cast<void*>(rec.stateStack), s.entries, sizeof s.entries);
  rec.state = rec.stateStack + 1;
}

// Counts searches, so that the finish step can tell whether a nested one ran during its wait.
std::uint64_t SearchGeneration = 0;

// The key history for repetitions, the analysis rule, and the compacted stack of the root.
void prepareRoot(Position& pos) {
  const std::ptrdiff_t current = pos.state - pos.stateStack;
  for (std::ptrdiff_t i = 0; i <= current; ++i) pos.keyHistory[i] = pos.stateStack[i].key;
  pos.historyCount = std::uint64_t(current);
  pos.nodes = 0;
  // Analysing a position: the game that led to it does not count for repetitions.
  if (Limits.analysis && current > 0)
    for (std::ptrdiff_t i = 0; i < current - 1; ++i) {
      pos.keyHistory[i] = 0;
      pos.stateStack[i].move = NoMove;
    }
  if (current != 1) std::memcpy(static_cast<void*>(pos.stateStack + 1), pos.state, sizeof(StateEntry));
  std::memset(static_cast<void*>(pos.stateStack), 0, sizeof(StateEntry));
  const std::ptrdiff_t used = current > 1 ? current : 1;
  std::memset(static_cast<void*>(pos.stateStack + 2), 0, std::size_t(used - 1) * sizeof(StateEntry));
  pos.state = pos.stateStack + 1;
  pos.ply = 0;
}

void prepareRecord(const Position& root, Position& rec) {
  std::memcpy(static_cast<void*>(&rec), &root, BoardPartBytes);
  std::memcpy(static_cast<void*>(rec.stateStack), root.stateStack, 2 * sizeof(StateEntry));
  rec.state = rec.stateStack + 1;
  std::memcpy(rec.keyHistory, root.keyHistory, (root.historyCount + 1) * sizeof(Key));
  rec.historyCount = root.historyCount;
  rec.nodes = 0;
  rec.stopFlag = 0;
  rec.searchingSplit = 0;
  rec.workerCount = 0;
}

}  // namespace

void startSearch(Position& pos) {
  Engine.firstSearch = 0;
  timerBegin();
  Limits.startTime = wallClockMicros();
  Limits.startCpuTime = processCpuMicros();
  ++SearchGeneration;

  prepareRoot(pos);
  newSearch();
  Root = RootResult{};

  Position& rec = SearchRecords[0];
  prepareRecord(pos, rec);
  RootSnapshot snapshot;
  takeSnapshot(snapshot, rec);

  // A position that cannot be searched (a king missing, the side not to move in check, ...) gets
  // no search and the null move as its answer, after the waits a GUI expects.
  const bool playable = positionPlayable(pos);
  if (playable) {
    Engine.searchRunning = 1;
    try {
      runRootSearch(rec);
    } catch (const SearchAborted&) {
    }
  }

  // Finish step.
  Engine.searchRunning = 0;
  const int depthReached = Root.completedDepth;
  Engine.lastSearchDepth = depthReached;
  restoreSnapshot(snapshot, rec);
  snapshot.nodes = rec.nodes;
  snapshot.result = Root;
  if (playable && depthReached > lastPrintedDepth())
    printPvLine(rec, wallClockMicros() - Limits.startTime, Root.bestScore);

  const std::uint64_t generation = SearchGeneration;
  while (Engine.infiniteMode && !Engine.stopRequested) readCommandLine(pos);
  while (Engine.ponderMode && !Engine.stopRequested && !Engine.ponderHit) readCommandLine(pos);
  if (generation != SearchGeneration) {
    restoreSnapshot(snapshot, rec);
    rec.nodes = snapshot.nodes;
    Root = snapshot.result;
  }
  if (playable)
    printBestMove(rec);
  else
    printOut("bestmove 0000\n");
  timerEnd();
}

}  // namespace tavrin
