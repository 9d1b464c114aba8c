#!/usr/bin/env bash
# kill_imports.sh PROGRAM TIMES: kills an import at a random moment, again and again. After each kill the store must be
# whole: sound by `doctor`, and holding either none of the file's records or all of them. Kills that all came too late
# prove nothing, so at least one must have hit a running import.
set -euo pipefail
program=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
times=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export MONIVA_DATA="$folder/data" TZ=Europe/Berlin LANG=en_US.UTF-8
file="$here/examples/household.csv"
records=2708 # 2,328 items and 190 transfers of two rows each

# How long a whole import takes here, in milliseconds; kills are spread over that time and half of it more.
"$program" book add Household --currency EUR >/dev/null
begun=$(date +%s%N)
"$program" import "$file" >/dev/null
whole=$((($(date +%s%N) - begun) / 1000000 * 3 / 2 + 20))

hits=0
none=0
all=0
for ((i = 1; i <= times; ++i)); do
  rm -rf "$MONIVA_DATA"
  "$program" book add Household --currency EUR >/dev/null
  "$program" import "$file" >/dev/null 2>&1 &
  pid=$!
  sleep "$(awk -v ms=$((RANDOM % whole)) 'BEGIN { printf "%.3f", ms / 1000 }')"
  kill -KILL "$pid" 2>/dev/null || true
  status=0
  wait "$pid" 2>/dev/null || status=$?
  [ "$status" -eq 137 ] && hits=$((hits + 1))
  if ! "$program" doctor >"$folder/doctor" 2>&1; then
    echo "kill $i: the store is not sound:" >&2
    cat "$folder/doctor" >&2
    exit 1
  fi
  found=$(sqlite3 "$MONIVA_DATA/moniva.dat" 'select count(*) from transactions')
  case "$found" in
    0) none=$((none + 1)) ;;
    "$records") all=$((all + 1)) ;;
    *) echo "kill $i: $found of $records rows are there" >&2; exit 1 ;;
  esac
done
if [ "$hits" -eq 0 ]; then
  echo "none of $times kills hit a running import" >&2
  exit 1
fi
echo "$times kills, $hits of them of a running import: $none before the import was written, $all after; the store was whole every time"
