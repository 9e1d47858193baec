// Placeholder evaluation driver: fills the attack summary and scores by piece-square sum only.
// Replaced by the full driver.
#include "eval/evaluate.h"

#include "eval/attack_summary.h"
#include "board/movegen.h"

namespace tavrin {

void evaluate(Position& pos, int, int, Move) {
  computeAttackSummary(pos);
  StateEntry& st = pos.st();
  int white = (middlegameOf(st.psqScore) + endgameOf(st.psqScore)) / 2;
  st.staticEval = pos.sideToMove == White ? white : -white;
  st.positionalEval = white;
  st.lazyCount = 0;
  st.decisiveEval = 0;
  st.evalFinal = 0;
}

void clearEvaluationTables() {}
void clearGainTable() {}
void resizePawnTable(int) {}
void seedEvaluationNoise(Position&) {}

std::int16_t GainTable[16 * 4096];

}  // namespace tavrin
