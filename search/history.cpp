// Clearing the history table shared by every searcher (the table lives with the move generators).
#include "search/history.h"

#include "search/search.h"

namespace tavrin {

void clearHistory() {
  for (std::uint16_t& h : HistoryTable) h = HistoryStart;
}

}  // namespace tavrin
