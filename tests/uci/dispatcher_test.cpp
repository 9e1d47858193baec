// The dispatcher's matching rules and the commands that need no search (the silent ones are
// checked through the pipes in protocol_test.cpp).
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

TEST_F(Dispatcher, PositionIsAPrefixTest) {
  run("positionXstartpos moves e2e4");   // the text from the tenth character on
  EXPECT_EQ(RootPosition.board[E4], WhitePawn);
  run("position startpos");
  EXPECT_EQ(RootPosition.board[E4], NoPiece);
  run("position");
  EXPECT_EQ(RootPosition.board[E2], WhitePawn);
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
