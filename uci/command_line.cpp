// The command line from standard input, shared by the command loop, the polling inside a search
// and the waits after an infinite or pondering search.
#include "uci/command_line.h"

#include <cstdio>
#include <cstdlib>

#include "common/console.h"
#include "common/globals.h"
#include "common/platform.h"
#include "uci/dispatcher.h"
#include "uci/go_command.h"

namespace tavrin {

namespace {
LineReader StdinReader(readStdin);
}

void readCommandLine(Position& pos) {
  char line[LineBufferBytes];
  if (!StdinReader.readLine(line)) {
    // End of input: a running search is stopped (its best move follows), a search waiting for
    // "stop" is released; with no search the process ends.
    if (Engine.searchRunning || searchWaiting()) {
      stopSearch();
      return;
    }
    std::fflush(stdout);
    std::_Exit(0);
  }
  dispatchCommand(pos, line);
}

bool commandLineWaiting() { return StdinReader.lineReady(stdinReadable); }

}  // namespace tavrin
