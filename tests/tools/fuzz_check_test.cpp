// The fuzzer's judge of engine output: the forms it accepts and refuses, and the moves it
// replays from the root of a search (legal moves, promotions, searchmoves, positions without moves).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tools/fuzz/output_check.h"
#include "tools/match/rules.h"

using namespace tavrin::fuzz;

TEST(FuzzCheck, LineForms) {
  struct Case {
    const char* line;
    bool inBanner;
    LineKind kind;
  };
  const Case cases[] = {
      {"Tavrin 1.4 by Tavrin developers ", true, LineKind::Banner},
      {"", true, LineKind::Banner},
      {"This version can play in reduced ELO mode. ", true, LineKind::Banner},
      {"Tavrin 1.4 by Tavrin developers ", false, LineKind::Malformed},
      {"", false, LineKind::Malformed},
      {"id name Tavrin 1.4 ", false, LineKind::Id},
      {"option name Hash type spin min 1 max 4096 default 128", false, LineKind::Option},
      {"uciok ", false, LineKind::UciOk},
      {"readyok ", false, LineKind::ReadyOk},
      {"readyok readyok", false, LineKind::Malformed},
      {"Readyok", false, LineKind::Malformed},
      {"info string Strength limited", false, LineKind::InfoString},
      {"info depth 3", false, LineKind::Info},
      {"info currmove e2e4 currmovenumber 1 ", false, LineKind::Info},
      {"info time 12 nodes 345 nps 6000 ", false, LineKind::Info},
      // A PV cut after a whole move keeps that move's blank: two blanks end the line.
      {"info time 1 nodes 2 nps 3 score cp -15 depth 2 seldepth 3 pv e2e4 e7e5  ", false, LineKind::Info},
      {"info time 1 nodes 2 nps 3 score mate -2 depth 2 seldepth 3 pv a7a8q", false, LineKind::Info},
      {"info time 1 nodes 2 nps 3 score cp 5 depth 2 seldepth 3 pv e2e4 e7e", false, LineKind::Malformed},
      {"info depth", false, LineKind::Malformed},
      {"info depth x", false, LineKind::Malformed},
      {"info depth 3 depth 4", false, LineKind::Malformed},
      {"info  depth 3", false, LineKind::Malformed},
      {"info score cp depth 3", false, LineKind::Malformed},
      {"info depth 3 pv", false, LineKind::Malformed},
      {"info depth 3 refutation e2e4", false, LineKind::Malformed},
      {"bestmove e2e4 ponder NULL", false, LineKind::BestMove},
      {"bestmove a7a8q ponder e7e5", false, LineKind::BestMove},
      {"bestmove 0000", false, LineKind::BestMove},
      {"bestmove", false, LineKind::Malformed},
      {"bestmove e2e4 ponder", false, LineKind::Malformed},
      {"bestmove 0000 ponder e2e4", false, LineKind::Malformed},
      {"bestmove e2e4\tponder e7e5", false, LineKind::Malformed},
      {"bestmove e2e2", false, LineKind::Malformed},
      {"bestmove a7a8k", false, LineKind::Malformed},
  };
  for (const Case& c : cases) EXPECT_EQ(readOutputLine(c.line, c.inBanner).kind, c.kind) << '"' << c.line << '"';
}

TEST(FuzzCheck, MovesReplayedFromTheRoot) {
  const std::string start = tavrin::match::StartFen;
  const std::string stalemate = "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1";
  const std::string promotion = "8/P6k/8/8/8/8/8/K7 w - - 0 1";
  struct Case {
    std::string fen;
    std::vector<std::string> searchMoves;
    const char* line;
    const char* problem;   // the start of the expected complaint; empty: none
  };
  const Case cases[] = {
      {start, {}, "bestmove e2e4 ponder e7e5", ""},
      {start, {}, "bestmove e2e4 ponder NULL", ""},
      {start, {}, "bestmove e2e5", "illegal bestmove"},
      {start, {}, "bestmove 0000", "bestmove 0000 in a position with legal moves"},
      {start, {}, "bestmove e2e4 ponder e2e4", "illegal ponder move"},
      {start, {"g1f3", "zzzz"}, "bestmove e2e4", "bestmove outside the searchmoves"},
      {start, {"g1f3", "zzzz"}, "bestmove g1f3", ""},
      // Only legal moves restrict: a list without one leaves every move to the search.
      {start, {"e2e5"}, "bestmove e2e4", ""},
      {start, {"g1f3"}, "info depth 1 currmove b1c3 currmovenumber 2", "currmove outside the searchmoves"},
      {start, {"g1f3"}, "info depth 1 score cp 3 pv b1c3", "pv outside the searchmoves"},
      {start, {}, "info currmove e7e5 currmovenumber 1", "illegal currmove"},
      {start, {}, "info depth 2 score cp 5 pv e2e4 e7e5 g1f3", ""},
      {start, {}, "info depth 2 score cp 5 pv e2e4 e7e5 e4e5", "illegal pv move"},
      {stalemate, {}, "bestmove 0000", ""},
      {stalemate, {}, "bestmove h8g8", "bestmove in a position without legal moves"},
      {promotion, {}, "info depth 2 score cp 900 pv a7a8q h7g6", ""},
      {promotion, {}, "info depth 2 score cp 900 pv a7a8 h7g6", "illegal pv move"},
      {promotion, {}, "bestmove a7a8n ponder h7g6", ""},
  };
  for (const Case& c : cases) {
    const SearchRoot root = rootOf(c.fen, c.searchMoves);
    ASSERT_TRUE(root.known) << c.fen;
    const OutputLine line = readOutputLine(c.line, false);
    ASSERT_NE(line.kind, LineKind::Malformed) << c.line;
    const std::string problem = checkMoves(line, root);
    if (*c.problem == 0) EXPECT_EQ(problem, "") << c.line;
    else EXPECT_EQ(problem.rfind(c.problem, 0), 0u) << c.line << " -> " << problem;
  }
}

TEST(FuzzCheck, UnknownRootsCheckOnlyTheForm) {
  const SearchRoot root = rootOf("8/8/8/8/8/8/8/8 w - - 0 1");
  EXPECT_FALSE(root.known);
  EXPECT_EQ(checkMoves(readOutputLine("bestmove 0000", false), root), "");
  EXPECT_EQ(checkMoves(readOutputLine("bestmove e2e5 ponder NULL", false), root), "");
}
