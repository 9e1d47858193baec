// Byte-exact protocol exchanges with the built engine through pipes.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "tests/test_support.h"
#include "tests/uci/engine_process.h"

using tavrin::test::EngineProcess;

namespace {

constexpr int Reply = 10000;      // generous: a loaded machine or the sanitizer build
// Answers that must come while a search runs; the instrumented build searches far slower.
constexpr int Prompt = tavrin::test::scaled(500, 2000);

const std::vector<std::string> Banner = {
    "Tavrin 1.4 by Tavrin developers ",
    "",
    "This version can play in reduced ELO mode. ",
    "To play in reduced ELO mode, use the UCI_elo and UCI_LimitStrength commands. ",
    "For example: ",
    "",
    "setoption name UCI_LimitStrength value true ",
    "setoption name UCI_Elo value 1600 ",
    "",
    "to play with Tavrin limited at 1600 elo. ",
};

const std::vector<std::string> Identification = {
    "id name Tavrin 1.4 ",
    "id author Tavrin developers ",
    "option name Hash type spin min 1 max 4096 default 128",
    "option name UCI_LimitStrength type check default false",
    "option name UCI_Elo type spin min 850 max 2500 default 2000 ",
    "option name Ponder type check default false",
    "option name Threads type spin default 1 min 1 max 64",
    "uciok ",
};

// Everything up to and including the line that starts with prefix.
std::vector<std::string> linesUntil(EngineProcess& e, const std::string& prefix, int timeoutMs = Reply) {
  std::vector<std::string> seen;
  EXPECT_TRUE(e.readUntil(prefix, timeoutMs, &seen)) << "no line starting with \"" << prefix << "\"";
  return seen;
}

void expectAlive(EngineProcess& e) {
  e.sendLine("isready");
  EXPECT_TRUE(e.readUntil("readyok ", Reply)) << "engine stopped answering";
}

// The search's answer, which must hold a move.
void expectMove(EngineProcess& e, const std::string& why = "", int timeoutMs = Reply) {
  auto best = e.readUntil("bestmove ", timeoutMs);
  ASSERT_TRUE(best) << "no answer: " << why;
  EXPECT_NE(*best, "bestmove 0000") << why;
}

void expectCleanEnd(EngineProcess& e) {
  e.closeInput();
  EXPECT_EQ(e.waitExit(Reply), 0);
}

}  // namespace

TEST(Protocol, BannerAndIdentificationByteExact) {
  EngineProcess e;
  ASSERT_TRUE(e.started());
  e.sendLine("uci");
  std::vector<std::string> expected = Banner;
  expected.insert(expected.end(), Identification.begin(), Identification.end());
  EXPECT_EQ(linesUntil(e, "uciok"), expected);
  e.sendLine("isready");
  EXPECT_EQ(e.readLine(Reply), "readyok ");
  e.sendLine("quit");
  EXPECT_EQ(e.waitExit(Reply), 0);
}

TEST(Protocol, EndOfInputEndsTheProcess) {
  const char* inputs[] = {"", "isready", "uci", "isready\nquit", "position startpos moves e2e4"};
  for (const char* input : inputs) {
    EngineProcess e;
    linesUntil(e, "to play with");
    e.send(input);   // no newline: the last character is dropped
    e.closeInput();
    EXPECT_EQ(e.waitExit(Reply), 0) << input;
    if (std::string(input) == "isready\nquit") {
      EXPECT_EQ(e.readLine(Reply), "readyok ");
    }
    EXPECT_FALSE(e.readLine(200)) << input;   // "isread", "uc", "qui" get no reply
  }
}

// Each line is answered by nothing at all (the searches aside): commands match exactly, bad
// values are refused quietly, and the engine keeps answering.
TEST(Protocol, BadLinesNeverCrashOrHang) {
  EngineProcess e;
  linesUntil(e, "to play with");
  const char* lines[] = {
      "uci ", "isready ", "uci\r", "isready\r", "UCI", "ISREADY", "quit ", "quit\r", "", " ", "xyzzy", "ucinewgam",
      "setoption name  UCI_LimitStrength value true",
      "setoption nameUCI_LimitStrength value true",
      "setoption name UCI_LimitStrength value false",
      "setoption name Hash value 0",
      "setoption name Hash value",
      "setoption name Hash",
      "setoption name",
      "setoption name MultiPV value 99999999999999999999999",
      "setoption name UCI_Elo value -99999999999",
      "setoption",
      "position",
      "position startpos",
      "position startpos moves",
      "position startpos moves e2e4 e7e5 zzzz e1e1 a1a9 e9e9 g1f3 \xff\xfe b8c6",
      "position fen",
      "position fen ",
      "position fen rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - moves e2e4",
      "position fen 99999999999/pppppppppppppppppppppp/////////////////////// b qkQK z9 -99999 x",
      "position fen KKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKKK w - - 0 1",
      "position fen 8/8/8/8/8/8/8/8 w - - 0 1 moves e2e4",
      "position fen 4k3/8/8/8/8/8/8/4K3 w - e3 0 1 moves e1e2",
      "positionstartpos",
      "goo",
      "go wtime",
      "go movestogo",
      "go wtime 1000 movestogo -3",
      "go wtime -1000 btime -1000 winc -5 binc -5 movestogo 0",
      "go wtime 99999999999999999999 btime 99999999999999999999",
      "go searchmoves",
      "go searchmoves e2e4 a1a1 zz",
      "stop",
      "ponderhit",
  };
  for (const char* line : lines) {
    // A Windows engine reads "uci\r\n" as "uci" (see CarriageReturnBeforeLineFeed).
    const std::string text = line;
    if (EngineProcess::windowsEngine() && !text.empty() && text.back() == '\r') continue;
    e.sendLine(line);
    const bool go = std::string(line).compare(0, 2, "go") == 0;
    if (go) e.sendLine("stop");
    e.sendLine("isready");
    std::vector<std::string> seen = linesUntil(e, "readyok ");
    if (!go) {
      EXPECT_EQ(seen, std::vector<std::string>{"readyok "}) << line;
    }
  }
  expectCleanEnd(e);
}

TEST(Protocol, HugeLineAndLongMoveLists) {
  EngineProcess e;
  e.sendLine(std::string(100000, 'x'));
  e.sendLine("position " + std::string(100000, 'a'));
  e.sendLine("go " + std::string(70000, '9'));
  e.sendLine("stop");
  expectAlive(e);
  // A thousand moves of knights going back and forth, then far more than a game can hold.
  std::string moves;
  for (int i = 0; i < 250; ++i) moves += " g1f3 g8f6 f3g1 f6g8";
  std::string longer;
  for (int i = 0; i < 6; ++i) longer += moves;
  e.sendLine("position startpos moves" + longer);
  expectAlive(e);
  e.sendLine("go depth 3");   // the list stopped at the game limit: the search still runs
  expectMove(e);
  expectCleanEnd(e);
}

// A position without a legal move, or one the engine refuses, is answered with the null move.
TEST(Protocol, UnplayableMatedAndStalematePositionsAnswerTheNullMove) {
  const char* fens[] = {
      "8/8/8/8/8/8/8/8 w - - 0 1",                  // no kings
      "4k3/8/8/8/8/8/4R3/4K3 w - - 0 1",            // the side not to move is in check
      "garbage",
      "rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3",   // White is mated
      "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1",                                 // Black is stalemated
  };
  EngineProcess e;
  for (const char* fen : fens) {
    e.sendLine(std::string("position fen ") + fen);
    e.sendLine("go depth 3");
    EXPECT_EQ(e.readUntil("bestmove", Reply), "bestmove 0000") << fen;
  }
  expectCleanEnd(e);
}

// quit ends the process at once, idle or searching: the isready behind it and the search get no
// answer.
// Lines ending in CR LF: a Windows engine reads them as any other line (a console or a GUI on
// Windows sends them); elsewhere the carriage return is part of the line, so "isready\r" is not
// "isready" and gets no answer.
TEST(Protocol, CarriageReturnBeforeLineFeed) {
  EngineProcess e;
  linesUntil(e, "to play with");
  e.send("isready\r\nposition startpos moves e2e4\r\ngo depth 1\r\n");
  if (EngineProcess::windowsEngine()) {
    EXPECT_EQ(e.readLine(Reply), "readyok ");
    auto best = e.readUntil("bestmove ", Reply);
    ASSERT_TRUE(best);
    EXPECT_TRUE((*best)[10] == '7' || (*best)[10] == '8') << *best;  // a move of Black's
  }
  e.sendLine("isready");
  std::vector<std::string> seen = linesUntil(e, "readyok");
  EXPECT_EQ(std::count(seen.begin(), seen.end(), "readyok "), 1);
  expectCleanEnd(e);
}

TEST(Protocol, QuitEndsAtOnce) {
  for (const char* before : {"isready", "go infinite"}) {
    const bool idle = std::string(before) == "isready";
    EngineProcess e;
    e.sendLine("position startpos");
    e.sendLine(before);
    if (!idle) usleep(300000);
    e.sendLine("quit");
    e.sendLine("isready");
    EXPECT_EQ(e.waitExit(Reply), 0) << before;
    std::vector<std::string> seen;
    while (auto line = e.readLine(200)) seen.push_back(*line);
    for (const std::string& line : seen) EXPECT_NE(line.compare(0, 8, "bestmove"), 0) << before;
    EXPECT_EQ(std::count(seen.begin(), seen.end(), "readyok "), idle ? 1 : 0) << before;
  }
}

TEST(Protocol, ReducedStrengthInfoStrings) {
  EngineProcess e;
  e.sendLine("setoption name UCI_LimitStrength value true");
  EXPECT_EQ(e.readUntil("info string", Reply), "info string Strength limited");
  e.sendLine("setoption name UCI_Elo value 1600");
  e.sendLine("position startpos");
  e.sendLine("go depth 1");
  EXPECT_EQ(e.readUntil("info string", Reply), "info string Tavrin running in reduced strength mode ");
  e.sendLine("setoption name UCI_LimitStrength value false");
  e.sendLine("go depth 1");
  e.sendLine("isready");
  for (const std::string& line : linesUntil(e, "readyok"))
    EXPECT_NE(line.compare(0, 11, "info string"), 0) << line;
  expectCleanEnd(e);
}

TEST(ProtocolSearch, FixedDepthNodesAndMovetimeEndByThemselves) {
  const char* gos[] = {"go depth 1", "go depth 4", "go nodes 10000", "go movetime 200", "go wtime 1000 btime 1000"};
  for (const char* go : gos) {
    EngineProcess e;
    e.sendLine("position startpos moves e2e4");
    e.sendLine("isready");
    linesUntil(e, "readyok");
    long long start = EngineProcess::nowMs();
    e.sendLine(go);
    expectMove(e, go);
    long long took = EngineProcess::nowMs() - start;
    if (std::string(go) == "go movetime 200") {
      EXPECT_GE(took, 150) << go;
      EXPECT_LT(took, 1000) << go;
    }
    // Black to move with a second on the clock: the hard limit is T / 16 = 56 ms.
    if (std::string(go).find("wtime") != std::string::npos) {
      EXPECT_LT(took, 1000) << go;
    }
    expectCleanEnd(e);
  }
}

// isready and stop are answered at once during a search, also deep into the analysis of a forced
// mate, where iterations that make hardly a move must still reach the input poll.
TEST(ProtocolSearch, AnswersDuringASearch) {
  const struct {
    const char* position;
    int searchMs;
  } cases[] = {
      {"position startpos", 300},
      {"position startpos moves g2g4 e7e5 f2f4", 7000},   // Black mates at once
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.position);
    EngineProcess e;
    expectAlive(e);   // start-up done: the times below are the search's alone
    e.sendLine(c.position);
    e.sendLine("go infinite");
    EXPECT_FALSE(e.readUntil("bestmove", c.searchMs));   // reading on, so that output never blocks it
    long long start = EngineProcess::nowMs();
    e.sendLine("isready");
    EXPECT_TRUE(e.readUntil("readyok ", Prompt));
    EXPECT_LT(EngineProcess::nowMs() - start, Prompt);
    usleep(200000);
    start = EngineProcess::nowMs();
    e.sendLine("stop");
    expectMove(e, "stop", Prompt);
    EXPECT_LT(EngineProcess::nowMs() - start, Prompt);
    expectCleanEnd(e);
  }
}

// A mated side has no move to search: the search ends at once, and only the wait holds bestmove.
const char* MatedFen = "rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3";

TEST(ProtocolSearch, StopRightBehindGo) {
  EngineProcess e;
  e.sendLine("position startpos");
  e.send("go infinite\nstop\n");
  expectMove(e);
  expectCleanEnd(e);
}

TEST(ProtocolSearch, NestedGoDuringAnInfiniteWait) {
  EngineProcess e;
  e.sendLine(std::string("position fen ") + MatedFen);
  e.sendLine("go infinite");
  EXPECT_FALSE(e.readUntil("bestmove", 500));
  // A new position and search inside the wait; the outer answer still belongs to its position.
  e.sendLine("position startpos");
  e.sendLine("go depth 2");
  auto inner = e.readUntil("bestmove ", Reply);
  auto outer = e.readUntil("bestmove ", Reply);
  ASSERT_TRUE(inner);
  ASSERT_TRUE(outer);
  EXPECT_NE(*inner, "bestmove 0000");
  EXPECT_EQ(*outer, "bestmove 0000");
  expectAlive(e);
  expectCleanEnd(e);
}

TEST(ProtocolSearch, PonderExchange) {
  EngineProcess e;
  e.sendLine("position startpos moves e2e4 e7e5");
  e.sendLine("go ponder wtime 2000 btime 2000");
  EXPECT_FALSE(e.readUntil("bestmove", 800));   // no time limit while pondering
  e.sendLine("ponderhit");
  expectMove(e);
  // Pondering ended by stop also answers.
  e.sendLine("go ponder wtime 2000 btime 2000");
  usleep(200000);
  e.sendLine("stop");
  EXPECT_TRUE(e.readUntil("bestmove ", Reply));
  expectCleanEnd(e);
}

TEST(ProtocolSearch, UcinewgameDuringASearchStopsIt) {
  EngineProcess e;
  expectAlive(e);
  e.sendLine("position startpos");
  e.sendLine("go infinite");
  usleep(200000);
  e.sendLine("ucinewgame");
  expectMove(e, "ucinewgame", Prompt * 2);
  expectCleanEnd(e);
}

// Faults a fuzzer of the command loop found; each line of the table is one session.
TEST(ProtocolSearch, WaitsHoldTheBestMoveUntilStopEvenAfterALimitEndedTheSearch) {
  // A carried-over depth limit ends the search at once; the wait must still hold the answer.
  for (const char* mode : {"go infinite", "go ponder"}) {
    EngineProcess e;
    e.sendLine("position startpos");
    e.sendLine("go depth 1");
    ASSERT_TRUE(e.readUntil("bestmove ", Reply));
    e.sendLine(mode);
    EXPECT_FALSE(e.readUntil("bestmove", 500)) << mode;
    e.sendLine(std::string(mode) == "go ponder" ? "ponderhit" : "stop");
    EXPECT_TRUE(e.readUntil("bestmove ", Reply)) << mode;
    expectCleanEnd(e);
  }
}

TEST(ProtocolSearch, ManyGosDuringAWaitNeitherNestNorLoseAnAnswer) {
  EngineProcess e;
  e.sendLine(std::string("position fen ") + MatedFen);
  for (int i = 0; i < 300; ++i) e.sendLine("go infinite");
  e.sendLine("stop");
  int answers = 0;
  while (auto best = e.readUntil("bestmove", answers ? 2000 : Reply)) {
    EXPECT_EQ(*best, "bestmove 0000");
    if (++answers == 300) break;
  }
  EXPECT_EQ(answers, 300);
  expectAlive(e);
  expectCleanEnd(e);
}

TEST(ProtocolSearch, TinyLimitsStillAnswerALegalMove) {
  for (const char* go : {"go nodes 1", "go movetime 1"}) {
    EngineProcess e;
    e.sendLine("position startpos");
    for (int i = 0; i < 200; ++i) e.sendLine(go);
    for (int i = 0; i < 200; ++i) {
      auto best = e.readUntil("bestmove ", Reply);
      ASSERT_TRUE(best) << go << " #" << i;
      ASSERT_NE(*best, "bestmove 0000") << go << " #" << i;
    }
    expectCleanEnd(e);
  }
}

TEST(ProtocolSearch, EndOfInputStopsASearchWithoutLimits) {
  for (const char* go : {"go infinite", "go", "go ponder", "go depth 5"}) {
    EngineProcess e;
    e.sendLine("position startpos");
    e.sendLine(go);
    usleep(200000);
    e.closeInput();
    expectMove(e, go);
    EXPECT_EQ(e.waitExit(Reply), 0) << go;
  }
}

TEST(ProtocolSearch, SearchmovesSkipsWordsThatAreNoMoves) {
  EngineProcess e;
  e.sendLine("position startpos");
  e.sendLine("go depth 3 searchmoves zzzz g1f3 e9e9");
  auto best = e.readUntil("bestmove ", Reply);
  ASSERT_TRUE(best);
  EXPECT_EQ(best->compare(0, 14, "bestmove g1f3 "), 0) << *best;
  expectCleanEnd(e);
}

// Every word of a PV is a whole move, also when promotions make the moves longer.
TEST(ProtocolSearch, PvLinesHoldWholeMoves) {
  EngineProcess e;
  e.sendLine("position fen 8/8/p2k4/8/8/p7/4K2p/8 w - - 0 1");
  e.sendLine("go depth 8");
  std::vector<std::string> seen;
  ASSERT_TRUE(e.readUntil("bestmove ", Reply, &seen));
  int pvLines = 0;
  for (const std::string& line : seen) {
    const std::size_t at = line.find(" pv ");
    if (at == std::string::npos) continue;
    ++pvLines;
    std::istringstream words(line.substr(at + 4));
    for (std::string w; words >> w;)
      EXPECT_TRUE((w.size() == 4 || (w.size() == 5 && std::string("nbrq").find(w[4]) != std::string::npos)) &&
                  w[0] >= 'a' && w[0] <= 'h' && w[1] >= '1' && w[1] <= '8' && w[2] >= 'a' && w[2] <= 'h' &&
                  w[3] >= '1' && w[3] <= '8')
          << line;
  }
  EXPECT_GT(pvLines, 0);
  expectCleanEnd(e);
}

// The last printed line is remembered across searches: the same first iteration again prints
// no second PV line.
TEST(ProtocolSearch, RepeatedLineIsSuppressedAcrossSearches) {
  EngineProcess e;
  e.sendLine("position startpos");
  auto pvLinesOf = [&](const char* go) {
    e.sendLine(go);
    std::vector<std::string> seen;
    EXPECT_TRUE(e.readUntil("bestmove ", Reply, &seen));
    int n = 0;
    for (const std::string& line : seen) n += line.find(" pv ") != std::string::npos;
    return n;
  };
  EXPECT_EQ(pvLinesOf("go depth 1"), 1);
  EXPECT_EQ(pvLinesOf("go depth 1"), 0);
  expectCleanEnd(e);
}
