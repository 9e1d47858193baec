// Temporary stand-ins for the search until the real root search lands.
#include "search/search.h"
#include "uci/output.h"
#include "search/tt.h"
#include "board/movegen.h"

namespace tavrin {

RootResult Root;
Position SearchRecords[MaxThreads];

void runRootSearch(Position&) {}
void clearHistory() {}
void printPvLine(Position&, std::int64_t, int) {}
void printBestMove(Position&) {}
int lastPrintedDepth() { return 0; }
int resizeTable(int megabytes) { return megabytes; }
void clearTables() {}
void newSearch() {}

std::uint16_t HistoryTable[16 * 64];

}  // namespace tavrin
