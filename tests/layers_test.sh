#!/usr/bin/env bash
# The layers include only downwards: common, board, eval, search, uci, app, tools, each folder
# including only itself and the folders before it. Prints every include that runs upward.
set -u
cd "${1:-$(dirname "$0")/..}" || exit 2
order=(common board eval search uci app tools)
rank() { local i; for i in "${!order[@]}"; do [ "${order[$i]}" = "$1" ] && { echo "$i"; return; }; done; echo -1; }
status=0
for dir in "${order[@]}"; do
  from=$(rank "$dir")
  while IFS= read -r hit; do
    file=${hit%%:*}
    target=$(sed -E 's/.*#include "([a-z_]+)\/.*/\1/' <<<"$hit")
    to=$(rank "$target")
    if [ "$to" -gt "$from" ]; then
      echo "upward include: $file -> $target/"
      status=1
    fi
  done < <(grep -rn -E '^#include "[a-z_]+/' "$dir" --include='*.cpp' --include='*.h')
done
[ $status -eq 0 ] && echo "layers: every include runs downward"
exit $status
