#!/usr/bin/env bash
# Builds ZELVAN and shows its main jobs on real sequences: a search with several queries over a sample of 4,000 UniProt
# sequences, then the engine alone: one query, the same from a binary database, three iterations with a profile, and a
# DNA query with a frame shift.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/setup.sh
need_tools "g++ g++" "cmake cmake" "ninja ninja-build" "python3 python3" "${easy_packages[@]}"

echo "== Building"
cmake --preset install >/dev/null
cmake --build --preset install --target zelvan
export ZELVANDIR=$PWD/build/install/config
zelvan=$PWD/build/install/zelvan
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo
echo "== Three queries, one of them DNA, against 4,000 sequences; the same command again would go on where this one stopped"
cat examples/engb.fasta examples/mvk.fasta examples/engb_dna.fasta >"$work/queries.fasta"
build/install/zelvan-easy search "$work/queries.fasta" examples/uniprot_sample.fasta --cache "$work/cache" --out "$work/results"
echo "The best hits of the DNA, in $work/results/hits.tsv:"
grep '^engb_dna' "$work/results/hits.tsv" | head -3

echo
echo "== The engine itself: one pass of EngB, a small GTPase, over 4,000 sequences"
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
