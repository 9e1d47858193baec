// The pawn-structure evaluator and the pawn hash table with its lockless XOR check.
#include "eval/pawns.h"

#include "board/bitboard.h"
#include "common/platform.h"
#include "eval/masks.h"
#include "eval/trace.h"
#include "eval/weights.h"

namespace tavrin {

namespace {
PawnEntry SinglePawnEntry;  // the table before the first allocation
}

PawnEntry* PawnTable = &SinglePawnEntry;
std::uint64_t PawnTableMask = 0;

namespace {

constexpr const EvalWeights& W = Weights;

// Shelter and storm of the three files around a king standing on ksq, middlegame points.
template <Color Us>
int shelterAt(const Position& pos, int ksq) {
  using T = ColorTraits<Us>;
  Bitboard ours = pos.pieces[T::OwnPawn], theirs = pos.pieces[T::EnemyPawn];
  // Pawns on the king's rank or in front of it.
  Bitboard zone = forwardRanks(Us, rankOf(ksq)) | rankMask(rankOf(ksq));
  int centre = fileOf(ksq) < 1 ? 1 : fileOf(ksq) > 6 ? 6 : fileOf(ksq);
  constexpr int Channel = ShelterChannel + Us;
  int score = 0;
  for (int f = centre - 1; f <= centre + 1; ++f) {
    Bitboard file = fileMask(f);
    Bitboard own = ours & zone & file, enemy = theirs & zone & file;
    int ownRank = 0, enemyRank = 0;
    if (own) ownRank = T::RelativeRank(Us == White ? bitScanForward(own) : bitScanReverse(own));
    if (enemy) enemyRank = T::RelativeRank(Us == White ? bitScanForward(enemy) : bitScanReverse(enemy));
    score += termIn(W.ShelterRank[ownRank], Channel, f == fileOf(ksq) ? 2 : 1);
    if (enemyRank)
      score += (ownRank && enemyRank == ownRank + 1) ? termIn(W.StormBlocked, Channel) : termIn(W.StormRank[enemyRank], Channel);
    if (!((ours | theirs) & file)) score += termIn(W.OpenFileNearKing, Channel);
  }
  return score;
}

// The best shelter the king has or can still reach by castling. A trace notes the chosen place only.
template <Color Us>
int kingShelter(const Position& pos) {
  using T = ColorTraits<Us>;
  // (Written only while a trace runs: search threads read it without a lock.)
  EvalTrace* trace = ActiveTrace;
  if (trace) [[unlikely]] ActiveTrace = nullptr;
  int bestSquare = pos.kingSquare(Us);
  int best = shelterAt<Us>(pos, bestSquare);
  int castle = pos.st().castle;
  for (int right : {T::KingSideRight, T::QueenSideRight}) {
    if (!(castle & right)) continue;
    int square = right == T::KingSideRight ? (Us == White ? G1 : G8) : (Us == White ? C1 : C8);
    int s = shelterAt<Us>(pos, square);
    if (s > best) best = s, bestSquare = square;
  }
  if (trace) [[unlikely]] {
    ActiveTrace = trace;
    shelterAt<Us>(pos, bestSquare);
  }
  return best;
}

template <Color Us>
Packed evaluatePawnSide(const Position& pos, PawnEntry& e) {
  using T = ColorTraits<Us>;
  constexpr Color Them = T::Them;
  Bitboard ours = pos.pieces[T::OwnPawn], theirs = pos.pieces[T::EnemyPawn];
  Bitboard theirAttacks = pawnAttacks<Them>(theirs);
  Packed score = 0;
  std::uint8_t passed = 0, candidates = 0;

  for (Bitboard b = ours; b;) {
    int s = popLowest(b);
    int f = fileOf(s), r = T::RelativeRank(s);
    // Pawns on the first or last rank only come from hand-made positions; keep them in bounds.
    int stop = r == 7 ? s : s + T::Up;
    Bitboard front = Spans.forwardFile[Us][s];
    Bitboard neighbours = ours & adjacentFiles(f);
    Bitboard behindOrLevel = neighbours & Spans.attackSpan[Them][stop];
    bool opposed = (theirs & front) != 0;
    bool doubled = (ours & front) != 0;
    bool phalanx = (neighbours & rankMask(rankOf(s))) != 0;
    bool supported = r > 0 && (neighbours & rankMask(rankOf(s - T::Up))) != 0;

    if (!neighbours) {
      score += term<Us>(W.Isolated);
      if (!opposed) score += term<Us>(W.IsolatedOpen);
    } else if (!behindOrLevel && ((theirAttacks | theirs) & bit(stop))) {
      score += term<Us>(W.Backward);
      if (!opposed) score += term<Us>(W.BackwardOpen);
    }
    if (doubled) score += term<Us>(W.Doubled);
    if (supported || phalanx) {
      score += term<Us>(W.Connected[r]);
      if (phalanx) score += term<Us>(W.Phalanx[r]);
    }
    if (!doubled && !(theirs & Spans.passedSpan[Us][s])) {
      score += term<Us>(W.PassedRank[r]);
      passed |= std::uint8_t(1 << f);
    } else if (!doubled && !opposed) {
      Bitboard sentries = theirs & Spans.attackSpan[Us][s];
      if (popCount(behindOrLevel) >= popCount(sentries)) {
        score += term<Us>(W.CandidateRank[r]);
        candidates |= std::uint8_t(1 << f);
      }
    }
  }

  std::uint8_t ownFiles = 0, allFiles = 0;
  bool symmetric = true;
  for (int f = 0; f < 8; ++f) {
    int own = popCount(ours & fileMask(f)), enemy = popCount(theirs & fileMask(f));
    if (own) ownFiles |= std::uint8_t(1 << f);
    if (own || enemy) allFiles |= std::uint8_t(1 << f);
    if (own != enemy) symmetric = false;
  }
  int count = popCount(ours);
  int pull = 0;
  if (!passed && count) {
    if (symmetric) pull += termIn(W.PullSymmetric, PullChannel + Us);
    Bitboard all = ours | theirs;
    if ((!(all & QueenSideFiles) || !(all & KingSideFiles)) && count <= popCount(theirs) + 1)
      pull += termIn(W.PullOneWing, PullChannel + Us);
    if (count <= 2) pull += termIn(W.PullFewPawns, PullChannel + Us);
  }

  e.count[Us] = std::uint8_t(count);
  e.pull[Us] = std::uint8_t(pull);
  e.passedFiles[Us] = passed;
  e.candidateFiles[Us] = candidates;
  e.semiOpenFiles[Us] = std::uint8_t(~ownFiles);
  e.pawnFiles = allFiles;
  e.shelter[Us] = std::int16_t(kingShelter<Us>(pos));
  return score;
}

}  // namespace

void evaluatePawns(const Position& pos, PawnEntry& e) {
  e = PawnEntry{};
  Packed white = evaluatePawnSide<White>(pos, e);
  Packed black = evaluatePawnSide<Black>(pos, e);
  e.score = white - black;
  Key key = pos.st().pawnKey;
  std::uint32_t w[8];
  std::memcpy(w, &e, sizeof w);
  w[0] = std::uint32_t(key) ^ w[2] ^ w[4] ^ w[6];
  w[1] = std::uint32_t(key >> 32) ^ w[3] ^ w[5] ^ w[7];
  std::memcpy(&e, w, sizeof w);
  storePawnEntry(pawnSlot(key), e);
}

void clearPawnTable() { std::memset(static_cast<void*>(PawnTable), 0, (PawnTableMask + 1) * sizeof(PawnEntry)); }

}  // namespace tavrin
