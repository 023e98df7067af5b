#!/usr/bin/env bash
# Builds the program with g++ and clang++, without and with optimisation, and compares what the four of them write: report,
# side files and databases must be the same bytes. Takes some minutes; tests/cli/test_determinism.py compares the
# vector kernels, and text with binary databases, in every test run.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh
need_tools "g++ g++" "clang++ clang" "cmake cmake" "ninja ninja-build"

root=$PWD/build/determinism
examples=$PWD/examples
mkdir -p "$root"

# Dates and times are the only lines that may differ.
mask() {
  sed -E -i 's/^# (ZELVAN Scan:|Scan Completed at|Load |Scan database|Output scores|Generate and write|Millions of).*/# \1/' "$@"
}

search() {
  "$zelvan" "$@" -block_file_out "block$mode" -frag_file_out "frag$mode" -extract_file "best$mode" >"report$mode"
}

run_all() {
  local zelvan=$1 mode
  for mode in 200 202 210 212; do
    search -mode $mode -s "$examples/engb.fasta" -d "$examples/uniprot_sample.fasta" -niter 3 -probcut2 0.01 \
      -print_profiles 1 -print_frq_tabs 1 -print_block_file 1 -print_frag_file 1 -extract_seq 20
  done
  for mode in 10 12; do
    search -mode $mode -s "$examples/engb.fasta" -d "$examples/dna_sample.fasta" -do_stats 1 -min_nstats 20
  done
  for mode in 20 22; do
    search -mode $mode -s "$examples/engb_dna.fasta" -d "$examples/uniprot_sample.fasta" -do_stats 1 -dump_stats 1
    mv zelvan_dump_stats.log "stats$mode"
  done
  "$zelvan" -mode 99 -d "$examples/uniprot_sample.fasta" -bdb database 2>/dev/null
  rm database.bix  # holds the date
  mask report*
}

first=
for build in "g++ Release" "g++ Debug" "clang++ Release" "clang++ Debug"; do
  read -r compiler type <<<"$build"
  name=$compiler-$type
  echo "== $build"
  cmake -S . -B "$root/$name" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE="$type" \
    -DZELVAN_TESTS=OFF >/dev/null
  cmake --build "$root/$name" --target zelvan >/dev/null
  rm -rf "$root/$name.out"
  mkdir "$root/$name.out"
  (cd "$root/$name.out" && ZELVANDIR=$root/$name/config run_all "$root/$name/zelvan")
  first=${first:-$name}
  diff -rq "$root/$first.out" "$root/$name.out"
done
echo "$(find "$root/$first.out" -type f | wc -l) files, $(du -sb "$root/$first.out" | cut -f1) bytes: all the same"
