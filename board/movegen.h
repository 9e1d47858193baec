// Move generators. Lists are arrays of 32-bit words: move in bits 0-15, sort key above.
#pragma once

#include "board/position.h"

namespace tavrin {

using MoveWord = std::uint32_t;
constexpr int MaxMoves = 256;   // room for any position's move list plus terminator

// Capture keys by attacker and victim piece code (victim 0: quiet moves through the same table).
extern std::uint32_t CaptureKey[16][16];
void initCaptureKeys();

// The tables the quiet generators key and filter their moves by live here, below the layers that
// keep them. Gain table: largest positional gain seen per moving piece and move (kept by the
// evaluation). History counters by piece code * 64 + to-square, 0 .. 65280 (kept by the search).
inline std::int16_t GainTable[16 * 4096];
inline std::uint16_t HistoryTable[16 * 64];

// Each generator writes a list ended by 0 and returns the place of the terminator.
template <Color Us> MoveWord* generateCaptures(const Position& pos, MoveWord* list, Bitboard targets);
template <Color Us> MoveWord* generateEvasions(const Position& pos, MoveWord* list, Bitboard mask);
template <Color Us> MoveWord* generateQuiet(const Position& pos, MoveWord* list, int threshold);
// Castling, then the quiet moves of pawns, queens, rooks, bishops, king and knights, then the
// under-promotions (knight only where it does not check), each word HistoryTable[piece * 64 + to]
// * 65536 + move. With margin INT_MIN every move is written; with any other margin a quiet
// move whose GainTable value is below it is left out unless it gives check (direct or by
// discovery). Castling and under-promotions are never filtered. Reads attackedBy* of the entry.
// Together with generateCaptures(all enemy pieces but the king) it writes every pseudo-legal
// move exactly once (king steps onto attacked squares excepted).
template <Color Us> MoveWord* generateRemaining(const Position& pos, MoveWord* list, int margin);
// Quiet moves (no capture, no promotion, no castling) that give check, directly or by
// discovery, keyed by history like generateRemaining. Pseudo-legal: pins are not looked at.
template <Color Us> MoveWord* generateQuietChecks(const Position& pos, MoveWord* list);
// Every legal move (root list, position command, perft), keyed by CaptureKey[piece][victim]
// (queen promotions + 0x28000000) so that the list sorts captures first, with bit 15 cleared:
// the low 16 bits of each word are exactly the move. Needs no attack summary.
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
