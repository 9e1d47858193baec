// PGN writer: the tag pairs, then the moves with their evaluation comments, wrapped at 79.
#include "tools/match/pgn.h"

#include <cstdio>
#include <cstdlib>

namespace tavrin::match {

namespace {

std::string escaped(const std::string& s) {
  std::string out;
  for (char c : s) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out;
}

std::string tag(const char* name, const std::string& value) {
  return std::string("[") + name + " \"" + escaped(value) + "\"]\n";
}

class Wrapper {
 public:
  void add(const std::string& token) {
    if (!line_.empty() && line_.size() + 1 + token.size() > 79) {
      text_ += line_ + "\n";
      line_.clear();
    }
    if (!line_.empty()) line_ += ' ';
    line_ += token;
  }
  std::string finish() { return text_ + line_ + "\n"; }

 private:
  std::string text_, line_;
};

}  // namespace

std::string moveComment(const MoveRecord& m) {
  if (m.book) return "book";
  char buf[64];
  std::string score;
  if (!m.hasScore) score = "-";
  else if (m.mate) score = (m.mate > 0 ? "+M" : "-M") + std::to_string(std::abs(m.mate));
  else {
    std::snprintf(buf, sizeof buf, "%+.2f", m.scoreCp / 100.0);
    score = buf;
  }
  std::snprintf(buf, sizeof buf, "/%d %.3fs", m.depth, m.timeMs / 1000.0);
  return score + buf;
}

std::string formatPgn(const GameRecord& g, const PgnContext& ctx) {
  std::string out;
  const char* result = resultText(g.result);
  out += tag("Event", ctx.event);
  out += tag("Site", ctx.site);
  out += tag("Date", g.date.empty() ? "????.??.??" : g.date);
  out += tag("Round", g.round.empty() ? "?" : g.round);
  out += tag("White", g.white);
  out += tag("Black", g.black);
  out += tag("Result", result);
  if (!g.startFen.empty() && g.startFen != StartFen) {
    out += tag("SetUp", "1");
    out += tag("FEN", g.startFen);
  }
  if (g.whiteTc == g.blackTc) {
    out += tag("TimeControl", g.whiteTc);
  } else {
    out += tag("WhiteTimeControl", g.whiteTc);
    out += tag("BlackTimeControl", g.blackTc);
  }
  out += tag("Termination", g.termination.empty() ? "unterminated" : g.termination);
  out += tag("PlyCount", std::to_string(g.moves.size()));
  out += "\n";

  Wrapper w;
  int number = g.firstMoveNumber;
  Color side = g.firstMover;
  bool needNumber = true;
  for (const MoveRecord& m : g.moves) {
    // A move number stays on the line of its move.
    if (side == White) w.add(std::to_string(number) + ". " + m.san);
    else if (needNumber) w.add(std::to_string(number) + "... " + m.san);
    else w.add(m.san);
    w.add(std::string(1, '{').append(moveComment(m)).append(1, '}'));
    needNumber = true;   // after a comment a black move carries its number again
    if (side == Black) ++number;
    side = ~side;
  }
  if (!g.reason.empty()) w.add("{" + g.reason + "}");
  w.add(result);
  return out + w.finish() + "\n";
}

}  // namespace tavrin::match
