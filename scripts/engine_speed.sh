#!/usr/bin/env bash
# True nodes per second of UCI engines, side by side: the start position (median of ROUNDS searches
# of SECONDS each, engines taking turns) and the bench positions of `tavrin-tool bench` (HALF seconds
# each, nodes and time summed). One thread and a 16 MB table each.
# Tavrin prints its node counts multiplied by 1.212345; its figures here are divided back.
# Run by hand: scripts/engine_speed.sh NAME=COMMAND ...
#   e.g. scripts/engine_speed.sh tavrin=build/tavrin glaurung=/usr/games/glaurung toga2=/usr/games/toga2
# Environment: ROUNDS (default 3), SECONDS_START (default 5), MS_BENCH (default 500), TOOL (default
# build/tavrin-tool, which lists the bench positions).
set -euo pipefail

ROOT=$(cd "$(dirname "$0")/.." && pwd)
ROUNDS=${ROUNDS:-3}
SECONDS_START=${SECONDS_START:-5}
MS_BENCH=${MS_BENCH:-500}
TOOL=${TOOL:-$ROOT/build/tavrin-tool}
[ $# -gt 0 ] || { echo "usage: $0 NAME=COMMAND ..."; exit 2; }

# Searches one position for the given milliseconds; prints "nodes time" of the engine's last report
# (time in ms), nodes divided back for Tavrin.
search() {
  local cmd=$1 fen=$2 ms=$3 out
  out=$({
    echo uci
    echo "setoption name Hash value 16"
    echo "setoption name Threads value 1"
    echo isready
    echo "position fen $fen"
    echo "go movetime $ms"
    sleep "$(awk -v ms="$ms" 'BEGIN { print ms / 1000 + 1.5 }')"
    echo quit
  } | $cmd 2>/dev/null | tr -d '\r')
  local scale=1
  grep -q '^id name Tavrin' <<<"$out" && scale=1.212345
  grep -E '^info .*nodes [0-9]+' <<<"$out" | grep -E ' time [0-9]+' | tail -1 |
    awk -v scale="$scale" '{ for (i = 1; i < NF; ++i) { if ($i == "nodes") n = $(i + 1); if ($i == "time") t = $(i + 1) }
                             printf "%.0f %d\n", n / scale, t }'
}

STARTPOS="rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
declare -A START BENCH_N BENCH_T
for entry in "$@"; do START[${entry%%=*}]=""; BENCH_N[${entry%%=*}]=0; BENCH_T[${entry%%=*}]=0; done

for ((r = 0; r < ROUNDS; ++r)); do
  for entry in "$@"; do
    read -r n t < <(search "${entry#*=}" "$STARTPOS" $((SECONDS_START * 1000)))
    START[${entry%%=*}]+="$(awk -v n="$n" -v t="$t" 'BEGIN { printf "%.0f", (t > 0 ? n * 1000 / t : 0) }') "
  done
done

mapfile -t FENS < <("$TOOL" bench 1 | sed -n 's/^position .* bestmove [^ ]* *//p')
for fen in "${FENS[@]}"; do
  for entry in "$@"; do
    read -r n t < <(search "${entry#*=}" "$fen" "$MS_BENCH")
    BENCH_N[${entry%%=*}]=$((BENCH_N[${entry%%=*}] + n))
    BENCH_T[${entry%%=*}]=$((BENCH_T[${entry%%=*}] + t))
  done
done

printf '%-12s %28s %24s\n' engine "start position (M nodes/s)" "bench positions (M/s)"
for entry in "$@"; do
  name=${entry%%=*}
  median=$(tr ' ' '\n' <<<"${START[$name]}" | grep . | sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }')
  printf '%-12s %28s %24s\n' "$name" \
    "$(awk -v m="$median" -v all="${START[$name]}" 'BEGIN { printf "%.2f (runs: %s)", m / 1e6, all }')" \
    "$(awk -v n="${BENCH_N[$name]}" -v t="${BENCH_T[$name]}" 'BEGIN { printf "%.2f", (t > 0 ? n / t / 1000 : 0) }')"
done
