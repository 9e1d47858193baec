// Placeholder periodic check until input polling lands.
#include "uci/polling.h"

namespace tavrin {

void periodicCheck(Position&, int) {}

}  // namespace tavrin
