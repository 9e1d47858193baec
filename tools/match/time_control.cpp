// Parsing of time controls and the per-engine clock.
#include "tools/match/time_control.h"

#include <algorithm>
#include <cstdio>

namespace tavrin::match {

bool parseSeconds(const std::string& text, std::int64_t& ms) {
  if (text.empty() || text.size() > 12) return false;
  std::int64_t whole = 0, frac = 0;
  int fracDigits = 0;
  bool dot = false, digits = false;
  for (char c : text) {
    if (c == '.' && !dot) {
      dot = true;
    } else if (c >= '0' && c <= '9') {
      digits = true;
      if (!dot) whole = whole * 10 + (c - '0');
      else if (fracDigits < 3) {
        frac = frac * 10 + (c - '0');
        ++fracDigits;
      }
    } else {
      return false;
    }
  }
  if (!digits) return false;
  while (fracDigits < 3) {
    frac *= 10;
    ++fracDigits;
  }
  ms = whole * 1000 + frac;
  return whole < 100000000;
}

bool parseClock(const std::string& text, TimeControl& tc) {
  std::string rest = text;
  int moves = 0;
  std::size_t slash = rest.find('/');
  if (slash != std::string::npos) {
    std::int64_t m;
    if (!parseSeconds(rest.substr(0, slash), m) || m % 1000 != 0 || m == 0 || m > 1000000)
      return false;
    moves = int(m / 1000);
    rest = rest.substr(slash + 1);
  }
  std::int64_t base = 0, inc = 0;
  std::size_t plus = rest.find('+');
  if (!parseSeconds(rest.substr(0, plus), base)) return false;
  if (plus != std::string::npos && !parseSeconds(rest.substr(plus + 1), inc)) return false;
  if (base <= 0 && inc <= 0) return false;
  tc.hasClock = true;
  tc.baseMs = base;
  tc.incMs = inc;
  tc.movesPerPeriod = moves;
  return true;
}

static std::string seconds(std::int64_t ms) {
  char buf[32];
  if (ms % 1000 == 0) std::snprintf(buf, sizeof buf, "%lld", static_cast<long long>(ms / 1000));
  else std::snprintf(buf, sizeof buf, "%g", ms / 1000.0);
  return buf;
}

std::string TimeControl::pgnText() const {
  if (hasClock) {
    std::string s = movesPerPeriod ? std::to_string(movesPerPeriod) + "/" : "";
    s += seconds(baseMs);
    if (incMs) s.append(1, '+').append(seconds(incMs));
    return s;
  }
  if (moveTimeMs) return seconds(moveTimeMs) + "/move";
  return "-";
}

void GameClock::reset(const TimeControl& tc) {
  tc_ = tc;
  remaining_ = tc.baseMs;
  movesInPeriod_ = 0;
}

int GameClock::movesToGo() const {
  return tc_.movesPerPeriod ? tc_.movesPerPeriod - movesInPeriod_ : 0;
}

std::int64_t GameClock::allowanceMs() const {
  if (tc_.hasClock) return tc_.moveTimeMs ? std::min(remaining_, tc_.moveTimeMs) : remaining_;
  return tc_.moveTimeMs;   // 0: no time limit (nodes or depth)
}

bool GameClock::charge(std::int64_t elapsedMs, std::int64_t marginMs) {
  bool limited = tc_.hasClock || tc_.moveTimeMs > 0;
  bool inTime = !limited || elapsedMs <= allowanceMs() + marginMs;
  if (tc_.hasClock) {
    // Within the margin an overstep is forgiven, but the clock never goes below 1 ms.
    remaining_ = std::max<std::int64_t>(remaining_ - elapsedMs, 1) + tc_.incMs;
    if (tc_.movesPerPeriod && ++movesInPeriod_ == tc_.movesPerPeriod) {
      movesInPeriod_ = 0;
      remaining_ += tc_.baseMs;
    }
  }
  return inTime;
}

}  // namespace tavrin::match
