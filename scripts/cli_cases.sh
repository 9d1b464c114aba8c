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
dir="$work/case"
actual="$work/actual"
# The present stands still unless a command says otherwise.
bin="$work/bin"
mkdir "$bin"
printf '#!/bin/sh\nexec "%s" --now "2024-06-15 12:00" "$@"\n' "$program" >"$bin/moniva"
chmod +x "$bin/moniva"
export PATH="$bin:$PATH"
unset MONIVA_PASSCODE XDG_DATA_HOME LC_ALL LC_TIME NO_COLOR
export TZ=Europe/Berlin LANG=en_US.UTF-8 TERM=dumb EXAMPLES="$here/examples"

failed=0
passed=0
cases=("$@")
[ ${#cases[@]} -eq 0 ] && cases=("$here"/tests/cli/*.test)
for file in "${cases[@]}"; do
  mkdir "$dir"
  : >"$actual"
  export MONIVA_DATA="$dir/data" DIR="$dir"
  ran=0
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
    failed=$((failed + 1))
  elif diff -u "$file" "$actual" >&2; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
  fi
done
echo "whole-program cases: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
