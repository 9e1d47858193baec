// The fuzzer's judge of engine output: line forms, then moves replayed on the tool's board.
#include "tools/fuzz/output_check.h"

#include <algorithm>
#include <cstring>

#include "tools/match/rules.h"

namespace tavrin::fuzz {

namespace {

// The start-up greeting, line by line after its first line ("Tavrin <version> by <credit> ").
const char* const BannerLines[] = {
    "",
    "This version can play in reduced ELO mode. ",
    "To play in reduced ELO mode, use the UCI_elo and UCI_LimitStrength commands. ",
    "For example: ",
    "setoption name UCI_LimitStrength value true ",
    "setoption name UCI_Elo value 1600 ",
    "to play with Tavrin limited at 1600 elo. ",
};

bool isBannerLine(const std::string& line) {
  if (line.rfind("Tavrin ", 0) == 0 && line.find(" by ") != std::string::npos) return true;
  for (const char* b : BannerLines)
    if (line == b) return true;
  return false;
}

bool isInteger(const std::string& w, bool allowNegative) {
  std::size_t i = 0;
  if (allowNegative && w.size() > 1 && w[0] == '-') i = 1;
  if (i == w.size() || w.size() - i > 19) return false;
  for (; i < w.size(); ++i)
    if (w[i] < '0' || w[i] > '9') return false;
  return true;
}

OutputLine malformed(const std::string& why) {
  OutputLine l;
  l.problem = why;
  return l;
}

// The info keys followed by one count.
bool isCountKey(const std::string& k) {
  static const char* const Keys[] = {"depth", "seldepth", "time", "nodes", "nps", "multipv",
                                     "currmovenumber", "hashfull", "tbhits", "cpuload"};
  for (const char* key : Keys)
    if (k == key) return true;
  return false;
}

OutputLine readInfo(const std::vector<std::string>& w) {
  OutputLine l;
  if (w.size() >= 2 && w[1] == "string") {
    l.kind = LineKind::InfoString;
    return l;
  }
  if (w.size() < 3) return malformed("an info line without fields");
  std::vector<std::string> seen;
  for (std::size_t i = 1; i < w.size();) {
    const std::string& key = w[i];
    if (std::find(seen.begin(), seen.end(), key) != seen.end()) return malformed("info field repeated");
    seen.push_back(key);
    if (isCountKey(key)) {
      if (i + 1 >= w.size() || !isInteger(w[i + 1], false)) return malformed("info field without a count");
      i += 2;
    } else if (key == "score") {
      if (i + 2 >= w.size() || (w[i + 1] != "cp" && w[i + 1] != "mate") || !isInteger(w[i + 2], true))
        return malformed("bad info score");
      i += 3;
      if (i < w.size() && (w[i] == "lowerbound" || w[i] == "upperbound")) ++i;
    } else if (key == "currmove") {
      if (i + 1 >= w.size() || !isMoveText(w[i + 1])) return malformed("bad info currmove");
      l.currmove = w[i + 1];
      i += 2;
    } else if (key == "pv") {
      if (i + 1 >= w.size()) return malformed("an empty pv");
      for (++i; i < w.size(); ++i) {
        if (!isMoveText(w[i])) return malformed("pv word that is not a move");
        l.pv.push_back(w[i]);
      }
    } else {
      return malformed("unknown info field");
    }
  }
  l.kind = LineKind::Info;
  return l;
}

OutputLine readBestMove(const std::vector<std::string>& w) {
  OutputLine l;
  if (w.size() != 2 && w.size() != 4) return malformed("bestmove line of the wrong length");
  if (w[1] != "0000" && !isMoveText(w[1])) return malformed("bestmove that is not a move");
  if (w.size() == 4) {
    if (w[1] == "0000" || w[2] != "ponder") return malformed("bad bestmove ponder part");
    if (w[3] != "NULL" && !isMoveText(w[3])) return malformed("ponder move that is not a move");
    l.ponder = w[3];
  }
  l.kind = LineKind::BestMove;
  l.best = w[1];
  return l;
}

}  // namespace

bool isMoveText(const std::string& w) {
  if (w.size() != 4 && w.size() != 5) return false;
  auto file = [](char c) { return c >= 'a' && c <= 'h'; };
  auto rank = [](char c) { return c >= '1' && c <= '8'; };
  if (!file(w[0]) || !rank(w[1]) || !file(w[2]) || !rank(w[3])) return false;
  if (w[0] == w[2] && w[1] == w[3]) return false;
  return w.size() == 4 || std::strchr("nbrq", w[4]) != nullptr;
}

OutputLine readOutputLine(const std::string& line, bool inBanner) {
  if (inBanner && isBannerLine(line)) {
    OutputLine l;
    l.kind = LineKind::Banner;
    return l;
  }
  for (char c : line)
    if (c < 32 || c > 126) return malformed("a control or non-ASCII character");
  // Words are separated by single blanks. Blanks may end the line: a PV cut after a whole move
  // keeps that move's blank before the one of the line's format.
  std::string text = line;
  while (!text.empty() && text.back() == ' ') text.pop_back();
  if (text.empty()) return malformed("an empty line");
  std::vector<std::string> w;
  std::size_t at = 0;
  for (;;) {
    std::size_t blank = text.find(' ', at);
    w.push_back(text.substr(at, blank == std::string::npos ? std::string::npos : blank - at));
    if (w.back().empty()) return malformed("a doubled or leading blank");
    if (blank == std::string::npos) break;
    at = blank + 1;
  }

  OutputLine l;
  if (w[0] == "info") return readInfo(w);
  if (w[0] == "bestmove") return readBestMove(w);
  if (w.size() == 1 && w[0] == "readyok") l.kind = LineKind::ReadyOk;
  else if (w.size() == 1 && w[0] == "uciok") l.kind = LineKind::UciOk;
  else if (w[0] == "id" && w.size() >= 3 && (w[1] == "name" || w[1] == "author")) l.kind = LineKind::Id;
  else if (w[0] == "option" && w.size() >= 5 && w[1] == "name" &&
           std::find(w.begin() + 3, w.end(), "type") != w.end())
    l.kind = LineKind::Option;
  else
    return malformed("not a reply of the protocol");
  return l;
}

SearchRoot rootOf(const std::string& fen, const std::vector<std::string>& searchMoves) {
  SearchRoot root;
  match::GameBoard board;
  if (!board.setFen(fen)) return root;
  root.known = true;
  root.fen = fen;
  for (Move m : board.legalMoves()) root.legal.push_back(match::GameBoard::uci(m));
  for (const std::string& m : searchMoves)
    if (std::find(root.legal.begin(), root.legal.end(), m) != root.legal.end()) root.searchMoves.push_back(m);
  return root;
}

std::string checkMoves(const OutputLine& line, const SearchRoot& root) {
  if (!root.known) return {};
  auto legal = [&](const std::string& m) { return std::find(root.legal.begin(), root.legal.end(), m) != root.legal.end(); };
  auto allowed = [&](const std::string& m) {
    return root.searchMoves.empty() || std::find(root.searchMoves.begin(), root.searchMoves.end(), m) != root.searchMoves.end();
  };

  if (line.kind == LineKind::BestMove) {
    if (root.legal.empty())
      return line.best == "0000" ? std::string() : "bestmove in a position without legal moves: " + line.best;
    if (line.best == "0000") return "bestmove 0000 in a position with legal moves";
    if (!legal(line.best)) return "illegal bestmove: " + line.best;
    if (!allowed(line.best)) return "bestmove outside the searchmoves: " + line.best;
    if (line.ponder.empty() || line.ponder == "NULL") return {};
    match::GameBoard board;
    board.setFen(root.fen);
    board.play(board.parseUci(line.best));
    if (board.parseUci(line.ponder) == NoMove) return "illegal ponder move: " + line.ponder + " after " + line.best;
    return {};
  }
  if (line.kind != LineKind::Info) return {};
  if (!line.currmove.empty()) {
    if (!legal(line.currmove)) return "illegal currmove: " + line.currmove;
    if (!allowed(line.currmove)) return "currmove outside the searchmoves: " + line.currmove;
  }
  if (line.pv.empty()) return {};
  if (!allowed(line.pv[0]) && legal(line.pv[0])) return "pv outside the searchmoves: " + line.pv[0];
  match::GameBoard board;
  board.setFen(root.fen);
  for (std::size_t i = 0; i < line.pv.size(); ++i) {
    const Move m = board.parseUci(line.pv[i]);
    if (m == NoMove) return "illegal pv move: " + line.pv[i] + " (move " + std::to_string(i + 1) + " of the pv)";
    board.play(m);
  }
  return {};
}

}  // namespace tavrin::fuzz
