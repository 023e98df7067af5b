#!/usr/bin/env bash
# Builds the fuzz targets with libFuzzer and both sanitizers and lets each of them start from its corpus.
#   scripts/fuzz.sh                 ten seconds a target, the same inputs every time
#   scripts/fuzz.sh SECONDS SEED    other inputs; 0 takes new ones every time
# An input that broke something is left as crash-* in build/fuzz.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh
need_tools "clang++ clang" "cmake cmake" "ninja ninja-build"
runtime=$(clang++ -print-resource-dir)/lib/linux/libclang_rt.fuzzer-$(uname -m).a
need_tools "$runtime libclang-rt-$(clang++ -dumpversion | cut -d. -f1)-dev"

cmake --workflow --preset fuzz
cd build/fuzz
for corpus in ../../tests/fuzz/corpus/*; do
  target=$(basename "$corpus")
  limits=()
  case $target in scan | search) limits=(-max_len=80) ;; esac
  found=$(mktemp -d)  # what a short run finds is new every time: it goes
  echo "== $target"
  "tests/fuzz/fuzz_$target" -max_total_time="${1:-10}" -seed="${2:-1}" -timeout=20 -print_final_stats=0 -verbosity=0 \
    "${limits[@]}" "$found" "$corpus"
  rm -rf "$found"
done
echo "nothing found"
