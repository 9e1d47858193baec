// The process-wide engine variables and the limits of the current search.
#include "uci/globals.h"

namespace tavrin {

EngineGlobals Engine;
SearchLimits Limits;

}  // namespace tavrin
