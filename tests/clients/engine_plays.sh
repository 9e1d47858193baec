# Shared by the client tests: exits with 77 (skipped) unless the engine answers a search with a
# real move. Sourced with ENGINE_CMD set (the engine program and its arguments).
probe=$(printf 'position startpos\ngo depth 1\nisready\n' | timeout 30 "${ENGINE_CMD[@]}" 2>/dev/null | grep -m1 '^bestmove ')
case "$probe" in
  "bestmove "[a-h][1-8][a-h][1-8]*) ;;
  *) echo "SKIP: the engine does not search yet (got: '${probe}')"; exit 77 ;;
esac
