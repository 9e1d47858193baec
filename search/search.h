// The interface between the command layer and the search.
#pragma once

#include "board/position.h"

namespace tavrin {

// Thrown by the stop handler (stop, ucinewgame, a spent limit) while a search runs; caught by
// the search starter, which then runs the finish step. The search runs on its own record; the
// root search takes back whatever moves were on the board before the exception leaves it.
struct SearchAborted {};

// Result of the root search, read by the output and the finish step.
struct RootResult {
  Move bestMove = 0;
  int bestScore = -MateScore;  // no move searched yet
  int iterationDepth = 0;     // depth (half-plies) of the iteration in progress / last one
  int completedDepth = 0;     // deepest completed iteration (half-plies)
  int selDepth = 0;
};
extern RootResult Root;

// The search records of the parallel search, one per thread: [0] is the main thread's, the one
// the search starter prepares; the others get their stacks when their thread is started.
extern Position SearchRecords[MaxThreads];

// Readies a search record whose board and root entries are in place: the game's key history (for
// repetitions) is copied in, the node count and the parallel-search state are cleared.
inline void readySearchRecord(const Position& game, Position& rec) {
  for (std::uint64_t i = 0; i <= game.historyCount; ++i) rec.keyHistory[i] = game.keyHistory[i];
  rec.historyCount = game.historyCount;
  rec.nodes = 0;
  rec.stopFlag = 0;
  rec.searchingSplit = 0;
  rec.workerCount = 0;
}

// Iterative deepening for the side to move of pos (dispatches to the colour's driver).
void runRootSearch(Position& pos);

// What the root search reports and asks of the protocol layer, which installs it at start-up
// (until then nothing is printed and nothing polled): the PV line, "info depth", "info currmove",
// and the input poll between iterations (with the completed depth in plies).
struct SearchReports {
  void (*pvLine)(Position& pos, std::int64_t elapsedMicros, int score);
  void (*infoDepth)(int plies);
  void (*currMove)(Move m, int number);
  void (*poll)(Position& pos, int depth);
};
extern SearchReports Reports;

// Clears the history table to its start value (2048 in every entry).
void clearHistory();
// Clears the killers: the state entries above the root entries of every search record.
void clearKillers();

// Root move list: 16-byte records ended by a zero record. The first word holds the move in its
// low half and (last score - 32768) in its high half, so that descending words mean descending
// scores.
struct RootMove {
  std::uint32_t word;
  std::uint32_t spare[3];
};
static_assert(sizeof(RootMove) == 16);
extern RootMove RootMoves[256];

// The lines of a MultiPV search, best first (line 0 also serves the single-PV output).
constexpr int MaxRootLines = 8;
struct RootLine {
  Move move;
  int score;
};
extern RootLine RootLines[MaxRootLines];

// Output switches of the root search.
struct SearchSettings {
  bool infoDepth = true;      // "info depth" at the start of every iteration
  bool infoCurrmove = true;   // "info currmove" from the 12th ply on
  int minPvDepth = 0;         // PV lines only for iterations deeper than this (half-plies)
  bool quiet = false;         // print nothing at all (bench, tests)
};
extern SearchSettings Settings;

// The two flags that hold back the three-quarter-target stop of the input poll (their rules are in
// search/stop_rules.h): the score is falling (the iteration failed low), and the best move is
// unsettled (it changed during the iteration).
extern std::uint8_t RootFailingLow;
extern std::uint8_t RootBestMoveChanged;

}  // namespace tavrin
