// Clearing the move-ordering memory: the history table shared by every searcher (it lives with
// the move generators) and the killers in the search records' state entries.
#include "search/history.h"

#include <cstring>

#include "search/search.h"
#include "search/split_point.h"

namespace tavrin {

void clearHistory() {
  for (std::uint16_t& h : HistoryTable) h = HistoryStart;
}

void clearKillers() {
  forEachSearchRecord([](Position& rec) {
    std::memset(static_cast<void*>(rec.stateStack + 2), 0, (rec.stackEntries - 2) * sizeof(StateEntry));
  });
}

}  // namespace tavrin
