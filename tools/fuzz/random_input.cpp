// Random material for fuzz sessions: generator, random games and set-ups, broken input.
#include "tools/fuzz/random_input.h"

#include <algorithm>
#include <cstring>

namespace tavrin::fuzz {

namespace {

// SplitMix64 step: a fixed, well-mixed sequence from any 64-bit state.
std::uint64_t mix(std::uint64_t& state) {
  std::uint64_t z = (state += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}

// Words of the go command that a searchmoves list must not contain.
const char* const GoKeywords[] = {"depth", "nodes", "movetime", "wtime", "btime", "winc", "binc",
                                  "movestogo", "infinite", "ponder", "searchmoves", "mate"};

std::vector<std::string> legalTexts(match::GameBoard& board) {
  std::vector<std::string> texts;
  for (Move m : board.legalMoves()) texts.push_back(match::GameBoard::uci(m));
  return texts;
}

std::string squareText(int sq) { return {char('a' + sq % 8), char('1' + sq / 8)}; }

// The FEN of a board of piece letters (index a1 = 0), side to move, no rights, no en passant.
std::string fenOf(const char (&board)[64], bool whiteToMove) {
  std::string s;
  for (int rank = 7; rank >= 0; --rank) {
    int empty = 0;
    for (int file = 0; file < 8; ++file) {
      const char c = board[rank * 8 + file];
      if (c == 0) {
        ++empty;
        continue;
      }
      if (empty) s += char('0' + empty);
      empty = 0;
      s += c;
    }
    if (empty) s += char('0' + empty);
    if (rank) s += '/';
  }
  return s + (whiteToMove ? " w - - 0 1" : " b - - 0 1");
}

// Places the two kings and the given men on empty squares; pawns keep off the back ranks and
// stand one step from promotion half of the time.
std::string placeMen(Rng& rng, const std::string& men, bool whiteToMove) {
  char board[64] = {};
  auto place = [&](char piece) {
    for (int tries = 0; tries < 100; ++tries) {
      int sq = int(rng.range(0, 63));
      if (piece == 'P' || piece == 'p') {
        int rank = rng.chance(0.5) ? (piece == 'P' ? 6 : 1) : int(rng.range(1, 6));
        sq = rank * 8 + int(rng.range(0, 7));
      }
      if (board[sq] == 0) {
        board[sq] = piece;
        return;
      }
    }
  };
  place('K');
  place('k');
  for (char c : men) place(c);
  return fenOf(board, whiteToMove);
}

}  // namespace

std::uint64_t Rng::next() { return mix(state_); }

std::int64_t Rng::range(std::int64_t lo, std::int64_t hi) {
  if (hi <= lo) return lo;
  return lo + std::int64_t(next() % std::uint64_t(hi - lo + 1));
}

bool Rng::chance(double p) { return double(next() >> 11) * 0x1.0p-53 < p; }

std::uint64_t sessionSeed(std::uint64_t seed, std::uint64_t session) {
  std::uint64_t s = seed;
  const std::uint64_t a = mix(s);
  s = a ^ session;
  return mix(s);
}

std::vector<std::string> playRandomMoves(Rng& rng, match::GameBoard& board, int plies, bool seekMate) {
  std::vector<std::string> played;
  for (int i = 0; i < plies; ++i) {
    std::vector<Move> moves = board.legalMoves();
    if (moves.empty()) break;
    Move chosen = moves[std::size_t(rng.range(0, std::int64_t(moves.size()) - 1))];
    if (seekMate) {
      // A mating move, looked for on a second board so that this one is not disturbed.
      match::GameBoard probe;
      const std::string here = board.fen();
      for (Move m : moves) {
        probe.setFen(here);
        probe.play(m);
        if (probe.legalMoves().empty() && probe.inCheck()) {
          chosen = m;
          break;
        }
      }
    }
    played.push_back(match::GameBoard::uci(chosen));
    board.play(chosen);
  }
  return played;
}

std::string randomSetupFen(Rng& rng) {
  static const std::string Men = "PPPPppppNnBbRrQq";
  match::GameBoard board;
  for (;;) {
    std::string men;
    for (int n = int(rng.range(0, 7)); n > 0; --n) men += Men[std::size_t(rng.range(0, std::int64_t(Men.size()) - 1))];
    const std::string fen = placeMen(rng, men, rng.chance(0.5));
    if (board.setFen(fen)) return fen;
  }
}

std::string terminalFen(Rng& rng) {
  // One or two attackers against a lone king is where mates and stalemates are found quickly.
  static const std::vector<std::string> Attackers = {"Q", "R", "QR", "RR", "QB", "QN", "RB", "P", "QP"};
  match::GameBoard board;
  for (;;) {
    const bool whiteToMove = rng.chance(0.5);
    std::string men = rng.pick(Attackers);
    if (whiteToMove)   // the side to move is the one with the lone king
      for (char& c : men) c = char(c - 'A' + 'a');
    const std::string fen = placeMen(rng, men, whiteToMove);
    if (board.setFen(fen) && board.legalMoves().empty()) return fen;
  }
}

std::string sideNotToMoveInCheckFen(match::GameBoard& board) {
  if (!board.inCheck()) return {};
  std::string fen = board.fen();
  // Fields: placement, side, castling, en passant, counters.
  const std::size_t side = fen.find(' ') + 1;
  fen[side] = fen[side] == 'w' ? 'b' : 'w';
  const std::size_t ep = fen.find(' ', fen.find(' ', side + 2) + 1) + 1;
  const std::size_t epEnd = fen.find(' ', ep);
  return fen.substr(0, ep) + "-" + fen.substr(epEnd);
}

std::string brokenFen(Rng& rng, const std::string& fen) {
  static const std::vector<std::string> Inserts = {
      "p", "P", "k", "K", "Q", "q", "9", "0", "8", "/", "/8", " ", "x", "-", "pppppppppp", "QQQQQQQQ", "KK", "//"};
  static const std::vector<std::string> Counters = {"-1", "-99999999999", "99999999999999999999", "abc", "255",
                                                    "256", "4294967297", "", "0 0 0"};
  static const std::vector<std::string> Castles = {"KQkqKQkq", "HAha", "qkQK", "K-", "kqKQ", "X", "KQkq-"};
  static const std::vector<std::string> EnPassants = {"z9", "e9", "a0", "h3", "e6", "i6", "-5", "e", "a1"};
  std::string s = fen;
  for (int n = int(rng.range(1, 3)); n > 0; --n) {
    std::vector<std::string> f;
    std::size_t at = 0;
    while (at <= s.size()) {
      std::size_t blank = s.find(' ', at);
      if (blank == std::string::npos) blank = s.size();
      f.push_back(s.substr(at, blank - at));
      at = blank + 1;
    }
    const std::size_t pos = s.empty() ? 0 : std::size_t(rng.range(0, std::int64_t(s.size()) - 1));
    bool fieldsEdited = false;
    switch (rng.range(0, 9)) {
      case 0: if (!s.empty()) s.erase(pos, 1); break;
      case 1: s.insert(pos, rng.pick(Inserts)); break;
      case 2: if (!s.empty()) s[pos] = "pnbrqkPNBRQK123456789/ -wbx"[rng.range(0, 26)]; break;
      case 3: s = s.substr(0, std::size_t(rng.range(0, std::int64_t(s.size())))); break;
      case 4: if (f.size() > 1) f[1] = rng.chance(0.5) ? "x" : "W"; fieldsEdited = true; break;
      case 5: if (f.size() > 2) f[2] = rng.pick(Castles); fieldsEdited = true; break;
      case 6: if (f.size() > 3) f[3] = rng.pick(EnPassants); fieldsEdited = true; break;
      case 7: if (f.size() > 4) f[4] = rng.pick(Counters); fieldsEdited = true; break;
      case 8: {   // a king removed or a second one added
        const std::size_t k = s.find(rng.chance(0.5) ? 'k' : 'K');
        if (k != std::string::npos && k < s.find(' ')) s[k] = rng.chance(0.5) ? '1' : 'Q';
        else s.insert(0, "K");
        break;
      }
      default: f.resize(std::size_t(rng.range(1, std::int64_t(f.size())))); fieldsEdited = true; break;
    }
    if (fieldsEdited) {
      std::string joined;
      for (std::size_t i = 0; i < f.size(); ++i) joined += (i ? " " : "") + f[i];
      s = joined;
    }
  }
  return s;
}

std::string junkWord(Rng& rng, match::GameBoard& board) {
  static const char Chars[] = "abcdefgh12345678xyz09-+=NBRQK";
  const std::vector<std::string> legal = legalTexts(board);
  for (;;) {
    std::string w;
    for (int n = int(rng.range(1, 8)); n > 0; --n) w += Chars[rng.range(0, std::int64_t(sizeof Chars) - 2)];
    bool bad = false;
    for (const char* k : GoKeywords) bad |= w == k;
    if (w.size() >= 4)
      for (const std::string& m : legal) bad |= w.compare(0, 4, m, 0, 4) == 0;
    if (!bad) return w;
  }
}

std::string illegalMoveText(Rng& rng, match::GameBoard& board) {
  const std::vector<std::string> legal = legalTexts(board);
  for (;;) {
    std::string w = squareText(int(rng.range(0, 63))) + squareText(int(rng.range(0, 63)));
    if (rng.chance(0.2)) w += "nbrq"[rng.range(0, 3)];
    bool taken = false;
    for (const std::string& m : legal) taken |= w.compare(0, 4, m, 0, 4) == 0;
    if (!taken) return w;
  }
}

std::string junkLine(Rng& rng, std::size_t length) {
  // No letter that begins a command: a long line split by the engine's reader must not turn
  // into a command in its second piece either.
  static const char First[] = "xyzabc0123456789#!-=+.";
  static const char Rest[] = "xyzabcefhjklmnotvw0123456789 .-=+";
  static const std::vector<std::string> Phrases = {
      "hello world", "xyzzy", "bestmove e2e4", "info depth 5", "readyok", "uciok", "0000", "e2e4",
      "NULL", "12345", "new", "force", "white", "black", "level 40 5 0", "  ", "=", "!!", "#"};
  if (length == 0) return rng.pick(Phrases);
  std::string s(1, First[rng.range(0, std::int64_t(sizeof First) - 2)]);
  while (s.size() < length) s += Rest[rng.range(0, std::int64_t(sizeof Rest) - 2)];
  return s;
}

}  // namespace tavrin::fuzz
