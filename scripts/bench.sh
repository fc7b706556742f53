#!/usr/bin/env bash
# Builds the benchmarks and prints their table: bench.sh [GROUP...]. Every row stands beside a peer in the same run.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target tam_benchmarks >/dev/null
scripts/wine.sh --up
exec scripts/wine.sh build/release/bin/tam_benchmarks.exe "$@"
