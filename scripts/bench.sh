#!/usr/bin/env bash
# Builds and runs every benchmark; each prints ratios against a rung measured in the same run.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/packages.sh check
scripts/build.sh bench
for program in build/bench/bench/*_bench; do
  echo "-- $(basename "$program")"
  "$program" "$@"
done
