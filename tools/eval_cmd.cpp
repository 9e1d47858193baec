// tavrin-tool eval FEN: the static evaluation of a position with its main terms.
// tavrin-tool eval --speed: full evaluations per second over the children of seeded random games.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "app/startup.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "common/globals.h"
#include "eval/eval_internal.h"
#include "eval/evaluate.h"
#include "eval/material.h"
#include "tools/commands.h"

namespace tavrin::tool {

namespace {

void printRow(const char* name, Packed white, Packed black) {
  Packed total = white - black;
  std::printf("%-14s %6d %6d  %6d %6d  %6d %6d\n", name, middlegameOf(white), endgameOf(white), middlegameOf(black),
              endgameOf(black), middlegameOf(total), endgameOf(total));
}

void printTotalRow(const char* name, Packed total) {
  std::printf("%-14s %6s %6s  %6s %6s  %6d %6d\n", name, "-", "-", "-", "-", middlegameOf(total), endgameOf(total));
}

// Every child of every position along seeded random games from a few openings and endings is
// made and evaluated in full (cache entry cleared), then unmade; the same walk without the
// evaluation gives the overhead to subtract.
int speedCommand() {
  static const char* const Starts[] = {
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
      "r1bqkb1r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R w KQkq - 4 4",
      "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
      "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
      "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
      "4rrk1/pp1n3p/3q2pQ/2p1pb2/2PP4/2P3N1/P2B2PP/4RRK1 b - - 7 19",
  };
  initializeEngine();
  initEvaluation();
  static Position pos;
  initPosition(pos);
  pos.recordIndex = 1;   // not the main record: no input polling
  double seconds[2] = {0, 0};
  long children = 0;
  for (int withEval = 0; withEval < 2; ++withEval) {
    std::mt19937_64 rng(2026);
    children = 0;
    auto start = std::chrono::steady_clock::now();
    for (int game = 0; game < 600; ++game) {
      setFromFen(pos, Starts[game % (sizeof Starts / sizeof Starts[0])]);
      for (int ply = 0; ply < 60; ++ply) {
        MoveWord list[MaxMoves];
        MoveWord* end = generateLegalMoves(pos, list);
        if (end == list) break;
        for (MoveWord* w = list; w != end; ++w) {
          makeMoveAny(pos, Move(*w));
          if (withEval) {
            EvalCache[pos.st().key & (EvalCacheSize - 1)] = 0;
            evaluate(pos, -32767, 32767, Move(*w));
          }
          unmakeMove(pos, Move(*w));
          ++children;
        }
        makeMoveAny(pos, Move(list[rng() % std::uint64_t(end - list)]));
        evaluateFull(pos);
      }
    }
    seconds[withEval] = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  double ns = (seconds[1] - seconds[0]) * 1e9 / double(children);
  std::printf("children %ld\nwalk %.0f ms, walk with evaluations %.0f ms\n", children, seconds[0] * 1000,
              seconds[1] * 1000);
  std::printf("full evaluation %.0f ns, %.2f million per second\n", ns, ns > 0 ? 1000.0 / ns : 0.0);
  return 0;
}

}  // namespace

int evalCommand(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: tavrin-tool eval FEN | eval --speed\n");
    return 2;
  }
  if (std::strcmp(argv[1], "--speed") == 0) return speedCommand();
  std::string fen;
  for (int i = 1; i < argc; ++i) {
    if (i > 1) fen += ' ';
    fen += argv[i];
  }
  initializeEngine();
  initEvaluation();
  static Position pos;
  initPosition(pos);
  if (!setFromFen(pos, fen.c_str())) {
    std::fprintf(stderr, "eval: not a playable position: %s\n", fen.c_str());
    return 1;
  }

  MaterialInfo mi = probeMaterial(pos);
  PawnEntry pe;
  evaluatePawns(pos, pe);
  int phase = gamePhase(pos.st().materialKey);
  int total;
  EvalTerms terms;
  if (kingsAndPawnsOnly(pos.st().materialKey)) {
    if (pos.sideToMove == White) evaluatePawnEndingWhite(pos, mi, pe);
    else evaluatePawnEndingBlack(pos, mi, pe);
    total = pos.sideToMove == White ? pos.st().staticEval : -pos.st().staticEval;
    terms.pieceSquare = pos.st().psqScore;
    terms.pawns = pe.score;
  } else {
    total = evaluateStatic(pos, mi, pe, terms);
  }

  std::printf("%-14s %13s  %13s  %13s\n", "term", "white", "black", "total");
  std::printf("%-14s %6s %6s  %6s %6s  %6s %6s\n", "", "mg", "eg", "mg", "eg", "mg", "eg");
  std::printf("%-14s %6s %6s  %6s %6s  %6d %6s\n", "material", "-", "-", "-", "-", mi.value, "-");
  printTotalRow("piece-square", terms.pieceSquare);
  printTotalRow("pawns", terms.pawns);
  printRow("mobility", terms.mobility[White], terms.mobility[Black]);
  printRow("pieces", terms.pieces[White], terms.pieces[Black]);
  printRow("king safety", terms.kingSafety[White], terms.kingSafety[Black]);
  printRow("threats", terms.threats[White], terms.threats[Black]);
  printRow("passed pawns", terms.passed[White], terms.passed[Black]);
  Packed sum = terms.pieceSquare + terms.pawns;
  for (Color c : {White, Black}) {
    Packed side = terms.mobility[c] + terms.pieces[c] + terms.kingSafety[c] + terms.threats[c] + terms.passed[c];
    sum += c == White ? side : -side;
  }
  printTotalRow("positional", sum);
  std::printf("phase %d\n", phase);
  std::printf("scale %d\n", mi.scale);
  std::printf("flags 0x%02X\n", mi.flags);
  std::printf("total %d\n", total);
  return 0;
}

}  // namespace tavrin::tool
