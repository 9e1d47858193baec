// Engine options (setoption) and the reduced-strength weights.
#pragma once

namespace tavrin {

// Handles the text after "setoption name ".
void setOption(const char* text);
// Sets the evaluation weights from UCI_Elo while strength is limited; prints the info string.
void applyStrengthLimit();
// The full-strength evaluation weights and piece values.
void setFullStrengthWeights();

// One row of the strength table: Elo above the previous row's bound up to and including this one.
struct StrengthBand {
  int upperElo;
  int positionalWeight;
  int materialWeight;
};
// The band for an Elo, or nullptr outside 850 .. 2600.
const StrengthBand* strengthBand(int elo);

}  // namespace tavrin
