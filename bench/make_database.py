#!/usr/bin/env python3
"""Makes a large database from a small one: the sequences themselves, then copies with shuffled residues.

  make_database.py examples/uniprot_sample.fasta RESIDUES > big.fasta

Shuffled copies keep lengths and composition, so that a scan costs what it costs on real sequences of that number.
The copies carry the identifiers of their source with a number, and the generator has a fixed seed.
"""
import random
import sys

from fasta_records import records


def main():
    wanted = int(sys.argv[2])
    source = list(records(sys.argv[1]))
    rng = random.Random(1)
    written, copy = 0, 0
    while written < wanted:
        for header, residues in source:
            if written >= wanted:
                break
            if copy > 0:
                identifier, _, title = header.partition(" ")
                header = f"{identifier}.{copy} {title}"
                letters = list(residues)
                rng.shuffle(letters)
                residues = "".join(letters)
            sys.stdout.write(f">{header}\n")
            for at in range(0, len(residues), 60):
                sys.stdout.write(residues[at:at + 60] + "\n")
            written += len(residues)
        copy += 1


if __name__ == "__main__":
    main()
