#!/usr/bin/env bash
# Two builds' `tavrin-tool bench`, run in turn RUNS times (default 5): the nodes per second each prints
# and its whole-process wall time, with the median of each and of the pair-by-pair ratios (new / old).
# Pairing keeps the ratio meaningful while the machine's speed drifts.
# Run by hand: scripts/pair_bench.sh NEW-TOOL OLD-TOOL [DEPTH]
set -euo pipefail
new=$1
old=$2
depth=${3:-}
runs=${RUNS:-5}

# Prints "nps wall-seconds" of one bench run.
one() {
  local start end nps
  start=$(date +%s.%N)
  nps=$("$1" bench $depth | awk '/^nps / { print $2 }')
  end=$(date +%s.%N)
  echo "$nps $(awk -v a="$start" -v b="$end" 'BEGIN { printf "%.3f", b - a }')"
}
median() { sort -g | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'; }

rows=()
for ((i = 1; i <= runs; ++i)); do
  read -r nn nw < <(one "$new")
  read -r on ow < <(one "$old")
  rows+=("$nn $nw $on $ow")
  echo "run $i: new $nn nodes/s ${nw} s, old $on nodes/s ${ow} s"
done
col() { printf '%s\n' "${rows[@]}" | awk -v c="$1" '{ print $c }' | median; }
ratio() { printf '%s\n' "${rows[@]}" | awk -v a="$1" -v b="$2" '{ printf "%.4f\n", $a / $b }' | median; }
echo "median nodes/s: new $(col 1), old $(col 3); pair ratio new/old $(ratio 1 3)"
echo "median wall s:  new $(col 2), old $(col 4); pair ratio new/old $(ratio 2 4)"
