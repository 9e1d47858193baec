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
  int KnightPairPenalty = 4;       // two knights are a little redundant
  int RookPairPenalty = 16;        // so are two rooks
  int QueenRookPenalty = -8;       // queen and rook(s) overlap
  int KnightPawnAdjust = 4;        // per knight, per own pawn above (below) five
  int RookPawnAdjust = 3;          // per rook, per own pawn below (above) five

  // Scale factors (128 = 1.0) for drawish material.
  int ScaleNoWin = 0;              // the stronger side cannot mate at all
  int ScaleTwoKnightsVsPawns = 13; // two knights can only win against pawns, and rarely
  int ScalePawnlessMinorUp = 11;   // pawnless, at most a minor ahead
  int ScaleRookVsMinor = 24;       // pawnless rook against a minor
  int ScaleOnePawnMinorUp = 81;    // one pawn, at most a minor ahead: a piece can be given
  int ScaleOppositeBishops = 52;   // bishops of opposite colours, nothing else
  int ScaleOppositeBishopsRest = 109;  // opposite bishops with other pieces

  // ---------------------------------------------------------------------------------------------
  // Pawn structure (pawn table).
  Packed Isolated = S(-3, -16);
  Packed IsolatedOpen = S(-11, -3);       // extra when no enemy pawn stands in front
  Packed Doubled = S(-21, 1);             // for each pawn with an own pawn in front
  Packed Backward = S(-6, -17);
  Packed BackwardOpen = S(-16, 8);        // extra on a half-open file
  Packed Connected[8] = {S(0, 0), S(4, 0), S(11, 8), S(8, 4), S(11, 18), S(34, 49), S(44, 118), S(0, 0)};
  Packed Phalanx[8] = {S(0, 0), S(2, 0), S(0, -9), S(5, -2), S(8, 10), S(68, 16), S(35, 111), S(0, 0)};
  Packed PassedRank[8] = {S(0, 0), S(0, 28), S(-5, 23), S(-42, 50), S(0, 70), S(73, 136), S(122, 254),
                          S(0, 0)};
  Packed CandidateRank[8] = {S(0, 0), S(-7, 0), S(-5, 13), S(1, 17), S(3, 17), S(25, 39), S(0, 0), S(0, 0)};

  // Drawish pull bytes (applied as pull * min(total, 100) / drawPullDivisor).
  int PullSymmetric = 14;     // every file holds as many own as enemy pawns, no passer
  int PullOneWing = 5;        // all pawns of both sides on one wing, no passer
  int PullFewPawns = 10;      // at most two own pawns and no passer

  // King shelter and pawn storm (middlegame only), by relative rank of the nearest pawn in front
  // of the king on each of the three files around it; index 0 means no such pawn.
  int ShelterRank[8] = {-20, 15, 7, -2, -8, 13, -16, 0};
  int StormRank[8] = {0, 36, -25, -13, -1, 5, 2, 0};
  int StormBlocked = -3;            // enemy pawn stopped by an own pawn right in front of it
  int OpenFileNearKing = -9;        // no pawn at all on a file next to the king

  // ---------------------------------------------------------------------------------------------
  // Mobility, by the number of safe squares a piece attacks.
  Packed KnightMobility[9] = {S(-41, 7), S(-13, -14), S(-2, 23), S(0, 30), S(3, 38), S(7, 41), S(11, 46),
                              S(17, 47), S(20, 42)};
  Packed BishopMobility[14] = {S(-21, -25), S(-2, -2), S(9, 29), S(19, 40), S(24, 49), S(30, 59), S(36, 60),
                               S(39, 61), S(35, 69), S(32, 70), S(50, 65), S(53, 69), S(23, 83), S(79, 64)};
  Packed RookMobility[15] = {S(-47, 7), S(-29, 49), S(-16, 64), S(-16, 77), S(-15, 87), S(-14, 99),
                             S(-14, 109), S(-7, 107), S(-6, 117), S(-3, 120), S(0, 127), S(1, 129), S(1, 133),
                             S(8, 126), S(-15, 143)};
  Packed QueenMobility[28] = {S(100, -25), S(-3, -30), S(2, 81), S(17, -1), S(16, 78), S(21, 37), S(22, 91),
                              S(28, 83), S(29, 103), S(35, 93), S(37, 105), S(40, 110), S(39, 113),
                              S(37, 124), S(37, 139), S(38, 133), S(34, 147), S(31, 157), S(37, 157),
                              S(30, 159), S(38, 158), S(42, 152), S(58, 139), S(99, 102), S(21, 151),
                              S(80, 94), S(51, 150), S(70, 89)};

  // ---------------------------------------------------------------------------------------------
  // Piece terms.
  Packed KnightOutpost = S(25, 17);        // on a hole in the enemy half, pawn-defended
  Packed BishopOutpost = S(20, 9);
  Packed OutpostUndefended = S(17, 7);     // hole without a defending pawn
  Packed MinorBehindPawn = S(8, 12);
  Packed BishopPawnsSameColour = S(-6, -5);  // per own pawn on the bishop's colour
  Packed TrappedBishop = S(-71, -107);     // bishop on a7/h7 shut in by a pawn on b6/g6
  Packed RookOpenFile = S(36, 5);
  Packed RookHalfOpenFile = S(15, 10);
  Packed RookOnSeventh = S(24, 25);        // with the enemy king on the eighth or pawns on the seventh
  Packed QueenOnSeventh = S(-5, 23);
  Packed TrappedRook = S(-26, -18);        // hemmed in by its own uncastled king

  // ---------------------------------------------------------------------------------------------
  // King safety: a danger count turned into a middlegame penalty of danger^2 / DangerMiddlegameDivisor
  // and an endgame penalty of danger / DangerEndgameDivisor.
  Packed PawnlessFlank = S(100, -72);       // no pawn of either side on the king's wing
  int AttackerWeight[8] = {0, 0, 68, 0, 33, 54, 27, 31};  // by piece kind
  int ZoneAttackWeight = 92;     // per attack on a square next to the king
  int WeakZoneWeight = 87;       // per zone square attacked and defended only by the king
  int SafeCheckWeight[8] = {0, 0, 473, 0, 380, 610, 684, 516};
  int UnsafeCheckWeight = 150;
  int NoQueenRelief = 803;       // attackers without a queen rarely mate
  int KnightDefenderRelief = 98; // an own knight next to the king
  int ShelterRelief = 11;        // danger falls by shelter * 6 / 8
  int PinnedDanger = 137;        // per own piece pinned against the king
  int DangerBase = 57;
  int DangerThreshold = 100;     // below this no penalty
  int DangerLimit = 8000;        // above this no further penalty
  int DangerMiddlegameDivisor = 12288;
  int DangerEndgameDivisor = 48;

  // ---------------------------------------------------------------------------------------------
  // Threats.
  Packed ThreatByPawn = S(41, 17);           // a safe pawn attacks a piece
  Packed ThreatMinorOnMajor = S(41, 14);     // knight or bishop attacks rook or queen
  Packed ThreatMinorOnMinor = S(16, -7);     // ... attacks an undefended minor
  Packed ThreatRookOnQueen = S(46, -4);
  Packed ThreatHangingPiece = S(14, 22);     // attacked and undefended piece
  Packed ThreatHangingPawn = S(2, 31);
  Packed ThreatByKing = S(41, -1);           // the king attacks an undefended piece or pawn
  Packed PawnPushThreat = S(14, 4);          // a safe pawn push would attack a piece

  // ---------------------------------------------------------------------------------------------
  // Passed pawns with pieces, by the pawn's relative rank.
  // Per square of the enemy king's distance to the stop square (at most 5).
  Packed PassedEnemyKing[8] = {S(0, 0), S(-1, -4), S(-5, 4), S(8, 12), S(-1, 30), S(6, 42), S(4, 59),
                               S(0, 0)};
  // Per square of the own king's distance to it.
  Packed PassedOwnKing[8] = {S(0, 0), S(-2, 5), S(6, -6), S(3, -12), S(4, -20), S(-9, -29), S(-6, -43),
                             S(0, 0)};
  // Nothing on or attacking the path to promotion.
  Packed PassedFreePath[8] = {S(0, 0), S(-25, 14), S(-79, 29), S(-59, 36), S(-27, 45), S(53, 57), S(112, 54),
                              S(0, 0)};
  // The stop square is free and not attacked.
  Packed PassedSafeStep[8] = {S(0, 0), S(6, -1), S(7, 4), S(7, 7), S(0, 23), S(24, 27), S(14, 56), S(0, 0)};
  // The stop square is occupied.
  Packed PassedBlocked[8] = {S(0, 0), S(-9, -3), S(-8, -4), S(0, -2), S(-2, -4), S(-4, -23), S(-21, -74),
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

  // ---------------------------------------------------------------------------------------------
  // Rook or queen against a lone pawn, and rook endings (centipawns; scales with 128 = 1.0).
  int RookVsPawnDrawish = 80;        // advanced pawn beside its king, the rook's king far: this ...
  int RookVsPawnDistance = 8;        // ... less this per step of the rook's king from the queening square
  int RookVsPawnBase = 200;          // otherwise this, less the distance per step the kings' race is lost
  int QueenVsPawnDrawScale = 16;     // a rook or bishop pawn on the seventh beside its king
  int QueenVsPawnKingClose = 10;     // per step the queen's king stands closer to the pawn
  int ScaleRookPawnKingInFront = 32; // rook and pawn against rook, the defending king in front
  int ScaleRookEndingOneWing = 64;   // every pawn on one wing, the defending king beside them
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
