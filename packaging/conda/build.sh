#!/usr/bin/env bash
# Builds and installs the package into PREFIX, as conda-build and bioconda call it.
set -euo pipefail
cmake -S . -B build/conda -G Ninja -DCMAKE_BUILD_TYPE=Release -DZELVAN_TESTS=OFF -DZELVAN_PRECOMPILE=ON \
  -DCMAKE_INSTALL_PREFIX="$PREFIX" ${CMAKE_ARGS:-}
cmake --build build/conda -j "${CPU_COUNT:-1}"
cmake --install build/conda
# The commands have this environment's Python, also where it is not activated.
for command in zelvan-easy zelvan2tsv zelvan2json zelvan2msa zelvan2a3m zelvan2pssm zelvan2html; do
  sed -i.bak "1s|^#!.*|#!$PREFIX/bin/python3|" "$PREFIX/bin/$command"
  rm "$PREFIX/bin/$command.bak"
done
