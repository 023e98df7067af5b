"""Masks low complexity in queries, with the program for it that is installed."""

from __future__ import annotations

import re
import shutil
import subprocess

from zelvan_easy.failure import Failure
from zelvan_easy.inputs import DNA, PROTEIN

# How sure tantan must be of a repeat: at its own default more relatives are lost, above this more strangers come in.
_SURE = "0.7"
PROGRAMS = {PROTEIN: ("tantan", "segmasker"), DNA: ("tantan",)}


def find_masker(kind):
    """Path of the program that masks queries of this kind, or None."""
    return next((path for path in map(shutil.which, PROGRAMS[kind]) if path), None)


def masked_ranges(queries, kind):
    """{number of a query: [(first, last)], positions from 1} of low complexity, all queries being of that kind;
    {} without a program. One run of the program serves many queries."""
    program = find_masker(kind)
    if program is None or not queries:
        return {}
    command = [program, "-in", "-", "-outfmt", "fasta"] if program.endswith("segmasker") else [program]
    if program.endswith("tantan"):
        command += ["-s", _SURE, *(["-p"] if kind == PROTEIN else [])]
    text = "".join(f">{query.number}\n{query.residues}\n" for query in queries)
    try:
        done = subprocess.run(command, input=text, capture_output=True, encoding="ascii", check=False)
    except OSError as problem:
        raise Failure(f"{program} could not be run: {problem.strerror}; --no-mask does without it") from problem
    if done.returncode != 0:
        raise Failure(f"{program} failed: {done.stderr.strip()[:300]}; --no-mask does without it")
    found = {}
    for record in done.stdout.split(">")[1:]:
        number, *lines = record.splitlines()
        small = re.finditer("[a-z]+", "".join(lines))
        found[int(number.split()[0])] = [(match.start() + 1, match.end()) for match in small]
    return found


def masked(residues, ranges, filling):
    """The residues with those of the ranges replaced: by X, or by the filling repeated, each at its own place."""
    parts, at = [], 0
    for first, last in ranges:
        parts.append(residues[at : first - 1])
        parts.append("".join(filling[k % len(filling)] for k in range(first - 1, last)))
        at = last
    return "".join([*parts, residues[at:]])


def dna_filling(code_stops):
    """What stands for masked bases: a run that is its own reverse complement and has a stop codon in every frame of
    both strands. N would not do, because a translated search reads it as a base."""
    return "CTAG" if "TAG" in code_stops else "ATGATCAT"
