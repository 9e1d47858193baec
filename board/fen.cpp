// A small FEN reader and writer for tools, tests and the match runner.
#include "board/fen.h"

#include <cstring>

#include "board/bitboard.h"
#include "board/legality.h"

namespace tavrin {

namespace {

const char* skipBlanks(const char* s) {
  while (*s == ' ' || *s == '\t') ++s;
  return s;
}

// Reads a non-negative decimal number of at most six digits; false if none is there.
bool readNumber(const char*& s, int& value) {
  if (*s < '0' || *s > '9') return false;
  value = 0;
  for (int digits = 0; *s >= '0' && *s <= '9'; ++s, ++digits)
    if (digits < 6) value = value * 10 + (*s - '0');
  return true;
}

// The field up to the next blank, copied into out (at most size - 1 characters); s moves past it.
void readField(const char*& s, char* out, std::size_t size) {
  std::size_t n = 0;
  for (; *s && *s != ' ' && *s != '\t'; ++s)
    if (n + 1 < size) out[n++] = *s;
  out[n] = 0;
}

}  // namespace

int pieceFromLetter(char letter, int square) {
  const char* letters = "PNKBRQpnkbrq";
  static constexpr int Codes[] = {WhitePawn, WhiteKnight, WhiteKing, WhiteBishopLight, WhiteRook, WhiteQueen,
                                  BlackPawn, BlackKnight, BlackKing, BlackBishopLight, BlackRook, BlackQueen};
  const char* at = letter ? std::strchr(letters, letter) : nullptr;
  if (!at) return NoPiece;
  const int piece = Codes[at - letters];
  return kindOf(piece) == BishopLight && isDarkSquare(square) ? piece + 1 : piece;
}

int readCastlingField(const char* field, bool inOrder) {
  if (std::strcmp(field, "-") == 0) return 0;
  if (!*field) return -1;
  int rights = 0, last = -1;
  for (const char* c = field; *c; ++c) {
    const char* at = std::strchr("KQkq", *c);
    if (!at) return -1;
    const int index = int(at - "KQkq");
    if (inOrder && index <= last) return -1;
    rights |= 1 << index;
    last = index;
  }
  return rights;
}

bool enPassantPlausible(const std::uint8_t (&board)[64], int sideToMove, int square) {
  if (square <= 0 || square >= 64) return false;
  const int up = sideToMove == White ? 8 : -8;
  const int pushed = square - up, origin = square + up;
  if (rankOf(square) != (sideToMove == White ? 5 : 2) || board[square] || board[origin]) return false;
  const int enemyPawn = sideToMove == White ? BlackPawn : WhitePawn;
  const int ownPawn = sideToMove == White ? WhitePawn : BlackPawn;
  if (board[pushed] != enemyPawn) return false;
  return (fileOf(pushed) > 0 && board[pushed - 1] == ownPawn) || (fileOf(pushed) < 7 && board[pushed + 1] == ownPawn);
}

bool setFromFen(Position& pos, const char* fen) {
  if (!fen || !pos.stateStack) return false;
  std::uint8_t board[64] = {};
  const char* s = skipBlanks(fen);

  // Piece placement, rank 8 first.
  int rank = 7, file = 0;
  for (; *s && *s != ' ' && *s != '\t'; ++s) {
    if (*s == '/') {
      if (file != 8 || rank == 0) return false;
      --rank, file = 0;
    } else if (*s >= '1' && *s <= '8') {
      file += *s - '0';
      if (file > 8) return false;
    } else {
      if (file > 7) return false;
      const int sq = makeSquare(file, rank);
      const int piece = pieceFromLetter(*s, sq);
      if (!piece) return false;
      board[sq] = std::uint8_t(piece);
      ++file;
    }
  }
  if (rank != 0 || file != 8) return false;

  // Side to move.
  s = skipBlanks(s);
  int side;
  if (*s == 'w') side = White;
  else if (*s == 'b') side = Black;
  else return false;
  ++s;
  if (*s && *s != ' ' && *s != '\t') return false;

  // Castling rights.
  s = skipBlanks(s);
  if (!*s) return false;
  char field[8];
  readField(s, field, sizeof field);
  int castle = readCastlingField(field, false);
  if (castle < 0) return false;

  // En-passant square.
  s = skipBlanks(s);
  if (!*s) return false;
  int ep = 0;
  if (*s == '-') {
    ++s;
  } else if (const int sq = squareFromText(s); sq >= 0) {
    ep = sq;
    s += 2;
  } else {
    return false;
  }
  if (*s && *s != ' ' && *s != '\t') return false;

  // Optional counters.
  int rule50 = 0, fullMove = 1;
  s = skipBlanks(s);
  if (*s) {
    if (!readNumber(s, rule50)) return false;
    s = skipBlanks(s);
    if (*s && !readNumber(s, fullMove)) return false;
  }

  if (!boardPlayable(board)) return false;

  // Rights only where king and rook still stand on their squares.
  if (board[E1] != WhiteKing) castle &= ~(WhiteKingSide | WhiteQueenSide);
  if (board[H1] != WhiteRook) castle &= ~WhiteKingSide;
  if (board[A1] != WhiteRook) castle &= ~WhiteQueenSide;
  if (board[E8] != BlackKing) castle &= ~(BlackKingSide | BlackQueenSide);
  if (board[H8] != BlackRook) castle &= ~BlackKingSide;
  if (board[A8] != BlackRook) castle &= ~BlackQueenSide;

  if (ep && !enPassantPlausible(board, side, ep)) ep = 0;

  std::memcpy(pos.board, board, sizeof board);
  std::memset(static_cast<void*>(pos.stateStack), 0, 2 * sizeof(StateEntry));
  pos.state = pos.stateStack + 1;  // the entry below the root stays readable
  pos.sideToMove = std::uint8_t(side);
  pos.ply = 0;
  pos.historyCount = 0;
  pos.state->castle = std::uint8_t(castle);
  pos.state->epSquare = std::uint8_t(ep);
  pos.state->rule50 = std::uint8_t(rule50 > 255 ? 255 : rule50);
  (void)fullMove;
  recomputeFromBoard(pos);

  // The side not to move must not be in check: its king could be taken.
  const bool illegal = side == White ? isAttackedBy<White>(pos, pos.blackKingSquare)
                                     : isAttackedBy<Black>(pos, pos.whiteKingSquare);
  return !illegal;
}

std::string toFen(const Position& pos) {
  std::string fen;
  for (int rank = 7; rank >= 0; --rank) {
    int gap = 0;
    for (int file = 0; file < 8; ++file) {
      const int piece = pos.board[makeSquare(file, rank)];
      if (!piece) {
        ++gap;
        continue;
      }
      if (gap) fen += char('0' + gap), gap = 0;
      fen += PieceLetters[piece];
    }
    if (gap) fen += char('0' + gap);
    if (rank) fen += '/';
  }
  fen += pos.sideToMove == White ? " w " : " b ";
  const int castle = pos.state->castle;
  if (!castle) fen += '-';
  for (int i = 0; i < 4; ++i)
    if (castle & (1 << i)) fen += "KQkq"[i];
  fen += ' ';
  if (const int ep = pos.state->epSquare) {
    fen += char('a' + fileOf(ep));
    fen += char('1' + rankOf(ep));
  } else {
    fen += '-';
  }
  fen += ' ' + std::to_string(pos.state->rule50) + " 1";
  return fen;
}

}  // namespace tavrin
