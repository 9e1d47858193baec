// How much of its clock each engine uses in the games of PGN files written by the match runner
// (each engine move commented with its time, "{+0.25/12 0.105s}", book moves "{book}").
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tools/clock/pgn_reader.h"

namespace tavrin::clockuse {

// Moves 1-20, 21-40, 41-60 and 61 on, by full move number.
constexpr int PhaseCount = 4;
constexpr int PhaseLength = 20;

enum class Skip { Unreadable, NoTimeControl, MissingTime, NoTimedMove, Count };
constexpr int SkipCount = int(Skip::Count);

struct EngineClock {
  std::string name;
  // Per game: the time spent over the time it had (the base, the increments of its moves and
  // the bases of the periods it began); 1 for a game lost on time.
  std::vector<double> shares;
  std::array<std::vector<std::int64_t>, PhaseCount> moveMs;   // each move's time, by phase
  // Per game that got there: the clock left after its move 20, 40, 60 and 80 (games with a clock).
  std::array<std::vector<double>, PhaseCount> clockLeftMs;
  int timeLosses = 0;
};

struct ClockReport {
  std::vector<EngineClock> engines;   // in order of first appearance
  std::unordered_map<std::string, std::size_t> engineIndex;   // by name
  int games = 0;                      // games counted
  std::array<int, SkipCount> skipped{};
  int skippedGames() const;
};

struct Figures {
  double mean = 0, median = 0;
};
Figures figuresOf(std::vector<double> values);

// Adds one game, or counts it as skipped when its time control or move times cannot be read.
void addGame(ClockReport& report, const PgnGame& game);

// Reads PGN text, fed in pieces; file by file, finish() ends each.
class ClockReader {
 public:
  ClockReader() : pgn_([this](const PgnGame& g) { addGame(report_, g); }) {}
  ClockReader(const ClockReader&) = delete;
  ClockReader& operator=(const ClockReader&) = delete;
  void feed(std::string_view text) { pgn_.feed(text); }
  void finish() { pgn_.finish(); }
  const ClockReport& report() const { return report_; }

 private:
  ClockReport report_;
  PgnReader pgn_;
};

ClockReport readClockReport(std::string_view text);

// The report as three aligned tables and a line telling the games read and skipped.
std::string formatClockReport(const ClockReport& report);

}  // namespace tavrin::clockuse
