// Constant square sets of the evaluation: file spans, passed-pawn spans, distances.
#pragma once

#include <array>

#include "board/bitboard.h"

namespace tavrin {

constexpr Bitboard adjacentFiles(int file) {
  return (file > 0 ? fileMask(file - 1) : 0) | (file < 7 ? fileMask(file + 1) : 0);
}

// Ranks strictly in front of a rank, seen from a colour.
constexpr Bitboard forwardRanks(Color us, int rank) {
  Bitboard b = 0;
  for (int r = 0; r < 8; ++r)
    if (us == White ? r > rank : r < rank) b |= rankMask(r);
  return b;
}

struct SpanTables {
  Bitboard forwardFile[2][64];     // squares in front on the same file
  Bitboard attackSpan[2][64];      // squares in front on the neighbouring files
  Bitboard passedSpan[2][64];      // both: no enemy pawn here means passed
  int distance[64][64];            // king distance
};

constexpr SpanTables makeSpanTables() {
  SpanTables t{};
  for (int c = 0; c < 2; ++c)
    for (int s = 0; s < 64; ++s) {
      Bitboard front = forwardRanks(Color(c), rankOf(s));
      t.forwardFile[c][s] = front & fileMask(fileOf(s));
      t.attackSpan[c][s] = front & adjacentFiles(fileOf(s));
      t.passedSpan[c][s] = t.forwardFile[c][s] | t.attackSpan[c][s];
    }
  for (int a = 0; a < 64; ++a)
    for (int b = 0; b < 64; ++b) {
      int df = fileOf(a) - fileOf(b), dr = rankOf(a) - rankOf(b);
      df = df < 0 ? -df : df;
      dr = dr < 0 ? -dr : dr;
      t.distance[a][b] = df > dr ? df : dr;
    }
  return t;
}

inline constexpr SpanTables Spans = makeSpanTables();

inline int distance(int a, int b) { return Spans.distance[a][b]; }
// Distance of a square from the nearest edge (0 on the edge, 3 in the centre).
constexpr int edgeDistance(int sq) {
  int f = fileOf(sq), r = rankOf(sq);
  int df = f < 7 - f ? f : 7 - f, dr = r < 7 - r ? r : 7 - r;
  return df < dr ? df : dr;
}

// Squares a pawn of colour Us on any square of b can reach by pushes (b included).
template <Color Us>
constexpr Bitboard forwardFill(Bitboard b) {
  if constexpr (Us == White) {
    b |= b << 8; b |= b << 16; b |= b << 32;
  } else {
    b |= b >> 8; b |= b >> 16; b |= b >> 32;
  }
  return b;
}

// The files of the king's wing: four files around a king on the wing, the four central files
// for a king on one of the middle two.
constexpr Bitboard kingFlank(int file) {
  Bitboard b = 0;
  int first = file < 3 ? 0 : file > 4 ? 4 : 2;
  for (int f = first; f < first + 4; ++f) b |= fileMask(f);
  return b;
}

constexpr Bitboard QueenSideFiles = fileMask(0) | fileMask(1) | fileMask(2) | fileMask(3);
constexpr Bitboard KingSideFiles = ~QueenSideFiles;

}  // namespace tavrin
