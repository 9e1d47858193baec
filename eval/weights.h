// Every evaluation weight in one place, as packed middlegame/endgame values, for hand and machine
// tuning alike. `tavrin-tool tune` rewrites the values in this file and leaves everything else as
// it is. Piece values and the global blend weights live in EngineGlobals.
#pragma once

#include <span>

#include "board/types.h"

namespace tavrin {

constexpr Packed S(int mg, int eg) { return pack(mg, eg); }

struct EvalWeights {
  // ---------------------------------------------------------------------------------------------
  // Material table corrections (centipawns, added to the material value).
  int KnightPairPenalty = 8;       // two knights are a little redundant
  int RookPairPenalty = 16;        // so are two rooks
  int QueenRookPenalty = 8;        // queen and rook(s) overlap
  int KnightPawnAdjust = 3;        // per knight, per own pawn above (below) five
  int RookPawnAdjust = 6;          // per rook, per own pawn below (above) five

  // Scale factors (128 = 1.0) for drawish material.
  int ScaleNoWin = 0;              // the stronger side cannot mate at all
  int ScaleTwoKnightsVsPawns = 32; // two knights can only win against pawns, and rarely
  int ScalePawnlessMinorUp = 16;   // pawnless, at most a minor ahead
  int ScaleRookVsMinor = 24;       // pawnless rook against a minor
  int ScaleOnePawnMinorUp = 80;    // one pawn, at most a minor ahead: a piece can be given
  int ScaleOppositeBishops = 52;   // bishops of opposite colours, nothing else
  int ScaleOppositeBishopsRest = 100;  // opposite bishops with other pieces

  // ---------------------------------------------------------------------------------------------
  // Pawn structure (pawn table).
  Packed Isolated = S(-9, -13);
  Packed IsolatedOpen = S(-8, -5);        // extra when no enemy pawn stands in front
  Packed Doubled = S(-10, -22);           // for each pawn with an own pawn in front
  Packed Backward = S(-8, -11);
  Packed BackwardOpen = S(-8, -3);        // extra on a half-open file
  Packed Connected[8] = {S(0, 0), S(4, 0), S(6, 2), S(8, 5), S(16, 12), S(30, 24), S(52, 44), S(0, 0)};
  Packed Phalanx[8] = {S(0, 0), S(2, 0), S(3, 1), S(5, 3), S(10, 8), S(20, 16), S(32, 28), S(0, 0)};
  Packed PassedRank[8] = {S(0, 0), S(3, 10), S(5, 14), S(10, 22), S(24, 42), S(52, 84), S(90, 140), S(0, 0)};
  Packed CandidateRank[8] = {S(0, 0), S(2, 5), S(3, 7), S(6, 12), S(12, 24), S(20, 40), S(0, 0), S(0, 0)};

  // Drawish pull bytes (applied as pull * min(total, 100) / drawPullDivisor).
  int PullSymmetric = 14;     // every file holds as many own as enemy pawns, no passer
  int PullOneWing = 8;        // all pawns of both sides on one wing, no passer
  int PullFewPawns = 6;       // at most two own pawns and no passer

  // King shelter and pawn storm (middlegame only), by relative rank of the nearest pawn in front
  // of the king on each of the three files around it; index 0 means no such pawn.
  int ShelterRank[8] = {-28, 26, 16, 4, -2, -6, -8, 0};
  int StormRank[8] = {0, -20, -34, -18, -7, 0, 0, 0};
  int StormBlocked = -6;            // enemy pawn stopped by an own pawn right in front of it
  int OpenFileNearKing = -10;       // no pawn at all on a file next to the king

  // ---------------------------------------------------------------------------------------------
  // Mobility, by the number of safe squares a piece attacks.
  Packed KnightMobility[9] = {S(-35, -41), S(-25, -30), S(-7, -16), S(-2, -6), S(1, 0), S(5, 4), S(8, 7),
                              S(11, 9), S(14, 10)};
  Packed BishopMobility[14] = {S(-26, -32), S(-12, -16), S(7, -4), S(14, 5), S(19, 11), S(25, 18), S(28, 24),
                               S(31, 28), S(33, 31), S(35, 34), S(38, 36), S(40, 38), S(43, 40), S(45, 41)};
  Packed RookMobility[15] = {S(-32, -42), S(-15, -13), S(-5, 5), S(-3, 13), S(-1, 20), S(1, 28), S(4, 35),
                             S(8, 40), S(11, 46), S(14, 51), S(16, 55), S(18, 57), S(20, 59), S(21, 61),
                             S(22, 62)};
  Packed QueenMobility[28] = {S(-18, -25), S(-9, -13), S(-4, -4), S(-2, 3), S(-1, 9), S(2, 14), S(4, 19),
                              S(7, 24), S(9, 28), S(11, 32), S(14, 35), S(16, 38), S(17, 41), S(18, 43),
                              S(19, 46), S(20, 48), S(22, 50), S(23, 53), S(24, 55), S(25, 56), S(26, 58),
                              S(28, 60), S(29, 62), S(30, 64), S(31, 65), S(32, 66), S(34, 67), S(35, 68)};

  // ---------------------------------------------------------------------------------------------
  // Piece terms.
  Packed KnightOutpost = S(30, 14);        // on a hole in the enemy half, pawn-defended
  Packed BishopOutpost = S(16, 6);
  Packed OutpostUndefended = S(12, 4);     // hole without a defending pawn
  Packed MinorBehindPawn = S(14, 3);
  Packed BishopPawnsSameColour = S(-3, -6);  // per own pawn on the bishop's colour
  Packed TrappedBishop = S(-80, -80);      // bishop on a7/h7 shut in by a pawn on b6/g6
  Packed RookOpenFile = S(38, 16);
  Packed RookHalfOpenFile = S(18, 6);
  Packed RookOnSeventh = S(18, 34);        // with the enemy king on the eighth or pawns on the seventh
  Packed QueenOnSeventh = S(6, 18);
  Packed TrappedRook = S(-44, -6);         // hemmed in by its own uncastled king

  // ---------------------------------------------------------------------------------------------
  // King safety: a danger count turned into a middlegame penalty of danger^2 / DangerMiddlegameDivisor
  // and an endgame penalty of danger / DangerEndgameDivisor.
  int AttackerWeight[8] = {0, 0, 77, 0, 54, 54, 46, 12};  // by piece kind
  int ZoneAttackWeight = 66;     // per attack on a square next to the king
  int WeakZoneWeight = 170;      // per zone square attacked and defended only by the king
  int SafeCheckWeight[8] = {0, 0, 760, 0, 610, 610, 1020, 760};
  int UnsafeCheckWeight = 140;
  int NoQueenRelief = 760;       // attackers without a queen rarely mate
  int KnightDefenderRelief = 90; // an own knight next to the king
  int ShelterRelief = 6;         // danger falls by shelter * 6 / 8
  int DangerBase = 20;
  int DangerThreshold = 100;     // below this no penalty
  int DangerLimit = 8000;        // above this no further penalty
  int DangerMiddlegameDivisor = 12288;
  int DangerEndgameDivisor = 48;

  // ---------------------------------------------------------------------------------------------
  // Threats.
  Packed ThreatByPawn = S(72, 56);           // a safe pawn attacks a piece
  Packed ThreatMinorOnMajor = S(52, 58);     // knight or bishop attacks rook or queen
  Packed ThreatMinorOnMinor = S(20, 28);     // ... attacks an undefended minor
  Packed ThreatRookOnQueen = S(44, 32);
  Packed ThreatHangingPiece = S(36, 22);     // attacked and undefended piece
  Packed ThreatHangingPawn = S(4, 16);
  Packed ThreatByKing = S(6, 30);            // the king attacks an undefended piece or pawn
  Packed PawnPushThreat = S(18, 14);         // a safe pawn push would attack a piece

  // ---------------------------------------------------------------------------------------------
  // Passed pawns with pieces, by the pawn's relative rank.
  // Per square of the enemy king's distance to the stop square (at most 5).
  Packed PassedEnemyKing[8] = {S(0, 0), S(0, 0), S(0, 0), S(0, 10), S(0, 25), S(0, 45), S(0, 70), S(0, 0)};
  // Per square of the own king's distance to it.
  Packed PassedOwnKing[8] = {S(0, 0), S(0, 0), S(0, 0), S(0, -4), S(0, -10), S(0, -18), S(0, -28), S(0, 0)};
  // Nothing on or attacking the path to promotion.
  Packed PassedFreePath[8] = {S(0, 0), S(0, 0), S(0, 0), S(6, 16), S(15, 40), S(27, 72), S(42, 112), S(0, 0)};
  // The stop square is free and not attacked.
  Packed PassedSafeStep[8] = {S(0, 0), S(0, 0), S(0, 0), S(2, 8), S(5, 20), S(9, 36), S(14, 56), S(0, 0)};
  // The stop square is occupied.
  Packed PassedBlocked[8] = {S(0, 0), S(0, 0), S(0, 0), S(-2, -6), S(-5, -15), S(-9, -27), S(-14, -42),
                             S(0, 0)};

  // ---------------------------------------------------------------------------------------------
  // Pawn endings (centipawns, endgame).
  int UnstoppablePasser = 620;       // a passer the enemy king cannot catch
  int KpkWinBonus = 620;             // a won king and pawn against king ending
  int PawnEndingKingToPasser = 6;    // per square of king distance to a passer's stop square

  // ---------------------------------------------------------------------------------------------
  // Special endgames against a bare king.
  int MateEdgeWeight = 20;           // per step the weak king stands closer to an edge
  int MateCornerWeight = 22;         // per step closer to the mating corner (bishop and knight)
  int MateKingsCloseWeight = 12;     // per step the kings stand closer together
  int MateBaseBonus = 300;           // the stronger side is winning outright
};

// The weights in use. The engine reads them in place; the tuner changes them while it fits.
extern EvalWeights Weights;

// One named weight (or table) of EvalWeights, as the tuner reads and writes it.
struct WeightInfo {
  const char* name;
  int slot;      // index of its first 32-bit word in EvalWeights
  int length;    // 1, or the table's length
  bool packed;   // middlegame and endgame halves; else one plain number
  bool tuned;    // false: a shape of the evaluation (thresholds, divisors) or an exact rule
};
std::span<const WeightInfo> weightList();

}  // namespace tavrin
