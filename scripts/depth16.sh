#!/usr/bin/env bash
# Milliseconds until a UCI engine reports depth 16 from the start position (its own "info time"),
# with its default table. Run by hand: scripts/depth16.sh ENGINE-COMMAND [DEPTH]
set -euo pipefail
engine=$1
depth=${2:-16}
out=$(mktemp)
trap 'rm -f "$out"' EXIT
{
  echo uci
  echo isready
  echo "position startpos"
  echo "go depth $depth"
  until grep -q '^bestmove' "$out"; do sleep 0.1; done
  echo quit
} | $engine >"$out"
grep -E "^info time [0-9]+ .* depth $depth " "$out" | tail -1 | awk '{ print $3 }'
