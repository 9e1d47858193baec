// Time controls of a match and the clock the runner keeps for each engine.
#pragma once

#include <cstdint>
#include <string>

namespace tavrin::match {

struct TimeControl {
  bool hasClock = false;
  std::int64_t baseMs = 0, incMs = 0;
  int movesPerPeriod = 0;      // 0: the base covers the whole game
  std::int64_t moveTimeMs = 0; // fixed time per move
  std::int64_t nodes = 0;
  int depth = 0;
  bool limited() const { return hasClock || moveTimeMs > 0 || nodes > 0 || depth > 0; }
  std::string pgnText() const;   // TimeControl tag value
};

// "base+inc" or "moves/base+inc" in seconds ("10+0.1", "40/60", "0:30+0.5" is not accepted).
bool parseClock(const std::string& text, TimeControl& tc);
// A decimal number of seconds, to milliseconds; false when malformed or out of range.
bool parseSeconds(const std::string& text, std::int64_t& ms);

// One engine's clock through a game.
class GameClock {
 public:
  void reset(const TimeControl& tc);
  std::int64_t remainingMs() const { return remaining_; }
  int movesToGo() const;   // 0 when not in a moves-per-period control
  // How long the engine may think before the runner declares it lost on time (before margin).
  std::int64_t allowanceMs() const;
  // Charges a move's time; false when it overstepped its allowance by more than the margin.
  bool charge(std::int64_t elapsedMs, std::int64_t marginMs);

 private:
  TimeControl tc_;
  std::int64_t remaining_ = 0;
  int movesInPeriod_ = 0;
};

}  // namespace tavrin::match
