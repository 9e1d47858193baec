#!/usr/bin/env bash
# Plays the built tavrin against Debian's chess engines and prints a table of the results.
# Run by hand: scripts/gauntlet.sh [games-per-opponent]
# Environment: BUILD (build directory, default build), GAMES, TC (default 5+0.05),
# CONCURRENCY (default: cores), OPENINGS (EPD file), OUT (directory for PGN and logs),
# ADJUDICATE (resign/draw adjudication options; set it empty to play every game out), SEED (opening
# order, default 1), ONLY (names of the opponents to play, for example "toga2 glaurung"; default all).
set -euo pipefail

ROOT=$(cd "$(dirname "$0")/.." && pwd)
BUILD=${BUILD:-$ROOT/build}
GAMES=${1:-${GAMES:-100}}
TC=${TC:-5+0.05}
CONCURRENCY=${CONCURRENCY:-$(nproc)}
OPENINGS=${OPENINGS:-$ROOT/tests/data/openings-2moves.epd}
OUT=${OUT:-$ROOT/gauntlet-$(date +%Y%m%d-%H%M%S)}
ADJUDICATE=${ADJUDICATE-"-resign movecount=4 score=800 -draw movenumber=40 movecount=8 score=10"}
TAVRIN=$BUILD/tavrin
TOOL=$BUILD/tavrin-tool

[ -x "$TAVRIN" ] && [ -x "$TOOL" ] || { echo "build tavrin and tavrin-tool first (BUILD=$BUILD)"; exit 1; }
[ -f "$OPENINGS" ] || { echo "opening file $OPENINGS not found"; exit 1; }
mkdir -p "$OUT"

# Install the opponents from Debian's packages (those that exist).
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO=sudo
$SUDO apt-get update -qq || true
for pkg in stockfish ethereal-chess toga2 glaurung gnuchess; do
  dpkg -s "$pkg" >/dev/null 2>&1 && continue
  # grep reads to the end: with pipefail, an early exit would fail the pipe (apt-cache gets SIGPIPE).
  if apt-cache policy "$pkg" 2>/dev/null | grep 'Candidate: [0-9]' >/dev/null; then
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "$pkg" || true
  else
    echo "package $pkg is not available; skipped"
  fi
done

# name|command|arguments|extra engine settings
OPPONENTS=(
  "stockfish|/usr/games/stockfish||"
  "ethereal|/usr/games/ethereal-chess||"
  "toga2|/usr/games/toga2||"
  "glaurung|/usr/games/glaurung||"
  "gnuchess|/usr/games/gnuchess|--uci|"
  "stockfish-1500|/usr/games/stockfish||option.UCI_LimitStrength=true option.UCI_Elo=1500"
  "stockfish-2000|/usr/games/stockfish||option.UCI_LimitStrength=true option.UCI_Elo=2000"
  "stockfish-2500|/usr/games/stockfish||option.UCI_LimitStrength=true option.UCI_Elo=2500"
)

printf '%-16s %6s %7s %28s %8s\n' opponent games score "Elo [95% interval]" faults > "$OUT/table.txt"
for entry in "${OPPONENTS[@]}"; do
  IFS='|' read -r name cmd args extra <<< "$entry"
  [ -n "${ONLY:-}" ] && [[ " $ONLY " != *" $name "* ]] && continue
  if [ ! -x "$cmd" ]; then
    echo "$name: $cmd not installed; skipped"
    continue
  fi
  echo "=== tavrin vs $name: $GAMES games at $TC"
  engineArgs=(cmd="$cmd" name="$name")
  [ -n "$args" ] && engineArgs+=(args="$args")
  # shellcheck disable=SC2206
  [ -n "$extra" ] && engineArgs+=($extra)
  # OwnBook false for everyone; an engine without that option ignores it.
  "$TOOL" match \
    -engine cmd="$TAVRIN" name=tavrin \
    -engine "${engineArgs[@]}" \
    -each tc="$TC" option.Hash=16 option.Threads=1 option.OwnBook=false \
    -openings file="$OPENINGS" format=epd order=random seed="${SEED:-1}" \
    -games "$GAMES" -concurrency "$CONCURRENCY" -pgnout "$OUT/$name.pgn" \
    $ADJUDICATE -ratinginterval 0 | tee "$OUT/$name.log"
  summary=$(grep '^Summary:' "$OUT/$name.log" | tail -1)
  field() { sed -n "s/.* $1=\([^ ]*\).*/\1/p" <<< "$summary"; }
  printf '%-16s %6s %7s %28s %8s\n' "$name" "$(field games)" "$(field score)" \
    "$(field elo) [$(field lower), $(field upper)]" "$(field faults)" >> "$OUT/table.txt"
done
echo
echo "Faults are tavrin's/the opponent's (illegal moves, crashes, stalls, time losses)."
cat "$OUT/table.txt"
