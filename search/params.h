// Every search margin, reduction and limit that the search routines use, each named once.
#pragma once

namespace tavrin::params {

// --- Quiescence -----------------------------------------------------------------------------
constexpr int QuiesceTempo = 16;            // stand pat: the side to move's tempo
constexpr int QuiesceEvasionTempo = 12;     // stand-pat estimate of a side in check
constexpr int DeltaPawn = 190;              // beyond this below beta, pawn captures cannot help
constexpr int DeltaMinor = 570;             // ... nor captures of knights and bishops
constexpr int DeltaRook = 950;              // ... nor captures of rooks
constexpr int EvasionDeltaPawn = 200;       // in check: pawn captures dropped this far below beta
constexpr int EvasionDeltaMinor = 500;      // in check: minor-piece captures dropped as well
constexpr int QuietCheckBase = 12;          // quiet checks tried if eval >= beta - (12 << (d+4)) - 100
constexpr int QuietCheckOffset = 100;
constexpr int QuiesceStoreDepth = 1;        // quiescence results enter the table at this depth

// --- Node search, shared ------------------------------------------------------------------------
constexpr int LazyMargin = 884;             // evaluation window around beta after every make
constexpr int QuiesceLazyMargin = 442;      // the same inside quiescence
constexpr int NullBaseReduction = 3;        // null move child at depth - 3 - extra
constexpr int NullExtraCap = 96;            // eval - beta above this adds no more reduction
constexpr int NullExtraDivisor = 32;        // each 32 cp of eval - beta adds a half-ply
constexpr int NullVerifyReduction = 3;      // verification search at null depth - 3
constexpr int NullVerifyMinDepth = 7;       // verify only when that depth exceeds 7
constexpr int IidMinDepth = 6;              // internal iterative deepening from this depth
constexpr int IidReduction = 4;             // ... at depth - 4
constexpr int PvIidDeepMinDepth = 10;       // PV nodes first try depth - 8 from this depth
constexpr int PvIidDeepReduction = 8;
constexpr int SingularMinDepth = 16;        // singular test from this depth
constexpr int SingularMaxReduction = 12;    // test depth is depth - min(depth / 2, 12)
constexpr int PrunableDepth = 20;           // razoring, futility and move-count pruning below this
constexpr int RazorExclusionOffset = 12;    // exclusion nodes: razor when beta - eval >= (3d - 12) * 16
constexpr int RazorCutAllOffset = 15;       // cut and all nodes: (3d - 15) * 16
constexpr int RazorPawnOffset = 6;          // pawn captures dropped as well from (3d - 6) * 16
constexpr int RazorScale = 16;
constexpr int FutilityBase = 30;            // futility threshold T starts at beta + 30
constexpr int FutilityStep = 2;             // ... and rises by 2 per move searched or pruned
constexpr int FutilityMinMoves = 5;         // gain futility and move-count pruning after 5 moves
constexpr int GainMarginShift = 6;          // gain futility margin 6 << (depth - 6)
constexpr int ExchangeMarginShift = 2;      // exchange futility applies when eval + (2 << (d-6)) < beta + 125
constexpr int ExchangeFutilityBase = 125;
constexpr int MoveCountMarginShift = 2;     // move-count pruning margin 2 << (depth - 6)
constexpr int MoveCountOffset = 15;         // ... against n + beta - 15
constexpr int LmrMinMoves = 3;              // late quiet moves are reduced from the fourth on
constexpr int HistoryPenaltyMargin = 50;    // history penalty only when eval > beta - 50
constexpr int MaxSearchPly = 200;           // deeper than this a node returns its static evaluation

// --- Shallow nodes (3 <= depth <= 7) -------------------------------------------------------------
constexpr int ShallowFailLowMargin = 1125;  // eval + 1125 < beta fails low before the probe
constexpr int ShallowStaticNullBase = 35;   // return eval when eval - 2 * (5d + 35) >= beta
constexpr int ShallowStaticNullPerDepth = 5;
constexpr int ShallowRazorBase = 50;        // reduced sequence when eval + 8d + 50 < beta
constexpr int ShallowRazorPerDepth = 8;
constexpr int ShallowRazorPawnBase = 75;    // pawn captures dropped when beta >= eval + 32d + 75
constexpr int ShallowRazorPawnPerDepth = 32;
constexpr int ShallowSequenceMaxDepth = 3;  // shallow picker sequence at depth <= 3 ...
constexpr int ShallowSequencePerDepth = 4;  // ... when eval + 4d < beta
constexpr int ShallowSequenceMarginExtra = 5;
constexpr int ShallowFutilityBase = 40;     // futility threshold T starts at beta + 40
constexpr int ShallowGainPerDepth = 2;      // gain futility margin 2 * depth
// Exchange futility of shallow nodes: a quiet move that loses material is pruned when
// eval + depth < beta + 125, continuing the deep formula's margin (4 at depth 7, 8 at depth 8)
// downwards instead of shifting by a negative count.
constexpr int ShallowExchangePerDepth = 1;
// Move-count pruning of shallow nodes: after 3 + depth moves, a quiet move whose child evaluation
// stays below beta - n + 15 - 8 * depth is pruned (a margin of 24 to 56 centipawns).
constexpr int ShallowMoveCountBase = 3;
constexpr int ShallowMoveCountPerDepth = 8;

// --- Evasion nodes ------------------------------------------------------------------------------
// Evasions after the seventh are reduced by floor(log2 k) - 2 half-plies (1 for moves 8-15,
// 2 for 16-31); captures and the table move are never reduced.
constexpr int EvasionLmrMinMoves = 8;
constexpr int EvasionLmrOffset = 2;

// --- Root ---------------------------------------------------------------------------------------
constexpr int AspirationMinDepth = 12;      // aspiration windows from depth 12 (six plies)
constexpr int AspirationFirstStep = 8;      // window s +- 8, step grows by half of itself
constexpr int AspirationScoreLimit = 25000; // no aspiration beyond this last score
constexpr int RootLadderMinDepth = 16;      // PV ladder for late root moves from child depth 16
constexpr int RootLadderStart = 12;         // ladder from d - 12 ...
constexpr int RootLadderStep = 4;           // ... in steps of 4
constexpr int CurrmoveMinDepth = 24;        // info currmove from the 12th ply on
constexpr int MaxIterationDepth = 250;      // 125 plies
// Time (between iterations of a timed search; the poll stops at the three-quarter target unless
// one of the root's two flags holds it back). The rules are in search/stop_rules.h.
// Stop at the quarter target when the best move has not changed for this many iterations and the
// score moved by at most StableScoreMargin in the last one (44000, twice the mate score: the score
// is not looked at), or when there is one legal move.
constexpr int StableIterations = 6;
constexpr int StableScoreMargin = 44000;
// The score is falling (first flag) when the iteration failed low or ended this far below the last
// (44000: only a fail-low counts).
constexpr int ScoreDropMargin = 44000;
// The best move is unsettled (second flag) when it changed in the current iteration or in one of
// this many iterations before it.
constexpr int UnsettledIterations = 0;
// A held search may run on to this many soft targets ...
constexpr int HeldSoftTargetFactor = 3;
// ... and past the three-quarter target begins no iteration that, taking this many times as long
// as the last one, would end after the hard limit (0: no such rule).
constexpr int NextIterationGrowth = 0;

// --- Split points -------------------------------------------------------------------------------
constexpr int MinSplitDepth = 8;            // nodes below four plies never offer a split

}  // namespace tavrin::params
