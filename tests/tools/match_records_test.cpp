// PGN output, opening readers and the runner's command line.
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "tools/match/options.h"
#include "tools/match/pgn.h"

using namespace tavrin;
using namespace tavrin::match;

namespace {

MoveRecord engineMove(GameBoard& b, const char* uci, int cp, int mate, int depth, int ms) {
  MoveRecord r;
  r.move = b.parseUci(uci);
  r.san = b.san(r.move);
  r.hasScore = true;
  r.scoreCp = cp;
  r.mate = mate;
  r.depth = depth;
  r.timeMs = ms;
  b.play(r.move);
  return r;
}

}  // namespace

TEST(MatchPgn, HeadersMovesAndComments) {
  GameBoard b;
  ASSERT_TRUE(b.setFen("rnbqkbnr/pppp1ppp/8/4p3/8/5P2/PPPPP1PP/RNBQKBNR w KQkq - 0 2"));
  GameRecord g;
  g.white = "Alpha";
  g.black = "Beta \"B\"";
  g.startFen = b.fen();
  g.firstMover = White;
  g.firstMoveNumber = 2;
  g.whiteTc = g.blackTc = "10+0.1";
  g.date = "2024.01.02";
  g.round = "7";
  g.moves.push_back(engineMove(b, "g2g4", -250, 0, 12, 105));
  g.moves.push_back(engineMove(b, "d8h4", 21990, 1, 4, 1));
  g.result = GameResult::BlackWins;
  g.reason = "Black mates";
  g.termination = "normal";
  PgnContext ctx;
  ctx.event = "Test";
  EXPECT_EQ(formatPgn(g, ctx),
            "[Event \"Test\"]\n"
            "[Site \"?\"]\n"
            "[Date \"2024.01.02\"]\n"
            "[Round \"7\"]\n"
            "[White \"Alpha\"]\n"
            "[Black \"Beta \\\"B\\\"\"]\n"
            "[Result \"0-1\"]\n"
            "[SetUp \"1\"]\n"
            "[FEN \"rnbqkbnr/pppp1ppp/8/4p3/8/5P2/PPPPP1PP/RNBQKBNR w KQkq - 0 2\"]\n"
            "[TimeControl \"10+0.1\"]\n"
            "[Termination \"normal\"]\n"
            "[PlyCount \"2\"]\n"
            "\n"
            "2. g4 {-2.50/12 0.105s} 2... Qh4# {+M1/4 0.001s} {Black mates} 0-1\n"
            "\n");
}

TEST(MatchPgn, CommentsAndLineLength) {
  MoveRecord book, none, mated;
  book.book = true;
  none.timeMs = 2500;
  mated.hasScore = true, mated.mate = -3, mated.depth = 30;
  EXPECT_EQ(moveComment(book), "book");
  EXPECT_EQ(moveComment(none), "-/0 2.500s");
  EXPECT_EQ(moveComment(mated), "-M3/30 0.000s");

  GameRecord g;
  g.white = g.black = "x";
  GameBoard b;
  const char* shuffle[] = {"g1f3", "g8f6", "f3g1", "f6g8"};
  for (int i = 0; i < 40; ++i) g.moves.push_back(engineMove(b, shuffle[i % 4], 0, 0, 1, 1));
  g.result = GameResult::Draw;
  std::string pgn = formatPgn(g, PgnContext());
  EXPECT_EQ(pgn.find("[FEN"), std::string::npos);   // the start position needs no FEN tag
  std::istringstream lines(pgn);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 79u) << line;
  EXPECT_NE(pgn.find("1/2-1/2\n\n"), std::string::npos);
}

TEST(MatchOpenings, EpdLines) {
  int skipped = 0;
  std::vector<Opening> o = parseEpd(
      "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1\n"
      "\n"
      "# a comment\n"
      "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - bm Nf3; id \"x\";\n"
      "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq -\r\n"
      "not a position\n"
      "8/8/8/8/8/8/8/8 w - - 0 1\n"
      "4k3/8/8/8/8/8/8/4K3 w - - 12 30\n",
      skipped);
  ASSERT_EQ(o.size(), 4u);
  EXPECT_EQ(skipped, 2);
  EXPECT_EQ(o[0].fen, "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1");
  EXPECT_EQ(o[1].fen, "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 1");
  EXPECT_EQ(o[2].fen, o[1].fen);
  EXPECT_EQ(o[3].fen, "4k3/8/8/8/8/8/8/4K3 w - - 12 30");
  EXPECT_TRUE(o[0].moves.empty());
}

TEST(MatchOpenings, PgnGames) {
  int skipped = 0;
  std::vector<Opening> o = parsePgn(
      "[Event \"a\"]\n[Site \"?\"]\n\n"
      "1. e4 {best by test} e5 (1... c5 2. Nf3) 2. Nf3 $1 Nc6 3.Bb5 a6 *\n\n"
      "[Event \"b\"]\n[FEN \"4k3/8/8/8/8/8/4P3/4K3 w - - 0 1\"]\n[SetUp \"1\"]\n\n"
      "1. e4 Kd7 ; a rest-of-line comment\n2. e5 1-0\n\n"
      "[Event \"c\"]\n\n1. e4 e5 2. Ke3 Nc6 1/2-1/2\n\n"
      "1. d4 d5 2. c4 0-1\n",
      0, skipped);
  ASSERT_EQ(o.size(), 4u);
  EXPECT_EQ(skipped, 1);   // the third game has an illegal move: kept up to it
  EXPECT_EQ(o[0].fen, StartFen);
  EXPECT_EQ(o[0].moves, (std::vector<std::string>{"e2e4", "e7e5", "g1f3", "b8c6", "f1b5", "a7a6"}));
  EXPECT_EQ(o[1].fen, "4k3/8/8/8/8/8/4P3/4K3 w - - 0 1");
  EXPECT_EQ(o[1].moves, (std::vector<std::string>{"e2e4", "e8d7", "e4e5"}));
  EXPECT_EQ(o[2].moves, (std::vector<std::string>{"e2e4", "e7e5"}));
  EXPECT_EQ(o[3].moves, (std::vector<std::string>{"d2d4", "d7d5", "c2c4"}));

  std::vector<Opening> cut = parsePgn("1. e4 e5 2. Nf3 Nc6 *\n", 3, skipped);
  ASSERT_EQ(cut.size(), 1u);
  EXPECT_EQ(cut[0].moves.size(), 3u);
}

TEST(MatchOpenings, OrderIsAPermutationFixedBySeed) {
  std::vector<std::size_t> seq = openingOrder(5, false, 0);
  EXPECT_EQ(seq, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
  std::vector<std::size_t> a = openingOrder(100, true, 42), b = openingOrder(100, true, 42),
                           c = openingOrder(100, true, 43);
  EXPECT_EQ(a, b);
  EXPECT_NE(a, c);
  EXPECT_EQ(std::set<std::size_t>(a.begin(), a.end()).size(), 100u);
}

TEST(MatchOptions, CommandLine) {
  MatchOptions o;
  std::string err = parseMatchOptions(
      {"-engine", "cmd=/usr/games/stockfish", "name=sf", "option.Hash=16", "option.Skill Level=3",
       "-engine", "cmd=./tavrin", "args=--a \"b c\"", "tc=40/60+0.5", "ponder",
       "-each", "tc=10+0.1", "option.Hash=32",
       "-openings", "file=x.epd", "format=epd", "order=random", "seed=7",
       "-games", "20", "-concurrency", "2", "-pgnout", "out.pgn", "-fresh",
       "-resign", "movecount=3", "score=600", "-draw", "movenumber=40", "movecount=8", "score=10",
       "-sprt", "elo0=0", "elo1=5", "alpha=0.05", "beta=0.1", "-timemargin", "100"},
      o);
  ASSERT_EQ(err, "");
  ASSERT_EQ(o.engines.size(), 2u);
  EXPECT_EQ(o.engines[0].name, "sf");
  EXPECT_EQ(o.engines[0].options,
            (std::vector<std::pair<std::string, std::string>>{{"Hash", "16"}, {"Skill Level", "3"}}));
  EXPECT_EQ(o.engines[1].name, "tavrin");
  EXPECT_EQ(o.engines[1].args, (std::vector<std::string>{"--a", "b c"}));
  EXPECT_EQ(o.engines[1].tc.pgnText(), "40/60+0.5");   // an engine's own setting wins
  EXPECT_TRUE(o.engines[1].ponder);
  EXPECT_TRUE(o.openings.random);
  EXPECT_EQ(o.openings.seed, 7u);
  EXPECT_EQ(o.game.adjudication.resignMoveCount, 3);
  EXPECT_EQ(o.game.adjudication.drawScore, 10);
  EXPECT_TRUE(o.sprt.enabled);
  EXPECT_DOUBLE_EQ(o.sprt.beta, 0.1);
  EXPECT_EQ(o.game.timeMarginMs, 100);

  const std::vector<std::vector<std::string>> bad = {
      {},
      {"-engine", "cmd=a", "tc=1"},
      {"-engine", "cmd=a", "tc=1", "-engine", "name=b", "tc=1"},
      {"-engine", "cmd=a", "-engine", "cmd=b"},                       // no time control
      {"-engine", "cmd=a", "tc=x", "-engine", "cmd=b", "tc=1"},
      {"-each", "tc=1", "-engine", "cmd=a", "-engine", "cmd=b", "-games"},
      {"-each", "tc=1", "-engine", "cmd=a", "-engine", "cmd=b", "-games", "0"},
      {"-each", "tc=1", "-engine", "cmd=a", "-engine", "cmd=b", "-bogus"},
      {"-each", "tc=1", "-engine", "cmd=a", "-engine", "cmd=b", "-sprt", "elo0=5", "elo1=0"},
      {"-each", "tc=1", "-engine", "cmd=a", "-engine", "cmd=b", "-openings", "order=random"},
      {"-each", "tc=1", "wat", "-engine", "cmd=a", "-engine", "cmd=b"},
  };
  for (const auto& args : bad) {
    MatchOptions m;
    EXPECT_NE(parseMatchOptions(args, m), "") << (args.empty() ? "(empty)" : args.back());
  }
  MatchOptions same;
  ASSERT_EQ(parseMatchOptions({"-each", "st=0.1", "-engine", "cmd=a", "-engine", "cmd=a"}, same), "");
  EXPECT_NE(same.engines[0].name, same.engines[1].name);
  MatchOptions help;
  EXPECT_EQ(parseMatchOptions({"--help"}, help), "");
  EXPECT_TRUE(help.help);
}
