// The tuner's model of the evaluation and its derivatives.
#include "tools/tune/model.h"

#include <cmath>

#include "common/globals.h"
#include "eval/material.h"

namespace tavrin::tool {

namespace {

int shelterReliefSlot() { return slotOf(Weights.ShelterRelief); }

// The king-danger penalty of a danger sum, and its derivatives by the sum (zero where clamped).
struct Penalty {
  double mg = 0, eg = 0, dMg = 0, dEg = 0;
};
Penalty dangerPenalty(double danger) {
  Penalty p;
  if (danger <= Weights.DangerThreshold) return p;
  const bool clamped = danger >= Weights.DangerLimit;
  const double d = clamped ? Weights.DangerLimit : danger;
  p.mg = d * d / Weights.DangerMiddlegameDivisor;
  p.eg = d / Weights.DangerEndgameDivisor;
  if (!clamped) {
    p.dMg = 2 * d / Weights.DangerMiddlegameDivisor;
    p.dEg = 1.0 / Weights.DangerEndgameDivisor;
  }
  return p;
}

double colourSign(int colour) { return colour == White ? 1.0 : -1.0; }

// Sums the notes into parts and adds the shelter and king-danger terms to mg and eg.
void sumNotes(const TraceNote* notes, int count, std::uint8_t dangerScored, const TuneParams& w, ModelParts& m) {
  for (int i = 0; i < count; ++i) {
    const TraceNote& n = notes[i];
    const double c = n.count;
    switch (n.channel) {
      case PositionalChannel: m.mg += c * w.mg[n.slot]; m.eg += c * w.eg[n.slot]; break;
      case MaterialChannel: m.material += c * w.mg[n.slot]; break;
      case ShelterChannel + Black: case ShelterChannel + White: m.shelter[n.channel - ShelterChannel] += c * w.mg[n.slot]; break;
      case DangerChannel + Black: case DangerChannel + White: m.danger[n.channel - DangerChannel] += c * w.mg[n.slot]; break;
      default: m.pull[n.channel - PullChannel] += c * w.mg[n.slot]; break;
    }
  }
  const double relief = w.mg[shelterReliefSlot()];
  for (int colour : {Black, White}) {
    const double sign = colourSign(colour);
    m.mg += sign * m.shelter[colour];
    if (!(dangerScored & (1 << colour))) continue;
    m.danger[colour] -= m.shelter[colour] * relief / 8;
    const Penalty p = dangerPenalty(m.danger[colour]);
    m.mg -= sign * p.mg;
    m.eg -= sign * p.eg;
  }
}

}  // namespace

TuneParams paramsFromWeights() {
  TuneParams p;
  const auto* words = reinterpret_cast<const std::int32_t*>(&Weights);
  for (const WeightInfo& info : weightList())
    for (int i = info.slot; i < info.slot + info.length; ++i) {
      p.mg[i] = info.packed ? middlegameOf(words[i]) : words[i];
      p.eg[i] = info.packed ? endgameOf(words[i]) : 0;
    }
  return p;
}

void applyParams(const TuneParams& params) {
  auto* words = reinterpret_cast<std::int32_t*>(&Weights);
  for (const WeightInfo& info : weightList())
    for (int i = info.slot; i < info.slot + info.length; ++i) {
      const int mg = int(std::lround(params.mg[i])), eg = int(std::lround(params.eg[i]));
      words[i] = info.packed ? pack(mg, eg) : mg;
    }
  buildMaterialTable();
}

ModelParts explainedParts(const TraceNote* notes, int count, std::uint8_t dangerScored, const TuneParams& params) {
  ModelParts m;
  sumNotes(notes, count, dangerScored, params, m);
  return m;
}

double modelScore(const TunePosition& p, const TraceNote* notes, const TuneParams& w, ModelParts* parts) {
  ModelParts m;
  m.mg = p.baseMg;
  m.eg = p.baseEg;
  m.material = p.baseMaterial;
  sumNotes(notes + p.firstNote, p.noteCount, p.dangerScored, w, m);
  m.tapered = (m.mg * p.phase + m.eg * (32 - p.phase)) / 32;
  m.scale = p.scaleSlot >= 0 ? w.mg[p.scaleSlot] : p.scale;
  m.beforePull =
      (m.tapered * Engine.positionalWeight / 100 + m.material * Engine.materialWeight / 100) * m.scale / 128;
  double total = m.beforePull;
  if (Engine.drawPullDivisor > 0) {
    if (total > 0) total -= m.pull[White] * std::min(total, 100.0) / Engine.drawPullDivisor;
    else total += m.pull[Black] * std::min(-total, 100.0) / Engine.drawPullDivisor;
  }
  m.score = total;
  if (parts) *parts = m;
  return total;
}

void addGradient(const TunePosition& p, const TraceNote* notes, const TuneParams& w, double weight,
                 TuneParams& g) {
  ModelParts m;
  modelScore(p, notes, w, &m);

  // Back through the drawish pull, the scale and the blend of material and position.
  double dTotal = 1, dPull[2] = {0, 0};
  if (Engine.drawPullDivisor > 0) {
    const double div = Engine.drawPullDivisor;
    if (m.beforePull > 0) {
      dPull[White] = -std::min(m.beforePull, 100.0) / div;
      if (m.beforePull < 100) dTotal -= m.pull[White] / div;
    } else {
      dPull[Black] = std::min(-m.beforePull, 100.0) / div;
      if (-m.beforePull < 100) dTotal -= m.pull[Black] / div;
    }
  }
  const double dBefore = weight * dTotal;
  const double dTapered = dBefore * Engine.positionalWeight / 100 * m.scale / 128;
  const double dMaterial = dBefore * Engine.materialWeight / 100 * m.scale / 128;
  if (p.scaleSlot >= 0)
    g.mg[p.scaleSlot] +=
        dBefore * (m.tapered * Engine.positionalWeight / 100 + m.material * Engine.materialWeight / 100) / 128;
  const double dMg = dTapered * p.phase / 32, dEg = dTapered * (32 - p.phase) / 32;

  // The king terms: shelter counts directly and through the danger sum.
  const int reliefSlot = shelterReliefSlot();
  const double relief = w.mg[reliefSlot];
  double dDanger[2] = {0, 0}, dShelter[2] = {0, 0};
  for (int colour : {Black, White}) {
    const double sign = colourSign(colour);
    dShelter[colour] = dMg * sign;
    if (!(p.dangerScored & (1 << colour))) continue;
    const Penalty pen = dangerPenalty(m.danger[colour]);
    dDanger[colour] = -sign * (dMg * pen.dMg + dEg * pen.dEg);
    dShelter[colour] -= dDanger[colour] * relief / 8;
    g.mg[reliefSlot] -= dDanger[colour] * m.shelter[colour] / 8;
  }

  const TraceNote* n = notes + p.firstNote;
  for (int i = 0; i < p.noteCount; ++i, ++n) {
    const double c = n->count;
    switch (n->channel) {
      case PositionalChannel: g.mg[n->slot] += c * dMg; g.eg[n->slot] += c * dEg; break;
      case MaterialChannel: g.mg[n->slot] += c * dMaterial; break;
      case ShelterChannel + Black: case ShelterChannel + White: g.mg[n->slot] += c * dShelter[n->channel - ShelterChannel]; break;
      case DangerChannel + Black: case DangerChannel + White: g.mg[n->slot] += c * dDanger[n->channel - DangerChannel]; break;
      default: g.mg[n->slot] += c * dPull[n->channel - PullChannel] * weight; break;
    }
  }
}

double winChance(double score, double k) { return 1.0 / (1.0 + std::pow(10.0, -k * score / 400.0)); }

}  // namespace tavrin::tool
