// The history table shared by every searcher.
#include "search/history.h"

#include "search/search.h"

namespace tavrin {

std::uint16_t HistoryTable[16 * 64];

void clearHistory() {
  for (std::uint16_t& h : HistoryTable) h = HistoryStart;
}

}  // namespace tavrin
