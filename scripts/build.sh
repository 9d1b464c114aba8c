#!/usr/bin/env bash
# build.sh PRESET [TARGET...]: configures when needed and builds, one build of a preset at a time. Quiet when there is
# nothing to do; tells otherwise how far it has come, on standard error: all along on a terminal, now and then elsewhere.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
preset=$1
shift
targets=("$@")
[ ${#targets[@]} -eq 0 ] && targets=(all)

mkdir -p build
exec 9>"build/$preset.lock"
if ! flock -n 9; then
  echo "Waiting for another build ($preset) ..." >&2
  flock 9
fi
if [ ! -f "build/$preset/build.ninja" ]; then
  echo "Configuring ($preset) ..." >&2
  cmake --preset "$preset" >&2
fi

log=$(mktemp)
children=()
# What runs in the background does not hear the keyboard's interrupt.
trap 'kill "${children[@]}" 2>/dev/null; wait; rm -f "$log"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

tell_steps() {
  local pause=10 before="" after=$'\n' shown="" step
  [ -t 2 ] && { pause=0.2; before=$'\r'; after=$'\e[K'; }
  # The pause must not keep whoever reads our output waiting.
  while sleep "$pause" >/dev/null 2>&1 9>&-; do
    step=$(grep -oE '^\[[0-9]+/[0-9]+\] (Building|Linking)' "$log" | tail -n 1 || true)
    [ "${step% *}" = "$shown" ] && continue
    shown=${step% *}
    printf '%s  building (%s) %s%s' "$before" "$preset" "$shown" "$after" >&2
  done
}

ninja -C "build/$preset" "${targets[@]}" >"$log" 2>&1 9>&- &
ninja_pid=$!
children+=("$ninja_pid")
tell_steps &
children+=("$!")
status=0
wait "$ninja_pid" || status=$?
[ -t 2 ] && printf '\r\e[K' >&2
if [ "$status" -ne 0 ]; then
  grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking)' "$log" >&2 || cat "$log" >&2
  exit 1
fi
