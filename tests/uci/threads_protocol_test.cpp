// Exchanges with several search threads: the option changed between searches, more threads than
// the machine has cores, many tiny searches in a row, and a stop as prompt as with one thread.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/test_support.h"
#include "tests/uci/engine_process.h"

using tavrin::test::EngineProcess;

namespace {

constexpr int Reply = 10000;      // generous: a loaded machine or an instrumented build
constexpr int Prompt = tavrin::test::scaled(500, 2000);

void setThreads(EngineProcess& e, int threads) {
  e.sendLine("setoption name Threads value " + std::to_string(threads));
}

// The search's lines end with a best move that names a move.
void expectMoveLine(const std::vector<std::string>& lines, const std::string& why) {
  ASSERT_FALSE(lines.empty()) << why;
  EXPECT_EQ(lines.back().compare(0, 9, "bestmove "), 0) << why << ": " << lines.back();
  EXPECT_NE(lines.back(), "bestmove 0000") << why;
}

TEST(ProtocolThreads, ThreadCountChangedBetweenSearches) {
  EngineProcess e;
  e.sendLine("position startpos moves e2e4 c7c5 g1f3");
  for (int threads : {2, 4, 1, 3, 64, 2}) {
    setThreads(e, threads);
    const std::string why = std::to_string(threads) + " threads";
    expectMoveLine(e.search("go depth 9", Reply), why);
    expectMoveLine(e.search("go movetime 150", Reply), why);
  }
  e.closeInput();
  EXPECT_EQ(e.waitExit(Reply), 0);
}

// Sixteen threads on a machine with fewer cores: searches end by their limits, and stop and
// isready are still answered promptly.
TEST(ProtocolThreads, MoreThreadsThanCores) {
  EngineProcess e;
  setThreads(e, 16);
  e.sendLine("position startpos");
  expectMoveLine(e.search("go movetime 300", Reply), "movetime");
  expectMoveLine(e.search("go wtime 2000 btime 2000", Reply), "clock");
  e.sendLine("go infinite");
  EXPECT_FALSE(e.readUntil("bestmove", 500));
  long long start = EngineProcess::nowMs();
  e.sendLine("isready");
  EXPECT_TRUE(e.readUntil("readyok ", Prompt));
  EXPECT_LT(EngineProcess::nowMs() - start, Prompt);
  start = EngineProcess::nowMs();
  e.sendLine("stop");
  EXPECT_TRUE(e.readUntil("bestmove ", Prompt));
  EXPECT_LT(EngineProcess::nowMs() - start, Prompt);
  e.closeInput();
  EXPECT_EQ(e.waitExit(Reply), 0);
}

// Searches that end almost before they start, one behind the other: each answers exactly once.
TEST(ProtocolThreads, ManyTinySearchesInARowAnswerOnceEach) {
  constexpr int Searches = 120;
  EngineProcess e;
  setThreads(e, 2);
  e.sendLine("position startpos moves d2d4 g8f6");
  std::string batch;
  for (int i = 0; i < Searches; ++i) batch += i % 3 == 0 ? "go nodes 1\n" : i % 3 == 1 ? "go movetime 1\n" : "go depth 1\n";
  batch += "isready\n";
  e.send(batch);
  std::vector<std::string> seen;
  ASSERT_TRUE(e.readUntil("readyok ", Reply, &seen));
  const auto answers = std::count_if(seen.begin(), seen.end(), [](const std::string& line) {
    return line.compare(0, 9, "bestmove ") == 0 && line != "bestmove 0000";
  });
  EXPECT_EQ(answers, Searches);
  e.closeInput();
  EXPECT_EQ(e.waitExit(Reply), 0);
}

// The end of the input during a search with several threads: the best move, then a clean exit.
TEST(ProtocolThreads, EndOfInputDuringASearch) {
  EngineProcess e;
  setThreads(e, 3);
  e.sendLine("position startpos");
  e.sendLine("go infinite");
  EXPECT_FALSE(e.readUntil("bestmove", 300));
  e.closeInput();
  EXPECT_TRUE(e.readUntil("bestmove ", Reply));
  EXPECT_EQ(e.waitExit(Reply), 0);
}

}  // namespace
