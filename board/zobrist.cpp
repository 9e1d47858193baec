// The Zobrist keys, drawn once at start-up in a fixed order from the key generator.
#include "board/zobrist.h"

#include <initializer_list>

namespace tavrin {

ZobristKeys Zobrist;
std::uint64_t EvalNoiseSeed;

void initZobrist() {
  KeyGenerator rng;
  Zobrist.side = rng.next64();

  // Single rights are drawn; every other set is the xor of its parts, so a change of rights
  // is applied as key ^= castling[lost].
  Zobrist.castling[0] = 0;
  for (int right : {1, 2, 4, 8}) Zobrist.castling[right] = rng.next64();
  for (int set = 0; set < 16; ++set) {
    if ((set & (set - 1)) == 0) continue;
    Key k = 0;
    for (int right : {1, 2, 4, 8})
      if (set & right) k ^= Zobrist.castling[right];
    Zobrist.castling[set] = k;
  }

  for (int piece = 0; piece < 16; ++piece)
    for (int sq = 0; sq < 64; ++sq) Zobrist.pieceSquare[piece][sq] = rng.next64();
  for (int file = 0; file < 8; ++file) Zobrist.enPassant[file] = rng.next64();

  EvalNoiseSeed = rng.next64();
}

}  // namespace tavrin
