// The dispatcher's matching rules and the commands that need no search.
#include <gtest/gtest.h>

#include <string>

#include "app/startup.h"
#include "common/globals.h"
#include "search/search.h"
#include "uci/dispatcher.h"

using namespace tavrin;

namespace {

class Dispatcher : public testing::Test {
 protected:
  static void SetUpTestSuite() { initializeEngine(); }
  std::string run(const char* line) {
    testing::internal::CaptureStdout();
    dispatchCommand(RootPosition, line);
    return testing::internal::GetCapturedStdout();
  }
};

}  // namespace

TEST_F(Dispatcher, ExactAndPrefixMatching) {
  const struct {
    const char* line;
    const char* reply;
  } cases[] = {
      {"isready", "readyok \n"},
      {"isready ", ""},
      {"ISREADY", ""},
      {"ucinewgam", ""},
      {"setoption name UCI_LimitStrength value true", "info string Strength limited\n"},
      {"setoption name  UCI_LimitStrength value true", ""},
      {"setoption nameUCI_LimitStrength value true", ""},
      {"setoption name UCI_LimitStrength value false", ""},
      {"", ""},
      {"stop", ""},
      {"ponderhit", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(run(c.line), c.reply) << c.line;
  EXPECT_EQ(Engine.limitStrength, 0);
}

TEST_F(Dispatcher, PositionIsAPrefixTest) {
  run("positionXstartpos moves e2e4");   // the text from the tenth character on
  EXPECT_EQ(RootPosition.board[E4], WhitePawn);
  run("position startpos");
  EXPECT_EQ(RootPosition.board[E4], NoPiece);
  run("position");
  EXPECT_EQ(RootPosition.board[E2], WhitePawn);
}

TEST_F(Dispatcher, StopAndPonderhitWhileIdle) {
  Engine.stopRequested = 0;
  run("stop");
  EXPECT_EQ(Engine.stopRequested, 1);
  Engine.ponderMode = 0;
  run("ponderhit");
  EXPECT_EQ(Engine.ponderHit, 0);
  Engine.ponderMode = 1;
  run("ponderhit");
  EXPECT_EQ(Engine.ponderHit, 1);
  EXPECT_EQ(Engine.ponderMode, 0);
  EXPECT_EQ(Engine.ponderHitTimeReset, 1);
  Engine.ponderHit = Engine.ponderHitTimeReset = 0;
}

TEST_F(Dispatcher, CommandsWhileSearchingAreLimited) {
  run("position startpos");
  Engine.searchRunning = 1;
  EXPECT_EQ(run("uci"), "");
  EXPECT_EQ(run("isready"), "readyok \n");
  run("position startpos moves e2e4");
  EXPECT_EQ(RootPosition.board[E4], NoPiece);
  EXPECT_EQ(run("setoption name UCI_LimitStrength value true"), "");
  // stop leaves the search by throwing.
  EXPECT_THROW(dispatchCommand(RootPosition, "stop"), SearchAborted);
  EXPECT_THROW(dispatchCommand(RootPosition, "ucinewgame"), SearchAborted);
  Engine.searchRunning = 0;
  Engine.stopRequested = 0;
}

TEST_F(Dispatcher, NewGameResetsTheGameState) {
  run("position startpos moves e2e4 e7e5");
  Engine.firstSearch = 0;
  Engine.lastSearchDepth = 12;
  run("ucinewgame");
  EXPECT_EQ(Engine.firstSearch, 1);
  EXPECT_EQ(Engine.lastSearchDepth, 1000);
  EXPECT_EQ(Engine.positionReady, 1);
  EXPECT_EQ(RootPosition.board[E2], WhitePawn);
  EXPECT_EQ(RootPosition.state - RootPosition.stateStack, 1);   // the second entry is current
}
