// Engine options and the reduced-strength weights.
#include <gtest/gtest.h>

#include <string>

#include "common/globals.h"
#include "uci/options.h"

using namespace tavrin;

namespace {

std::string setOptionOutput(const char* text) {
  testing::internal::CaptureStdout();
  setOption(text);
  return testing::internal::GetCapturedStdout();
}

std::string applyStrengthOutput() {
  testing::internal::CaptureStdout();
  applyStrengthLimit();
  return testing::internal::GetCapturedStdout();
}

constexpr const char* ReducedStrengthInfo = "info string Tavrin running in reduced strength mode \n";

}  // namespace

TEST(StrengthLimit, BandsByElo) {
  struct Case {
    int elo;
    int positional, material;
  };
  const Case cases[] = {
      {850, 885, 15},  {900, 885, 15},  {901, 820, 15},  {1600, 400, 30}, {1601, 385, 32},
      {2000, 263, 43}, {2500, 156, 70}, {2501, 148, 74}, {2600, 140, 78},
  };
  for (const Case& c : cases) {
    Engine = EngineGlobals{};
    Engine.limitElo = c.elo;
    EXPECT_EQ(applyStrengthOutput(), ReducedStrengthInfo);
    EXPECT_EQ(Engine.positionalWeight, c.positional) << c.elo;
    EXPECT_EQ(Engine.materialWeight, c.material) << c.elo;
  }
  EXPECT_EQ(strengthBand(849), nullptr);
  EXPECT_EQ(strengthBand(2601), nullptr);
}

TEST(StrengthLimit, AboveTheBandsFullStrengthBelowThemUnchanged) {
  Engine = EngineGlobals{};
  Engine.limitElo = 1200;
  applyStrengthOutput();
  // 800 keeps the weights of the previous go.
  Engine.limitElo = 800;
  EXPECT_EQ(applyStrengthOutput(), ReducedStrengthInfo);
  EXPECT_EQ(Engine.positionalWeight, 585);
  EXPECT_EQ(Engine.materialWeight, 19);
  // 2601 restores full strength and still says reduced strength.
  Engine.limitElo = 2601;
  Engine.materialOnly = 1;
  EXPECT_EQ(applyStrengthOutput(), ReducedStrengthInfo);
  EXPECT_EQ(Engine.positionalWeight, 102);
  EXPECT_EQ(Engine.materialWeight, 100);
  EXPECT_EQ(Engine.knightValue, 325);
  EXPECT_EQ(Engine.queenValue, 975);
  EXPECT_EQ(Engine.materialOnly, 0);
}

TEST(Options, ValuesAndMatching) {
  struct Case {
    const char* text;
    std::int32_t EngineGlobals::*field;
    int expected;
    const char* reply = "";
  };
  const Case cases[] = {
      {"UCI_LimitStrength value true", &EngineGlobals::limitStrength, 1, "info string Strength limited\n"},
      {"MultiPV value 3", &EngineGlobals::multiPV, 3},
      {"MultiPV value 0", &EngineGlobals::multiPV, 1},
      {"MultiPV value -7", &EngineGlobals::multiPV, 1},
      {"MultiPV value 20", &EngineGlobals::multiPV, 8},
      {"MultiPV value", &EngineGlobals::multiPV, 1},       // "value" at the very end reads 0
      {"MultiPV 4", &EngineGlobals::multiPV, 1},           // no "value": unchanged
      {"MultiPVx value 5", &EngineGlobals::multiPV, 5},    // the name is a prefix test
      {"multipv value 5", &EngineGlobals::multiPV, 1},     // case-sensitive
      {"UCI_Elo value 1650", &EngineGlobals::limitElo, 1650},
      {"UCI_Elo value 99999", &EngineGlobals::limitElo, 99999},   // not range-checked
      {"UCI_Elo value abc", &EngineGlobals::limitElo, 0},
      {"UCI_LimitStrength value false", &EngineGlobals::limitStrength, 0},
      {"UCI_LimitStrength value yes", &EngineGlobals::limitStrength, 0},
      {"UCI_LimitStrength value true ", &EngineGlobals::limitStrength, 0},   // exact word only
  };
  for (const Case& c : cases) {
    Engine = EngineGlobals{};
    EXPECT_EQ(setOptionOutput(c.text), c.reply) << c.text;
    EXPECT_EQ(Engine.*c.field, c.expected) << c.text;
  }
}

TEST(Options, HashKeepsAtLeastOneClusterInEachTable) {
  const struct {
    const char* text;
    int main, pawn;
  } cases[] = {
      {"Hash value 0", 1, 1},  {"Hash value -20", 1, 1}, {"Hash value 2", 1, 1},
      {"Hash value 16", 14, 1}, {"Hash value 64", 62, 4}, {"Hash value", 1, 1},
  };
  for (const auto& c : cases) {
    Engine = EngineGlobals{};
    setOptionOutput(c.text);
    EXPECT_EQ(Engine.hashMegabytes, c.main) << c.text;
    EXPECT_EQ(Engine.pawnHashMegabytes, c.pawn) << c.text;
  }
  Engine = EngineGlobals{};
}
