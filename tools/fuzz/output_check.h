// The fuzzer's judge of engine output: the form of each line, and the legality of every move a
// line names, replayed on the tool's own board from the position the search started from.
#pragma once

#include <string>
#include <vector>

namespace tavrin::fuzz {

enum class LineKind { Banner, Id, Option, UciOk, ReadyOk, InfoString, Info, BestMove, Malformed };

struct OutputLine {
  LineKind kind = LineKind::Malformed;
  std::string problem;              // what is wrong with a malformed line
  std::string currmove;             // info: the move after "currmove", if any
  std::vector<std::string> pv;      // info: the moves after "pv", if any
  std::string best, ponder;         // bestmove: "0000" or a move; ponder empty when absent
};

// Reads one output line (without its newline). The banner is recognised only while
// `inBanner` is set, that is before the engine has printed anything else.
OutputLine readOutputLine(const std::string& line, bool inBanner);

// Coordinate move text: from-square, to-square and an optional promotion letter.
bool isMoveText(const std::string& word);

// What the fuzzer knows of the position a search started from.
struct SearchRoot {
  bool known = false;
  std::string fen;                       // the position (when known)
  std::vector<std::string> legal;        // its legal moves
  std::vector<std::string> searchMoves;  // the legal moves a go restricted the search to; empty: all
};

// The root for a FEN the tool's board accepts (unknown when it does not).
SearchRoot rootOf(const std::string& fen, const std::vector<std::string>& searchMoves = {});

// What is wrong with the moves of a well-formed line for a search from root; empty when
// nothing is (and always when the root is unknown).
std::string checkMoves(const OutputLine& line, const SearchRoot& root);

}  // namespace tavrin::fuzz
