// Every evaluation weight in one place, as packed middlegame/endgame constants, for hand and
// machine tuning alike. Piece values and the global blend weights live in EngineGlobals.
#pragma once

#include "board/types.h"

namespace tavrin::weights {

constexpr Packed S(int mg, int eg) { return pack(mg, eg); }

// ---------------------------------------------------------------------------------------------
// Material table corrections (centipawns, added to the material value).
constexpr int KnightPairPenalty = 8;       // two knights are a little redundant
constexpr int RookPairPenalty = 16;        // so are two rooks
constexpr int QueenRookPenalty = 8;        // queen and rook(s) overlap
constexpr int KnightPawnAdjust = 3;        // per knight, per own pawn above (below) five
constexpr int RookPawnAdjust = 6;          // per rook, per own pawn below (above) five

// Scale factors (128 = 1.0) for drawish material.
constexpr int ScaleNoWin = 0;              // the stronger side cannot mate at all
constexpr int ScaleTwoKnightsVsPawns = 32; // two knights can only win against pawns, and rarely
constexpr int ScalePawnlessMinorUp = 16;   // pawnless, at most a minor ahead
constexpr int ScaleRookVsMinor = 24;       // pawnless rook against a minor
constexpr int ScaleOnePawnMinorUp = 80;    // one pawn, at most a minor ahead: a piece can be given
constexpr int ScaleOppositeBishops = 52;   // bishops of opposite colours, nothing else
constexpr int ScaleOppositeBishopsRest = 100;  // opposite bishops with other pieces

// ---------------------------------------------------------------------------------------------
// Pawn structure (pawn table).
constexpr Packed Isolated = S(-9, -13);
constexpr Packed IsolatedOpen = S(-8, -5);        // extra when no enemy pawn stands in front
constexpr Packed Doubled = S(-10, -22);           // for each pawn with an own pawn in front
constexpr Packed Backward = S(-8, -11);
constexpr Packed BackwardOpen = S(-8, -3);        // extra on a half-open file
constexpr Packed Connected[8] = {S(0, 0), S(4, 0), S(6, 2), S(8, 5), S(16, 12), S(30, 24), S(52, 44), S(0, 0)};
constexpr Packed Phalanx[8] = {S(0, 0), S(2, 0), S(3, 1), S(5, 3), S(10, 8), S(20, 16), S(32, 28), S(0, 0)};
constexpr Packed PassedRank[8] = {S(0, 0), S(3, 10), S(5, 14), S(10, 22), S(24, 42), S(52, 84), S(90, 140), S(0, 0)};
constexpr Packed CandidateRank[8] = {S(0, 0), S(2, 5), S(3, 7), S(6, 12), S(12, 24), S(20, 40), S(0, 0), S(0, 0)};

// Drawish pull bytes (applied as pull * min(total, 100) / drawPullDivisor).
constexpr int PullSymmetric = 14;     // every file holds as many own as enemy pawns, no passer
constexpr int PullOneWing = 8;        // all pawns of both sides on one wing, no passer
constexpr int PullFewPawns = 6;       // at most two own pawns and no passer

// King shelter and pawn storm (middlegame only), by relative rank of the nearest pawn in front
// of the king on each of the three files around it; index 0 means no such pawn.
constexpr int ShelterRank[8] = {-28, 26, 16, 4, -2, -6, -8, 0};
constexpr int StormRank[8] = {0, -20, -34, -18, -7, 0, 0, 0};
constexpr int StormBlocked = -6;            // enemy pawn stopped by an own pawn right in front of it
constexpr int OpenFileNearKing = -10;       // no pawn at all on a file next to the king

// ---------------------------------------------------------------------------------------------
// Mobility, by the number of safe squares a piece attacks.
constexpr Packed KnightMobility[9] = {S(-35, -41), S(-25, -30), S(-7, -16), S(-2, -6), S(1, 0),
                                      S(5, 4), S(8, 7), S(11, 9), S(14, 10)};
constexpr Packed BishopMobility[14] = {S(-26, -32), S(-12, -16), S(7, -4), S(14, 5), S(19, 11),
                                       S(25, 18), S(28, 24), S(31, 28), S(33, 31), S(35, 34),
                                       S(38, 36), S(40, 38), S(43, 40), S(45, 41)};
constexpr Packed RookMobility[15] = {S(-32, -42), S(-15, -13), S(-5, 5), S(-3, 13), S(-1, 20),
                                     S(1, 28), S(4, 35), S(8, 40), S(11, 46), S(14, 51),
                                     S(16, 55), S(18, 57), S(20, 59), S(21, 61), S(22, 62)};
constexpr Packed QueenMobility[28] = {S(-18, -25), S(-9, -13), S(-4, -4), S(-2, 3), S(-1, 9), S(2, 14),
                                      S(4, 19), S(7, 24), S(9, 28), S(11, 32), S(14, 35), S(16, 38),
                                      S(17, 41), S(18, 43), S(19, 46), S(20, 48), S(22, 50), S(23, 53),
                                      S(24, 55), S(25, 56), S(26, 58), S(28, 60), S(29, 62), S(30, 64),
                                      S(31, 65), S(32, 66), S(34, 67), S(35, 68)};

// ---------------------------------------------------------------------------------------------
// Piece terms.
constexpr Packed KnightOutpost = S(30, 14);        // on a hole in the enemy half, pawn-defended
constexpr Packed BishopOutpost = S(16, 6);
constexpr Packed OutpostUndefended = S(12, 4);     // hole without a defending pawn
constexpr Packed MinorBehindPawn = S(14, 3);
constexpr Packed BishopPawnsSameColour = S(-3, -6);  // per own pawn on the bishop's colour
constexpr Packed TrappedBishop = S(-80, -80);      // bishop on a7/h7 shut in by a pawn on b6/g6
constexpr Packed RookOpenFile = S(38, 16);
constexpr Packed RookHalfOpenFile = S(18, 6);
constexpr Packed RookOnSeventh = S(18, 34);        // with the enemy king on the eighth or pawns on the seventh
constexpr Packed QueenOnSeventh = S(6, 18);
constexpr Packed TrappedRook = S(-44, -6);         // hemmed in by its own uncastled king

// ---------------------------------------------------------------------------------------------
// King safety: a danger count turned into a middlegame penalty of danger^2 / DangerMiddlegameDivisor
// and an endgame penalty of danger / DangerEndgameDivisor.
constexpr int AttackerWeight[8] = {0, 0, 77, 0, 54, 54, 46, 12};  // by piece kind
constexpr int ZoneAttackWeight = 66;     // per attack on a square next to the king
constexpr int WeakZoneWeight = 170;      // per zone square attacked and defended only by the king
constexpr int SafeCheckWeight[8] = {0, 0, 760, 0, 610, 610, 1020, 760};
constexpr int UnsafeCheckWeight = 140;
constexpr int NoQueenRelief = 760;       // attackers without a queen rarely mate
constexpr int KnightDefenderRelief = 90; // an own knight next to the king
constexpr int ShelterRelief = 6;         // danger falls by shelter * 6 / 8
constexpr int DangerBase = 20;
constexpr int DangerThreshold = 100;     // below this no penalty
constexpr int DangerLimit = 8000;        // above this no further penalty
constexpr int DangerMiddlegameDivisor = 12288;
constexpr int DangerEndgameDivisor = 48;

// ---------------------------------------------------------------------------------------------
// Threats.
constexpr Packed ThreatByPawn = S(72, 56);           // a safe pawn attacks a piece
constexpr Packed ThreatMinorOnMajor = S(52, 58);     // knight or bishop attacks rook or queen
constexpr Packed ThreatMinorOnMinor = S(20, 28);     // ... attacks an undefended minor
constexpr Packed ThreatRookOnQueen = S(44, 32);
constexpr Packed ThreatHangingPiece = S(36, 22);     // attacked and undefended piece
constexpr Packed ThreatHangingPawn = S(4, 16);
constexpr Packed ThreatByKing = S(6, 30);            // the king attacks an undefended piece or pawn
constexpr Packed PawnPushThreat = S(18, 14);         // a safe pawn push would attack a piece

// ---------------------------------------------------------------------------------------------
// Passed pawns with pieces, multiplied by a rank weight.
constexpr int PassedRankWeight[8] = {0, 0, 0, 2, 5, 9, 14, 0};
constexpr int PassedEnemyKingDistance = 5;   // endgame, per square of the enemy king's distance
constexpr int PassedOwnKingDistance = 2;     // endgame, per square of the own king's distance
constexpr Packed PassedFreePath = S(3, 8);   // nothing on or attacking the path to promotion
constexpr Packed PassedSafeStep = S(1, 4);   // the stop square is free and not attacked
constexpr Packed PassedBlocked = S(-1, -3);  // the stop square is occupied

// ---------------------------------------------------------------------------------------------
// Pawn endings (centipawns, endgame).
constexpr int UnstoppablePasser = 620;       // a passer the enemy king cannot catch
constexpr int KpkWinBonus = 620;             // a won king and pawn against king ending
constexpr int PawnEndingKingToPasser = 6;    // per square of king distance to a passer's stop square

// ---------------------------------------------------------------------------------------------
// Special endgames against a bare king.
constexpr int MateEdgeWeight = 20;           // per step the weak king stands closer to an edge
constexpr int MateCornerWeight = 22;         // per step closer to the mating corner (bishop and knight)
constexpr int MateKingsCloseWeight = 12;     // per step the kings stand closer together
constexpr int MateBaseBonus = 300;           // the stronger side is winning outright

}  // namespace tavrin::weights
