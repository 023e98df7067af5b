#!/usr/bin/env bash
# Builds ZELVAN and searches a sample of 4,000 UniProt sequences with a small GTPase, first as text, then as a
# binary database.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/setup.sh
need_tools "g++ g++" "cmake cmake" "ninja ninja-build"

echo "== Building"
cmake --preset release -DZELVAN_TESTS=OFF >/dev/null
cmake --build --preset release --target zelvan
export ZELVANDIR=$PWD/build/release/config
zelvan=$PWD/build/release/zelvan

echo "== One pass of EngB, a small GTPase, over 4,000 sequences"
"$zelvan" -s examples/engb.fasta -d examples/uniprot_sample.fasta -mode 202 -niter 1 -show_titles 1 \
  -max_aout 0 -aprint_to_threshold 0

echo "== The same with the sample as a binary database, which loads without being read through"
"$zelvan" -mode 99 -d examples/uniprot_sample.fasta -db_dir build/release -bdb uniprot_sample -apply_index 1
"$zelvan" -s examples/engb.fasta -db_dir build/release -bdb uniprot_sample -mode 202 -niter 1 -show_titles 1 \
  -max_aout 0 -aprint_to_threshold 0 | sed -n '/^# Database name/,/^# Number of sequences/p; /^# Start_Scores/,/^   5 /p'
