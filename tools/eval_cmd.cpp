// tavrin-tool eval FEN: the static evaluation of a position with its main terms.
#include <cstdio>
#include <string>

#include "app/startup.h"
#include "board/fen.h"
#include "eval/eval_internal.h"
#include "eval/evaluate.h"
#include "eval/material.h"
#include "tools/commands.h"
#include "uci/globals.h"

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

}  // namespace

int evalCommand(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: tavrin-tool eval FEN\n");
    return 2;
  }
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
  if ((pos.st().materialKey & 0xFF) == 0) {
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
