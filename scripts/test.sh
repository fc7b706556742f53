#!/usr/bin/env bash
# Builds tam and runs its tests under Wine.
set -euo pipefail
cd "$(dirname "$0")/.."

step() {
    echo "== $1" >&2
    shift
    "$@" || { echo "test.sh: failed: $*" >&2; exit 1; }
}

step "What is needed" scripts/setup.sh
for preset in release static; do
    step "Configure $preset" cmake --preset "$preset"
    step "Build $preset" cmake --build --preset "$preset"
    step "Test $preset" ctest --preset "$preset"
done
