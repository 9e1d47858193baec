// Pieces of the evaluation shared between the driver, the term evaluators and the eval tool.
#pragma once

#include <cstdint>

#include "board/attacks.h"
#include "board/position.h"
#include "eval/material.h"
#include "eval/pawns.h"

namespace tavrin {

// The main terms of one full evaluation, packed, per colour ([Black, White]), for the trace.
struct EvalTerms {
  Packed pieceSquare = 0;            // White's point of view only
  Packed pawns = 0;                  // pawn-table score, White's point of view only
  Packed mobility[2] = {0, 0};
  Packed pieces[2] = {0, 0};         // outposts, rooks on files, trapped pieces
  Packed kingSafety[2] = {0, 0};     // shelter and attacks on the own king
  Packed threats[2] = {0, 0};
  Packed passed[2] = {0, 0};         // passed pawns with pieces
};

// Everything the final combination needs besides the positional sum.
struct MaterialInfo {
  int value = 0;       // White's point of view
  int scale = 128;
  std::uint8_t flags = 0;
  EndingRule rule = EndingRule::None;   // the rule FlagSpecialEnding calls for
};

// The material step of the driver: table entry or the out-of-range evaluator. May clear the
// unusual-material bit of the current entry.
MaterialInfo probeMaterial(Position& pos);

// Piece, mobility, king-safety, threat and passed-pawn terms, White's point of view, packed. Fills
// the attack summary of the current entry as it goes.
Packed evaluatePieces(Position& pos, const PawnEntry& pawns, EvalTerms& terms);

// Steps 6 and 7.1 to 7.5 of the driver: full evaluation and final combination without noise,
// White's point of view. The pawn entry must match the position.
int evaluateStatic(Position& pos, const MaterialInfo& material, const PawnEntry& pawns, EvalTerms& terms);

// The combination of a tapered positional score with material, scale and drawish pull.
int combineScore(int tapered, const MaterialInfo& material, const PawnEntry& pawns);
constexpr int taper(Packed s, int phase) {
  return (middlegameOf(s) * phase + endgameOf(s) * (32 - phase)) / 32;
}

// The endgame rules of evalFlags bit 7: mating a bare king, rook or queen against a lone pawn,
// drawish rook endings. White's point of view in and out.
int applySpecialEnding(const Position& pos, EndingRule rule, int total);
// Minor-piece draw tests (evalFlags bits 5 and 6).
int applyMinorDrawTests(const Position& pos, std::uint8_t flags, int total);

// Kings and pawns only: writes staticEval (side to move's view) and the attack summary, and sets
// evalFinal where the score is exact. The entry is recomputed when it does not match.
template <Color Us> void evaluatePawnEnding(Position& pos, const MaterialInfo& material, PawnEntry& pawns);
void evaluatePawnEndingWhite(Position& pos, const MaterialInfo& material, PawnEntry& pawns);
void evaluatePawnEndingBlack(Position& pos, const MaterialInfo& material, PawnEntry& pawns);

// Slider lines from a king's square: its slider attackers stand on them, and a piece of the
// other colour that reaches one of their empty squares can check from there.
struct KingLines {
  Bitboard rook = 0, bishop = 0;
};
inline KingLines kingLines(const Position& pos, int kingSquare) {
  return {rookAttacks(kingSquare, pos), bishopAttacks(kingSquare, pos)};
}

// Empty squares from which a knight, a bishop or a rook of the side to move would check.
struct CheckSquares {
  Bitboard knight = 0, bishop = 0, rook = 0;
};
template <Color Us>
inline CheckSquares checkSquares(const Position& pos, const KingLines& enemyKing) {
  const Bitboard empty = ~pos.occupied;
  return {knightAttacks(pos.kingSquare(~Us)) & empty, enemyKing.bishop & empty, enemyKing.rook & empty};
}

// What the attack summary is built from; the evaluation fills it on its way, the summary's own
// pass when there is no full evaluation.
struct SummaryParts {
  Bitboard attacked[2] = {0, 0};   // [Black, White]
  KingLines lines[2];              // from each colour's king
  Bitboard pinned = 0;             // the side to move's pinned pieces
  Bitboard pieceCandidates = 0;    // the side to move's knights to queens that reach a checking square
};

// The attack-summary fields: attack sets, king attackers, pins, check candidates, exemptions,
// exchange exclusion and pawn threats; clears evalFinal.
void finishAttackSummary(Position& pos, const SummaryParts& parts);

// The evaluation cache: upper 48 key bits and the low 16 bits of staticEval. One word per entry,
// loaded and stored relaxed during a search (the search threads share it without locks).
constexpr int EvalCacheSize = 32768;
extern std::uint64_t EvalCache[EvalCacheSize];

constexpr int EvalScoreLimit = 20000;   // static scores are kept inside +-this
constexpr int clampScore(int v) {
  return v > EvalScoreLimit ? EvalScoreLimit : v < -EvalScoreLimit ? -EvalScoreLimit : v;
}

}  // namespace tavrin
