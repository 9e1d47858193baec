// The clock report: figures of games with known times, what it skips, and text that arrives in
// pieces, has huge lines or comes from the match runner's own PGN writer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/clock/clock_report.h"
#include "tools/match/pgn.h"

using namespace tavrin;
using namespace tavrin::clockuse;

namespace {

// Alpha: 6 s of 10 + 2 * 1 (half), all of its clock (lost on time), 6 s of 2 periods of 10 s
// (0.3). Beta: 4 s of 12, 1.5 s of 11. Gamma: 1 s of 2 moves at 1 s a move.
const char* const KnownGames =
    "[Event \"t\"]\n[White \"Alpha\"]\n[Black \"Beta\"]\n[Result \"*\"]\n[TimeControl \"10+1\"]\n\n"
    "1. e4 {book} 1... e5 {book} 2. Nf3 {+0.20/10 2.000s} 2... Nc6 {-0.10/9 1.000s}\n"
    "3. Bb5 {+0.30/11 4.000s} 3... a6 {-0.20/10\n3.000s} *\n\n"
    "[Event \"t\"]\r\n[White \"Beta\"]\r\n[Black \"Alpha\"]\r\n[Result \"1-0\"]\r\n"
    "[FEN \"6k1/8/8/8/8/8/8/5K2 b - - 0 20\"]\r\n[TimeControl \"10+1\"]\r\n[Termination \"time forfeit\"]\r\n\r\n"
    "20... Kg7 {-1.00/5 5.000s} 21. Kf1 (21. Ke1 {+0.10/3 9.000s}) {+1.00/5 1.500s} $1\r\n"
    "{Black loses on time} 1-0\r\n\r\n"
    "[White \"Alpha\"] [Black \"Gamma\"]\n[Result \"1/2-1/2\"]\n[FEN \"6k1/8/8/8/8/8/8/5K2 w - - 0 61\"]\n"
    "[WhiteTimeControl \"2/10\"]\n[BlackTimeControl \"1/move\"]\n\n"
    "61.Kf2 {0.00/1 2.000s} 61...Kg7 {0.00/1 0.500s} 62.Kf3 {0.00/1 2.000s} 62...Kg8 {0.00/1 0.500s}\n"
    "63.Kf4 {0.00/1 2.000s} 1/2-1/2\n";

const EngineClock* find(const ClockReport& r, const std::string& name) {
  for (const EngineClock& e : r.engines)
    if (e.name == name) return &e;
  return nullptr;
}

std::vector<double> seconds(const std::vector<std::int64_t>& ms) { return {ms.begin(), ms.end()}; }

}  // namespace

TEST(ClockReport, FiguresOfKnownGames) {
  ClockReport r = readClockReport(KnownGames);
  EXPECT_EQ(r.games, 3);
  EXPECT_EQ(r.skippedGames(), 0);
  ASSERT_EQ(r.engines.size(), 3u);
  EXPECT_EQ(r.engines[0].name, "Alpha");   // in order of first appearance
  EXPECT_EQ(r.engines[2].name, "Gamma");

  const struct {
    const char* name;
    double median, mean;
    int losses;
    std::vector<std::vector<double>> phaseMs;   // sorted
  } cases[] = {
      {"Alpha", 0.5, 0.6, 1, {{2000, 4000, 5000}, {}, {}, {2000, 2000, 2000}}},
      {"Beta", (4.0 / 12 + 1.5 / 11) / 2, (4.0 / 12 + 1.5 / 11) / 2, 0, {{1000, 3000}, {1500}, {}, {}}},
      {"Gamma", 0.5, 0.5, 0, {{}, {}, {}, {500, 500}}},
  };
  for (const auto& c : cases) {
    const EngineClock* e = find(r, c.name);
    ASSERT_NE(e, nullptr) << c.name;
    Figures f = figuresOf(e->shares);
    EXPECT_NEAR(f.median, c.median, 1e-9) << c.name;
    EXPECT_NEAR(f.mean, c.mean, 1e-9) << c.name;
    EXPECT_EQ(e->timeLosses, c.losses) << c.name;
    for (int p = 0; p < PhaseCount; ++p) {
      std::vector<double> got = seconds(e->moveMs[p]);
      std::sort(got.begin(), got.end());
      EXPECT_EQ(got, c.phaseMs[p]) << c.name << " phase " << p;
    }
  }

  EXPECT_EQ(find(r, "Alpha")->clockLeftMs[0], std::vector<double>{6000});   // 10 - 5 + 1 after its move 20
  EXPECT_TRUE(find(r, "Gamma")->clockLeftMs[3].empty());                     // no clock, nothing left

  Figures even = figuresOf({4, 1, 3, 2});
  EXPECT_DOUBLE_EQ(even.median, 2.5);
  EXPECT_DOUBLE_EQ(even.mean, 2.5);
}

// The clock left after move 20: increments added, a new period's base added when one begins.
TEST(ClockReport, ClockLeftAfterTheMarkedMoves) {
  ClockReport r = readClockReport(
      "[White \"P\"]\n[Black \"I\"]\n[FEN \"6k1/8/8/8/8/8/8/5K2 w - - 0 19\"]\n"
      "[WhiteTimeControl \"2/10\"]\n[BlackTimeControl \"5+1\"]\n\n"
      "19. Kf2 {0.00/1 3.000s} 19... Kg7 {0.00/1 1.000s} 20. Kf3 {0.00/1 4.000s} 20... Kg8 {0.00/1 2.000s}\n"
      "21. Kf4 {0.00/1 1.000s} *\n");
  ASSERT_EQ(r.games, 1);
  EXPECT_EQ(find(r, "P")->clockLeftMs[0], std::vector<double>{13000});
  EXPECT_EQ(find(r, "I")->clockLeftMs[0], std::vector<double>{4000});
  EXPECT_TRUE(find(r, "P")->clockLeftMs[1].empty());
}

TEST(ClockReport, SkipsWhatItCannotRead) {
  const std::string tags = "[White \"A\"]\n[Black \"B\"]\n[TimeControl \"5+0.1\"]\n\n";
  const std::string huge(3 * MaxPgnLine, 'x');
  const struct {
    std::string text;
    Skip why;
  } cases[] = {
      {tags + "1. e4 {+0.1/5 0.100s} e5 2. Nf3 {+0.1/5 0.100s} *\n", Skip::MissingTime},
      // The closing comment must not pass for the time of a last move that has none.
      {tags + "1. e4 {+0.1/5 0.100s} e5 {-0.1/5 0.100s} 2. Qh5 {White loses on time} 0-1\n", Skip::MissingTime},
      {tags + "1. e4 {+0.1/5 fast} *\n", Skip::MissingTime},
      {"[White \"A\"]\n[TimeControl \"-\"]\n\n1. e4 {+0.1/5 0.100s} *\n", Skip::NoTimeControl},
      {"[White \"A\"]\n[TimeControl \"40/60:20\"]\n\n1. e4 {+0.1/5 0.100s} *\n", Skip::NoTimeControl},
      {"[White \"A\"]\n\n1. e4 {+0.1/5 0.100s} *\n", Skip::NoTimeControl},
      {tags + "1. e4 {book} 1... e5 {book} *\n", Skip::NoTimedMove},
      {tags + "1. e4 {+0.1/5 0.100s} e5 {never closed\n", Skip::Unreadable},
      {tags + "1. e4 {+0.1/5 0.100s} (1. d4 {+0.1/5 0.100s}\n", Skip::Unreadable},
      {tags + "1. e4 {+0.1/5 0.100s} " + huge + "\n1... e5 {-0.1/5 0.100s} *\n", Skip::Unreadable},
      {"[White \"" + huge + "\"]\n" + tags + "1. e4 {+0.1/5 0.100s} *\n", Skip::Unreadable},
  };
  for (const auto& c : cases) {
    ClockReport r = readClockReport(c.text);
    std::string shown = c.text.substr(0, 120);
    EXPECT_EQ(r.games, 0) << shown;
    EXPECT_EQ(r.skippedGames(), 1) << shown;
    EXPECT_EQ(r.skipped[int(c.why)], 1) << shown;
  }

  for (const char* nothing : {"", "\n\n", "% escaped line\n", "{a comment alone}\n"}) {
    ClockReport r = readClockReport(nothing);
    EXPECT_EQ(r.games + r.skippedGames(), 0) << nothing;
    EXPECT_EQ(formatClockReport(r), "No games with move times.\nGames: 0 counted, 0 skipped\n");
  }
}

TEST(ClockReport, ReadsTextInAnyPiecesAndAcrossFiles) {
  const std::string broken = "[White \"A\"]\n[TimeControl \"5\"]\n\n1. e4 e5 *\n";
  const std::string text = KnownGames + broken;
  const std::string whole = formatClockReport(readClockReport(text));

  ClockReader bytes;
  for (char c : text) bytes.feed(std::string_view(&c, 1));
  bytes.finish();
  EXPECT_EQ(formatClockReport(bytes.report()), whole);

  // A file cut inside a game ends that game; the next file starts afresh.
  ClockReader files;
  files.feed("[White \"A\"]\n[TimeControl \"5\"]\n\n1. e4 {+0.1/5 1.000s} {unclosed");
  files.finish();
  files.feed(text);
  files.finish();
  EXPECT_EQ(files.report().skipped[int(Skip::Unreadable)], 1);
  EXPECT_EQ(files.report().games, 3);

  // A game whose tags are missing starts after the previous result.
  ClockReport untagged = readClockReport("[TimeControl \"5\"]\n\n1. e4 {+0.1/5 1.000s} 1-0 1. d4 {0.1/5 1.000s} *\n");
  EXPECT_EQ(untagged.games, 1);
  EXPECT_EQ(untagged.skipped[int(Skip::NoTimeControl)], 1);

  EXPECT_EQ(whole,
            "Share of its clock used per game\n"
            "engine  games  median   mean  time losses\n"
            "Alpha       3   50.0%  60.0%            1\n"
            "Beta        2   23.5%  23.5%            0\n"
            "Gamma       1   50.0%  50.0%            0\n"
            "\n"
            "Time per move in seconds: mean / median (moves)\n"
            "engine         moves 1-20        moves 21-40  moves 41-60          moves 61+\n"
            "Alpha   3.667 / 4.000 (3)                  -            -  2.000 / 2.000 (3)\n"
            "Beta    2.000 / 2.000 (2)  1.500 / 1.500 (1)            -                  -\n"
            "Gamma                   -                  -            -  0.500 / 0.500 (2)\n"
            "\n"
            "Clock left in seconds after the move: median (games)\n"
            "engine    move 20  move 40  move 60  move 80\n"
            "Alpha   6.000 (1)        -        -        -\n"
            "Beta            -        -        -        -\n"
            "Gamma           -        -        -        -\n"
            "\n"
            "Games: 3 counted, 1 skipped (1 with a move lacking its time)\n");
}

TEST(ClockReport, ReadsTheMatchRunnersPgn) {
  match::GameBoard b;
  match::GameRecord g;
  g.white = "Alpha";
  g.black = "Beta";
  g.startFen = b.fen();
  g.whiteTc = "4+0.5";
  g.blackTc = "3/2";
  const struct {
    const char* uci;
    bool book;
    std::int64_t ms;
  } moves[] = {{"e2e4", true, 0}, {"e7e5", false, 1200}, {"g1f3", false, 300}, {"b8c6", false, 500}};
  for (const auto& m : moves) {
    match::MoveRecord r;
    r.move = b.parseUci(m.uci);
    ASSERT_NE(r.move, NoMove) << m.uci;
    r.san = b.san(r.move);
    r.book = m.book;
    r.hasScore = true;
    r.timeMs = m.ms;
    b.play(r.move);
    g.moves.push_back(r);
  }
  g.result = match::GameResult::BlackWins;
  g.reason = "White loses on time";
  g.termination = "time forfeit";

  ClockReport r = readClockReport(match::formatPgn(g, match::PgnContext{}));
  ASSERT_EQ(r.games, 1);
  ASSERT_NE(find(r, "Alpha"), nullptr);
  ASSERT_NE(find(r, "Beta"), nullptr);
  EXPECT_EQ(find(r, "Alpha")->shares, std::vector<double>{1.0});
  EXPECT_EQ(find(r, "Alpha")->timeLosses, 1);
  EXPECT_NEAR(find(r, "Beta")->shares.at(0), 1.7 / 2, 1e-9);   // one period of 3 moves in 2 s
  EXPECT_EQ(find(r, "Beta")->moveMs[0], (std::vector<std::int64_t>{1200, 500}));
}
