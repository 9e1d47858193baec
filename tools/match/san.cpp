// Standard algebraic notation: writing a move and reading one back, on the game board.
#include <cctype>

#include "board/legality.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "tools/match/rules.h"

namespace tavrin::match {

namespace {

// "NBRQK" letter of a piece code, or 0 for a pawn. Both bishop codes are 'B'.
char sanLetter(int piece) {
  switch (kindOf(piece)) {
    case Knight: return 'N';
    case BishopLight:
    case BishopDark: return 'B';
    case Rook: return 'R';
    case Queen: return 'Q';
    case King: return 'K';
    default: return 0;
  }
}

std::string stripDecorations(std::string s) {
  while (!s.empty() && (s.back() == '+' || s.back() == '#' || s.back() == '!' || s.back() == '?'))
    s.pop_back();
  for (char& c : s)
    if (c == '0') c = 'O';   // castling written with zeros
  return s;
}

std::string withoutCaptureMarks(const std::string& s) {
  std::string out;
  for (char c : s)
    if (c != 'x' && c != '=' && c != ':') out += c;
  return out;
}

}  // namespace

std::string GameBoard::san(Move m) {
  const Position& p = *pos_;
  int from = moveFrom(m), to = moveTo(m);
  int piece = p.board[from];
  std::string s;
  if (moveKind(m) == CastlingMove) {
    s = fileOf(to) == 6 ? "O-O" : "O-O-O";
  } else {
    char letter = sanLetter(piece);
    bool capture = p.board[to] != NoPiece || moveKind(m) == EnPassantMove;
    if (letter) {
      s += letter;
      // Disambiguate against the other pieces of the same kind that can reach the square.
      bool clash = false, sameFile = false, sameRank = false;
      for (Move other : legalMoves()) {
        int of = moveFrom(other);
        if (other == m || moveTo(other) != to || of == from) continue;
        if (sanLetter(p.board[of]) != letter) continue;
        clash = true;
        sameFile |= fileOf(of) == fileOf(from);
        sameRank |= rankOf(of) == rankOf(from);
      }
      if (clash) {
        if (!sameFile) s += char('a' + fileOf(from));
        else if (!sameRank) s += char('1' + rankOf(from));
        else {
          s += char('a' + fileOf(from));
          s += char('1' + rankOf(from));
        }
      }
    } else if (capture) {
      s += char('a' + fileOf(from));
    }
    if (capture) s += 'x';
    s += char('a' + fileOf(to));
    s += char('1' + rankOf(to));
    if (isPromotion(m)) {
      s += '=';
      s += "NBRQ"[moveKind(m) - PromoteKnight];
    }
  }
  makeRootMove(*pos_, m);
  if (inCheck()) s += legalMoves().empty() ? '#' : '+';
  unmakeMove(*pos_, m);
  pos_->ply = 0;
  return s;
}

Move GameBoard::parseSan(const std::string& text) {
  std::string want = stripDecorations(text);
  if (want.empty()) return NoMove;
  std::vector<Move> moves = legalMoves();
  // First the exact form, then a lenient one without capture and promotion marks.
  for (int lenient = 0; lenient < 2; ++lenient) {
    std::string target = lenient ? withoutCaptureMarks(want) : want;
    Move found = NoMove;
    int matches = 0;
    for (Move m : moves) {
      std::string s = stripDecorations(san(m));
      if (lenient) s = withoutCaptureMarks(s);
      if (s == target) {
        found = m;
        ++matches;
      }
    }
    if (matches == 1) return found;
  }
  // Over-specified disambiguation ("Ngf3" where "Nf3" suffices) or a lower-case promotion.
  std::string t = withoutCaptureMarks(want);
  if (t.size() >= 2 && std::islower(static_cast<unsigned char>(t.back())) &&
      std::isdigit(static_cast<unsigned char>(t[t.size() - 2])))
    t.back() = char(std::toupper(static_cast<unsigned char>(t.back())));
  Move found = NoMove;
  int matches = 0;
  for (Move m : moves) {
    int from = moveFrom(m), to = moveTo(m);
    char letter = sanLetter(pos_->board[from]);
    std::string u = t;
    char promo = 0;
    if (!u.empty() && std::string("NBRQ").find(u.back()) != std::string::npos &&
        u.size() >= 3 && std::isdigit(static_cast<unsigned char>(u[u.size() - 2]))) {
      promo = u.back();
      u.pop_back();
    }
    if (u.size() < 2) continue;
    std::string dest = u.substr(u.size() - 2);
    if (dest[0] != 'a' + fileOf(to) || dest[1] != '1' + rankOf(to)) continue;
    std::string head = u.substr(0, u.size() - 2);
    char headLetter = !head.empty() && std::isupper(static_cast<unsigned char>(head[0])) ? head[0] : 0;
    if (headLetter) head.erase(0, 1);
    if (headLetter != letter) continue;
    if (isPromotion(m) ? promo != "NBRQ"[moveKind(m) - PromoteKnight] : promo != 0) continue;
    bool ok = head.size() <= 2;
    for (char c : head) {
      if (c >= 'a' && c <= 'h') ok &= c == 'a' + fileOf(from);
      else if (c >= '1' && c <= '8') ok &= c == '1' + rankOf(from);
      else ok = false;
    }
    if (ok) {
      found = m;
      ++matches;
    }
  }
  return matches == 1 ? found : NoMove;
}

}  // namespace tavrin::match
