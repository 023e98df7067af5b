#!/usr/bin/env bash
# Builds ZELVAN and shows its main jobs on real sequences: a search with a small GTPase over a sample of 4,000 UniProt
# sequences, the same from a binary database, three iterations with a profile, and a DNA query with a frame shift.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/setup.sh
need_tools "g++ g++" "cmake cmake" "ninja ninja-build"

echo "== Building"
cmake --preset release -DZELVAN_TESTS=OFF >/dev/null
cmake --build --preset release --target zelvan
export ZELVANDIR=$PWD/build/release/config
zelvan=$PWD/build/release/zelvan
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo
echo "== One pass of EngB, a small GTPase, over 4,000 sequences"
"$zelvan" -s examples/engb.fasta -d examples/uniprot_sample.fasta -mode 202 -niter 1 -show_titles 1 \
  -aprint_to_threshold 0 -max_aout 0 | sed -n '1,/^# End_Scores/p'

echo
echo "== The same sequences as a binary database, which loads without being read through"
"$zelvan" -mode 99 -d examples/uniprot_sample.fasta -db_dir "$work" -bdb sample -apply_index 1
ls -l "$work"

echo
echo "== Three iterations: what each one added to the hits below the profile's cut-off"
"$zelvan" -s examples/mvk.fasta -db_dir "$work" -bdb sample -mode 202 -niter 3 >"$work/report"
awk '/^# Iteration:/ {print} /^# Reported in this iteration/ {print; on = 1; next} on && /^# Start_/ {on = 0} on && !/^#/ {print}' \
  "$work/report"

echo
echo "== The weakest alignment of the last iteration that is significant"
awk '/^# Iteration: 2/ {last = 1} last && /^# Start_Alignments_Rank/ {text = ""} {text = text $0 "\n"}
     last && /^# N: 1 / {good = ($NF < 0.001)} last && /^# End_Alignments_Rank/ {if (good) best = text} END {printf "%s", best}' \
  "$work/report"

echo
echo "== The multiple alignment of the last iteration, first block"
awk '/^# Multiple alignment Start for iteration: 2/ {on = 1} on {print} /^#$/ && on {if (++blocks == 2) exit}' "$work/report"

echo
echo "== A DNA query with a frame shift against the proteins: the best hit"
"$zelvan" -s examples/engb_dna.fasta -db_dir "$work" -bdb sample -mode 22 -do_stats 1 -probcut 0.001 >"$work/report"
sed -n '/^# Start_Alignments_Rank: 1$/,/^# End_Alignments_Rank: 1$/p' "$work/report"
