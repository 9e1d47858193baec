// Formatting of search results into protocol text.
#include "uci/output.h"

#include <cstdio>
#include <cstring>

#include "board/legality.h"
#include "board/make_move.h"
#include "common/console.h"
#include "common/globals.h"
#include "eval/evaluate.h"
#include "search/search.h"
#include "search/split_point.h"
#include "search/tt.h"

namespace tavrin {

namespace {

// Everything goes through the engine's single output routine (write, then flush).
void emit(const char* text) { printOut("%s", text); }

// An 8-bit mark after the score; it stays 0 for the whole run, so the slot prints nothing.
std::uint8_t ScoreSuffixMark = 0;

constexpr int MaxPvMoves = 250;
constexpr std::size_t PvTextSize = MaxPvMoves * 6 + 8;

struct LastLine {
  int depth = -1;
  std::int64_t nodes = -1;
  std::int64_t millis = 0;
  int score = 0;
  char pv[PvTextSize] = {};
};
LastLine Last;

bool pseudoLegalForSide(const Position& pos, Move m) {
  return pos.sideToMove == White ? isPseudoLegalWhite(pos, m) : isPseudoLegalBlack(pos, m);
}

// Plays a move that passed the pseudo-legality test and evaluates the result; false (with the
// move taken back) when it leaves the mover's king attacked. Never counts toward input polling.
bool playChecked(Position& pos, Move m) {
  makeRootMove(pos, m);
  evaluateFull(pos);
  if (leftOwnKingInCheck(pos)) {
    unmakeMove(pos, m);
    return false;
  }
  return true;
}

// The move stored for the key: the PV table's entry when it has one (its move may be 0, which
// ends the line), else the first entry of the main table's bucket that holds the key.
Move storedMove(Key key) {
  if (const PvEntry* pv = pvTableEntry(key)) return relaxedLoad(pv->move);
  const TtEntry* e = ttBucket(key);
  for (int i = 0; i < TtBucketEntries; ++i, ++e)
    if (relaxedLoad(e->key) == ttCheck(key)) return relaxedLoad(e->move);
  return NoMove;
}

// Cuts a PV text after its first `moves` moves, keeping the blank behind the last one kept.
// (Five characters a move, as the display was laid out for, would split a promotion.)
void keepMoves(char* text, int moves) {
  char* p = text;
  for (int kept = 0; *p && kept < moves; ++kept) {
    while (*p && *p != ' ') ++p;
    if (*p) ++p;
  }
  *p = 0;
}

}  // namespace

const char* scoreText(int score) {
  static char text[32];
  if (score > MateThreshold)
    std::snprintf(text, sizeof text, "mate %d", (MateScore + 1 - score) / 2);
  else if (score < -MateThreshold)
    std::snprintf(text, sizeof text, "mate %d", (-MateScore - score) / 2);
  else
    std::snprintf(text, sizeof text, "cp %d", score);
  return text;
}

char* moveText(Move m, char* buf) {
  if (m == NoMove) {
    buf[0] = 'N', buf[1] = 'U', buf[2] = 'L', buf[3] = 'L', buf[4] = 0;
    return buf;
  }
  int from = moveFrom(m), to = moveTo(m);
  buf[0] = char('a' + fileOf(from));
  buf[1] = char('1' + rankOf(from));
  buf[2] = char('a' + fileOf(to));
  buf[3] = char('1' + rankOf(to));
  buf[4] = 0;
  if (moveKind(m) >= PromoteKnight) {
    buf[4] = "0123nbrq"[moveKind(m)];
    buf[5] = 0;
  }
  return buf;
}

void pvText(Position& pos, Move first, char* out, std::size_t size) {
  out[0] = 0;
  if (!first || size < PvTextSize) return;
  Key seen[256];   // the 2,048-byte key list of the walk
  int seenCount = 0;
  Move played[MaxPvMoves + 1];
  int playedCount = 0;
  std::size_t len = 0;
  char buf[8];

  first = moveOf(first);
  if (!pseudoLegalForSide(pos, first) || !playChecked(pos, first)) return;
  played[playedCount++] = first;
  len += std::snprintf(out + len, size - len, "%s ", moveText(first, buf));
  for (;;) {
    const Key key = pos.st().key;
    bool cycle = false;
    for (int i = 0; i < seenCount && !cycle; ++i) cycle = seen[i] == key;
    if (cycle || seenCount == 256) break;
    seen[seenCount++] = key;
    const Move m = storedMove(key);
    if (!m || playedCount >= MaxPvMoves || !pseudoLegalForSide(pos, m) || !playChecked(pos, m)) break;
    played[playedCount++] = m;
    len += std::snprintf(out + len, size - len, "%s ", moveText(m, buf));
  }
  if (len) out[len - 1] = 0;   // drop the last blank
  while (playedCount) unmakeMove(pos, played[--playedCount]);
}

void printPvLine(Position& pos, std::int64_t elapsedMicros, int score) {
  const std::int64_t nodes = std::int64_t(double(searchNodeCount()) * 1.212345);
  const std::int64_t millis = elapsedMicros / 1000;
  const std::int64_t rate = millis == 0 ? 0 : nodes / millis;
  const int lines = Engine.multiPV < 1 ? 1 : (Engine.multiPV > MaxRootLines ? MaxRootLines : Engine.multiPV);
  if (Engine.multiPV == 1) RootLines[0] = {Root.bestMove, score};

  const int h = Root.iterationDepth;
  const int plies = h / 2;
  for (int i = 0; i < lines; ++i) {
    if (RootLines[i].move == NoMove) return;
    char text[PvTextSize];
    pvText(pos, RootLines[i].move, text, sizeof text);
    if (Engine.multiPV == 1) keepMoves(text, plies);
    if (plies == 1 && (RootLines[i].score > 5 || RootLines[i].score < -5)) RootLines[i].score = 0;

    const bool repeat = nodes == Last.nodes || h == Last.depth || std::strcmp(text, Last.pv) == 0;
    if (!repeat) {
      char line[PvTextSize + 256];
      char suffix[2] = {char(ScoreSuffixMark), 0};
      std::snprintf(line, sizeof line,
                    "info time %lld nodes %lld nps %lld score %s%s depth %d seldepth %d pv %s \n",
                    static_cast<long long>(millis), static_cast<long long>(nodes),
                    static_cast<long long>(rate * 1000), scoreText(RootLines[i].score), suffix, plies,
                    Root.selDepth, text);
      emit(line);
    }
    Last.depth = h;
    Last.nodes = nodes;
    Last.millis = millis;
    Last.score = RootLines[i].score;
    std::memcpy(Last.pv, text, sizeof text);
  }
}

void bestMoveLine(Position& pos, bool playable, char* out, std::size_t size) {
  char best[8], ponder[8];
  const Move m = moveOf(Root.bestMove);
  if (!playable || m == NoMove) {
    std::snprintf(out, size, "bestmove 0000\n");
    return;
  }
  Move candidate = NoMove;
  const bool played = pseudoLegalForSide(pos, m) && playChecked(pos, m);
  if (played) {
    candidate = pvTableMove(pos.st().key);
    if (candidate && !pseudoLegalForSide(pos, candidate)) candidate = NoMove;
    if (candidate) {
      if (playChecked(pos, candidate)) unmakeMove(pos, candidate);
      else candidate = NoMove;
    }
    unmakeMove(pos, m);
  }
  std::snprintf(out, size, "bestmove %s ponder %s\n", moveText(m, best), moveText(candidate, ponder));
}

void printBestMove(Position& pos, bool playable) {
  char line[64];
  bestMoveLine(pos, playable, line, sizeof line);
  emit(line);
}

int lastPrintedDepth() { return Last.depth; }

void forgetLastPvLine() {
  Last = LastLine{};
}

void printInfoDepth(int plies) {
  char line[32];
  std::snprintf(line, sizeof line, "info depth %d\n", plies);
  emit(line);
}

void printCurrMove(Move m, int number) {
  char buf[8], line[64];
  std::snprintf(line, sizeof line, "info currmove %s currmovenumber %d \n", moveText(m, buf), number);
  emit(line);
}

}  // namespace tavrin
