// Clock use of one game: each side's time control, its move times by phase, and who lost on time.
#include "tools/clock/clock_report.h"

#include <algorithm>
#include <cctype>
#include <numeric>

#include "tools/match/time_control.h"

namespace tavrin::clockuse {

namespace {

using match::TimeControl;

enum Side { WhiteSide, BlackSide, NoSide };

std::string lowered(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = char(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::vector<std::string_view> words(std::string_view s) {
  std::vector<std::string_view> out;
  std::size_t i = 0;
  while (i < s.size()) {
    while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i]))) ++i;
    std::size_t start = i;
    while (i < s.size() && !std::isspace(static_cast<unsigned char>(s[i]))) ++i;
    if (i > start) out.push_back(s.substr(start, i - start));
  }
  return out;
}

// "10+0.1", "40/60+0.5", "60" or a fixed time per move, "0.1/move".
bool readTimeControl(const std::string* text, TimeControl& tc) {
  if (!text) return false;
  constexpr std::string_view PerMove = "/move";
  if (text->size() > PerMove.size() && text->ends_with(PerMove))
    return match::parseSeconds(text->substr(0, text->size() - PerMove.size()), tc.moveTimeMs) &&
           tc.moveTimeMs > 0;
  return match::parseClock(*text, tc);
}

// In doubles: sums of absurd times must not overflow.
double timeAvailable(const TimeControl& tc, std::int64_t moves) {
  if (!tc.hasClock) return double(tc.moveTimeMs) * double(moves);
  std::int64_t periods = 1;
  if (tc.movesPerPeriod > 0) periods = std::max<std::int64_t>(1, (moves + tc.movesPerPeriod - 1) / tc.movesPerPeriod);
  return double(tc.baseMs) * double(periods) + double(tc.incMs) * double(moves);
}

enum class MoveTime { Book, Timed, Missing };

// The runner's comment: "book", or a score and depth followed by the time, "-0.31/14 0.212s".
MoveTime readMoveTime(const PgnMove& m, std::int64_t& ms) {
  if (!m.commented) return MoveTime::Missing;
  std::vector<std::string_view> ws = words(m.comment);
  if (ws.size() == 1 && ws[0] == "book") return MoveTime::Book;
  for (std::string_view w : ws)
    if (w.size() > 1 && w.back() == 's' && match::parseSeconds(std::string(w.substr(0, w.size() - 1)), ms))
      return MoveTime::Timed;
  return MoveTime::Missing;
}

// The side to move and the move number of the starting position.
void startOf(const PgnGame& g, Side& side, std::int64_t& number) {
  side = WhiteSide;
  number = 1;
  const std::string* fen = g.tag("FEN");
  if (!fen) return;
  std::vector<std::string_view> fields = words(*fen);
  if (fields.size() > 1 && fields[1] == "b") side = BlackSide;
  if (fields.size() > 5 && !fields[5].empty() && fields[5].size() <= 6 &&
      std::all_of(fields[5].begin(), fields[5].end(), [](char c) { return c >= '0' && c <= '9'; }))
    number = std::max<std::int64_t>(1, std::stoi(std::string(fields[5])));
}

Side timeLoser(const PgnGame& g) {
  const std::string* termination = g.tag("Termination");
  std::string reason = lowered(g.lastComment);
  bool onTime = (termination && lowered(*termination) == "time forfeit") ||
                reason.find("on time") != std::string::npos || reason.find("time forfeit") != std::string::npos;
  if (!onTime) return NoSide;
  const std::string* tagged = g.tag("Result");
  std::string result = tagged && *tagged != "*" ? *tagged : g.result;
  if (result == "1-0") return BlackSide;
  if (result == "0-1") return WhiteSide;
  return NoSide;   // a draw when the flag fell without mating material
}

EngineClock& engineNamed(ClockReport& r, const std::string& name) {
  auto [at, added] = r.engineIndex.try_emplace(name, r.engines.size());
  if (added) r.engines.push_back(EngineClock{name, {}, {}, {}, 0});
  return r.engines[at->second];
}

struct SideFigures {
  double spentMs = 0;
  std::int64_t moves = 0;
  std::array<std::vector<std::int64_t>, PhaseCount> moveMs;
  double leftMs = 0;                                   // the clock after the last move
  std::array<std::vector<double>, PhaseCount> leftAt;  // ... after moves 20, 40, 60, 80
};

// Charges a timed move to the side's clock: its time off, the increment on, a new period's base on.
void chargeMove(SideFigures& f, const TimeControl& tc, std::int64_t ms) {
  f.leftMs += double(tc.incMs) - double(ms);
  if (tc.movesPerPeriod > 0 && f.moves % tc.movesPerPeriod == 0) f.leftMs += double(tc.baseMs);
}

}  // namespace

int ClockReport::skippedGames() const { return std::accumulate(skipped.begin(), skipped.end(), 0); }

Figures figuresOf(std::vector<double> v) {
  Figures f;
  if (v.empty()) return f;
  std::sort(v.begin(), v.end());
  f.mean = std::accumulate(v.begin(), v.end(), 0.0) / double(v.size());
  std::size_t mid = v.size() / 2;
  f.median = v.size() % 2 ? v[mid] : (v[mid - 1] + v[mid]) / 2;
  return f;
}

void addGame(ClockReport& report, const PgnGame& g) {
  auto skip = [&](Skip why) { ++report.skipped[int(why)]; };
  if (g.broken) return skip(Skip::Unreadable);

  const std::string* sideTc[2] = {g.tag("WhiteTimeControl"), g.tag("BlackTimeControl")};
  TimeControl tc[2];
  for (int s : {WhiteSide, BlackSide})
    if (!readTimeControl(sideTc[s] ? sideTc[s] : g.tag("TimeControl"), tc[s])) return skip(Skip::NoTimeControl);

  Side side;
  std::int64_t number;
  startOf(g, side, number);
  SideFigures fig[2];
  for (int s : {WhiteSide, BlackSide}) fig[s].leftMs = double(tc[s].baseMs);
  for (const PgnMove& m : g.moves) {
    std::int64_t ms = 0;
    MoveTime t = readMoveTime(m, ms);
    if (t == MoveTime::Missing) return skip(Skip::MissingTime);
    if (t == MoveTime::Timed) {
      SideFigures& f = fig[side];
      f.spentMs += double(ms);
      ++f.moves;
      f.moveMs[std::min<std::int64_t>((number - 1) / PhaseLength, PhaseCount - 1)].push_back(ms);
      chargeMove(f, tc[side], ms);
    }
    if (tc[side].hasClock && number % PhaseLength == 0 && number / PhaseLength <= PhaseCount)
      fig[side].leftAt[number / PhaseLength - 1].push_back(fig[side].leftMs);
    if (side == BlackSide) ++number;
    side = side == WhiteSide ? BlackSide : WhiteSide;
  }

  Side loser = timeLoser(g);
  if (fig[WhiteSide].moves == 0 && fig[BlackSide].moves == 0 && loser == NoSide)
    return skip(Skip::NoTimedMove);

  ++report.games;
  const std::string* names[2] = {g.tag("White"), g.tag("Black")};
  for (int s : {WhiteSide, BlackSide}) {
    const SideFigures& f = fig[s];
    double had = timeAvailable(tc[s], f.moves);
    if (s != loser && (f.moves == 0 || had <= 0)) continue;   // it never used its clock
    EngineClock& e = engineNamed(report, names[s] ? *names[s] : "?");
    e.shares.push_back(s == loser ? 1.0 : f.spentMs / had);
    for (int p = 0; p < PhaseCount; ++p) {
      e.moveMs[p].insert(e.moveMs[p].end(), f.moveMs[p].begin(), f.moveMs[p].end());
      e.clockLeftMs[p].insert(e.clockLeftMs[p].end(), f.leftAt[p].begin(), f.leftAt[p].end());
    }
    if (s == loser) ++e.timeLosses;
  }
}

ClockReport readClockReport(std::string_view text) {
  ClockReader reader;
  reader.feed(text);
  reader.finish();
  return reader.report();
}

}  // namespace tavrin::clockuse
