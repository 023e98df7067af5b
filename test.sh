#!/usr/bin/env bash
# Builds ZELVAN with warnings as errors and runs every test, first the optimised build, then the one with the
# address and undefined-behaviour sanitizers.
#   ./test.sh          everything
#   ./test.sh quick    the optimised build only
set -euo pipefail
cd "$(dirname "$0")"
. scripts/setup.sh
need_tools "g++ g++" "cmake cmake" "ninja ninja-build" "python3 python3" \
  "/usr/include/gtest/gtest.h libgtest-dev" "pytest-3 python3-pytest" "pandoc pandoc" "${easy_packages[@]}" \
  "/usr/lib/python3/dist-packages/jsonschema python3-jsonschema"
# The programs that read what ZELVAN writes, a browser, and an engine for many queries.
want_tools "snakemake snakemake" "hmmbuild hmmer" "psiblast ncbi-blast+" "hhmake hhsuite" "mmseqs mmseqs2" \
  "chromium chromium" "/usr/lib/python3/dist-packages/Bio python3-biopython" "segmasker ncbi-blast+" "lintian lintian" \
  "dpkg-shlibdeps dpkg-dev" "file file"
# Pages are checked for accessibility by axe-core; without it that test is skipped.
if have npm && [ ! -d build/npm/node_modules/axe-core ]; then
  npm install --silent --no-save --no-audit --no-fund --prefix build/npm axe-core@4.10 >/dev/null 2>&1 || true
fi

run_preset() {
  echo "== $1 build"
  cmake --preset "$1" >/dev/null
  cmake --build --preset "$1"
  echo "== $1 tests"
  ctest --preset "$1"
}

run_preset release
[ "${1:-}" = quick ] || run_preset sanitize
