// PGN reading: lines are gathered from the pieces fed, tag lines open a game and the move text
// is cut into tokens; comments may span lines and variations are skipped.
#include "tools/clock/pgn_reader.h"

namespace tavrin::clockuse {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool endsToken(char c) { return isBlank(c) || c == '{' || c == '}' || c == '(' || c == ')' || c == ';'; }

std::string_view trimmedLeft(std::string_view s) {
  std::size_t i = 0;
  while (i < s.size() && isBlank(s[i])) ++i;
  return s.substr(i);
}

bool isResult(std::string_view w) { return w == "1-0" || w == "0-1" || w == "1/2-1/2" || w == "*"; }

}  // namespace

const std::string* PgnGame::tag(std::string_view name) const {
  for (const auto& [key, value] : tags)
    if (key == name) return &value;
  return nullptr;
}

void PgnReader::feed(std::string_view text) {
  while (!text.empty()) {
    std::size_t nl = text.find('\n');
    std::string_view part = text.substr(0, nl);
    if (!overlong_) {
      std::size_t room = MaxPgnLine - pending_.size();
      if (part.size() > room) {
        pending_.append(part.substr(0, room));
        overlong_ = true;
      } else {
        pending_.append(part);
      }
    }
    if (nl == std::string_view::npos) return;
    line(pending_, overlong_);
    pending_.clear();
    overlong_ = false;
    text.remove_prefix(nl + 1);
  }
}

void PgnReader::finish() {
  if (!pending_.empty() || overlong_) line(pending_, overlong_);
  pending_.clear();
  overlong_ = false;
  emit();
}

void PgnReader::line(std::string_view text, bool overlong) {
  std::string_view t = trimmedLeft(text);
  bool tags = !inComment_ && !t.empty() && t[0] == '[';
  // A tag section after move text (or inside an unclosed variation) starts the next game.
  if (tags && (inMoves_ || variation_ > 0)) emit();
  if (overlong) {
    // What the line held cannot be trusted, nor can the comment or variation state after it.
    game_.broken = true;
    started_ = true;
    return;
  }
  if (tags) tagLine(t);
  else if (!inComment_ && !text.empty() && text[0] == '%') return;   // escaped line
  else moveText(text);
}

void PgnReader::tagLine(std::string_view t) {
  started_ = true;
  // [Name "value"], possibly several on a line; a malformed one ends the line.
  while (!t.empty() && t[0] == '[') {
    std::size_t i = 1;
    while (i < t.size() && !isBlank(t[i]) && t[i] != '"' && t[i] != ']') ++i;
    std::string name(t.substr(1, i - 1));
    while (i < t.size() && isBlank(t[i])) ++i;
    if (name.empty() || i >= t.size() || t[i] != '"') return;
    std::string value;
    for (++i; i < t.size() && t[i] != '"'; ++i) {
      if (t[i] == '\\' && i + 1 < t.size()) ++i;
      value += t[i];
    }
    if (i >= t.size()) return;
    ++i;
    while (i < t.size() && isBlank(t[i])) ++i;
    if (i >= t.size() || t[i] != ']') return;
    game_.tags.emplace_back(std::move(name), std::move(value));
    t = trimmedLeft(t.substr(i + 1));
  }
}

void PgnReader::moveText(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    if (inComment_) {
      std::size_t close = text.find('}', i);
      std::string_view part = text.substr(i, close == std::string_view::npos ? text.npos : close - i);
      if (comment_.size() < MaxPgnComment) comment_.append(part.substr(0, MaxPgnComment - comment_.size()));
      if (close == std::string_view::npos) {
        comment_ += ' ';   // the comment goes on on the next line
        return;
      }
      commentEnds();
      i = close + 1;
      continue;
    }
    char c = text[i];
    if (isBlank(c) || c == '}') {
      ++i;
    } else if (c == '{') {
      inMoves_ = inComment_ = true;
      comment_.clear();
      ++i;
    } else if (c == ';') {
      inMoves_ = true;
      comment_.assign(text.substr(i + 1, MaxPgnComment));
      commentEnds();
      return;
    } else if (c == '(') {
      ++variation_;
      ++i;
    } else if (c == ')') {
      if (variation_ > 0) --variation_;
      ++i;
    } else {
      std::size_t end = i;
      while (end < text.size() && !endsToken(text[end])) ++end;
      token(text.substr(i, end - i));
      i = end;
    }
  }
}

void PgnReader::commentEnds() {
  inComment_ = false;
  if (variation_ > 0) return;
  if (awaitingComment_) {
    game_.moves.back().comment = comment_;
    game_.moves.back().commented = true;
    awaitingComment_ = false;
  }
  game_.lastComment = comment_;
}

void PgnReader::token(std::string_view w) {
  if (variation_ > 0) return;
  inMoves_ = true;
  if (isResult(w)) {
    game_.result = std::string(w);
    started_ = true;
    return;
  }
  if (w[0] == '$') return;   // an annotation glyph
  // A move number ("12." or "12...") may stand alone or be glued to its move ("12.e4").
  std::size_t digits = 0;
  while (digits < w.size() && isDigit(w[digits])) ++digits;
  if (digits > 0) {
    std::size_t dots = digits;
    while (dots < w.size() && w[dots] == '.') ++dots;
    if (dots == digits) return;   // a bare number is no move
    w.remove_prefix(dots);
  }
  while (!w.empty() && w[0] == '.') w.remove_prefix(1);
  if (w.empty()) return;
  // Moves after a result without new tags belong to the next game.
  if (!game_.result.empty()) {
    emit();
    inMoves_ = true;
  }
  game_.moves.push_back(PgnMove{std::string(w), {}, false});
  awaitingComment_ = true;
  started_ = true;
}

void PgnReader::emit() {
  if (inComment_ || variation_ > 0) game_.broken = true;
  if (started_) sink_(game_);
  game_ = PgnGame{};
  started_ = inMoves_ = inComment_ = awaitingComment_ = false;
  comment_.clear();
  variation_ = 0;
}

}  // namespace tavrin::clockuse
