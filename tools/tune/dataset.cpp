// Reading and tracing the tuner's training positions.
#include "tools/tune/dataset.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "board/fen.h"
#include "tools/tune/model.h"

namespace tavrin::tool {

namespace {

std::string trim(const std::string& s) {
  const auto first = s.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return "";
  return s.substr(first, s.find_last_not_of(" \t\r\n") - first + 1);
}

bool readResult(const std::string& text, double& result) {
  std::string t = trim(text);
  if (t.size() >= 2 && (t.front() == '"' || t.front() == '[')) t = t.substr(1, t.size() - 2);
  if (t == "1-0" || t == "1.0" || t == "1") result = 1.0;
  else if (t == "0-1" || t == "0.0" || t == "0") result = 0.0;
  else if (t == "1/2-1/2" || t == "0.5") result = 0.5;
  else return false;
  return true;
}

}  // namespace

bool parseLabelledLine(const std::string& line, LabelledLine& out) {
  out = LabelledLine{};
  const auto bar = line.find('|');
  if (bar != std::string::npos) {
    const auto bar2 = line.find('|', bar + 1);
    out.fen = trim(line.substr(0, bar));
    if (!readResult(line.substr(bar + 1, bar2 == std::string::npos ? std::string::npos : bar2 - bar - 1), out.result))
      return false;
    if (bar2 != std::string::npos) {
      const std::string score = trim(line.substr(bar2 + 1));
      char* end = nullptr;
      out.score = std::strtod(score.c_str(), &end);
      out.hasScore = end != score.c_str() && *end == 0;
      if (!out.hasScore) return false;
    }
    return !out.fen.empty();
  }
  // EPD: the result is the last field that reads as one ("c9 "1-0";", "[0.5]", ...).
  std::string text = trim(line);
  for (char& c : text)
    if (c == ';') c = ' ';
  const auto open = text.find('[');
  std::string fields = open == std::string::npos ? text : text.substr(0, open);
  std::string resultText = open == std::string::npos ? "" : text.substr(open, text.find(']', open) - open + 1);
  if (resultText.empty()) {
    const auto quote = text.rfind('"', text.size() - 1);
    const auto start = quote == std::string::npos ? std::string::npos : text.rfind('"', quote - 1);
    if (start == std::string::npos) return false;
    resultText = text.substr(start, quote - start + 1);
    fields = text.substr(0, start);
    const auto c9 = fields.find(" c9");
    if (c9 != std::string::npos) fields = fields.substr(0, c9);
  }
  if (!readResult(resultText, out.result)) return false;
  out.fen = trim(fields);
  return !out.fen.empty();
}

bool addPosition(const LabelledLine& line, bool validation, TuneSet& set, const TuneParams& current) {
  static Position pos;
  static bool prepared = false;
  if (!prepared) {
    initPosition(pos);
    pos.recordIndex = 1;
    prepared = true;
  }
  if (!setFromFen(pos, line.fen.c_str())) return false;
  static EvalTrace trace;
  traceEvaluation(pos, trace);
  if (!trace.modelled) {
    ++set.notModelled;
    return false;
  }

  // One note per weight and channel.
  auto& n = trace.notes;
  std::sort(n.begin(), n.end(),
            [](const TraceNote& a, const TraceNote& b) { return a.channel != b.channel ? a.channel < b.channel : a.slot < b.slot; });
  TunePosition p;
  p.firstNote = std::uint32_t(set.notes.size());
  for (std::size_t i = 0; i < n.size();) {
    TraceNote merged = n[i];
    for (++i; i < n.size() && n[i].channel == merged.channel && n[i].slot == merged.slot; ++i) merged.count += n[i].count;
    if (merged.count != 0) set.notes.push_back(merged);
  }
  p.noteCount = std::uint16_t(set.notes.size() - p.firstNote);
  p.phase = std::uint8_t(trace.phase);
  p.dangerScored = std::uint8_t((trace.dangerScored[Black] ? 1 : 0) | (trace.dangerScored[White] ? 2 : 0));
  p.scaleSlot = std::int16_t(trace.scaleSlot);
  p.scale = std::int16_t(trace.scale);

  // The bases: what the engine computed less what the notes explain with today's weights.
  const ModelParts explained =
      explainedParts(set.notes.data() + p.firstNote, p.noteCount, p.dangerScored, current);
  p.baseMg = float(middlegameOf(trace.positional) - explained.mg);
  p.baseEg = float(endgameOf(trace.positional) - explained.eg);
  p.baseMaterial = float(trace.material - explained.material);
  p.result = float(line.result);
  p.hasScore = line.hasScore;
  p.score = float(line.score);
  p.validation = validation;
  p.engineTotal = trace.total;
  set.positions.push_back(p);
  return true;
}

bool loadPositions(const std::string& path, TuneSet& set, long long limit, const TuneParams& current,
                   std::string& error) {
  std::ifstream in(path);
  if (!in) {
    error = "cannot read " + path;
    return false;
  }
  std::string text;
  LabelledLine line;
  while (std::getline(in, text)) {
    if (limit > 0 && (long long)set.positions.size() >= limit) break;
    if (trim(text).empty() || text[0] == '#') continue;
    const bool validation = (set.linesRead / 64) % 10 == 9;
    ++set.linesRead;
    if (!parseLabelledLine(text, line) || !addPosition(line, validation, set, current)) ++set.skipped;
  }
  return true;
}

}  // namespace tavrin::tool
