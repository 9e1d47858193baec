// Games against scripted fake engines: normal play, and each fault recorded as the offender's
// loss with its reason. The fakes are small shell scripts written to a temporary directory.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tools/match/game.h"
#include "tools/match/pgn.h"

using namespace tavrin;
using namespace tavrin::match;

namespace {

// A UCI engine that answers every go with the move of a fixed line at the current ply.
// Its first argument picks a misbehaviour, acted out on its first search.
constexpr const char* FakeEngine = R"(#!/bin/sh
mode="$1"; shift
line="$*"
log=/dev/null
[ -n "$FAKE_LOG" ] && log="$FAKE_LOG.$mode"
ply=0
while read -r cmd rest; do
  echo "$cmd $rest" >> "$log"
  case "$cmd" in
    uci)
      [ "$mode" = nouci ] && continue
      echo "id name fake $mode"
      echo "uciok" ;;
    isready) echo "readyok" ;;
    position)
      case "$rest" in
        *" moves "*) set -- ${rest#* moves } ; ply=$# ;;
        *) ply=0 ;;
      esac ;;
    go)
      case "$mode" in
        crash) exit 3 ;;
        hang) exec sleep 30 ;;
        slow) sleep 1 ;;
        illegal) echo "bestmove e2e5"; continue ;;
        garbage) echo "bestmove"; continue ;;
      esac
      case "$rest" in *ponder*) continue ;; esac
      set -- $line
      [ $ply -le $# ] && shift $ply
      next="$2"
      echo "info depth 3 score cp 12 nodes 100 pv $1"
      if [ "$mode" = ponder ] && [ -n "$next" ]; then echo "bestmove $1 ponder $next"; else echo "bestmove $1"; fi ;;
    ponderhit|stop)
      set -- $line
      [ $ply -le $# ] && shift $ply
      echo "bestmove $1" ;;
    quit) exit 0 ;;
  esac
done
)";

constexpr const char* FoolsMate = "f2f3 e7e5 g2g4 d8h4";

class MatchGame : public ::testing::Test {
 protected:
  void SetUp() override {
    ignoreBrokenPipes();
    char pattern[] = "/tmp/tavrin-match-test-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
    script_ = dir_ + "/fake.sh";
    std::ofstream(script_) << FakeEngine;
    std::filesystem::permissions(script_, std::filesystem::perms::owner_all);
    settings_.replyTimeoutMs = 1500;
    settings_.timeMarginMs = 50;
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  EngineConfig fake(const std::string& name, const std::string& mode, const std::string& tc = "5+0") {
    EngineConfig e;
    e.name = name;
    e.command = script_;
    e.args = {mode};
    std::istringstream in(FoolsMate);
    for (std::string w; in >> w;) e.args.push_back(w);
    EXPECT_TRUE(parseClock(tc, e.tc));
    return e;
  }

  std::string dir_, script_;
  GameSettings settings_;
};

}  // namespace

// A crashed engine is restarted for the next game; the same processes then play on after
// ucinewgame, the last game from an opening's book moves.
TEST_F(MatchGame, PlaysToMateAfterARestart) {
  EnginePlayer white, black;
  white.config = fake("W", "normal");
  black.config = fake("B", "crash");
  EXPECT_EQ(playGame(white, black, Opening(), settings_).fault, Fault::Crash);
  black.config = fake("B", "normal");
  GameRecord g = playGame(white, black, Opening(), settings_);
  EXPECT_EQ(g.result, GameResult::BlackWins);
  EXPECT_EQ(g.reason, "Black mates");
  EXPECT_EQ(g.fault, Fault::None);
  ASSERT_EQ(g.moves.size(), 4u);
  EXPECT_EQ(g.moves[3].san, "Qh4#");
  EXPECT_TRUE(g.moves[0].hasScore);
  EXPECT_EQ(g.moves[0].scoreCp, 12);
  EXPECT_EQ(g.moves[0].depth, 3);
  std::string pgn = formatPgn(g, PgnContext());
  EXPECT_NE(pgn.find("1. f3 {+0.12/3 "), std::string::npos) << pgn;
  EXPECT_NE(pgn.find("[Termination \"normal\"]"), std::string::npos);
  Opening o;
  o.moves = {"f2f3", "e7e5"};
  GameRecord again = playGame(white, black, o, settings_);
  EXPECT_EQ(again.reason, "Black mates");
  ASSERT_EQ(again.moves.size(), 4u);
  EXPECT_TRUE(again.moves[0].book && again.moves[1].book && !again.moves[2].book);
}

TEST_F(MatchGame, FaultsAreTheOffendersLoss) {
  struct Case {
    const char* name;
    const char* whiteMode;
    const char* blackMode;
    const char* tc;
    Fault fault;
    Color side;
    const char* reason;
    const char* termination;
  };
  const Case cases[] = {
      {"illegal move", "illegal", "normal", "5+0", Fault::IllegalMove, White,
       "White makes an illegal move: e2e5", "rules infraction"},
      {"empty bestmove", "normal", "garbage", "5+0", Fault::IllegalMove, Black,
       "Black makes an illegal move: (none)", "rules infraction"},
      {"crash", "normal", "crash", "5+0", Fault::Crash, Black, "Black disconnects (exit status 3)",
       "abandoned"},
      {"over the clock", "normal", "slow", "0.2+0", Fault::TimeLoss, Black, "Black loses on time",
       "time forfeit"},
      {"no uciok", "nouci", "normal", "5+0", Fault::StartFailure, White,
       "White does not answer uci", "abandoned"},
  };
  for (const Case& c : cases) {
    EnginePlayer white, black;
    white.config = fake("W", c.whiteMode, c.tc);
    black.config = fake("B", c.blackMode, c.tc);
    GameRecord g = playGame(white, black, Opening(), settings_);
    EXPECT_EQ(g.fault, c.fault) << c.name;
    EXPECT_EQ(g.faultSide, c.side) << c.name;
    EXPECT_EQ(g.result, c.side == White ? GameResult::BlackWins : GameResult::WhiteWins) << c.name;
    EXPECT_EQ(g.reason, c.reason) << c.name;
    EXPECT_EQ(g.termination, c.termination) << c.name;
  }
}

TEST_F(MatchGame, SilentUntimedEngineStalls) {
  EnginePlayer white, black;
  white.config = fake("W", "hang");
  white.config.tc = TimeControl();
  white.config.tc.nodes = 1000;
  black.config = fake("B", "normal");
  auto start = SteadyClock::now();
  GameRecord g = playGame(white, black, Opening(), settings_);
  EXPECT_EQ(g.fault, Fault::NoReply);
  EXPECT_EQ(g.reason, "White's connection stalls");
  EXPECT_EQ(g.termination, "stalled connection");
  EXPECT_LT(SteadyClock::now() - start, std::chrono::seconds(10));
}

TEST_F(MatchGame, PonderingAsAGuiDoes) {
  std::string log = dir_ + "/ponder.log";
  setenv("FAKE_LOG", log.c_str(), 1);
  EnginePlayer white, black;
  white.config = fake("W", "ponder");
  white.config.ponder = true;
  black.config = fake("B", "normal");
  GameRecord g = playGame(white, black, Opening(), settings_);
  unsetenv("FAKE_LOG");
  EXPECT_EQ(g.reason, "Black mates");
  std::ifstream in(log + ".ponder");
  std::stringstream text;
  text << in.rdbuf();
  // White predicted each reply: it pondered on it and was told ponderhit.
  EXPECT_NE(text.str().find("setoption name Ponder value true"), std::string::npos);
  EXPECT_NE(text.str().find("position startpos moves f2f3 e7e5\ngo ponder wtime"), std::string::npos)
      << text.str();
  EXPECT_NE(text.str().find("ponderhit"), std::string::npos);
}

TEST_F(MatchGame, ToolPlaysAMatchAndWritesPgn) {
  std::string pgn = dir_ + "/games.pgn", out = dir_ + "/out.txt";
  std::string moves = " f2f3 e7e5 g2g4 d8h4'";
  std::string cmd = std::string(TAVRIN_TOOL_PATH) + " match -engine cmd=" + script_ +
                    " name=A 'args=normal" + moves + " -engine cmd=" + script_ + " name=B 'args=normal" +
                    moves + " -each tc=5+0 -games 4 -concurrency 2 -pgnout " + pgn + " > " + out;
  ASSERT_EQ(std::system(cmd.c_str()), 0);
  std::ifstream in(out);
  std::stringstream text;
  text << in.rdbuf();
  // Each side wins as Black: every pair is one win and one loss for A.
  EXPECT_NE(text.str().find("Summary: engine=A opponent=B games=4 wins=2 losses=2 draws=0 score=0.500 "
                            "elo=+0.0"),
            std::string::npos)
      << text.str();
  EXPECT_NE(text.str().find("Pentanomial pairs [LL LD DD/WL WD WW]: [0 0 2 0 0]"), std::string::npos);
  std::ifstream games(pgn);
  int count = 0;
  for (std::string line; std::getline(games, line);) count += line.rfind("[Event ", 0) == 0;
  EXPECT_EQ(count, 4);
}
