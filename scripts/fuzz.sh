#!/usr/bin/env bash
# fuzz.sh [SECONDS]: feeds each reader of foreign data random bytes for that long (60), beginning with the inputs kept
# beside it. What breaks it is kept in build/fuzz/found.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
seconds=${1:-60}
scripts/packages.sh long

fuzz() {
  local name=$1 seeds=$2 log=build/fuzz/$1.log
  scripts/build.sh fuzz "$name"
  mkdir -p "build/fuzz/inputs/$name" build/fuzz/found
  if ! "build/fuzz/fuzz/$name" -max_total_time="$seconds" -max_len=4096 -timeout=5 -rss_limit_mb=1024 \
      -print_final_stats=1 -artifact_prefix=build/fuzz/found/ "build/fuzz/inputs/$name" "tests/fuzz/$seeds" >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    return 1
  fi
  echo "   $name: $(awk '/number_of_executed_units/ {print $2}' "$log") inputs, and none breaks it"
}

fuzz rate_reply_fuzz rate_replies
