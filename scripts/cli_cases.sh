#!/usr/bin/env bash
# Runs the whole-program cases: each tests/cli/*.test is a list of commands with the output expected.
#
#   $ moniva book list          a command, run by bash in a folder of its own; `moniva` is the program
#   Household                   its output, standard error after standard output
#   ? 1                         its exit status, when not 0
#
# Lines that begin with # and empty lines between commands are skipped. $DIR stands for the folder
# in outputs and TIME for the time in the names of files set aside; the present is noon of 15 June 2024, in Berlin. With
# --update the files are rewritten with what the program prints now.
set -euo pipefail
program=$1
shift
update=0
[ "${1:-}" = --update ] && { update=1; shift; }
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
program="$(cd "$(dirname "$program")" && pwd)/$(basename "$program")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The present stands still unless a command says otherwise.
bin="$work/bin"
mkdir "$bin"
printf '#!/bin/sh\nexec "%s" --now "2024-06-15 12:00" "$@"\n' "$program" >"$bin/moniva"
chmod +x "$bin/moniva"
export PATH="$bin:$PATH"
unset MONIVA_PASSCODE XDG_DATA_HOME LC_ALL LC_TIME NO_COLOR
export TZ=Europe/Berlin LANG=en_US.UTF-8 TERM=dumb EXAMPLES="$here/examples"

cases=("$@")
[ ${#cases[@]} -eq 0 ] && cases=("$here"/tests/cli/*.test)

# Runs one file in a folder of its own; fails, with the difference, when it prints something else.
run_case() {
  local file=$1 dir actual ran=0 line status
  dir=$(mktemp -d "$work/case.XXXXXX")
  actual="$dir.actual"
  : >"$actual"
  export MONIVA_DATA="$dir/data" DIR="$dir"
  while IFS= read -r line || [ -n "$line" ]; do
    case "$line" in
      '#'* | '') printf '%s\n' "$line" >>"$actual" ;;
      '$ '*)
        printf '%s\n' "$line" >>"$actual"
        ran=$((ran + 1))
        status=0
        (cd "$dir" && bash -c "${line#\$ }") >"$dir/.out" 2>"$dir/.err" </dev/null || status=$?
        cat "$dir/.out" "$dir/.err" | sed -e "s#$dir#\$DIR#g" -e 's/set-aside-[0-9]*-[0-9]*/set-aside-TIME/g' \
          -e 's/[[:space:]]*$//' | sed -e 's/^$/./' >>"$actual"
        [ "$status" -eq 0 ] || printf '? %s\n' "$status" >>"$actual"
        ;;
    esac
  done <"$file"
  rm -rf "$dir"
  if [ "$update" -eq 1 ]; then
    cp "$actual" "$file"
  elif [ "$ran" -eq 0 ]; then
    echo "$file: no command in it" >&2
    return 1
  else
    diff -u "$file" "$actual" >&2
  fi
}
export -f run_case
export here work update

# As many at a time as there are cores, the longest files first; each that passed leaves a line.
passed=$(ls -S "${cases[@]}" | xargs -d '\n' -P "$(nproc)" -I{} bash -c 'run_case "$1" && echo passed' _ {} | wc -l) || true
failed=$((${#cases[@]} - passed))
echo "whole-program cases: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
