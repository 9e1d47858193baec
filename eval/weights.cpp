// The weights in use, and the list of their names that the tuner reads and writes them by.
#include "eval/weights.h"

#include <cstddef>

namespace tavrin {

EvalWeights Weights;

// Slot (index in 32-bit words) and length of a member of EvalWeights.
#define WEIGHT(name) int(offsetof(EvalWeights, name) / 4), int(sizeof(EvalWeights::name) / 4)

std::span<const WeightInfo> weightList() {
  static const WeightInfo List[] = {
    {"KnightPairPenalty", WEIGHT(KnightPairPenalty), false, true},
    {"RookPairPenalty", WEIGHT(RookPairPenalty), false, true},
    {"QueenRookPenalty", WEIGHT(QueenRookPenalty), false, true},
    {"KnightPawnAdjust", WEIGHT(KnightPawnAdjust), false, true},
    {"RookPawnAdjust", WEIGHT(RookPawnAdjust), false, true},
    {"ScaleNoWin", WEIGHT(ScaleNoWin), false, false},
    {"ScaleTwoKnightsVsPawns", WEIGHT(ScaleTwoKnightsVsPawns), false, true},
    {"ScalePawnlessMinorUp", WEIGHT(ScalePawnlessMinorUp), false, true},
    {"ScaleRookVsMinor", WEIGHT(ScaleRookVsMinor), false, true},
    {"ScaleOnePawnMinorUp", WEIGHT(ScaleOnePawnMinorUp), false, true},
    {"ScaleOppositeBishops", WEIGHT(ScaleOppositeBishops), false, true},
    {"ScaleOppositeBishopsRest", WEIGHT(ScaleOppositeBishopsRest), false, true},
    {"Isolated", WEIGHT(Isolated), true, true},
    {"IsolatedOpen", WEIGHT(IsolatedOpen), true, true},
    {"Doubled", WEIGHT(Doubled), true, true},
    {"Backward", WEIGHT(Backward), true, true},
    {"BackwardOpen", WEIGHT(BackwardOpen), true, true},
    {"Connected", WEIGHT(Connected), true, true},
    {"Phalanx", WEIGHT(Phalanx), true, true},
    {"PassedRank", WEIGHT(PassedRank), true, true},
    {"CandidateRank", WEIGHT(CandidateRank), true, true},
    {"PullSymmetric", WEIGHT(PullSymmetric), false, true},
    {"PullOneWing", WEIGHT(PullOneWing), false, true},
    {"PullFewPawns", WEIGHT(PullFewPawns), false, true},
    {"ShelterRank", WEIGHT(ShelterRank), false, true},
    {"StormRank", WEIGHT(StormRank), false, true},
    {"StormBlocked", WEIGHT(StormBlocked), false, true},
    {"OpenFileNearKing", WEIGHT(OpenFileNearKing), false, true},
    {"KnightMobility", WEIGHT(KnightMobility), true, true},
    {"BishopMobility", WEIGHT(BishopMobility), true, true},
    {"RookMobility", WEIGHT(RookMobility), true, true},
    {"QueenMobility", WEIGHT(QueenMobility), true, true},
    {"KnightOutpost", WEIGHT(KnightOutpost), true, true},
    {"BishopOutpost", WEIGHT(BishopOutpost), true, true},
    {"OutpostUndefended", WEIGHT(OutpostUndefended), true, true},
    {"MinorBehindPawn", WEIGHT(MinorBehindPawn), true, true},
    {"BishopPawnsSameColour", WEIGHT(BishopPawnsSameColour), true, true},
    {"TrappedBishop", WEIGHT(TrappedBishop), true, true},
    {"RookOpenFile", WEIGHT(RookOpenFile), true, true},
    {"RookHalfOpenFile", WEIGHT(RookHalfOpenFile), true, true},
    {"RookOnSeventh", WEIGHT(RookOnSeventh), true, true},
    {"QueenOnSeventh", WEIGHT(QueenOnSeventh), true, true},
    {"TrappedRook", WEIGHT(TrappedRook), true, true},
    {"PawnlessFlank", WEIGHT(PawnlessFlank), true, true},
    {"AttackerWeight", WEIGHT(AttackerWeight), false, true},
    {"ZoneAttackWeight", WEIGHT(ZoneAttackWeight), false, true},
    {"WeakZoneWeight", WEIGHT(WeakZoneWeight), false, true},
    {"SafeCheckWeight", WEIGHT(SafeCheckWeight), false, true},
    {"UnsafeCheckWeight", WEIGHT(UnsafeCheckWeight), false, true},
    {"NoQueenRelief", WEIGHT(NoQueenRelief), false, true},
    {"KnightDefenderRelief", WEIGHT(KnightDefenderRelief), false, true},
    {"ShelterRelief", WEIGHT(ShelterRelief), false, true},
    {"PinnedDanger", WEIGHT(PinnedDanger), false, true},
    {"DangerBase", WEIGHT(DangerBase), false, true},
    {"DangerThreshold", WEIGHT(DangerThreshold), false, false},
    {"DangerLimit", WEIGHT(DangerLimit), false, false},
    {"DangerMiddlegameDivisor", WEIGHT(DangerMiddlegameDivisor), false, false},
    {"DangerEndgameDivisor", WEIGHT(DangerEndgameDivisor), false, false},
    {"ThreatByPawn", WEIGHT(ThreatByPawn), true, true},
    {"ThreatMinorOnMajor", WEIGHT(ThreatMinorOnMajor), true, true},
    {"ThreatMinorOnMinor", WEIGHT(ThreatMinorOnMinor), true, true},
    {"ThreatRookOnQueen", WEIGHT(ThreatRookOnQueen), true, true},
    {"ThreatHangingPiece", WEIGHT(ThreatHangingPiece), true, true},
    {"ThreatHangingPawn", WEIGHT(ThreatHangingPawn), true, true},
    {"ThreatByKing", WEIGHT(ThreatByKing), true, true},
    {"PawnPushThreat", WEIGHT(PawnPushThreat), true, true},
    {"PassedEnemyKing", WEIGHT(PassedEnemyKing), true, true},
    {"PassedOwnKing", WEIGHT(PassedOwnKing), true, true},
    {"PassedFreePath", WEIGHT(PassedFreePath), true, true},
    {"PassedSafeStep", WEIGHT(PassedSafeStep), true, true},
    {"PassedBlocked", WEIGHT(PassedBlocked), true, true},
    {"UnstoppablePasser", WEIGHT(UnstoppablePasser), false, false},
    {"KpkWinBonus", WEIGHT(KpkWinBonus), false, false},
    {"PawnEndingKingToPasser", WEIGHT(PawnEndingKingToPasser), false, false},
    {"MateEdgeWeight", WEIGHT(MateEdgeWeight), false, false},
    {"MateCornerWeight", WEIGHT(MateCornerWeight), false, false},
    {"MateKingsCloseWeight", WEIGHT(MateKingsCloseWeight), false, false},
    {"MateBaseBonus", WEIGHT(MateBaseBonus), false, false},
    {"RookVsPawnDrawish", WEIGHT(RookVsPawnDrawish), false, false},
    {"RookVsPawnDistance", WEIGHT(RookVsPawnDistance), false, false},
    {"RookVsPawnBase", WEIGHT(RookVsPawnBase), false, false},
    {"QueenVsPawnDrawScale", WEIGHT(QueenVsPawnDrawScale), false, false},
    {"QueenVsPawnKingClose", WEIGHT(QueenVsPawnKingClose), false, false},
    {"ScaleRookPawnKingInFront", WEIGHT(ScaleRookPawnKingInFront), false, false},
    {"ScaleRookEndingOneWing", WEIGHT(ScaleRookEndingOneWing), false, false},
  };
  return List;
}

#undef WEIGHT

}  // namespace tavrin
