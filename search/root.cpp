// The root search: the root move list, iterative deepening with aspiration windows, the root
// move loops for one and for several principal variations, and the stop rules between iterations.
#include <algorithm>

#include "common/globals.h"
#include "common/platform.h"
#include "search/move_picker.h"
#include "search/node.h"
#include "search/search.h"
#include "search/split_point.h"
#include "search/stop_rules.h"

namespace tavrin {

RootResult Root;
Position SearchRecords[MaxThreads];
RootMove RootMoves[256];
RootLine RootLines[MaxRootLines];
SearchSettings Settings;
std::uint8_t RootFailingLow = 0;
std::uint8_t RootBestMoveChanged = 0;
SearchReports Reports = {[](Position&, std::int64_t, int) {}, [](int) {}, [](Move, int) {}, [](Position&, int) {}};

namespace {

constexpr int NoScoreYet = -32752;

// A record's word is a move-list word keyed by score - 32768, so that larger words mean larger scores.
inline MoveWord recordWord(Move m, int score) { return keyedWord(std::uint16_t(score - 32768), m); }
inline Move recordMove(const RootMove& r) { return moveOf(r.word); }
inline int recordScore(const RootMove& r) { return int(sortKeyOf(r.word)) - 32768; }
inline void setRecordScore(RootMove& r, int score) { r.word = recordWord(recordMove(r), score); }

std::int64_t elapsedMicros() { return wallClockMicros() - Limits.startTime; }

// Stable insertion sort of the first count records, descending by score. Equal scores keep
// their order: a move that failed low stores alpha, which equals the best score, and must not
// overtake the best move on the strength of its move code.
void sortRootMoves(int first, int count) {
  for (int i = first + 1; i < count; ++i) {
    RootMove r = RootMoves[i];
    int j = i;
    for (; j > first && sortKeyOf(RootMoves[j - 1].word) < sortKeyOf(r.word); --j) RootMoves[j] = RootMoves[j - 1];
    RootMoves[j] = r;
  }
}

int rootMoveCount() {
  int n = 0;
  while (RootMoves[n].word) ++n;
  return n;
}

void newBestMove(Move m, int score) {
  if (m != Root.bestMove) RootBestMoveChanged = 1;
  Root.bestMove = m;
  Root.bestScore = score;
}

void maybePrintPv(Position& pos, int depth, int score) {
  Root.selDepth = pos.search.selDepth;
  if (!Settings.quiet && depth > Settings.minPvDepth) Reports.pvLine(pos, elapsedMicros(), score);
}

// Makes the k-th root move with a full-window evaluation, announces it when asked, and returns the
// depth of its subtree; `check` tells whether it gives check. The root extension: a check, or a
// pawn reaching its fourth rank with no enemy pawn ahead of it (more generous than the node
// search's sixth-rank rule, on purpose).
template <Color Us>
int makeRootMove(Position& pos, Move m, int k, int depth, bool& check) {
  const bool passed = isPassedPawnPush<Us>(pos, m, 3);
  makeMove<Us>(pos, m);
  evaluate(pos, -32767, 32767, m);
  pos.st().nullBits = 3;
  check = childInCheck<~Us>(pos);
  if (Settings.infoCurrmove && !Settings.quiet && !Limits.nodeLimitFlag && depth >= params::CurrmoveMinDepth)
    Reports.currMove(m, k);
  return depth - 2 + (check || passed ? 1 : 0);
}

// The null-window search of a later root move at depth d, by the child-selection rule.
template <Color Them>
int rootNullWindow(Position& pos, int alpha, int d, bool check) {
  if (check) return -evasionSearch<Them>(pos, -alpha, d);
  return -nullWindowChild<Them, Role::Cut>(pos, -alpha, d);
}

template <Color Us>
int rootSearchMulti(Position& pos, int alpha, int beta, int depth);

// Root-move search for a single principal variation.
template <Color Us>
int rootSearch(Position& pos, int alpha, int beta, int depth) {
  constexpr Color Them = ~Us;
  if (Engine.multiPV != 1) return rootSearchMulti<Us>(pos, alpha, beta, depth);

  // 1. Clamp the window.
  beta = std::min(beta, MateScore);
  alpha = std::max(alpha, -MateScore);
  // 2. Announce the iteration.
  if (Settings.infoDepth && !Settings.quiet) Reports.infoDepth(depth / 2);

  // 3. Every root move in list order.
  const Key rootKey = pos.st().key;
  int best = NoScoreYet;
  Move bestMove = NoMove;
  for (int k = 1; RootMoves[k - 1].word; ++k) {
    RootMove& record = RootMoves[k - 1];
    const Move m = recordMove(record);
    bool check;
    const int d = makeRootMove<Us>(pos, m, k, depth, check);

    int score;
    if (best == NoScoreYet || depth == 2) {
      score = -pvSearch<Them>(pos, -beta, -alpha, d);
    } else {
      bool refuted = false;
      // The PV ladder: growing PV probes of a late move, abandoned at the first refutation.
      if (!Limits.nodeLimitFlag && d >= params::RootLadderMinDepth) {
        for (int ld = d - params::RootLadderStart; ld < d && !refuted; ld += params::RootLadderStep) {
          score = -pvSearch<Them>(pos, -alpha - 1, -alpha, ld);
          refuted = score <= alpha || pos.stopFlag;
        }
      }
      if (!refuted) {
        score = rootNullWindow<Them>(pos, alpha, d, check);
        if (score > alpha && !pos.stopFlag) score = -pvSearch<Them>(pos, -beta, -alpha, d);
      }
    }
    unmakeMove<Us>(pos, m);
    if (pos.stopFlag) return best;

    setRecordScore(record, score > alpha ? score : alpha);
    if (score > best && score > alpha) {
      storeLower(rootKey, depth, score, m);
      newBestMove(m, score);
      best = score;
      bestMove = m;
      maybePrintPv(pos, depth, score);
      if (score >= beta) break;
      alpha = score;
    } else if (score > best) {
      best = score;
    }
  }

  // 4. Re-sort by the new scores and store the result: exact with the best move whenever a move
  // raised alpha (after a fail-high too).
  sortRootMoves(0, rootMoveCount());
  if (!bestMove) storeUpper(rootKey, depth, best);
  else storeExact(rootKey, depth, best, bestMove);
  return best;
}

// Root-move search for several principal variations: the first lines are searched with the full
// window, every later move first against the weakest kept line and in full when it may enter.
template <Color Us>
int rootSearchMulti(Position& pos, int, int, int depth) {
  constexpr Color Them = ~Us;
  if (Settings.infoDepth && !Settings.quiet) Reports.infoDepth(depth / 2);
  const int count = rootMoveCount();
  const int kept = std::min({Engine.multiPV, MaxRootLines, count});
  const Key rootKey = pos.st().key;

  for (int k = 1; k <= count; ++k) {
    RootMove& record = RootMoves[k - 1];
    const Move m = recordMove(record);
    bool check;
    const int d = makeRootMove<Us>(pos, m, k, depth, check);

    int score, floor = -MateScore;
    if (k <= kept || depth == 2) {
      score = -pvSearch<Them>(pos, -MateScore, MateScore, d);
    } else {
      floor = recordScore(RootMoves[kept - 1]);
      score = rootNullWindow<Them>(pos, floor, d, check);
      if (score > floor && !pos.stopFlag) score = -pvSearch<Them>(pos, -MateScore, -floor, d);
    }
    unmakeMove<Us>(pos, m);
    if (pos.stopFlag) return recordScore(RootMoves[0]);

    setRecordScore(record, std::max(score, floor));
    sortRootMoves(0, k);   // only the newly searched record moves
    if (k <= kept || score > floor) {
      for (int i = 0; i < kept; ++i)
        RootLines[i] = {i < k ? recordMove(RootMoves[i]) : NoMove, recordScore(RootMoves[i])};
      newBestMove(recordMove(RootMoves[0]), recordScore(RootMoves[0]));
      storeLower(rootKey, depth, recordScore(RootMoves[0]), recordMove(RootMoves[0]));
      maybePrintPv(pos, depth, recordScore(RootMoves[0]));
    }
  }
  storeExact(rootKey, depth, recordScore(RootMoves[0]), recordMove(RootMoves[0]));
  return recordScore(RootMoves[0]);
}

// Builds the root list: every legal move, restricted to the searchmoves when they name any.
template <Color Us>
int buildRootList(Position& pos) {
  MoveWord list[MaxMoves];
  MoveWord* end = generateLegalMoves(pos, list);
  int n = 0;
  for (MoveWord* p = list; p < end && n < 255; ++p) {
    const Move m = moveOf(*p);
    if (!m) break;
    if (!makeAndEvaluate<Us>(pos, m, -32767, 32767)) continue;
    unmakeMove<Us>(pos, m);
    RootMoves[n++] = RootMove{recordWord(m, NoScoreYet), {}};
  }
  RootMoves[n] = RootMove{};
  if (Limits.searchMovesFlag) {
    int kept = 0;
    for (int i = 0; i < n; ++i) {
      bool listed = false;
      for (int j = 0; j < 255 && Limits.searchMoves[j] && !listed; ++j)
        listed = moveOf(Limits.searchMoves[j]) == recordMove(RootMoves[i]);
      if (listed) RootMoves[kept++] = RootMoves[i];
    }
    if (kept) {
      n = kept;
      RootMoves[n] = RootMove{};
    }
  }
  return n;
}

// The soft stop rules of a timed search; pondering and infinite searches end only by the poll.
bool timedStop(const IterationHistory& history, int rootMoves) {
  if (Engine.infiniteMode || Engine.ponderMode) return false;
  const StopTargets targets{Limits.quarterTarget, Limits.threeQuarterTarget, Limits.softTarget, Limits.hardLimit};
  return stopAfterIteration(history, targets, elapsedMicros(), rootMoves, RootFailingLow || RootBestMoveChanged);
}

template <Color Us>
void iterate(Position& pos) {
  // 1. The root position, its evaluation and its legal moves.
  Root = RootResult{};
  RootFailingLow = RootBestMoveChanged = 0;
  for (RootLine& line : RootLines) line = RootLine{};
  pos.search.selDepth = 0;
  pos.search.lastTarget = -1;
  beginParallelSearch(pos);
  evaluateFull(pos);
  pos.st().nullBits = 3;
  const int count = buildRootList<Us>(pos);

  // 2. Mate or stalemate: no search.
  if (count == 0) {
    Root.bestMove = NoMove;
    Root.bestScore = kingAttackers<Us>(pos.st()) ? -MateScore : 0;
    return;
  }
  Root.bestMove = recordMove(RootMoves[0]);

  // 3. Deepen by one ply per iteration.
  int lastScore = 0;
  IterationHistory history;
  for (int depth = 2; depth <= params::MaxIterationDepth; depth += 2) {
    Root.iterationDepth = depth;
    RootFailingLow = 0;
    RootBestMoveChanged = bestMoveUnsettled(history, false);
    int score;

    // 4. Aspiration windows around the last score, widening on each failure.
    if (depth >= params::AspirationMinDepth && lastScore >= -params::AspirationScoreLimit &&
        lastScore <= params::AspirationScoreLimit && Engine.multiPV == 1) {
      int step = params::AspirationFirstStep;
      int alpha = lastScore - step, beta = lastScore + step;
      for (;;) {
        if (alpha < -params::AspirationScoreLimit) alpha = -MateScore;
        if (beta > params::AspirationScoreLimit) beta = MateScore;
        score = rootSearch<Us>(pos, alpha, beta, depth);
        if (pos.stopFlag) break;
        if (score <= alpha && alpha > -MateScore) {
          RootFailingLow = 1;
          Root.bestScore = alpha;
          alpha -= step;
        } else if (score >= beta && beta < MateScore) {
          Root.bestScore = beta;
          beta += step;
        } else {
          break;
        }
        step += step / 2;
      }
    } else {
      score = rootSearch<Us>(pos, -MateScore, MateScore, depth);
    }
    if (pos.stopFlag) break;

    // 5. The iteration is complete: record it, set the flags the poll reads, poll, and apply the
    // stop rules of a timed search.
    lastScore = score;
    Root.completedDepth = depth;
    recordIteration(history, Root.bestMove, score, elapsedMicros());
    RootFailingLow = scoreFalling(history, RootFailingLow);
    RootBestMoveChanged = bestMoveUnsettled(history, RootBestMoveChanged);
    Reports.poll(pos, depth / 2);
    if (depth / 2 >= Limits.depthLimit) break;
    if (timedStop(history, count)) break;
  }
}

// A stop from deep inside the search leaves moves on the board: take them back, so that the
// finish step finds the record at its root.
void unwindToRoot(Position& pos, StateEntry* root) {
  while (pos.state > root) {
    const Move m = pos.st().move;
    if (m) unmakeMove(pos, m);
    else unmakeNullMove(pos);
  }
}

}  // namespace

void runRootSearch(Position& pos) {
  StateEntry* const root = pos.state;
  try {
    if (pos.sideToMove == White) iterate<White>(pos);
    else iterate<Black>(pos);
  } catch (const SearchAborted&) {
    unwindToRoot(pos, root);
    Root.selDepth = pos.search.selDepth;
    // Stopped before the first root move was settled (even while the root list was being
    // built): a position with a legal move still answers with one.
    if (!Root.bestMove) {
      MoveWord list[MaxMoves];
      if (generateLegalMoves(pos, list) != list) Root.bestMove = moveOf(list[0]);
    }
    throw;
  }
  Root.selDepth = pos.search.selDepth;
}

}  // namespace tavrin
