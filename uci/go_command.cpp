// Parsing of the go command into the search limits.
#include <cstring>
#include <iterator>

#include "common/globals.h"
#include "uci/decimal.h"
#include "uci/go_command.h"
#include "uci/position_command.h"
#include "uci/time_allocation.h"
#include "uci/words.h"

namespace tavrin {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

// The next blank-delimited word of the line; an empty word means the line has ended.
const char* nextWord(const char* text, char* word) { return readWord(text, word, isBlank); }

// The number after a valued keyword as the 32-bit value the limits are computed from.
std::int32_t asInt32(std::int64_t v) { return std::int32_t(std::uint32_t(std::uint64_t(v))); }

// Milliseconds to microseconds. Clock numbers are read whole (64-bit); beyond a million years
// they are held there, so that the product cannot overflow.
std::int64_t millisToMicros(std::int64_t ms) {
  constexpr std::int64_t Bound = std::int64_t(1) << 45;
  return (ms > Bound ? Bound : ms < -Bound ? -Bound : ms) * 1000;
}

enum class Keyword { None, Depth, Nodes, Movetime, Wtime, Btime, Winc, Binc, Movestogo, Infinite, Ponder, Searchmoves };

Keyword keywordOf(const char* word) {
  static constexpr struct {
    const char* text;
    Keyword keyword;
  } Keywords[] = {
      {"depth", Keyword::Depth},       {"nodes", Keyword::Nodes},         {"movetime", Keyword::Movetime},
      {"wtime", Keyword::Wtime},       {"btime", Keyword::Btime},         {"winc", Keyword::Winc},
      {"binc", Keyword::Binc},         {"movestogo", Keyword::Movestogo}, {"infinite", Keyword::Infinite},
      {"ponder", Keyword::Ponder},     {"searchmoves", Keyword::Searchmoves},
  };
  for (const auto& k : Keywords)
    if (std::strcmp(word, k.text) == 0) return k.keyword;
  return Keyword::None;
}

}  // namespace

void parseGo(const char* line, const Position& pos) {
  SearchLimits& L = Limits;
  if (L.depthGiven != 1) L.depthLimit = 192;
  L.softTarget = L.hardLimit = NoLimit;
  L.quarterTarget = L.threeQuarterTarget = L.threeQuarterTargetPoll = NoLimit;
  L.wtime = L.btime = NoLimit;
  L.winc = L.binc = 0;
  L.movesToGo = 0;
  Engine.stopRequested = Engine.infiniteMode = Engine.ponderMode = Engine.ponderHitTimeReset = 0;
  // A ponderhit of an earlier search must not release the wait of this one.
  Engine.ponderHit = 0;
  L.searchMovesFlag = 0;
  L.lastProgressTime = 0;
  int searchMoveCount = 0;
  L.searchMoves[0] = NoMove;

  char word[WordBytes];
  const char* text = nextWord(line, word);  // the command word itself
  for (text = nextWord(text, word); word[0]; text = nextWord(text, word)) {
    Keyword k = keywordOf(word);
    if (k == Keyword::None) {
      // A word that is no move is skipped: it must not end the list (0 is the list's end).
      if (L.searchMovesFlag && searchMoveCount < int(std::size(L.searchMoves)) - 1)
        if (const Move m = readMoveText(pos, word)) L.searchMoves[searchMoveCount++] = m;
      continue;
    }
    if (k == Keyword::Ponder) {
      Engine.ponderMode = 1;
      continue;
    }
    if (k == Keyword::Searchmoves) {
      L.searchMovesFlag = 1;
      continue;
    }
    // Every valued keyword and "infinite" clear both carry-over flags; depth and nodes then set
    // their own. A valued keyword at the end of the line reads 0.
    L.depthGiven = 0;
    L.nodeLimitFlag = 0;
    if (k == Keyword::Infinite) {
      Engine.infiniteMode = 1;
      continue;
    }
    text = nextWord(text, word);
    const std::int64_t n = readDecimal(word);
    const std::int32_t n32 = asInt32(n);
    switch (k) {
      case Keyword::Depth:
        L.depthLimit = n32 > 1 ? n32 : 1;
        L.depthGiven = 1;
        break;
      case Keyword::Nodes:
        L.nodeLimit = n;
        L.nodeLimitFlag = 1;
        break;
      case Keyword::Movetime:
        // A 10 ms margin for the reply to travel; a movetime of 10 or less stops at the first check.
        L.hardLimit = millisToMicros((n > 1 ? n : 1) - 10);
        break;
      case Keyword::Wtime: L.wtime = millisToMicros(n); break;
      case Keyword::Btime: L.btime = millisToMicros(n); break;
      case Keyword::Winc: L.winc = std::int32_t(std::uint32_t(n32) * 1000u); break;
      case Keyword::Binc: L.binc = std::int32_t(std::uint32_t(n32) * 1000u); break;
      case Keyword::Movestogo: L.movesToGo = n32; break;
      default: break;
    }
  }

  if (Engine.ponderMode) L.threeQuarterTarget = NoLimit;
  L.threeQuarterTargetPoll = NoLimit;
  L.quarterTarget = NoLimit;

  const bool whiteToMove = pos.sideToMove == White;
  if ((whiteToMove ? L.wtime : L.btime) != NoLimit) {
    ClockState clock;
    clock.wtime = L.wtime;
    clock.btime = L.btime;
    clock.winc = L.winc;
    clock.binc = L.binc;
    clock.movesToGo = L.movesToGo;
    clock.whiteToMove = whiteToMove;
    const TimeBudget b = allocateTime(clock);
    L.softTarget = b.softTarget;
    L.hardLimit = b.hardLimit;
    L.quarterTarget = b.quarterTarget;
    L.threeQuarterTarget = L.threeQuarterTargetPoll = b.threeQuarterTarget;
  }

  L.analysis = L.hardLimit == NoLimit;
  if (L.searchMovesFlag) L.searchMoves[searchMoveCount] = NoMove;
}

}  // namespace tavrin
