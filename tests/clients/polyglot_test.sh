#!/usr/bin/env bash
# Drives the engine through polyglot's xboard front end: the engine must answer with legal moves
# as White after "go" and as Black after a user move.
set -u
# The engine may be a command with arguments, e.g. wine build-win/tavrin.exe.
: "${1:?usage: polyglot_test.sh ENGINE [ARGUMENT...]}"
ENGINE_CMD=("$@")
ENGINE="$*"
export PATH=/usr/games:$PATH
command -v polyglot >/dev/null || { echo "SKIP: polyglot is not installed"; exit 77; }
. "$(dirname "$0")/engine_plays.sh"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

{
  echo xboard
  echo "protover 2"
  sleep 1
  echo new
  echo "st 1"
  echo "usermove e2e4"
  sleep 4
  echo new
  echo "st 1"
  echo go
  sleep 4
  echo quit
} | timeout 60 polyglot -noini -ec "$ENGINE" -log true -lf "$work/polyglot.log" >"$work/out.txt" 2>&1
status=$?
if [ $status -ne 0 ]; then
  echo "FAIL: polyglot ended with status $status"
  cat "$work/out.txt"
  exit 1
fi

mapfile -t moves < <(grep -E '^move ' "$work/out.txt" | awk '{print $2}')
black_replies=" a7a6 a7a5 b7b6 b7b5 c7c6 c7c5 d7d6 d7d5 e7e6 e7e5 f7f6 f7f5 g7g6 g7g5 h7h6 h7h5 b8a6 b8c6 g8f6 g8h6 "
white_moves=" a2a3 a2a4 b2b3 b2b4 c2c3 c2c4 d2d3 d2d4 e2e3 e2e4 f2f3 f2f4 g2g3 g2g4 h2h3 h2h4 b1a3 b1c3 g1f3 g1h3 "
fail=0
if [ ${#moves[@]} -ne 2 ]; then
  echo "FAIL: expected two moves, got ${#moves[@]}"
  fail=1
else
  [[ "$black_replies" == *" ${moves[0]} "* ]] || { echo "FAIL: illegal reply to e2e4: ${moves[0]}"; fail=1; }
  [[ "$white_moves" == *" ${moves[1]} "* ]] || { echo "FAIL: illegal first move: ${moves[1]}"; fail=1; }
fi
if grep -qiE 'illegal|error' "$work/out.txt"; then
  echo "FAIL: error reported"
  fail=1
fi
if [ $fail -ne 0 ]; then
  echo "--- polyglot output"; cat "$work/out.txt"
  echo "--- polyglot log"; tail -n 60 "$work/polyglot.log"
  exit 1
fi
echo "PASS: moves ${moves[*]}"
