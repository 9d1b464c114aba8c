#!/usr/bin/env bash
# build.sh PRESET [TARGET...]: configures when needed and builds. Quiet when there is nothing to do; shows the build's
# own progress on a terminal and a line now and then elsewhere, all of it on standard error.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
preset=$1
shift
cd "$here"

if [ ! -f "build/$preset/build.ninja" ]; then
  echo "Configuring ($preset) ..." >&2
  cmake --preset "$preset" >&2
fi
targets=("$@")
[ ${#targets[@]} -eq 0 ] && targets=(all)

if [ -t 2 ]; then
  # Ninja's own line counts the steps; it goes when there is nothing to do.
  if [ "$(ninja -C "build/$preset" -n "${targets[@]}" | tail -n 1)" != "ninja: no work to do." ]; then
    ninja -C "build/$preset" "${targets[@]}" >&2
  fi
else
  log=$(mktemp)
  trap 'rm -f "$log"' EXIT
  ninja -C "build/$preset" "${targets[@]}" >"$log" 2>&1 &
  ninja_pid=$!
  shown=""
  while kill -0 "$ninja_pid" 2>/dev/null; do
    for _ in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do
      kill -0 "$ninja_pid" 2>/dev/null || break
      sleep 0.5
    done
    step=$(grep -oE '^\[[0-9]+/[0-9]+\]' "$log" | tail -n 1 || true)
    if [ -n "$step" ] && [ "$step" != "$shown" ] && kill -0 "$ninja_pid" 2>/dev/null; then
      echo "  building ($preset) $step" >&2
      shown=$step
    fi
  done
  if ! wait "$ninja_pid"; then
    grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking)' "$log" >&2 || cat "$log" >&2
    exit 1
  fi
fi
