// Opening readers (EPD and PGN) and the order of use.
#include "tools/match/openings.h"

#include <fstream>
#include <numeric>
#include <random>
#include <sstream>

namespace tavrin::match {

namespace {

bool isNumber(const std::string& s) {
  if (s.empty() || s.size() > 6) return false;
  for (char c : s)
    if (c < '0' || c > '9') return false;
  return true;
}

}  // namespace

std::vector<Opening> parseEpd(const std::string& text, int& skipped) {
  std::vector<Opening> out;
  skipped = 0;
  GameBoard board;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    std::istringstream fields(line);
    std::vector<std::string> f;
    for (std::string w; f.size() < 6 && fields >> w;) f.push_back(w);
    if (f.empty() || f[0][0] == '#') continue;
    if (f.size() < 4) {
      ++skipped;
      continue;
    }
    // Four position fields, then either the two counters or EPD operations.
    std::string fen = f[0] + " " + f[1] + " " + f[2] + " " + f[3];
    if (f.size() >= 6 && isNumber(f[4]) && isNumber(f[5])) fen += " " + f[4] + " " + f[5];
    else fen += " 0 1";
    if (!board.setFen(fen)) {
      ++skipped;
      continue;
    }
    Opening o;
    o.fen = board.fen();
    out.push_back(o);
  }
  return out;
}

std::vector<Opening> parsePgn(const std::string& text, int plies, int& skipped) {
  std::vector<Opening> out;
  skipped = 0;
  GameBoard board;
  Opening current;
  bool inGame = false, broken = false;
  std::string fenTag;

  auto flush = [&] {
    if (inGame && !current.moves.empty()) out.push_back(current);
    else if (inGame && fenTag.size()) out.push_back(current);
    if (broken) ++skipped;
    current = Opening();
    inGame = broken = false;
    fenTag.clear();
    board.setFen(StartFen);
  };
  auto begin = [&] {
    if (inGame) return;
    inGame = true;
    if (!fenTag.empty()) {
      if (board.setFen(fenTag)) current.fen = board.fen();
      else broken = true;
    } else {
      board.setFen(StartFen);
    }
  };

  std::size_t i = 0, n = text.size();
  int depth = 0;   // nesting of variations
  while (i < n) {
    char c = text[i];
    if (c == '{') {
      std::size_t e = text.find('}', i);
      i = e == std::string::npos ? n : e + 1;
    } else if (c == ';') {
      std::size_t e = text.find('\n', i);
      i = e == std::string::npos ? n : e + 1;
    } else if (c == '[' && depth == 0) {
      std::size_t e = text.find(']', i);
      std::string t = text.substr(i + 1, (e == std::string::npos ? n : e) - i - 1);
      i = e == std::string::npos ? n : e + 1;
      if (inGame) flush();   // tags of the next game
      std::istringstream tin(t);
      std::string name;
      tin >> name;
      std::size_t q1 = t.find('"'), q2 = t.rfind('"');
      if (name == "FEN" && q1 != std::string::npos && q2 > q1) fenTag = t.substr(q1 + 1, q2 - q1 - 1);
    } else if (c == '(') {
      ++depth;
      ++i;
    } else if (c == ')') {
      if (depth) --depth;
      ++i;
    } else if (c == ' ' || c == '\n' || c == '\r' || c == '\t') {
      ++i;
    } else {
      std::size_t e = i;
      while (e < n && std::string(" \n\r\t{}();[").find(text[e]) == std::string::npos) ++e;
      if (e == i) e = i + 1;
      std::string tok = text.substr(i, e - i);
      i = e;
      if (depth) continue;
      if (tok == "1-0" || tok == "0-1" || tok == "1/2-1/2" || tok == "*") {
        begin();
        flush();
        continue;
      }
      if (tok[0] == '$') continue;
      // Move numbers: "12." or "12..." possibly glued to the move ("12.e4").
      std::size_t k = 0;
      while (k < tok.size() && tok[k] >= '0' && tok[k] <= '9') ++k;
      if (k > 0 && k < tok.size() && tok[k] == '.') {
        while (k < tok.size() && tok[k] == '.') ++k;
        tok = tok.substr(k);
      } else if (k == tok.size()) {
        continue;
      }
      if (tok.empty()) continue;
      begin();
      if (broken || (plies > 0 && int(current.moves.size()) >= plies)) continue;
      Move m = board.parseSan(tok);
      if (m == NoMove) {
        broken = true;
        continue;
      }
      current.moves.push_back(GameBoard::uci(m));
      board.play(m);
    }
  }
  if (inGame) flush();
  return out;
}

bool readOpenings(const OpeningSettings& s, std::vector<Opening>& out, std::string& message) {
  std::ifstream in(s.file, std::ios::binary);
  if (!in) {
    message = "cannot read " + s.file;
    return false;
  }
  std::stringstream buffer;
  buffer << in.rdbuf();
  std::string format = s.format;
  if (format.empty()) {
    std::string f = s.file;
    format = f.size() >= 4 && f.compare(f.size() - 4, 4, ".pgn") == 0 ? "pgn" : "epd";
  }
  int skipped = 0;
  if (format == "pgn") out = parsePgn(buffer.str(), s.plies, skipped);
  else if (format == "epd") out = parseEpd(buffer.str(), skipped);
  else {
    message = "unknown opening format " + format;
    return false;
  }
  message = std::to_string(out.size()) + " openings read from " + s.file;
  if (skipped) message += ", " + std::to_string(skipped) + " skipped as invalid";
  return !out.empty();
}

std::vector<std::size_t> openingOrder(std::size_t count, bool random, std::uint64_t seed) {
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t(0));
  if (random) {
    // Fisher-Yates with a fixed generator, so a seed means the same order everywhere.
    std::mt19937_64 rng(seed);
    for (std::size_t i = count; i > 1; --i) {
      std::size_t j = std::size_t(rng() % i);
      std::swap(order[i - 1], order[j]);
    }
  }
  return order;
}

}  // namespace tavrin::match
