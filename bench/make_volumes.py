#!/usr/bin/env python3
"""Makes a text database of any size from a small one, in minutes: the sequences themselves, planted relatives of one of
them, then copies in which all residues are shuffled.

  make_volumes.py examples/uniprot_sample.fasta QUERY_FILE RESIDUES > big.fasta

Copies keep the lengths and the composition as a whole. The query is the first sequence of about 360 residues; it is
written to QUERY_FILE. Its relatives, planted_10 to planted_75, have so many percent of their residues exchanged, a gap or
two, and 50 to 150 other residues at either end. The generator has a fixed seed. Needs numpy.
"""
import sys

import numpy as np

from fasta_records import records

LENGTH = 360


def text_of(sequences):
    return "".join(f">{header}\n{residues}\n" for header, residues in sequences)


def relatives(query, pool, rng):
    for percent in range(10, 80, 5):
        residues = np.frombuffer(query.encode(), np.uint8).copy()
        changed = rng.random(len(residues)) < percent / 100
        residues[changed] = rng.choice(pool, changed.sum())
        parts = [bytes(residues[at]).decode() for at in (slice(0, 120), slice(124, 250), slice(250, None))]
        fill = [bytes(rng.choice(pool, n)).decode() for n in (*rng.integers(50, 150, 2), 3)]
        yield f"planted_{percent} of the query", fill[0] + parts[0] + parts[1] + fill[2] + parts[2] + fill[1]


def main():
    source = [(header, residues) for header, residues in records(sys.argv[1]) if residues]
    wanted = int(sys.argv[3])
    rng = np.random.default_rng(1)
    pool = np.frombuffer("".join(residues for _, residues in source).encode(), np.uint8).copy()
    query = min(source, key=lambda record: abs(len(record[1]) - LENGTH))
    with open(sys.argv[2], "w", encoding="latin-1") as file:
        file.write(text_of([query]))
    out = sys.stdout.buffer
    planted = list(relatives(query[1], pool, rng))
    out.write(text_of(source + planted).encode("latin-1"))
    written = sum(len(residues) for _, residues in source + planted)

    # One copy as a text with places for its number and for its residues.
    pieces, numbers, places, at = [], [], [], 0
    for header, residues in source:
        name, _, title = header.partition(" ")
        head = f">{name}.000000 {title}\n".encode("latin-1")
        numbers.append(at + len(name) + 2)
        places.append(np.arange(at + len(head), at + len(head) + len(residues)))
        pieces += [head, residues.encode(), b"\n"]
        at += len(head) + len(residues) + 1
    copy = np.frombuffer(b"".join(pieces), np.uint8).copy()
    digits = np.array(numbers)[:, None] + np.arange(6)
    places = np.concatenate(places)
    number = 0
    while written < wanted:
        number += 1
        copy[digits] = np.frombuffer(b"%06d" % number, np.uint8)
        rng.shuffle(pool)
        copy[places] = pool
        out.write(copy.data)
        written += len(pool)


if __name__ == "__main__":
    main()
