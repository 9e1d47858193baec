// Start-up: engine globals, the root position and search records, hash tables, constant tables,
// then the start position. Everything before the first command is read.
#include "app/startup.h"

#include "board/attacks.h"
#include "board/movegen.h"
#include "common/globals.h"
#include "eval/evaluate.h"
#include "eval/psq_tables.h"
#include "search/search.h"
#include "search/split_point.h"
#include "search/tt.h"
#include "uci/dispatcher.h"
#include "uci/polling.h"

namespace tavrin {

Position RootPosition;

void initializeEngine() { initializeEngine(EngineGlobals{}.hashMegabytes); }

void initializeEngine(int tableMegabytes) {
  static bool initialized = false;
  if (initialized) return;
  initialized = true;

  Engine = EngineGlobals{};
  Engine.hashMegabytes = tableMegabytes;
  connectSearchToProtocol();
  Limits = SearchLimits{};
  initPosition(RootPosition);

  // The other threads' records get their stacks when the threads are started.
  initPosition(SearchRecords[0]);
  initSplitPoints();

  if (Engine.hashMegabytes == 0) Engine.hashMegabytes = 60;
  if (Engine.pawnHashMegabytes == 0) Engine.pawnHashMegabytes = 8;
  resizePawnTable(Engine.pawnHashMegabytes);
  resizeTable(Engine.hashMegabytes);

  clearHistory();

  initCaptureKeys();
  initBoardTables();
  initPieceSquareTables();
  initEvaluation();

  seedEvaluationNoise(RootPosition);
  seedEvaluationNoise(SearchRecords[0]);

  startNewGame(RootPosition);
}

}  // namespace tavrin
