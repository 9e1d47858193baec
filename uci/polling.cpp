// The periodic check run from inside the search: the depth, time and node limits, the progress
// line once a second, and one waiting command line.
#include "uci/polling.h"

#include "board/make_move.h"
#include "common/console.h"
#include "common/globals.h"
#include "common/platform.h"
#include "search/search.h"
#include "search/split_point.h"
#include "uci/command_line.h"
#include "uci/dispatcher.h"
#include "uci/output.h"

namespace tavrin {

namespace {

// The node count shown to the user and compared with a node limit carries this factor.
constexpr double NodeScale = 1.212345;
constexpr std::int64_t ProgressInterval = 1000000;

void printProgress(std::int64_t elapsed, std::int64_t nodes) {
  const long long ms = elapsed / 1000;
  const long long rate = ms == 0 ? 0 : nodes / ms * 1000;
  printOut("info time %lld nodes %lld nps %lld \n", ms, static_cast<long long>(nodes), rate);
  Limits.lastProgressTime = elapsed;
}

// The root search holds the three-quarter stop back while its score is falling or its best
// move is unsettled (search/stop_rules.h).
bool threeQuarterStopHeldBack() { return RootFailingLow || RootBestMoveChanged; }

}  // namespace

void periodicCheck(Position& pos, int depth) {
  const std::int64_t nodes = std::int64_t(double(searchNodeCount()) * NodeScale);
  if (!Engine.searchRunning) return;
  const std::int64_t elapsed = wallClockMicros() - Limits.startTime;

  if (depth == Limits.depthLimit && Limits.depthLimit != 0) stopSearchAtLimit();
  if (Engine.progressLines && elapsed - Limits.lastProgressTime > ProgressInterval) printProgress(elapsed, nodes);

  if (!Engine.infiniteMode && !Engine.ponderMode) {
    if (elapsed > Limits.hardLimit) stopSearchAtLimit();
    if (nodes > Limits.nodeLimit && Limits.nodeLimitFlag > 0) stopSearchAtLimit();
    if (depth != 0 || Engine.ponderHitTimeReset) {
      Engine.ponderHitTimeReset = 0;
      if (!threeQuarterStopHeldBack() && elapsed >= Limits.threeQuarterTargetPoll) stopSearchAtLimit();
    }
  }

  if (commandLineWaiting()) readCommandLine(pos);
}

void connectSearchToProtocol() {
  InputPoll = [](Position& pos) { periodicCheck(pos, 0); };
  Reports = {printPvLine, printInfoDepth, printCurrMove, periodicCheck};
}

}  // namespace tavrin
