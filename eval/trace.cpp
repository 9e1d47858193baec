// The traced evaluation: the driver's full path with the trace switched on.
#include "eval/trace.h"

#include "eval/eval_internal.h"
#include "eval/material.h"

namespace tavrin {

EvalTrace* ActiveTrace = nullptr;

void recordNote(const std::int32_t& weight, int channel, int count) {
  ActiveTrace->notes.push_back({std::uint16_t(slotOf(weight)), std::uint8_t(channel), count});
}

int traceEvaluation(Position& pos, EvalTrace& trace) {
  trace.reset();
  MaterialInfo mi = probeMaterial(pos);
  PawnEntry pe;
  EvalTerms terms;
  ActiveTrace = &trace;
  evaluatePawns(pos, pe);
  const int total = evaluateStatic(pos, mi, pe, terms);
  traceMaterial(pos, trace);
  ActiveTrace = nullptr;

  Packed sum = terms.pieceSquare + terms.pawns;
  for (Color c : {White, Black}) {
    Packed side = terms.mobility[c] + terms.pieces[c] + terms.kingSafety[c] + terms.threats[c] + terms.passed[c];
    sum += c == White ? side : -side;
  }
  const std::uint32_t key = pos.st().materialKey;
  trace.positional = sum;
  trace.material = mi.value;
  trace.scale = mi.scale;
  trace.phase = gamePhase(key);
  trace.flags = mi.flags;
  trace.total = total;
  for (Color c : {White, Black}) {
    trace.pull[c] = pe.pull[c];
    trace.shelter[c] = pe.shelter[c];
  }
  // An endgame rule that left the score as it was does not take the position out of the model.
  const bool ruleChanged = (mi.flags & FlagSpecialEnding) &&
                           total != clampScore(combineScore(taper(sum, trace.phase), mi, pe));
  trace.modelled = !kingsAndPawnsOnly(key) && !ruleChanged &&
                   !(mi.flags & (FlagWhiteMinorOnly | FlagBlackMinorOnly));
  return total;
}

}  // namespace tavrin
