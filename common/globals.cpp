// The process-wide engine variables and the limits of the current search.
#include "common/globals.h"

namespace tavrin {

EngineGlobals Engine;
SearchLimits Limits;

}  // namespace tavrin
