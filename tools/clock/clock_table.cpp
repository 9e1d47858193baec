// The clock report as plain text: the share of the clock used, the time per move by phase, the
// clock left as the game goes on, and what was skipped.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "tools/clock/clock_report.h"

namespace tavrin::clockuse {

namespace {

using Table = std::vector<std::vector<std::string>>;

// The first column to the left, the others to the right, two blanks between.
std::string aligned(const Table& rows) {
  std::vector<std::size_t> width;
  for (const auto& row : rows)
    for (std::size_t c = 0; c < row.size(); ++c) {
      if (width.size() <= c) width.push_back(0);
      width[c] = std::max(width[c], row[c].size());
    }
  std::string out;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t c = 0; c < row.size(); ++c) {
      std::string pad(width[c] - row[c].size(), ' ');
      if (c > 0) line += "  ";
      line += c == 0 ? row[c] + pad : pad + row[c];
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    out += line + "\n";
  }
  return out;
}

std::string printed(const char* format, double value) {
  char buf[48];
  std::snprintf(buf, sizeof buf, format, value);
  return buf;
}

std::string moveTimes(const std::vector<std::int64_t>& ms) {
  if (ms.empty()) return "-";
  std::vector<double> seconds(ms.begin(), ms.end());
  for (double& s : seconds) s /= 1000;
  Figures f = figuresOf(std::move(seconds));
  return printed("%.3f", f.mean) + " / " + printed("%.3f", f.median) + " (" + std::to_string(ms.size()) + ")";
}

std::string clockLeft(std::vector<double> ms) {
  if (ms.empty()) return "-";
  const std::size_t games = ms.size();
  return printed("%.3f", figuresOf(std::move(ms)).median / 1000) + " (" + std::to_string(games) + ")";
}

std::string phaseName(int p) {
  std::string name = "moves " + std::to_string(p * PhaseLength + 1);
  if (p + 1 == PhaseCount) return name.append(1, '+');
  return name.append(1, '-').append(std::to_string((p + 1) * PhaseLength));
}

const char* const SkipText[SkipCount] = {"unreadable", "without a time control", "with a move lacking its time",
                                         "without a timed move"};

}  // namespace

std::string formatClockReport(const ClockReport& r) {
  std::string out;
  if (r.engines.empty()) {
    out += "No games with move times.\n";
  } else {
    out += "Share of its clock used per game\n";
    Table use{{"engine", "games", "median", "mean", "time losses"}};
    for (const EngineClock& e : r.engines) {
      Figures f = figuresOf(e.shares);
      use.push_back({e.name, std::to_string(e.shares.size()), printed("%.1f%%", 100 * f.median),
                     printed("%.1f%%", 100 * f.mean), std::to_string(e.timeLosses)});
    }
    out += aligned(use);
    out += "\nTime per move in seconds: mean / median (moves)\n";
    Table phases{{"engine"}};
    for (int p = 0; p < PhaseCount; ++p) phases[0].push_back(phaseName(p));
    for (const EngineClock& e : r.engines) {
      phases.push_back({e.name});
      for (const auto& ms : e.moveMs) phases.back().push_back(moveTimes(ms));
    }
    out += aligned(phases);
    out += "\nClock left in seconds after the move: median (games)\n";
    Table left{{"engine"}};
    for (int p = 0; p < PhaseCount; ++p) left[0].push_back("move " + std::to_string((p + 1) * PhaseLength));
    for (const EngineClock& e : r.engines) {
      left.push_back({e.name});
      for (const auto& ms : e.clockLeftMs) left.back().push_back(clockLeft(ms));
    }
    out += aligned(left);
    out += "\n";
  }
  out += "Games: " + std::to_string(r.games) + " counted, " + std::to_string(r.skippedGames()) + " skipped";
  std::string why;
  for (int s = 0; s < SkipCount; ++s)
    if (r.skipped[s]) {
      if (!why.empty()) why += ", ";
      why.append(std::to_string(r.skipped[s])).append(1, ' ').append(SkipText[s]);
    }
  return out + (why.empty() ? "" : " (" + why + ")") + "\n";
}

}  // namespace tavrin::clockuse
