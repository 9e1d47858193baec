// The weights file as text: its values read into EvalWeights, and new values written into it with
// everything else (names, comments, layout around them) left as it was.
#pragma once

#include <string>

#include "eval/weights.h"

namespace tavrin::tool {

// Reads every listed weight's value from the text; false with the reason when one is missing or
// has the wrong number of values.
bool readWeightsText(const std::string& text, EvalWeights& out, std::string& error);

// The text with every listed weight's value replaced by the one in weights. A trailing comment
// keeps its column where the new value leaves room.
std::string writeWeightsText(const std::string& text, const EvalWeights& weights);

}  // namespace tavrin::tool
