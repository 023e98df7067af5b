#!/usr/bin/env bash
# Runs the demo's searches, and every other kind of run, under valgrind: no error may be found, nothing uninitialised read.
#   scripts/memcheck.sh          needs the release build (./test.sh quick makes it)
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh
need_tools "valgrind valgrind"

build=$PWD/build/release
export ZELVANDIR=$build/config
examples=$PWD/examples
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
check() {
  echo "== zelvan $*"
  valgrind --quiet --error-exitcode=9 "$build/zelvan" "$@" >report
}

proteins=$examples/uniprot_sample.fasta
dna=$examples/dna_sample.fasta
check -mode 99 -d "$proteins" -bdb sample -apply_index 1
check -mode 202 -s "$examples/engb.fasta" -bdb sample -niter 1 -max_aout 0 -aprint_to_threshold 0
for mode in 200 202 210 212; do
  check -mode $mode -s "$examples/engb.fasta" -d "$proteins" -niter 2 -print_profiles 1 -print_frq_tabs 1 \
    -print_block_file 1 -print_frag_file 1 -extract_seq 9
done
cp report list
for mode in 10 12; do
  check -mode $mode -s "$examples/engb.fasta" -d "$dna" -do_stats 1 -min_nstats 20
done
for mode in 20 22; do
  check -mode $mode -s "$examples/engb_dna.fasta" -d "$proteins" -do_stats 1 -dump_stats 1
done
check -mode 100 -d "$proteins" -extract_seq 20 -stdin list
check -mode 667 -d "$proteins" -nsubset 10
echo "clean"
