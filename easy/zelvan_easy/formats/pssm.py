"""The profile of an iteration as a position-specific score matrix in text, in the layout of psiblast's ASCII files.

The scores are those of the profile, in whole matrix units. Percentages, information and the number in the last column
come from the alignments that shaped the profile: the percentages count each residue once, without the weights that
the profile gave to rows; the information is theirs against the composition of proteins, in bits; the last column is
the number of residues that were aligned to the position.
"""

from __future__ import annotations

import math
from collections import Counter

from zelvan_easy.formats.alignment import profile_alignments, query_of, refuse_translated
from zelvan_easy.report import GAP, ReportError

RESIDUES = "ARNDCQEGHILKMFPSTWYV"
# Of every 100,000 residues of proteins, in the order of RESIDUES.
COMPOSITION = dict(zip(RESIDUES, (8256, 5534, 4053, 5461, 1374, 3933, 6737, 7085, 2276, 5922, 9653, 5805, 2412, 3864,
                                  4726, 6614, 5348, 1088, 2919, 6866)))  # fmt: skip


def residue_counts(iteration, query, cutoff=None):
    """How often each residue stands at each position of the query, the query's own included."""
    counts = [Counter(letter) for letter in query]
    for _, alignment in profile_alignments(iteration, cutoff):
        position = alignment.query_start - 1
        for letter, aligned in zip(alignment.query_row, alignment.target_row):
            if letter == GAP:
                continue
            if aligned != GAP:
                counts[position][aligned] += 1
            position += 1
    return counts


def information(counts):
    """Relative entropy of a column against the composition of proteins, in bits; 0 where only the query is known."""
    total = sum(counts[residue] for residue in RESIDUES)
    if total < 2:
        return 0.0
    everything = sum(COMPOSITION.values())
    return sum(
        counts[residue] / total * math.log2(counts[residue] / total / (COMPOSITION[residue] / everything))
        for residue in RESIDUES
        if counts[residue]
    )


def write_pssm(report, out, iteration=None, query_file=None, warn=None):
    """Writes the matrix of an iteration to a text stream; the report must hold profiles."""
    chosen = report.iteration(iteration)
    refuse_translated(chosen)
    profile = chosen.profile
    if profile is None:
        raise ReportError("the report holds no profile of this iteration: search with PRINT_PROFILES 1")
    missing = [residue for residue in RESIDUES if residue not in profile.alphabet]
    if missing:
        raise ReportError(f"the profile has no scores for {''.join(missing)}")
    order = [profile.alphabet.index(residue) for residue in RESIDUES]
    query = query_of(chosen, query_file, warn)
    counts = residue_counts(chosen, query)
    letters = "".join(f"   {residue}" for residue in RESIDUES)
    out.write(
        "\nLast position-specific scoring matrix computed, observed percentages rounded down, information per position, "
        f"and number of residues aligned\n{' ' * 9}{letters}{letters}\n"
    )
    for position, (residue, scores, column) in enumerate(zip(query, profile.rows, counts), 1):
        total = sum(column[letter] for letter in RESIDUES)
        shares = [100 * column[letter] // total if total > 1 else 0 for letter in RESIDUES]
        out.write(
            f"{position:5d} {residue}  " + "".join(f"{scores[at]:4d}" for at in order) + " "
            + "".join(f"{share:4d}" for share in shares) + f"  {information(column):.2f} {total - 1:.2f}\n"
        )  # fmt: skip
    out.write("\n")
