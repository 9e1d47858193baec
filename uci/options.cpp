// The setoption command and reduced strength.
#include "uci/options.h"

#include <algorithm>
#include <cstring>

#include "common/console.h"
#include "common/globals.h"
#include "eval/evaluate.h"
#include "search/split_point.h"
#include "search/tt.h"
#include "uci/decimal.h"

namespace tavrin {

namespace {

// Weaker settings care less for material and more for position.
constexpr int LowestBandElo = 849;
constexpr StrengthBand StrengthBands[] = {
    {900, 885, 15},  {950, 820, 15},  {1000, 760, 16}, {1050, 700, 16}, {1100, 660, 17}, {1150, 620, 18},
    {1200, 585, 19}, {1250, 562, 20}, {1300, 535, 21}, {1350, 510, 22}, {1400, 488, 23}, {1450, 460, 24},
    {1500, 442, 25}, {1550, 425, 28}, {1600, 400, 30}, {1650, 385, 32}, {1700, 370, 34}, {1750, 355, 34},
    {1800, 340, 35}, {1850, 322, 36}, {1900, 293, 39}, {1950, 277, 40}, {2000, 263, 43}, {2050, 250, 45},
    {2100, 237, 47}, {2150, 225, 50}, {2200, 213, 52}, {2250, 202, 55}, {2300, 192, 58}, {2350, 182, 61},
    {2400, 172, 64}, {2450, 164, 67}, {2500, 156, 70}, {2550, 148, 74}, {2600, 140, 78},
};
constexpr int HighestBandElo = 2600;

// Hash sizes: the advertised range, so that each table keeps at least one cluster and an absurd
// value cannot ask for more memory than a user was offered.
constexpr int MinHashMegabytes = 3;
constexpr int MaxHashMegabytes = 4096;

bool startsWith(const char* text, const char* word) { return std::strncmp(text, word, std::strlen(word)) == 0; }

// The text after the first "value" and one more character, or nullptr without a "value".
const char* valueText(const char* text) {
  const char* v = std::strstr(text, "value");
  if (!v) return nullptr;
  v += 5;
  return *v ? v + 1 : v;
}

}  // namespace

const StrengthBand* strengthBand(int elo) {
  int lower = LowestBandElo;
  for (const StrengthBand& band : StrengthBands) {
    if (elo > lower && elo <= band.upperElo) return &band;
    lower = band.upperElo;
  }
  return nullptr;
}

namespace {

// The evaluation weights that reduced strength rewrites.
struct StrengthWeights {
  int material, positional, pawn, knight, bishop, rook, queen, bishopPair;
};

void setWeights(const StrengthWeights& w) {
  Engine.materialWeight = w.material;
  Engine.positionalWeight = w.positional;
  Engine.pawnValue = w.pawn;
  Engine.knightValue = w.knight;
  Engine.bishopValue = w.bishop;
  Engine.rookValue = w.rook;
  Engine.queenValue = w.queen;
  Engine.bishopPairBonus = w.bishopPair;
}

}  // namespace

void setFullStrengthWeights() {
  setWeights({100, 102, 100, 325, 325, 500, 975, 55});
  Engine.materialOnly = 0;
}

void applyStrengthLimit() {
  if (const StrengthBand* band = strengthBand(Engine.limitElo)) {
    setWeights({band->materialWeight, band->positionalWeight, 100, 300, 300, 500, 1000, 55});
  } else if (Engine.limitElo > HighestBandElo) {
    setFullStrengthWeights();
  }
  // Below the lowest band the weights of the previous go stay.
  printOut("info string Tavrin running in reduced strength mode \n");
}

void setOption(const char* text) {
  const char* value = valueText(text);
  if (!value) return;

  if (startsWith(text, "Hash")) {
    const std::int64_t n = std::clamp<std::int64_t>(readDecimal(value), MinHashMegabytes, MaxHashMegabytes);
    Engine.hashMegabytes = resizeTable(int(n - 2));
    Engine.pawnHashMegabytes = int(n / 16 > 0 ? n / 16 : 1);
    resizePawnTable(Engine.pawnHashMegabytes);
  }
  if (startsWith(text, "Threads")) setThreadCount(int(std::clamp<std::int64_t>(readDecimal(value), 1, MaxThreads)));
  if (startsWith(text, "MultiPV")) {
    const std::int64_t n = readDecimal(value);
    Engine.multiPV = int(std::clamp<std::int64_t>(n, 1, 8));
  }
  if (startsWith(text, "UCI_LimitStrength")) {
    if (std::strcmp(value, "false") == 0) Engine.limitStrength = 0;
    if (std::strcmp(value, "true") == 0) {
      Engine.limitStrength = 1;
      printOut("info string Strength limited\n");
    }
  }
  if (startsWith(text, "UCI_Elo")) Engine.limitElo = std::int32_t(std::uint32_t(std::uint64_t(readDecimal(value))));
  if (startsWith(text, "Ponder")) {
    if (std::strcmp(value, "false") == 0) Engine.ponderMode = 0;
    if (std::strcmp(value, "true") == 0) Engine.ponderMode = 1;
  }
}

}  // namespace tavrin
