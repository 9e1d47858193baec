#!/usr/bin/env bash
# Time to depth with one and with several threads: `tavrin-tool bench DEPTH --threads N` in turn
# for 1 and N threads, RUNS times (default 3). For each bench position the median time of each,
# then the median over the positions of the ratio (one thread / N threads), the same over the
# positions long enough to split (MIN_MS, default 200 ms with one thread), the ratio of the
# summed times, and the nodes per second of both.
# Run by hand: scripts/threads_speedup.sh TOOL [THREADS] [DEPTH]
set -euo pipefail
tool=$1
threads=${2:-2}
depth=${3:-14}
runs=${RUNS:-3}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for ((i = 1; i <= runs; ++i)); do
  "$tool" bench "$depth" --threads 1 >"$work/one.$i"
  "$tool" bench "$depth" --threads "$threads" >"$work/many.$i"
  echo "run $i: 1 thread $(awk '/^time /{print $2}' "$work/one.$i") ms," \
    "$threads threads $(awk '/^time /{print $2}' "$work/many.$i") ms"
done
# Position times: "index ms" per line, from every run.
times() { cat "$work"/"$1".* | awk '/^position / { split($2, p, "/"); print p[1], $6 }'; }
median_by_position() {
  sort -k1,1n -k2,2g | awk '{ v[$1] = v[$1] " " $2 } END { for (k in v) { n = split(v[k], a, " ");
    print k, a[int((n + 1) / 2)] } }' | sort -k1,1n
}
times one | median_by_position >"$work/one.med"
times many | median_by_position >"$work/many.med"
join "$work/one.med" "$work/many.med" | awk '{ if ($3 > 0) print $2 / $3 }' | sort -g |
  awk '{ a[NR] = $1 } END { printf "median time-to-depth ratio over %d positions: %.2f\n", NR, a[int((NR + 1) / 2)] }'
join "$work/one.med" "$work/many.med" | awk -v m="${MIN_MS:-200}" '$2 >= m && $3 > 0 { print $2 / $3 }' | sort -g |
  awk -v m="${MIN_MS:-200}" '{ a[NR] = $1 } END { printf "median ratio over the %d positions that take %d ms or more with one thread: %.2f\n", NR, m, a[int((NR + 1) / 2)] }'
join "$work/one.med" "$work/many.med" | awk '{ s1 += $2; s2 += $3 } END { printf "summed times: %.0f ms / %.0f ms = %.2f\n", s1, s2, s1 / s2 }'
for kind in one many; do
  cat "$work/$kind".* | awk -v k="$kind" '/^nps / { s += $2; n++ } END { printf "%s: mean %.0f nodes per second\n", k, s / n }'
done
grep -hE '^(splits|moves per split|idle)' "$work"/many.* | sort | uniq -c | sort -rn | head -20
