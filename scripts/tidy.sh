#!/usr/bin/env bash
# Runs clang-tidy's bug-finding checks over every source; with --paths also the analyzer that follows every path through
# the code, which takes about as long again. Most of their time goes into reading system headers, so the
# sources of a room are read together, a few rooms at a time; a finding names the line in the joined file, and the line
# above it that begins with "// from" names the source.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
case "${1:-}" in
  --paths) export LESS_CHECKS="" ;;
  "") export LESS_CHECKS="--checks=-clang-analyzer-*" ;;
  *) echo "usage: tidy.sh [--paths]" >&2; exit 2 ;;
esac
joined=$(mktemp -d)
trap 'rm -rf "$joined"' EXIT

# At most so many sources are joined: more would need more memory than small machines have.
most=40
for folder in src/*/ tools/; do
  room=$(basename "$folder")
  number=0
  while IFS= read -r source; do
    file="$joined/$room-$((number / most)).cpp"
    { echo "// from $source"; cat "$source"; echo; } >>"$file"
    number=$((number + 1))
  done < <(find "$folder" -name '*.cpp' | LC_ALL=C sort)
done
cp .clang-tidy "$joined/.clang-tidy"

check_one() {
  file=$1
  log="$file.log"
  if ! clang-tidy-14 --quiet ${LESS_CHECKS:+"$LESS_CHECKS"} "$file" -- -std=c++20 -Isrc -Ibuild/check/generated >"$log" 2>"$log.err"; then
    grep -E ':[0-9]+:[0-9]+: (error|warning):' "$log" | while IFS=: read -r path line rest; do
      source=$(head -n "$line" "$path" 2>/dev/null | grep -n '^// from ' | tail -n 1)
      echo "${source#*// from }:$((line - ${source%%:*})):$rest"
    done
    grep -E 'error:' "$log.err" || true
    exit 1
  fi
}
export -f check_one
# The largest first.
ls -S "$joined"/*.cpp | xargs -P "$(nproc)" -I{} bash -c 'check_one "$1"' _ {}
