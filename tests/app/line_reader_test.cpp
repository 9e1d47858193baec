// The line reader: fgets-like lines from a byte source, split long lines, end of input, readiness.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "common/console.h"

using namespace tavrin;

namespace {

// A byte source for the reader: the text, handed out at most chunk bytes per read.
struct FakeInput {
  std::string text;
  std::size_t chunk = 1 << 20;
  std::size_t at = 0;
  bool ready = true;
};
FakeInput Input;

long readFake(char* buffer, std::size_t n) {
  std::size_t count = std::min({n, Input.chunk, Input.text.size() - Input.at});
  std::memcpy(buffer, Input.text.data() + Input.at, count);
  Input.at += count;
  return long(count);
}
bool fakeReady() { return Input.ready && Input.at < Input.text.size(); }
bool alwaysReady() { return true; }

std::vector<std::string> readAll(const std::string& text, std::size_t chunk,
                                 CarriageReturn cr = CarriageReturn::Keep) {
  Input = FakeInput{text, chunk};
  auto reader = std::make_unique<LineReader>(readFake, cr);
  std::vector<std::string> lines;
  auto line = std::make_unique<char[]>(LineBufferBytes);
  while (reader->readLine(line.get())) lines.emplace_back(line.get());
  return lines;
}

}  // namespace

// fgets-like lines; on Windows (Drop) a carriage return right before the line feed goes with it,
// since consoles and GUIs there end lines in CR LF.
TEST(LineReader, SplitsLinesLikeFgets) {
  constexpr CarriageReturn Keep = CarriageReturn::Keep, Drop = CarriageReturn::Drop;
  struct Case {
    std::string input;
    std::vector<std::string> lines;
    CarriageReturn cr = Keep;
  };
  const Case cases[] = {
      {"uci\nisready\n", {"uci", "isready"}},
      {"uci", {"uc"}},                           // last line without newline loses its last char
      {"quit\r\n", {"quit\r"}},                  // carriage return kept
      {"\n\n", {"", ""}},
      {"", {}},
      {"a\nb", {"a", ""}},
      {std::string("x\0yz\n", 5) + "go\n", {"", "go"}},  // a NUL byte shortens the text
      {std::string("\0\n", 2), {""}},
      {"isready\r\nquit\r\n", {"isready", "quit"}, Drop},
      {"isready\r\r\n", {"isready\r"}, Drop},   // only the one right before the line feed
      {"a\rb\n\r\n", {"a\rb", ""}, Drop},
      {"go\r", {"go"}, Drop},                    // no line feed: the last character is dropped
  };
  for (const Case& c : cases)
    for (std::size_t chunk : {std::size_t(1), std::size_t(2), std::size_t(3), std::size_t(1) << 20})
      EXPECT_EQ(readAll(c.input, chunk, c.cr), c.lines) << "chunk " << chunk;
}

TEST(LineReader, LongLinesAreSplitLosingOneCharacter) {
  std::string longLine(100000, 'a');
  longLine[MaxLineChars - 1] = 'X';   // the character lost at the split
  for (std::size_t chunk : {std::size_t(4096), std::size_t(1) << 20}) {
    auto lines = readAll(longLine + "\nuci\n", chunk);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], std::string(MaxLineChars - 1, 'a'));
    EXPECT_EQ(lines[1], std::string(100000 - MaxLineChars, 'a'));
    EXPECT_EQ(lines[2], "uci");
  }
}

TEST(LineReader, ReadinessCountsBufferedInputAndWholeLinesOnly) {
  Input = FakeInput{"go infinite\nstop\npartial", 1 << 20};
  auto reader = std::make_unique<LineReader>(readFake);
  auto line = std::make_unique<char[]>(LineBufferBytes);
  Input.ready = false;
  EXPECT_FALSE(reader->lineReady(fakeReady));
  Input.ready = true;
  // One read takes in "go infinite" and "stop" together; the second line is then buffered.
  EXPECT_TRUE(reader->lineReady(fakeReady));
  ASSERT_TRUE(reader->readLine(line.get()));
  EXPECT_STREQ(line.get(), "go infinite");
  Input.ready = false;
  EXPECT_TRUE(reader->hasBuffered());
  EXPECT_TRUE(reader->lineReady(fakeReady));
  ASSERT_TRUE(reader->readLine(line.get()));
  EXPECT_STREQ(line.get(), "stop");
  // A partial line is not ready until its end arrives, or the input ends.
  EXPECT_FALSE(reader->lineReady(fakeReady));
  Input.ready = true;
  EXPECT_TRUE(reader->lineReady(alwaysReady));   // the source reports its end: the rest is a line
  ASSERT_TRUE(reader->readLine(line.get()));
  EXPECT_STREQ(line.get(), "partia");
  // At the end with nothing buffered the end itself is ready (so that a running search hears of
  // it) and a read fails.
  EXPECT_TRUE(reader->lineReady(alwaysReady));
  EXPECT_FALSE(reader->readLine(line.get()));
}
