// The command dispatcher: a chain of independent tests on each input line, in a fixed order.
#include "uci/dispatcher.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/console.h"
#include "common/globals.h"
#include "eval/evaluate.h"
#include "eval/material.h"
#include "search/search.h"
#include "search/tt.h"
#include "uci/go_command.h"
#include "uci/options.h"
#include "uci/position_command.h"

namespace tavrin {

namespace {

bool lineIs(const char* line, const char* word) { return std::strcmp(line, word) == 0; }
bool lineStartsWith(const char* line, const char* word) {
  return std::strncmp(line, word, std::strlen(word)) == 0;
}
// The text from a given offset on, or the empty end when the line is shorter.
const char* textFrom(const char* line, std::size_t offset) {
  std::size_t length = std::strlen(line);
  return line + (offset < length ? offset : length);
}

void goCommand(Position& pos, const char* line) {
  parseGo(line, pos);
  if (Engine.limitStrength) {
    if (Engine.limitStrength == 1) applyStrengthLimit();
  } else {
    setFullStrengthWeights();
  }
  // The material table follows the piece values before the search reads it.
  refreshMaterialTable();
  if (Engine.positionReady) startSearch(pos);
}

void identify() {
  printOut("id name Tavrin 1.4 \n");
  printOut("id author %s \n", AuthorCredit);
  printOut("option name Hash type spin min 1 max 4096 default 128\n");
  printOut("option name UCI_LimitStrength type check default false\n");
  printOut("option name UCI_Elo type spin min 850 max 2500 default 2000 \n");
  printOut("option name Ponder type check default false\n");
  printOut("option name Threads type spin default 1 min 1 max 64\n");
  printOut("uciok \n");
}

}  // namespace

void stopSearch() {
  Engine.stopRequested = 1;
  stopSearchAtLimit();
}

void stopSearchAtLimit() {
  if (Engine.searchRunning) throw SearchAborted{};
}

void startNewGame(Position& pos) {
  Engine.positionReady = 1;
  pos.historyCount = 0;
  setStartPosition(pos);
  Engine.firstSearch = 1;
  clearTables();
  clearEvaluationTables();
  clearHistory();
  clearKillers();   // a new game's searches are those of a fresh process
}

void dispatchCommand(Position& pos, const char* line) {
  if (lineIs(line, "quit")) {
    std::fflush(stdout);
    std::_Exit(0);
  }
  if (lineIs(line, "stop")) stopSearch();
  if (lineIs(line, "isready")) printOut("readyok \n");
  if (lineIs(line, "ponderhit") && Engine.ponderMode) {
    Engine.ponderHit = 1;
    Engine.ponderMode = 0;
    Engine.ponderHitTimeReset = 1;
  }
  if (lineIs(line, "ucinewgame")) {
    // During a search this leaves it like "stop"; the new game is not reached.
    stopSearch();
    startNewGame(pos);
  }
  if (Engine.searchRunning) return;
  if (lineStartsWith(line, "go")) goCommand(pos, line);
  if (lineStartsWith(line, "position")) positionCommand(pos, textFrom(line, 9));
  if (lineStartsWith(line, "setoption name")) setOption(textFrom(line, 15));
  if (lineIs(line, "uci")) identify();
}

}  // namespace tavrin
