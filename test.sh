#!/usr/bin/env bash
# Builds ZELVAN with warnings as errors and runs every test, first the optimised build, then the one with the
# address and undefined-behaviour sanitizers.
#   ./test.sh          everything
#   ./test.sh quick    the optimised build only
set -euo pipefail
cd "$(dirname "$0")"
. scripts/setup.sh
need_tools "g++ g++" "cmake cmake" "ninja ninja-build" "python3 python3" \
  "/usr/include/gtest/gtest.h libgtest-dev"
for tool in parallel snakemake; do
  have "$tool" || echo "Package $tool is not installed: its test of the workflows is skipped"
done

run_preset() {
  echo "== $1 build"
  cmake --preset "$1" >/dev/null
  cmake --build --preset "$1"
  echo "== $1 tests"
  ctest --preset "$1"
}

run_preset release
[ "${1:-}" = quick ] || run_preset sanitize
