// Move generators and the move-list word they write.
#pragma once

#include "board/position.h"
#include "common/relaxed.h"

namespace tavrin {

// Move lists are arrays of 32-bit words, tried largest first (compared as unsigned numbers):
//   bits 0-14   the move (moveOf);
//   bit 15      NonCaptureMark: CaptureKey's empty-square column sets it for every piece but the
//               king, so the quiet moves written through that table (the evasions') carry it;
//   bits 16-31  the sort key (keyedWord): a history counter or a gain, or the upper half of a
//               capture key, whose bit 21 (WinningCapture: the victim's class above the
//               attacker's) and bit 20 (EvenCapture: equal classes) spare a capture the exchange
//               test. A list that takes its table move first gives it every key bit (TableMoveKey).
using MoveWord = std::uint32_t;
constexpr int MaxMoves = 256;   // room for any position's move list plus terminator

constexpr int KeyShift = 16;
constexpr MoveWord NonCaptureMark = MoveWord(1) << 15;
constexpr MoveWord EvenCapture = MoveWord(1) << 20;
constexpr MoveWord WinningCapture = MoveWord(1) << 21;
constexpr MoveWord TableMoveKey = ~MoveWord(0) << KeyShift;

constexpr MoveWord keyedWord(std::uint16_t key, Move m) { return (MoveWord(key) << KeyShift) | m; }
constexpr std::uint16_t sortKeyOf(MoveWord w) { return std::uint16_t(w >> KeyShift); }
constexpr bool isWinningOrEvenCapture(MoveWord w) { return (w & (WinningCapture | EvenCapture)) != 0; }
constexpr bool isPromotedTableMove(MoveWord w) { return w >= TableMoveKey; }

// Capture keys by attacker and victim piece code (victim 0: quiet moves through the same table).
extern std::uint32_t CaptureKey[16][16];
void initCaptureKeys();

// The tables the quiet generators key and filter their moves by live here, below the layers that
// keep them. Gain table: largest positional gain seen per moving piece and move (kept by the
// evaluation). History counters by piece code * 64 + to-square, 0 .. 65280 (kept by the search).
// Search threads share both without locks: a search reads and writes their cells relaxed.
inline std::int16_t GainTable[16 * 4096];
inline std::uint16_t HistoryTable[16 * 64];
// The gain-table cell of a piece's move: piece * 4096 + from * 64 + to.
constexpr int gainCell(int piece, Move m) { return piece * 4096 + moveSquares(m); }
// The history counter of a piece moving to a square: piece * 64 + to.
constexpr int historyCell(int piece, int to) { return piece * 64 + to; }

// Each generator writes a list ended by 0 and returns the place of the terminator. It is called as
// `generateCaptures<Us>(...)` where the colour is known at compile time (the search), else through
// its named instances.
template <Color Us> MoveWord* generateCaptures(const Position& pos, MoveWord* list, Bitboard targets);
template <Color Us> MoveWord* generateEvasions(const Position& pos, MoveWord* list, Bitboard mask);
template <Color Us> MoveWord* generateQuiet(const Position& pos, MoveWord* list, int threshold);
// Castling, then the quiet moves of pawns, queens, rooks, bishops, king and knights, then the
// under-promotions (knight only where it does not check), each word keyed by its history
// counter, HistoryTable[historyCell(piece, to)]. With margin INT_MIN every move is written; with any other margin a quiet
// move whose GainTable value is below it is left out unless it gives check (direct or by
// discovery). Castling and under-promotions are never filtered. Reads attackedBy* of the entry.
// Together with generateCaptures(all enemy pieces but the king) it writes every pseudo-legal
// move exactly once (king steps onto attacked squares excepted).
template <Color Us> MoveWord* generateRemaining(const Position& pos, MoveWord* list, int margin);
// Quiet moves (no capture, no promotion, no castling) that give check, directly or by
// discovery, keyed by history like generateRemaining. Pseudo-legal: pins are not looked at.
template <Color Us> MoveWord* generateQuietChecks(const Position& pos, MoveWord* list);
// Every legal move (root list, position command, perft), keyed by CaptureKey[piece][victim]
// (queen promotions raised as in the capture generator) so that the list sorts captures first,
// without NonCaptureMark: the low 16 bits of each word are exactly the move. Needs no attack
// summary.
template <Color Us> MoveWord* generateLegal(const Position& pos, MoveWord* list);

MoveWord* generateCapturesWhite(const Position& pos, MoveWord* list, Bitboard targets);
MoveWord* generateCapturesBlack(const Position& pos, MoveWord* list, Bitboard targets);
MoveWord* generateEvasionsWhite(const Position& pos, MoveWord* list, Bitboard mask);
MoveWord* generateEvasionsBlack(const Position& pos, MoveWord* list, Bitboard mask);
MoveWord* generateQuietWhite(const Position& pos, MoveWord* list, int threshold);
MoveWord* generateQuietBlack(const Position& pos, MoveWord* list, int threshold);

MoveWord* generateRemainingWhite(const Position& pos, MoveWord* list, int margin);
MoveWord* generateRemainingBlack(const Position& pos, MoveWord* list, int margin);
MoveWord* generateQuietChecksWhite(const Position& pos, MoveWord* list);
MoveWord* generateQuietChecksBlack(const Position& pos, MoveWord* list);
MoveWord* generateLegalWhite(const Position& pos, MoveWord* list);
MoveWord* generateLegalBlack(const Position& pos, MoveWord* list);

// Run-time dispatch on the side to move (root, protocol layer, tools).
MoveWord* generateLegalMoves(const Position& pos, MoveWord* list);

}  // namespace tavrin
