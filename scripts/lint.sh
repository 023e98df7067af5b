#!/usr/bin/env bash
# Looks over the sources without running them: clang-format, clang-tidy and cppcheck must have nothing to say.
#   scripts/lint.sh              all sources of src/ and doc/ (some minutes)
#   scripts/lint.sh FILE...      these only
# What is left out, and why: .clang-tidy, src/align/.clang-tidy, scripts/cppcheck_suppressions.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh
need_tools "clang++ clang" "clang-format clang-format" "clang-tidy clang-tidy" "cppcheck cppcheck" "cmake cmake" \
  "ninja ninja-build"

if [ $# -gt 0 ]; then
  files=("$@")
else
  mapfile -t files < <(find src doc -name '*.cpp' | sort)
fi
echo "== clang-format"
find src tests bench doc -name '*.cpp' -o -name '*.h' | xargs clang-format --dry-run --Werror
echo "== clang-tidy"
cmake -S . -B build/lint -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DZELVAN_TESTS=OFF \
  -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
printf '%s\n' "${files[@]}" | xargs -P "$(nproc)" -n 1 clang-tidy -p build/lint --quiet 2>/dev/null
echo "== cppcheck"
cppcheck --quiet --std=c++20 --language=c++ --enable=warning,performance,portability --inline-suppr -j "$(nproc)" \
  --suppressions-list=scripts/cppcheck_suppressions.txt --suppress=missingIncludeSystem --error-exitcode=1 \
  -I src "${files[@]}"
echo "clean"
