#!/usr/bin/env bash
# The layer rule: a room includes the rooms below it and itself, never one above.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Each room with the rooms it may include.
declare -A may=(
  [base]=""
  [calendar]="base"
  [currency]="base calendar platform"
  [platform]="base calendar"
  [storage]="base calendar platform"
  [model]="base calendar platform storage"
  [reminders]="base calendar platform storage model currency"
  [recurrence]="base calendar platform storage model reminders"
  [reports]="base calendar platform storage model reminders recurrence"
  [exchange]="base calendar platform storage model currency"
  [app]="base calendar platform storage model reminders recurrence reports exchange currency"
  [ui]="base calendar platform storage model reminders recurrence reports exchange currency app"
)

bad=0
for folder in src/*/; do
  room=$(basename "$folder")
  if [ -z "${may[$room]+known}" ]; then
    echo "layers: src/$room is in no layer; give it a line in scripts/layers.sh" >&2
    bad=1
    continue
  fi
  while IFS=: read -r file line include; do
    target=$(sed -E 's/.*#include "([a-z]+)\/.*/\1/' <<<"$include")
    [ "$target" = "$room" ] && continue
    if [ ! -d "src/$target" ] || ! grep -qw "$target" <<<"${may[$room]}"; then
      echo "$file:$line: room '$room' must not include '$target'" >&2
      bad=1
    fi
  done < <(grep -rnE '#include "[a-z]+/' "$folder" --include='*.h' --include='*.cpp' --include='*.in' || true)
done

# Only the host's own room reads the clock, the zone, the locale, the environment and randomness.
host='\b(getenv|getrandom|gettimeofday|clock_gettime|timespec_get|localtime|localtime_r|tzset|setlocale|random_device|system_clock|createDefault)\b|\btime\((NULL|nullptr|0)\)|Calendar::getNow|uprv_getUTCtime'
if grep -rnE "$host" src --include='*.h' --include='*.cpp' | grep -v '^src/platform/posix/'; then
  echo "layers: the lines above ask the system for what the platform is to be asked for" >&2
  bad=1
fi
exit $bad
