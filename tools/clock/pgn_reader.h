// A forgiving PGN reader: splits text into games (tags, main-line moves with the comment that
// follows each) and marks the games it could not read whole instead of failing.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin::clockuse {

// A line longer than this is dropped and its game marked broken; a comment keeps this much.
constexpr std::size_t MaxPgnLine = std::size_t(1) << 20;
constexpr std::size_t MaxPgnComment = 4096;

struct PgnMove {
  std::string san;
  std::string comment;
  bool commented = false;
};

struct PgnGame {
  std::vector<std::pair<std::string, std::string>> tags;
  std::vector<PgnMove> moves;   // the main line; variations are left out
  std::string lastComment;      // the main line's last comment (where the end of a game is told)
  std::string result;           // the result token after the moves, if any
  bool broken = false;          // an overlong line, an unclosed comment or variation

  const std::string* tag(std::string_view name) const;
};

class PgnReader {
 public:
  using Sink = std::function<void(const PgnGame&)>;
  explicit PgnReader(Sink sink) : sink_(std::move(sink)) {}

  // Any piece of the text; a line may be split between pieces.
  void feed(std::string_view text);
  // Ends the text (a file): hands over the last game. The reader can then take a new text.
  void finish();

 private:
  void line(std::string_view text, bool overlong);
  void tagLine(std::string_view text);
  void moveText(std::string_view text);
  void token(std::string_view word);
  void commentEnds();
  void emit();

  Sink sink_;
  std::string pending_;      // the unfinished line
  bool overlong_ = false;    // pending_ passed the cap; the rest of the line is dropped
  PgnGame game_;
  bool started_ = false;     // game_ has tags or moves
  bool inMoves_ = false;     // the move text has begun
  bool inComment_ = false;
  bool awaitingComment_ = false;   // the last move has no comment yet
  std::string comment_;
  int variation_ = 0;
};

}  // namespace tavrin::clockuse
