// Training positions for the tuner: read from datagen files or EPD lines with a result, traced
// once through the engine's evaluation and kept as compact records.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "eval/trace.h"

namespace tavrin::tool {

// One labelled line of a data file.
struct LabelledLine {
  std::string fen;
  double result = 0.5;    // 1, 0.5 or 0 for White
  bool hasScore = false;  // datagen lines carry the search score too
  double score = 0;       // centipawns, White's point of view
};

// Reads "FEN | result | score" (datagen) or an EPD/FEN line with a result ("1-0", "0-1",
// "1/2-1/2", quoted or not, or "[1.0]" "[0.5]" "[0.0]"). False for a line without a result.
bool parseLabelledLine(const std::string& line, LabelledLine& out);

// What the model needs of one position beyond its notes.
struct TunePosition {
  std::uint32_t firstNote = 0;   // into TuneSet::notes
  std::uint16_t noteCount = 0;
  std::uint8_t phase = 0;
  std::uint8_t dangerScored = 0; // bit c: the king of colour c has a danger sum
  std::int16_t scaleSlot = -1;   // -1: fixed scale
  std::int16_t scale = 128;
  float baseMg = 0, baseEg = 0, baseMaterial = 0;   // the parts no weight moves
  float result = 0.5f, score = 0;
  float label = 0.5f;            // what the fit aims at
  bool hasScore = false;
  bool validation = false;       // in the held-out tenth
  std::int32_t engineTotal = 0;  // the engine's score with the weights it was traced with
};

struct TuneSet {
  std::vector<TunePosition> positions;
  std::vector<TraceNote> notes;
  long long linesRead = 0, skipped = 0, notModelled = 0;
};

struct TuneParams;

// Adds the positions of one file, at most limit in all (0: no limit), every tenth block of 64
// lines held out; false (with a message in error) when it cannot be read.
bool loadPositions(const std::string& path, TuneSet& set, long long limit, const TuneParams& current,
                   std::string& error);

// Traces one position into set with the weights in use, current being the same weights as
// numbers. False when the FEN is not playable or the evaluation is not modelled.
bool addPosition(const LabelledLine& line, bool validation, TuneSet& set, const TuneParams& current);

}  // namespace tavrin::tool
