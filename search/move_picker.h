// The staged move picker: table move, captures by selection, killers, quiet moves by history,
// postponed losing captures; plus the reduced and shallow sequences of the pruned nodes.
#pragma once

#include <climits>

#include "board/bitboard.h"
#include "board/legality.h"
#include "board/movegen.h"

namespace tavrin {

enum PickerStage : int {
  // Normal sequence.
  StageTtMove = 0, StageGenCaptures = 1, StageCaptures = 2, StageKiller1 = 3, StageKiller2 = 4,
  StageQuiet = 5, StageLosingCaptures = 6,
  // Reduced sequence (razoring): table move, restricted captures, quiet checks.
  StageReducedTtMove = 7, StageReducedGenCaptures = 8, StageReducedCaptures = 9,
  StageReducedGenChecks = 10, StageReducedChecks = 11,
  // Shallow sequence: table move, captures, quiet checks, gain-filtered remaining moves.
  StageShallowTtMove = 12, StageShallowGenCaptures = 13, StageShallowCaptures = 14,
  StageShallowChecks = 15, StageShallowRemaining = 16,
  StageDone = 17,
};

// Margin handed to the remaining-moves generator when nothing is to be filtered out.
constexpr int NoGainMargin = INT_MIN;

struct MovePicker {
  int stage;
  Move ttMove;
  MoveWord* cur;
  MoveWord* end;
  int postponedCount;      // losing captures put aside (normal) / quiet checks handed out (shallow)
  int postponedRead;
  Bitboard targets;        // capture targets of the reduced sequence
  int margin;              // remaining-moves margin of the shallow sequence
  bool killer2Done;
  MoveWord moves[MaxMoves];
  MoveWord postponed[MaxMoves];

  // start is StageTtMove, StageReducedTtMove or StageShallowTtMove.
  void init(int start, Move tableMove, Bitboard captureTargets = 0, int gainMargin = NoGainMargin) {
    stage = start;
    ttMove = moveOf(tableMove);
    postponedCount = postponedRead = 0;
    targets = captureTargets;
    margin = gainMargin;
    killer2Done = false;
    cur = end = moves;
  }
  // The quiet-move stage of the normal sequence, which the futility tests and the late-move
  // reduction look for. (The shallow sequence's remaining moves are filtered by their generator.)
  bool inQuietStage() const { return stage == StageQuiet; }
};

// Every opponent piece but the king: the capture targets of a full capture stage.
template <Color Us>
inline Bitboard captureTargets(const Position& pos) {
  using T = ColorTraits<Us>;
  return pos.pieces[T::EnemyAll] & ~pos.pieces[T::EnemyKing];
}

namespace picker_detail {

// Selection step: the first remaining word is swapped with every larger one behind it.
inline MoveWord selectBest(MoveWord* cur, MoveWord* end) {
  for (MoveWord* p = cur + 1; p < end; ++p)
    if (*p > *cur) {
      MoveWord t = *p;
      *p = *cur;
      *cur = t;
    }
  return *cur;
}

// Descending insertion sort of a quiet list.
inline void insertionSort(MoveWord* begin, MoveWord* end) {
  for (MoveWord* p = begin + 1; p < end; ++p) {
    MoveWord w = *p;
    MoveWord* q = p;
    for (; q > begin && q[-1] < w; --q) *q = q[-1];
    *q = w;
  }
}

template <Color Us>
inline bool killerPlayable(const Position& pos, const MovePicker& mp, Move k) {
  return k != 0 && k != mp.ttMove && pos.board[moveTo(k)] == NoPiece && isPseudoLegal<Us>(pos, k);
}

}  // namespace picker_detail

// The next move-list word (its move and key as the generator wrote them), 0 when exhausted.
template <Color Us>
MoveWord nextMove(Position& pos, MovePicker& mp) {
  using namespace picker_detail;
  for (;;) {
    switch (mp.stage) {
      case StageTtMove:
      case StageReducedTtMove:
      case StageShallowTtMove:
        ++mp.stage;
        if (mp.ttMove && isPseudoLegal<Us>(pos, mp.ttMove)) return mp.ttMove;
        break;

      case StageGenCaptures:
      case StageShallowGenCaptures:
        mp.cur = mp.moves;
        mp.end = generateCaptures<Us>(pos, mp.moves, captureTargets<Us>(pos));
        ++mp.stage;
        break;

      case StageReducedGenCaptures:
        mp.cur = mp.moves;
        mp.end = generateCaptures<Us>(pos, mp.moves, mp.targets);
        ++mp.stage;
        break;

      case StageCaptures:
        while (mp.cur < mp.end) {
          MoveWord w = selectBest(mp.cur, mp.end);
          ++mp.cur;
          Move m = moveOf(w);
          if (m == mp.ttMove) continue;
          if (isWinningOrEvenCapture(w) || !exchangeLoses<Us>(pos, m)) return w;
          mp.postponed[mp.postponedCount++] = w;
        }
        mp.stage = StageKiller1;
        break;

      case StageReducedCaptures:
      case StageShallowCaptures:
        while (mp.cur < mp.end) {
          MoveWord w = selectBest(mp.cur, mp.end);
          ++mp.cur;
          if (moveOf(w) != mp.ttMove) return w;
        }
        ++mp.stage;
        if (mp.stage == StageShallowChecks) {
          // The quiet checks are kept in the second list so that stage 16 can skip them.
          MoveWord* e = generateQuietChecks<Us>(pos, mp.postponed);
          mp.postponedCount = int(e - mp.postponed);
          mp.postponedRead = 0;
        }
        break;

      case StageKiller1:
        mp.stage = StageKiller2;
        if (killerPlayable<Us>(pos, mp, pos.st().killer1)) return pos.st().killer1;
        break;

      case StageKiller2:
        // Killer 2 is handed out while the stage still reads 4, so that the node does not take
        // it for a move of the quiet stage; the next call moves on.
        if (!mp.killer2Done) {
          mp.killer2Done = true;
          Move k2 = pos.st().killer2;
          if (k2 != pos.st().killer1 && killerPlayable<Us>(pos, mp, k2)) return k2;
        }
        mp.stage = StageQuiet;
        {
          // Generate the quiet moves, without the table move and the killers, and sort them.
          MoveWord* end = generateRemaining<Us>(pos, mp.moves, NoGainMargin);
          Move k1 = pos.st().killer1, k2 = pos.st().killer2;
          MoveWord* out = mp.moves;
          for (MoveWord* p = mp.moves; p < end; ++p) {
            Move m = moveOf(*p);
            if (m != mp.ttMove && m != k1 && m != k2) *out++ = *p;
          }
          mp.cur = mp.moves;
          mp.end = out;
          insertionSort(mp.moves, out);
        }
        break;

      case StageQuiet:
        if (mp.cur < mp.end) return *mp.cur++;
        mp.stage = StageLosingCaptures;
        break;

      case StageLosingCaptures:
        if (mp.postponedRead < mp.postponedCount) return mp.postponed[mp.postponedRead++];
        mp.stage = StageDone;
        break;

      case StageReducedGenChecks:
        mp.cur = mp.moves;
        mp.end = generateQuietChecks<Us>(pos, mp.moves);
        mp.stage = StageReducedChecks;
        break;

      case StageReducedChecks:
        while (mp.cur < mp.end) {
          MoveWord w = *mp.cur++;
          if (moveOf(w) != mp.ttMove) return w;
        }
        mp.stage = StageDone;
        break;

      case StageShallowChecks:
        while (mp.postponedRead < mp.postponedCount) {
          MoveWord w = mp.postponed[mp.postponedRead++];
          if (moveOf(w) != mp.ttMove) return w;
        }
        mp.stage = StageShallowRemaining;
        mp.cur = mp.moves;
        mp.end = generateRemaining<Us>(pos, mp.moves, mp.margin);
        break;

      case StageShallowRemaining:
        while (mp.cur < mp.end) {
          MoveWord w = *mp.cur++;
          Move m = moveOf(w);
          if (m == mp.ttMove) continue;
          bool handedOut = false;
          for (int i = 0; i < mp.postponedCount && !handedOut; ++i)
            handedOut = moveOf(mp.postponed[i]) == m;
          if (!handedOut) return w;
        }
        mp.stage = StageDone;
        break;

      default:
        return 0;
    }
  }
}

// The moves of a side in check: the table move first when pseudo-legal, then every evasion of
// the generator (best keys first: captures of the checker, then interpositions and king moves).
struct EvasionPicker {
  Move ttMove;
  bool ttPending;
  MoveWord* cur;
  MoveWord* end;
  MoveWord moves[MaxMoves];

  template <Color Us>
  void init(const Position& pos, Move tableMove) {
    ttMove = moveOf(tableMove);
    ttPending = ttMove && isPseudoLegal<Us>(pos, ttMove);
    cur = moves;
    end = generateEvasions<Us>(pos, moves, ~Bitboard(0));
    picker_detail::insertionSort(moves, end);
  }
  // The next move (0 when exhausted) and whether it came from the table.
  Move next() {
    if (ttPending) {
      ttPending = false;
      return ttMove;
    }
    while (cur < end) {
      Move m = moveOf(*cur++);
      if (m != ttMove) return m;
    }
    return 0;
  }
};

}  // namespace tavrin
