// History counters and killer moves: the quiet-move ordering memory of the search. The counters are
// shared by the search threads without locks (relaxed loads and stores; a lost update is harmless).
#pragma once

#include "board/movegen.h"
#include "board/position.h"

namespace tavrin {

constexpr std::uint16_t HistoryStart = 2048;
constexpr int HistoryMax = 65280;

inline std::uint16_t& historyOf(int piece, int to) { return HistoryTable[historyCell(piece, to)]; }

// A quiet move that cut off: the counter moves toward its ceiling by depth / 256 of the distance.
inline void historyBonus(int piece, int to, int depth) {
  std::uint16_t& cell = historyOf(piece, to);
  const int h = relaxedLoad(cell);
  int d = depth < 255 ? depth : 255;
  relaxedStore(cell, std::uint16_t(h + ((HistoryMax - h) * d) / 256));
}

// A quiet move that failed low: the counter loses depth / 256 of itself.
inline void historyPenalty(int piece, int to, int depth) {
  std::uint16_t& cell = historyOf(piece, to);
  const int h = relaxedLoad(cell);
  int d = depth < 255 ? depth : 255;
  relaxedStore(cell, std::uint16_t(h - (h * d) / 256));
}

// The node's killers live in its own state entry; a new one pushes killer 1 down.
inline void updateKillers(StateEntry& st, Move m) {
  if (st.killer1 != m) {
    st.killer2 = st.killer1;
    st.killer1 = m;
  }
}

// A move is quiet for history and killers when it captures nothing and is neither en passant
// nor a promotion.
inline bool isQuietMove(const Position& pos, Move m) {
  return pos.board[moveTo(m)] == NoPiece && !isEnPassantOrPromotion(m);
}

}  // namespace tavrin
