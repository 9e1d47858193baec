#!/usr/bin/env bash
# Long runs that look for faults rather than strength: 1,000 fast games against a Debian engine,
# then 200 games at 10+0.1 with tavrin pondering. Reports crashes, illegal moves and time losses.
# Run by hand: scripts/soak.sh [opponent-command]
# Environment: BUILD (default build), FAST_GAMES (1000), PONDER_GAMES (200), CONCURRENCY, OUT,
# PARTS ("fast ponder": which of the two runs to play), ADJUDICATE (as in gauntlet.sh).
set -euo pipefail

ROOT=$(cd "$(dirname "$0")/.." && pwd)
BUILD=${BUILD:-$ROOT/build}
OPPONENT=${1:-/usr/games/stockfish}
FAST_GAMES=${FAST_GAMES:-1000}
PONDER_GAMES=${PONDER_GAMES:-200}
CONCURRENCY=${CONCURRENCY:-$(nproc)}
OPENINGS=${OPENINGS:-$ROOT/tests/data/openings-2moves.epd}
OUT=${OUT:-$ROOT/soak-$(date +%Y%m%d-%H%M%S)}
ADJUDICATE=${ADJUDICATE-"-resign movecount=4 score=800 -draw movenumber=40 movecount=8 score=10"}
TAVRIN=$BUILD/tavrin
TOOL=$BUILD/tavrin-tool

[ -x "$TAVRIN" ] && [ -x "$TOOL" ] || { echo "build tavrin and tavrin-tool first (BUILD=$BUILD)"; exit 1; }
if [ ! -x "$OPPONENT" ]; then
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update -qq && DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq stockfish
fi
mkdir -p "$OUT"

run() {
  local label=$1 games=$2 tc=$3 ponder=$4
  echo "=== $label: $games games at $tc"
  "$TOOL" match \
    -engine cmd="$TAVRIN" name=tavrin $ponder \
    -engine cmd="$OPPONENT" name=opponent option.UCI_LimitStrength=true option.UCI_Elo=2000 \
    -each tc="$tc" option.Hash=16 option.Threads=1 option.OwnBook=false \
    -openings file="$OPENINGS" format=epd order=random seed=$RANDOM \
    -games "$games" -concurrency "$CONCURRENCY" -pgnout "$OUT/$label.pgn" \
    $ADJUDICATE -ratinginterval 100 > "$OUT/$label.log"
  grep -E '^(Result of|Elo|Faults of|Games not|Summary)' "$OUT/$label.log"
  echo "faulty games:"
  grep -E 'illegal move|disconnects|stalls|loses on time|does not answer|cannot start' "$OUT/$label.log" \
    | sed 's/^/  /' || echo "  none"
}

PARTS=${PARTS:-fast ponder}
case " $PARTS " in *" fast "*) run fast "$FAST_GAMES" 2+0.02 "" ;; esac
case " $PARTS " in *" ponder "*) run ponder "$PONDER_GAMES" 10+0.1 ponder ;; esac
echo "PGN and logs in $OUT"
