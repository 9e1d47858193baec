// Move generators. Lists are arrays of 32-bit words: move in bits 0-15, sort key above.
#pragma once

#include "board/position.h"

namespace tavrin {

using MoveWord = std::uint32_t;
constexpr int MaxMoves = 256;   // room for any position's move list plus terminator

// The move of a list word. The key's low part can reach bit 15 (the non-capture column of
// CaptureKey carries 0x8000), so the move is the low 15 bits, not the low 16.
constexpr Move moveOf(MoveWord w) { return Move(w & 0x7FFF); }

// Capture keys by attacker and victim piece code (victim 0: quiet moves through the same table).
extern std::uint32_t CaptureKey[16][16];
void initCaptureKeys();

// Gain table: largest positional gain seen per moving piece and move (kept by the evaluation).
extern std::int16_t GainTable[16 * 4096];
// History counters by piece code * 64 + to-square, 0 .. 65280 (kept by the search).
extern std::uint16_t HistoryTable[16 * 64];

// Each generator writes a list ended by 0 and returns the place of the terminator.
template <Color Us> MoveWord* generateCaptures(const Position& pos, MoveWord* list, Bitboard targets);
template <Color Us> MoveWord* generateEvasions(const Position& pos, MoveWord* list, Bitboard mask);
template <Color Us> MoveWord* generateQuiet(const Position& pos, MoveWord* list, int threshold);
// Castling, quiet moves keyed by history, under-promotions; with a margin, quiet moves whose
// gain cannot reach it are left out (shallow nodes).
template <Color Us> MoveWord* generateRemaining(const Position& pos, MoveWord* list, int margin);
// Quiet moves (no capture, no promotion) that give check.
template <Color Us> MoveWord* generateQuietChecks(const Position& pos, MoveWord* list);
// Every legal move (root list, position command, perft). Needs no attack summary.
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
