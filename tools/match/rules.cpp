// Game board for the match runner: set-up, legal moves and the rules that end a game.
#include "tools/match/rules.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <sstream>

#include "app/startup.h"
#include "board/bitboard.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/zobrist.h"

namespace tavrin::match {

namespace {

std::mutex SetupMutex;   // setting up a position evaluates it, which touches shared caches

// Position records own a state stack allocated once; they are recycled, never freed, so that
// each worker thread reuses its own and nothing leaks between games.
// The pool itself is never destroyed, so the records stay reachable until the process ends.
std::mutex PoolMutex;
std::vector<Position*>& freePositions() {
  static std::vector<Position*>* pool = new std::vector<Position*>();
  return *pool;
}

Position* acquirePosition() {
  std::lock_guard<std::mutex> lock(PoolMutex);
  if (!freePositions().empty()) {
    Position* p = freePositions().back();
    freePositions().pop_back();
    return p;
  }
  Position* p = new Position();
  initPosition(*p);
  return p;
}

void releasePosition(Position* p) {
  std::lock_guard<std::mutex> lock(PoolMutex);
  freePositions().push_back(p);
}

int pieceFromLetter(char c) {
  switch (c) {
    case 'P': return WhitePawn;   case 'N': return WhiteKnight; case 'B': return WhiteBishopLight;
    case 'R': return WhiteRook;   case 'Q': return WhiteQueen;  case 'K': return WhiteKing;
    case 'p': return BlackPawn;   case 'n': return BlackKnight; case 'b': return BlackBishopLight;
    case 'r': return BlackRook;   case 'q': return BlackQueen;  case 'k': return BlackKing;
    default: return NoPiece;
  }
}

bool parseCount(const std::string& s, int lo, int hi, int& out) {
  if (s.empty() || s.size() > 6) return false;
  int v = 0;
  for (char c : s) {
    if (c < '0' || c > '9') return false;
    v = v * 10 + (c - '0');
  }
  if (v < lo || v > hi) return false;
  out = v;
  return true;
}

bool fail(std::string* error, const char* why) {
  if (error) *error = why;
  return false;
}

}  // namespace

const char* resultText(GameResult r) {
  switch (r) {
    case GameResult::WhiteWins: return "1-0";
    case GameResult::BlackWins: return "0-1";
    case GameResult::Draw: return "1/2-1/2";
    default: return "*";
  }
}

void initBoardOnce() {
  static std::once_flag once;
  std::call_once(once, [] { initializeEngine(); });
}

GameBoard::GameBoard() {
  initBoardOnce();
  pos_ = acquirePosition();
  setFen(StartFen);
}

GameBoard::~GameBoard() { releasePosition(pos_); }

bool GameBoard::setFen(const std::string& fen, std::string* error) {
  std::istringstream in(fen);
  std::vector<std::string> f;
  for (std::string w; in >> w;) f.push_back(w);
  if (f.size() != 4 && f.size() != 6) return fail(error, "a FEN needs 4 or 6 fields");
  if (f.size() == 4) {
    f.push_back("0");
    f.push_back("1");
  }

  std::uint8_t board[64] = {};
  int rank = 7, file = 0;
  for (char c : f[0]) {
    if (c == '/') {
      if (file != 8 || rank == 0) return fail(error, "bad placement field");
      --rank;
      file = 0;
    } else if (c >= '1' && c <= '8') {
      file += c - '0';
      if (file > 8) return fail(error, "bad placement field");
    } else {
      int piece = pieceFromLetter(c);
      if (piece == NoPiece || file > 7) return fail(error, "bad placement field");
      int sq = makeSquare(file, rank);
      if (kindOf(piece) == BishopLight && isDarkSquare(sq)) piece += 1;
      if (kindOf(piece) == Pawn && (rank == 0 || rank == 7)) return fail(error, "pawn on a back rank");
      board[sq] = std::uint8_t(piece);
      ++file;
    }
  }
  if (rank != 0 || file != 8) return fail(error, "bad placement field");
  int whiteKings = 0, blackKings = 0;
  for (int sq = 0; sq < 64; ++sq) {
    whiteKings += board[sq] == WhiteKing;
    blackKings += board[sq] == BlackKing;
  }
  if (whiteKings != 1 || blackKings != 1) return fail(error, "each side needs one king");

  if (f[1] != "w" && f[1] != "b") return fail(error, "bad side to move");
  int side = f[1] == "w" ? White : Black;

  int castle = 0;
  if (f[2] != "-") {
    for (char c : f[2]) {
      int right = c == 'K' ? WhiteKingSide : c == 'Q' ? WhiteQueenSide
                : c == 'k' ? BlackKingSide : c == 'q' ? BlackQueenSide : 0;
      if (right == 0 || (castle & right)) return fail(error, "bad castling field");
      castle |= right;
    }
  }
  // Rights that the board cannot support are dropped rather than trusted.
  if (board[E1] != WhiteKing) castle &= ~(WhiteKingSide | WhiteQueenSide);
  if (board[E8] != BlackKing) castle &= ~(BlackKingSide | BlackQueenSide);
  if (board[H1] != WhiteRook) castle &= ~WhiteKingSide;
  if (board[A1] != WhiteRook) castle &= ~WhiteQueenSide;
  if (board[H8] != BlackRook) castle &= ~BlackKingSide;
  if (board[A8] != BlackRook) castle &= ~BlackQueenSide;

  int ep = 0;
  if (f[3] != "-") {
    if (f[3].size() != 2 || f[3][0] < 'a' || f[3][0] > 'h') return fail(error, "bad en-passant field");
    if (f[3][1] != (side == White ? '6' : '3')) return fail(error, "bad en-passant field");
    int sq = makeSquare(f[3][0] - 'a', f[3][1] - '1');
    int pawn = side == White ? WhitePawn : BlackPawn;
    int behind = side == White ? sq - 8 : sq + 8;        // the pawn that just moved two squares
    int theirPawn = side == White ? BlackPawn : WhitePawn;
    if (board[behind] == theirPawn && board[sq] == NoPiece) {
      // Stored, as the board code does, only when a pawn of the side to move stands beside it.
      int left = behind - 1, right = behind + 1;
      if ((fileOf(behind) > 0 && board[left] == pawn) || (fileOf(behind) < 7 && board[right] == pawn))
        ep = sq;
    }
  }
  int halfmove = 0, fullmove = 1;
  if (!parseCount(f[4], 0, 100000, halfmove)) return fail(error, "bad half-move field");
  if (!parseCount(f[5], 1, 100000, fullmove)) return fail(error, "bad full-move field");

  {
    std::lock_guard<std::mutex> lock(SetupMutex);
    Position& p = *pos_;
    std::memcpy(p.board, board, 64);
    p.sideToMove = std::uint8_t(side);
    p.state = p.stateStack;
    std::memset(static_cast<void*>(p.stateStack), 0, 4 * sizeof(StateEntry));
    p.state->castle = std::uint8_t(castle);
    p.state->epSquare = std::uint8_t(ep);
    p.state->rule50 = std::uint8_t(std::min(halfmove, 255));
    p.ply = 0;
    p.historyCount = 0;
    p.recordIndex = 1;   // never the main search record: makes here must not poll input
    recomputeFromBoard(p);
    p.keyHistory[0] = p.state->key;
  }
  if (leftOwnKingInCheck(*pos_)) {
    setFen(StartFen);
    return fail(error, "the side not to move is in check");
  }
  halfmove_ = halfmove;
  fullmove_ = fullmove;
  pliesSinceSetup_ = 0;
  keys_.clear();
  keys_.push_back(repetitionKey());
  return true;
}

std::string GameBoard::fen() const {
  const Position& p = *pos_;
  std::string s;
  for (int rank = 7; rank >= 0; --rank) {
    int empty = 0;
    for (int file = 0; file < 8; ++file) {
      int piece = p.board[makeSquare(file, rank)];
      if (piece == NoPiece) {
        ++empty;
        continue;
      }
      if (empty) s += char('0' + empty);
      empty = 0;
      s += PieceLetters[piece];
    }
    if (empty) s += char('0' + empty);
    if (rank) s += '/';
  }
  s += p.sideToMove == White ? " w " : " b ";
  int c = p.state->castle & 15;
  if (c == 0) s += '-';
  if (c & WhiteKingSide) s += 'K';
  if (c & WhiteQueenSide) s += 'Q';
  if (c & BlackKingSide) s += 'k';
  if (c & BlackQueenSide) s += 'q';
  s += ' ';
  int ep = p.state->epSquare;
  if (ep) {
    s += char('a' + fileOf(ep));
    s += char('1' + rankOf(ep));
  } else {
    s += '-';
  }
  s += ' ' + std::to_string(halfmove_) + ' ' + std::to_string(fullmove_);
  return s;
}

std::vector<Move> GameBoard::legalMoves() {
  MoveWord list[MaxMoves];
  computeChecksAndPins(*pos_);
  MoveWord* end = generateLegalMoves(*pos_, list);
  std::vector<Move> moves;
  for (MoveWord* w = list; w < end && *w; ++w) moves.push_back(moveOf(*w));
  return moves;
}

bool GameBoard::inCheck() {
  computeChecksAndPins(*pos_);
  return tavrin::inCheck(*pos_);
}

std::string GameBoard::uci(Move m) {
  std::string s;
  s += char('a' + fileOf(moveFrom(m)));
  s += char('1' + rankOf(moveFrom(m)));
  s += char('a' + fileOf(moveTo(m)));
  s += char('1' + rankOf(moveTo(m)));
  if (isPromotion(m)) s += "nbrq"[moveKind(m) - PromoteKnight];
  return s;
}

Move GameBoard::parseUci(const std::string& text) {
  if (text.size() != 4 && text.size() != 5) return NoMove;
  for (Move m : legalMoves())
    if (uci(m) == text) return m;
  return NoMove;
}

void GameBoard::play(Move m) {
  Position& p = *pos_;
  int mover = p.board[moveFrom(m)];
  bool irreversible = kindOf(mover) == Pawn || p.board[moveTo(m)] != NoPiece;
  makeRootMove(p, m);
  p.ply = 0;
  halfmove_ = irreversible ? 0 : halfmove_ + 1;
  if (p.sideToMove == White) ++fullmove_;
  keys_.push_back(repetitionKey());
  if (++pliesSinceSetup_ >= 1000) rebase();
}

void GameBoard::rebase() {
  // The engine's state stack is finite: very long games are carried on from a fresh set-up
  // of the same position. Repetition keys and counters are kept.
  std::vector<Key> keep;
  keep.swap(keys_);
  int half = halfmove_;
  setFen(fen());
  halfmove_ = half;
  keys_.swap(keep);
}

Key GameBoard::repetitionKey() {
  Key key = pos_->state->key;
  int ep = pos_->state->epSquare;
  if (ep) {
    bool capturable = false;
    for (Move m : legalMoves()) capturable |= moveKind(m) == EnPassantMove;
    if (!capturable) key ^= Zobrist.enPassant[ep & 7];
  }
  return key;
}

bool GameBoard::insufficientMaterial() const {
  const Position& p = *pos_;
  Bitboard heavy = p.pieces[WhitePawn] | p.pieces[BlackPawn] | p.pieces[WhiteRook] |
                   p.pieces[BlackRook] | p.pieces[WhiteQueen] | p.pieces[BlackQueen];
  if (heavy) return false;
  int knights = popCount(p.pieces[WhiteKnight] | p.pieces[BlackKnight]);
  int light = popCount(p.pieces[WhiteBishopLight] | p.pieces[BlackBishopLight]);
  int dark = popCount(p.pieces[WhiteBishopDark] | p.pieces[BlackBishopDark]);
  if (knights + light + dark <= 1) return true;
  // Bishops all on squares of one colour can never give mate; two knights can (with help).
  return knights == 0 && (light == 0 || dark == 0);
}

Outcome GameBoard::outcome() {
  Outcome o;
  if (legalMoves().empty()) {
    if (inCheck()) {
      bool whiteLost = pos_->sideToMove == White;
      o.result = whiteLost ? GameResult::BlackWins : GameResult::WhiteWins;
      o.reason = whiteLost ? "Black mates" : "White mates";
    } else {
      o.result = GameResult::Draw;
      o.reason = "Draw by stalemate";
    }
    return o;
  }
  if (halfmove_ >= 100) {
    o.result = GameResult::Draw;
    o.reason = "Draw by fifty-move rule";
    return o;
  }
  if (std::count(keys_.begin(), keys_.end(), keys_.back()) >= 3) {
    o.result = GameResult::Draw;
    o.reason = "Draw by threefold repetition";
    return o;
  }
  if (insufficientMaterial()) {
    o.result = GameResult::Draw;
    o.reason = "Draw by insufficient material";
  }
  return o;
}

}  // namespace tavrin::match
