// The search starter: prepares the search's own record from the root position, runs the root
// search until it ends or is aborted, then the finish step with its waits and the best move.
#include <array>
#include <cstring>
#include <vector>

#include "common/console.h"
#include "common/globals.h"
#include "common/platform.h"
#include "search/search.h"
#include "search/tt.h"
#include "uci/command_line.h"
#include "uci/go_command.h"
#include "uci/output.h"
#include "uci/position_command.h"

namespace tavrin {

namespace {

// The part of the state stack that each go clears above the root's two entries.
constexpr std::ptrdiff_t CompactedEntries = 256;

// What the finish step needs to print from the root again: the board part and the two stack
// entries the search started from.
struct RootSnapshot {
  std::uint8_t board[BoardPartBytes];
  StateEntry entries[2];
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

// The key history for repetitions, the analysis rule, and the compacted stack of the root: the
// current entry moves to the second slot, the first slot and the rest of the stack's first
// 256 entries are zeroed.
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
  const std::ptrdiff_t cleared = current > CompactedEntries ? current + 1 : CompactedEntries;
  std::memset(static_cast<void*>(pos.stateStack + 2), 0, std::size_t(cleared - 2) * sizeof(StateEntry));
  pos.state = pos.stateStack + 1;
  pos.ply = 0;
}

void prepareRecord(const Position& root, Position& rec) {
  std::memcpy(static_cast<void*>(&rec), &root, BoardPartBytes);
  std::memcpy(static_cast<void*>(rec.stateStack), root.stateStack, 2 * sizeof(StateEntry));
  rec.state = rec.stateStack + 1;
  readySearchRecord(root, rec);
}

// One search from go to the end of the finish step's PV line: the search starter's steps and
// finish steps 1 to 3. The record is left at the root. False when the position cannot be searched.
bool runSearch(Position& pos, Position& rec) {
  Engine.firstSearch = 0;
  timerBegin();
  Limits.startTime = wallClockMicros();

  prepareRoot(pos);
  newSearch();
  Root = RootResult{};
  Root.bestScore = -MateScore;
  RootFailingLow = 0;

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
  restoreSnapshot(snapshot, rec);
  if (playable && depthReached > lastPrintedDepth())
    printPvLine(rec, wallClockMicros() - Limits.startTime, Root.bestScore);
  return playable;
}

// The finish step's waits: an infinite search holds its best move until "stop", a pondering one
// until "stop" or "ponderhit". A stop by a limit (a carried-over depth) does not release them.
bool mustWait() {
  if (Engine.stopRequested) return false;
  return Engine.infiniteMode || (Engine.ponderMode && !Engine.ponderHit);
}

// While a finish step waits, a "go" does not start its search from inside the wait (which would
// nest without bound); it is noted here and the waiting search starter runs it.
bool Waiting = false;
bool GoDuringWait = false;

constexpr std::size_t BestMoveLineBytes = 32;

}  // namespace

bool searchWaiting() { return Waiting; }

void startSearch(Position& pos) {
  if (Waiting) {
    GoDuringWait = true;
    return;
  }
  Position& rec = SearchRecords[0];
  // The best-move lines of searches whose wait a later go interrupted, oldest first. A stop
  // releases them all, newest first, as if each search had started inside the previous one.
  std::vector<std::array<char, BestMoveLineBytes>> owed;
  bool playable = runSearch(pos, rec);
  bool live = true;   // the newest search's line is still to be printed (from the record)
  for (;;) {
    if (mustWait()) {
      Waiting = true;
      readCommandLine(pos);
      Waiting = false;
      if (GoDuringWait) {
        GoDuringWait = false;
        if (live) {
          owed.emplace_back();
          bestMoveLine(rec, playable, owed.back().data(), BestMoveLineBytes);
        }
        playable = runSearch(pos, rec);
        live = true;
      }
      continue;
    }
    // Finish step 6.
    if (live) {
      printBestMove(rec, playable);
      live = false;
    } else {
      printOut("%s", owed.back().data());
      owed.pop_back();
    }
    timerEnd();
    if (owed.empty()) return;
  }
}

}  // namespace tavrin
