// The evaluation driver: material, evaluation cache, pawn endings, lazy estimate, full evaluation,
// final combination, store and gain-table update.
#include "eval/evaluate.h"

#include <cstring>

#include "board/movegen.h"
#include "board/zobrist.h"
#include "common/globals.h"
#include "common/platform.h"
#include "eval/attack_summary.h"
#include "eval/eval_internal.h"
#include "eval/kpk.h"
#include "eval/material.h"
#include "eval/psq_tables.h"

namespace tavrin {

std::uint64_t EvalCache[EvalCacheSize];

namespace {

constexpr std::uint64_t NoiseMultiplier = 0x01933CF52388A6CFULL;
constexpr std::uint64_t NoiseIncrement = 0x99E2F6CB1323CA0DULL;

// Step 8: the largest positional gain seen for a quiet move of a piece, decaying by one each
// time a smaller gain is seen.
void updateGain(Position& pos, Move lastMove) {
  if (lastMove == NoMove || pos.state == pos.stateStack) return;
  const StateEntry& st = pos.st();
  const StateEntry& prev = pos.previous();
  if (prev.lazyCount != 0 || st.capturedPiece != 0 || moveKind(lastMove) == EnPassantMove) return;
  int gain = st.positionalEval - prev.positionalEval;
  if (pos.sideToMove == White) gain = -gain;   // Black made the move
  gain = gain > 32767 ? 32767 : gain < -32768 ? -32768 : gain;
  std::int16_t& cell = GainTable[gainCell(pos.board[moveTo(lastMove)], lastMove)];
  const int old = relaxedLoad(cell);
  if (old > gain) relaxedStore(cell, std::int16_t(old - 1));
  else relaxedStore(cell, std::int16_t(gain));
}

void storeCache(const StateEntry& st) {
  const std::uint64_t word = (st.key & ~std::uint64_t(0xFFFF)) | std::uint16_t(st.staticEval);
  relaxedStore(EvalCache[st.key & (EvalCacheSize - 1)], word);
}

// Step 5: the previous score moved by the piece-square change of the last move. Returns true when
// the estimate lies far enough outside the window to be taken.
bool tryLazyEstimate(Position& pos, const MaterialInfo& mi, int lower, int upper, Move lastMove) {
  if (pos.state == pos.stateStack) return false;
  StateEntry& st = pos.st();
  const StateEntry& prev = pos.previous();
  Packed delta = 0;
  if (lastMove != NoMove) {
    int to = moveTo(lastMove), from = moveFrom(lastMove);
    int piece = pos.board[to];
    delta = PieceSquare[piece][to] - PieceSquare[piece][from];
    if (st.capturedPiece) delta -= PieceSquare[st.capturedPiece][to];
    else if (moveKind(lastMove) == EnPassantMove) delta -= PieceSquare[piece ^ 8][to];
  }
  int phase = gamePhase(st.materialKey);
  int estimate = prev.positionalEval + taper(delta, phase);
  int s = estimate + mi.value;
  int margin = 16 * prev.lazyCount;
  int moverView = pos.sideToMove == Black ? s : -s;
  if (moverView >= lower - margin && moverView <= upper + margin) return false;
  st.lazyCount = std::uint8_t(prev.lazyCount < 255 ? prev.lazyCount + 1 : 255);
  st.staticEval = clampScore(-moverView);
  st.positionalEval = estimate;
  computeAttackSummary(pos);
  st.evalFinal = 0;
  return true;
}

}  // namespace

MaterialInfo probeMaterial(Position& pos) {
  StateEntry& st = pos.st();
  MaterialInfo mi;
  if (!materialTableCurrent()) [[unlikely]] buildMaterialTable();
  if ((st.materialKey & UnusualMaterial) && materialInRange(pos)) st.materialKey &= ~UnusualMaterial;
  if (!(st.materialKey & UnusualMaterial)) {
    const MaterialEntry& e = MaterialTable[materialIndex(st.materialKey)];
    mi.value = e.value;
    mi.scale = e.scale;
    mi.flags = e.flags;
    mi.rule = e.rule;
  } else {
    mi.value = outOfRangeMaterial(pos);
    mi.scale = 128;
    mi.flags = 0;
    if (pos.pieces[AllWhite] & ~pos.pieces[WhitePawn] & ~pos.pieces[WhiteKing]) mi.flags |= FlagWhitePieces;
    if (pos.pieces[AllBlack] & ~pos.pieces[BlackPawn] & ~pos.pieces[BlackKing]) mi.flags |= FlagBlackPieces;
  }
  return mi;
}

int combineScore(int tapered, const MaterialInfo& mi, const PawnEntry& pe) {
  int total = tapered * Engine.positionalWeight / 100 + mi.value * Engine.materialWeight / 100;
  total = total * mi.scale / 128;
  if (Engine.drawPullDivisor > 0) {
    if (total > 0) total -= pe.pull[White] * (total < 100 ? total : 100) / Engine.drawPullDivisor;
    else total += pe.pull[Black] * (-total < 100 ? -total : 100) / Engine.drawPullDivisor;
  }
  return total;
}

int evaluateStatic(Position& pos, const MaterialInfo& mi, const PawnEntry& pe, EvalTerms& terms) {
  const StateEntry& st = pos.st();
  terms.pieceSquare = st.psqScore;
  terms.pawns = pe.score;
  Packed sum = st.psqScore + pe.score + evaluatePieces(pos, pe, terms);
  int total = combineScore(taper(sum, gamePhase(st.materialKey)), mi, pe);
  if (mi.flags & FlagSpecialEnding) total = applySpecialEnding(pos, mi.rule, total);
  if (mi.flags & (FlagWhiteMinorOnly | FlagBlackMinorOnly)) total = applyMinorDrawTests(pos, mi.flags, total);
  return clampScore(total);
}

void prefetchEvaluation(Key key, Key pawnKey, std::uint32_t materialKey) {
  __builtin_prefetch(&EvalCache[key & (EvalCacheSize - 1)]);
  __builtin_prefetch(pawnSlot(pawnKey));
  if (!(materialKey & UnusualMaterial)) __builtin_prefetch(&MaterialTable[materialIndex(materialKey)]);
}

void evaluate(Position& pos, int lower, int upper, Move lastMove) {
  StateEntry& st = pos.st();

  // Step 1. Material; the cache, pawn and material lines are requested together so that their
  // misses overlap.
  prefetchEvaluation(st.key, st.pawnKey, st.materialKey);
  MaterialInfo mi = probeMaterial(pos);
  st.evalFlags = mi.flags;
  st.decisiveEval = 0;
  PawnEntry* slot = pawnSlot(st.pawnKey);

  // Step 2. Evaluation cache.
  std::uint64_t cached = relaxedLoad(EvalCache[st.key & (EvalCacheSize - 1)]);
  if (((cached ^ st.key) >> 16) == 0) {
    int stored = std::int16_t(std::uint16_t(cached));
    st.lazyCount = 0;
    computeAttackSummary(pos);
    st.evalFinal = 0;
    st.staticEval = stored;
    st.positionalEval = (pos.sideToMove == White ? stored : -stored) - mi.value;
    updateGain(pos, lastMove);
    if (stored > DecisiveEval || stored < -DecisiveEval) st.decisiveEval = 1;
    return;
  }

  // Step 3. Pawn entry, checked by its XOR words.
  PawnEntry pe;
  loadPawnEntry(slot, pe);
  bool matched = pe.storedKey() == st.pawnKey;

  // Step 4. Kings and pawns only.
  if (kingsAndPawnsOnly(st.materialKey)) {
    if (pos.sideToMove == White) evaluatePawnEndingWhite(pos, mi, pe);
    else evaluatePawnEndingBlack(pos, mi, pe);
    st.lazyCount = 1;
    st.positionalEval = 0;
    storeCache(st);
    return;
  }

  // Step 5. Lazy estimate, unless the material needs the exact score.
  if ((mi.flags & (FlagWhiteMinorOnly | FlagBlackMinorOnly)) && !matched) {
    evaluatePawns(pos, pe);
    matched = true;
  }
  bool lazyAllowed = !(mi.flags & FlagSpecialEnding) &&
                     !((mi.flags & FlagWhiteMinorOnly) && pe.count[White] <= 1) &&
                     !((mi.flags & FlagBlackMinorOnly) && pe.count[Black] <= 1);
  if (lazyAllowed && tryLazyEstimate(pos, mi, lower, upper, lastMove)) return;

  // Step 6 and 7.1-7.5. Full evaluation and final combination.
  if (!matched) evaluatePawns(pos, pe);
  EvalTerms terms;
  int total = evaluateStatic(pos, mi, pe, terms);

  // Step 7.6. Noise: the generator advances on every full evaluation.
  pos.noiseState = pos.noiseState * NoiseMultiplier + NoiseIncrement;
  std::uint32_t r = std::uint32_t(pos.noiseState >> 18);
  const int bits = Engine.noiseBits < 0 ? 0 : Engine.noiseBits > 16 ? 16 : Engine.noiseBits;
  for (int i = 0; i < Engine.noiseTerms; ++i) {
    int v = int(r & ((1u << bits) - 1));
    r >>= bits;
    if ((r & 1) == 0) v = -v;
    total += v;
    r >>= 1;
  }
  total = clampScore(total);

  // Step 7.7. Store.
  st.staticEval = pos.sideToMove == White ? total : -total;
  st.positionalEval = total - mi.value;
  st.lazyCount = 0;
  storeCache(st);

  // Step 8. Gain table.
  updateGain(pos, lastMove);
}

void initEvaluation() {
  EvaluatePosition = evaluateFull;
  static bool built = false;
  if (built) return;
  built = true;
  buildMaterialTable();
  buildKpkBitbase();
}

void clearEvaluationTables() {
  std::memset(EvalCache, 0, sizeof EvalCache);
  clearGainTable();
  clearPawnTable();
}

void clearGainTable() { std::memset(GainTable, 0, sizeof GainTable); }

void resizePawnTable(int megabytes) {
  // Whole mebibytes, at most 2048, rounded down to a power of two; below one, a single entry.
  std::uint64_t entries = 1;
  if (megabytes >= 1) {
    int m = megabytes > 2048 ? 2048 : megabytes;
    int power = 1;
    while (power * 2 <= m) power *= 2;
    entries = std::uint64_t(power) * (1024 * 1024 / sizeof(PawnEntry));
  }
  static PawnEntry* allocated = nullptr;
  if (allocated) alignedFree(allocated);
  allocated = static_cast<PawnEntry*>(alignedAlloc(entries * sizeof(PawnEntry)));
  PawnTable = allocated;
  PawnTableMask = entries - 1;
  clearPawnTable();
}

void seedEvaluationNoise(Position& pos) { pos.noiseState = evalNoiseState(EvalNoiseSeed); }

}  // namespace tavrin
