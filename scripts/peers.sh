#!/usr/bin/env bash
# The same pages by moniva and by two other programs on its journal: peers.sh [RECORDS [ROUNDS]]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/packages.sh check
scripts/build.sh bench moniva peers
build/bench/bench/peers build/bench/bin/moniva "$@"
