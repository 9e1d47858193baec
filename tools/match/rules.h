// The game board of the match runner: strict FEN set-up, legal moves, notation and the rules
// that end a game, all on the engine's own board code.
#pragma once

#include <string>
#include <vector>

#include "board/position.h"

namespace tavrin::match {

enum class GameResult { None, WhiteWins, BlackWins, Draw };

struct Outcome {
  GameResult result = GameResult::None;
  std::string reason;   // e.g. "White mates", "Draw by fifty-move rule"
};

const char* resultText(GameResult r);   // "1-0", "0-1", "1/2-1/2", "*"

constexpr const char* StartFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

// Prepares the engine's tables once per process (thread-safe).
void initBoardOnce();

class GameBoard {
 public:
  GameBoard();
  ~GameBoard();
  GameBoard(const GameBoard&) = delete;
  GameBoard& operator=(const GameBoard&) = delete;

  // Sets a position from FEN (four or six fields); rejects anything malformed or illegal.
  bool setFen(const std::string& fen, std::string* error = nullptr);
  std::string fen() const;

  Color sideToMove() const { return Color(pos_->sideToMove); }
  int fullmoveNumber() const { return fullmove_; }
  int halfmoveClock() const { return halfmove_; }
  const Position& position() const { return *pos_; }

  // Legal moves of the side to move.
  std::vector<Move> legalMoves();
  bool inCheck();

  // Notation. parseUci and parseSan return NoMove unless the text names a legal move.
  static std::string uci(Move m);
  Move parseUci(const std::string& text);
  std::string san(Move m);
  Move parseSan(const std::string& text);

  // Plays a legal move.
  void play(Move m);

  // Does the game end here by the rules? Checkmate and stalemate come first, then the
  // fifty-move rule, threefold repetition and insufficient material.
  Outcome outcome();
  bool insufficientMaterial() const;
  // The key that decides repetitions: the board key, counting an en-passant right only when
  // an en-passant capture is actually legal.
  Key repetitionKey();

 private:
  void rebase();
  Position* pos_;
  int halfmove_ = 0;
  int fullmove_ = 1;
  int pliesSinceSetup_ = 0;
  std::vector<Key> keys_;   // repetition keys of every position of the game so far
};

}  // namespace tavrin::match
