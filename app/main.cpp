// Entry point: banner, start-up, then the command loop until "quit" or the end of input.
#include "app/startup.h"
#include "common/console.h"
#include "common/platform.h"
#include "uci/command_line.h"
#include "uci/dispatcher.h"

int main() {
  using namespace tavrin;
  prepareStandardStreams();
  printOut(
      "Tavrin 1.4 by %s \n\n"
      "This version can play in reduced ELO mode. \n"
      "To play in reduced ELO mode, use the UCI_elo and UCI_LimitStrength commands. \n"
      "For example: \n\n"
      "setoption name UCI_LimitStrength value true \n"
      "setoption name UCI_Elo value 1600 \n\n"
      "to play with Tavrin limited at 1600 elo. \n",
      AuthorCredit);
  initializeEngine();
  for (;;) readCommandLine(RootPosition);
}
