// The datagen subcommand of the built tool: the file it writes is read back whole (every line a
// legal quiet-side FEN, a result and a score), a seed always gives the same file, processes that
// split a run play exactly its games, and bad arguments are refused with a message.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "board/legality.h"
#include "tests/test_support.h"

namespace tavrin::test {
namespace {

std::string tempPath(const std::string& name) {
  static const unsigned tag = std::random_device{}();
  return (std::filesystem::temp_directory_path() / ("tavrin-datagen-" + std::to_string(tag) + "-" + name)).string();
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// A short run with tiny searches from the start position; returns the file's text.
std::string generate(const std::string& name, const std::string& extra) {
  const std::string path = tempPath(name);
  const int games = scaled(6, 2);
  const std::string out = toolOutput("datagen --output " + path + " --games " + std::to_string(games) +
                                     " --nodes 1000 --seed 7 " + extra);
  EXPECT_NE(out.find(" games, "), std::string::npos) << out;
  const std::string text = readFile(path);
  std::filesystem::remove(path);
  return text;
}

TEST(DatagenTool, WritesWholeLegalLinesAndRepeatsItselfFromASeed) {
  const std::string text = generate("a.txt", "");
  ASSERT_FALSE(text.empty());
  ASSERT_EQ(text.back(), '\n');
  EXPECT_EQ(generate("b.txt", ""), text);

  BoardFixture board;
  for (const std::string& line : linesOf(text)) {
    // "FEN | result | score"
    const std::size_t bar1 = line.find(" | "), bar2 = line.find(" | ", bar1 + 1);
    ASSERT_NE(bar2, std::string::npos) << line;
    ASSERT_EQ(line.find(" | ", bar2 + 1), std::string::npos) << line;
    const std::string fen = line.substr(0, bar1), result = line.substr(bar1 + 3, bar2 - bar1 - 3);
    const std::string score = line.substr(bar2 + 3);
    EXPECT_EQ(splitFields(fen).size(), 6u) << line;
    ASSERT_TRUE(setFromFen(board.pos, fen.c_str())) << line;
    EXPECT_FALSE(inCheck(board.pos)) << line;
    EXPECT_TRUE(result == "1.0" || result == "0.5" || result == "0.0") << line;
    std::size_t used = 0;
    const int value = std::stoi(score, &used);
    EXPECT_EQ(used, score.size()) << line;
    EXPECT_LT(std::abs(value), 1000) << line;
  }
}

TEST(DatagenTool, ProcessesThatSplitARunPlayItsGames) {
  std::vector<std::string> whole = linesOf(generate("whole.txt", ""));
  std::vector<std::string> parts = linesOf(generate("part0.txt", "--index 0 --count 2"));
  const std::vector<std::string> second = linesOf(generate("part1.txt", "--index 1 --count 2"));
  EXPECT_FALSE(parts.empty());
  EXPECT_FALSE(second.empty());
  parts.insert(parts.end(), second.begin(), second.end());
  std::sort(whole.begin(), whole.end());
  std::sort(parts.begin(), parts.end());
  EXPECT_EQ(parts, whole);
}

TEST(DatagenTool, BadArgumentsAreRefusedWithAMessage) {
  const std::string file = tempPath("refused.txt");
  struct Case {
    std::string arguments;
    const char* message;
  };
  const Case cases[] = {
      {"", "usage: datagen"},
      {"--games 3", "--output FILE is required"},
      {"--output " + file + " --nodes 0", "--nodes needs a whole number"},
      {"--output " + file + " --games 12x", "--games needs a whole number"},
      {"--output " + file + " --seed -1", "--seed needs a whole number"},
      {"--output " + file + " --games 99999999999999999999", "--games needs a whole number"},
      {"--output " + file + " --index 2 --count 2", "--index 2 must be below --count 2"},
      {"--output " + file + " --colour white", "unknown option --colour"},
      {"--output " + file + " --games", "--games: unknown option or missing value"},
      {"--output " + file + " --book /nonexistent/book.epd", "cannot read /nonexistent/book.epd"},
      {"--output /nonexistent/dir/data.txt --games 1", "cannot write /nonexistent/dir/data.txt"},
  };
  for (const Case& c : cases) {
    const std::string out = toolOutput("datagen " + c.arguments);
    EXPECT_NE(out.find(c.message), std::string::npos) << c.arguments << "\n" << out;
  }
  std::filesystem::remove(file);
}

}  // namespace
}  // namespace tavrin::test
