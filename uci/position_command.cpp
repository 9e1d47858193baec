// The position command: the FEN reader, the reading of move text and the move list player.
#include <cstdlib>
#include <cstring>

#include "board/fen.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "common/globals.h"
#include "eval/evaluate.h"
#include "uci/decimal.h"
#include "uci/position_command.h"
#include "uci/words.h"

namespace tavrin {

namespace {

constexpr const char* StartFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
// The first entries of the stack that a FEN clears (more when a longer game used them).
constexpr int ClearedEntries = 256;

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

// The next whitespace-delimited word; an empty word means the text has ended.
const char* nextWord(const char* text, char* word) { return readWord(text, word, isSpace); }

// One separator further, never past the end.
const char* skipSeparator(const char* text) { return *text ? text + 1 : text; }

void readPlacement(Position& pos, const char* field) {
  std::memset(pos.board, 0, sizeof pos.board);
  int rank = 7, file = 0;
  for (const char* c = field; *c; ++c) {
    if (*c == '/') {
      file = 0;
      --rank;
    } else if (*c >= '1' && *c <= '8') {
      file += *c - '0';
    } else if (*c && std::strchr("PNKBRQpnkbrq", *c)) {
      // Too many squares in a rank spill into the following squares, but never off the board.
      int sq = rank * 8 + file;
      if (sq >= 0 && sq < 64) pos.board[sq] = std::uint8_t(pieceFromLetter(*c, sq));
      ++file;
    }
    if (rank == 0 && file >= 8) break;
    if (rank < -1 || file > 1024) break;  // nothing further can land on the board
  }
}

// The rights of "KQkq" in that order, or "-"; written in any other way (another order, file
// letters) they give 16: none of the four bits.
std::uint8_t castlingRights(const char* field) {
  const int rights = readCastlingField(field, true);
  return std::uint8_t(rights < 0 ? 16 : rights);
}

// The en-passant square is kept only when a pawn of the side to move can take on it (so that it
// never enters the key otherwise), and only behind the pawn that has just made its double step.
int enPassantSquare(const Position& pos, const char* field) {
  const int sq = squareFromText(field);
  return sq >= 0 && enPassantPlausible(pos.board, pos.sideToMove, sq) ? sq : 0;
}

// The board can be turned into a position at all.
bool boardSane(const Position& pos) { return boardPlayable(pos.board); }

// The move a text names: two squares (files a-h, ranks 1-8; a text with any other character there
// names no move), then, when readPromotion allows, a lower-case promotion letter n, b, r or q
// (any other fifth character adds nothing).
Move moveFromText(const Position& pos, const char* text, bool readPromotion) {
  const int from = squareFromText(text);
  if (from < 0) return NoMove;
  const int to = squareFromText(text + 2);
  if (to < 0) return NoMove;
  const Move m = moveFromSquares(pos, makeMove(from, to));
  if (m == NoMove || !readPromotion) return m;
  switch (text[4]) {
    case 'n': return addKind(m, PromoteKnight);
    case 'b': return addKind(m, PromoteBishop);
    case 'r': return addKind(m, PromoteRook);
    case 'q': return addKind(m, PromoteQueen);
    default: return m;
  }
}

}  // namespace

const char* readFen(Position& pos, const char* fen) {
  char word[WordBytes];
  const char* text = fen;
  // Each field begins one character after the end of the one before.
  auto nextField = [&]() { text = skipSeparator(nextWord(text, word)); };

  nextField();
  readPlacement(pos, word);

  const std::ptrdiff_t used = pos.state - pos.stateStack + 1;
  std::ptrdiff_t cleared = used > ClearedEntries ? used : ClearedEntries;
  if (cleared > StateStackEntries) cleared = StateStackEntries;
  std::memset(static_cast<void*>(pos.stateStack), 0, std::size_t(cleared) * sizeof(StateEntry));
  pos.state = pos.stateStack;
  pos.historyCount = 0;   // the key history follows the stack

  nextField();
  if (std::strcmp(word, "w") == 0) pos.sideToMove = White;
  if (std::strcmp(word, "b") == 0) pos.sideToMove = Black;

  nextField();
  pos.st().castle = castlingRights(word);

  nextField();
  pos.st().epSquare = std::uint8_t(enPassantSquare(pos, word));

  nextField();
  pos.st().rule50 = std::uint8_t(readDecimal(word));

  nextField();  // the full-move number is not used

  if (boardSane(pos)) recomputeFromBoard(pos);
  return text;
}

Move readMoveText(const Position& pos, const char* text) { return moveFromText(pos, text, true); }

void playMoveList(Position& pos, const char* text) {
  if (!boardSane(pos)) return;
  char word[WordBytes];
  MoveWord list[MaxMoves];
  for (text = nextWord(text, word); word[0]; text = nextWord(text, word)) {
    // The stack keeps room for a search above the game; a longer list is not played further.
    if (pos.state - pos.stateStack >= MaxGamePlies) return;
    generateLegalMoves(pos, list);
    const Move m = moveFromText(pos, word, std::strlen(word) == 5);
    if (m == NoMove) continue;
    for (const MoveWord* w = list; *w; ++w)
      if (moveOf(*w) == m) {
        makeRootMove(pos, m);
        break;
      }
  }
}

void positionCommand(Position& pos, const char* text) {
  Engine.positionReady = 1;
  pos.nodes = 0;
  char word[WordBytes];
  const char* after = nextWord(text, word);
  if (std::strcmp(word, "startpos") == 0) {
    readFen(pos, StartFen);
    text = skipSeparator(after);
  } else if (std::strcmp(word, "fen") == 0) {
    text = readFen(pos, skipSeparator(after));
  }
  if (*text) {
    after = nextWord(text, word);
    if (std::strcmp(word, "moves") == 0) playMoveList(pos, after);
  }
  pos.ply = 0;
  if (Engine.firstSearch) clearGainTable();
}

bool positionPlayable(const Position& pos) { return boardSane(pos) && !leftOwnKingInCheck(pos); }

}  // namespace tavrin
