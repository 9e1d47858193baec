// Temporary stand-ins for the search until the real root search lands.
#include "search/search.h"
#include "uci/output.h"

namespace tavrin {

RootResult Root;
Position SearchRecords[MaxThreads];

void runRootSearch(Position&) {}
void clearHistory() {}
void printPvLine(Position&, std::int64_t, int) {}
void printBestMove(Position&) {}

}  // namespace tavrin
