#!/usr/bin/env python3
"""Makes the DNA examples from the protein examples beside them; the same input always gives the same files.

engb_dna.fasta    the protein of engb.fasta as DNA, with one base inserted and some bases left ambiguous
dna_sample.fasta  pieces of the proteins of uniprot_sample.fasta as DNA

Back-translation: the first G of a protein becomes the first codon for G of data/codons/codo.tst, the second G the
second one, and so on in turn; likewise for every other residue.
"""

import itertools
import pathlib

HERE = pathlib.Path(__file__).resolve().parent
CODON_FILE = HERE.parent / "data" / "codons" / "codo.tst"
COMPLEMENT = str.maketrans("ACGT", "TGCA")

FLANK = 40  # bases before and after a gene
SHIFT_AFTER = 70  # residues of the example gene that precede the inserted base
PIECE = 120  # residues of a database piece
EVERY = 8  # of the sample's proteins, one in so many gives a piece


def read_fasta(path):
    """(header, residues) of every record."""
    for record in path.read_text().split(">")[1:]:
        header, *lines = record.splitlines()
        yield header, "".join(lines)


def read_codons():
    codons = {}
    for line in CODON_FILE.read_text().splitlines():
        codon, residue = line.split()
        codons.setdefault(residue, []).append(codon)
    return codons


CODONS = read_codons()


def random_bases(seed):
    """An endless run of bases from a linear congruential generator."""
    while True:
        seed = (seed * 1664525 + 1013904223) % 2**32
        yield "ACGT"[seed >> 30]


def back_translate(protein):
    turn = {residue: itertools.cycle(codons) for residue, codons in CODONS.items()}
    return [next(turn[residue]) for residue in protein if residue in turn]


def flanked(gene, seed):
    bases = random_bases(seed)
    flank = ["".join(itertools.islice(bases, FLANK)) for _ in range(2)]
    return flank[0] + gene + flank[1]


def make_ambiguous(codon):
    """Leaves the third base open where the residue does not depend on it, else returns the codon."""
    family = {base for base in "ACGT" if same_residue(codon, codon[:2] + base)}
    letter = {"ACGT": "N", "AG": "R", "CT": "Y"}.get("".join(sorted(family)), codon[2])
    return codon[:2] + letter


def same_residue(codon, other):
    return any(codon in codons and other in codons for codons in CODONS.values())


def write_record(out, header, bases):
    out.write(f">{header}\n")
    for at in range(0, len(bases), 60):
        out.write(bases[at : at + 60] + "\n")


def make_query():
    (header, protein), = read_fasta(HERE / "engb.fasta")
    codons = [make_ambiguous(c) if k % 25 == 0 else c for k, c in enumerate(back_translate(protein), 1)]
    gene = "".join(codons[:SHIFT_AFTER]) + "G" + "".join(codons[SHIFT_AFTER:])
    with open(HERE / "engb_dna.fasta", "w", encoding="ascii") as out:
        title = (
            f"made by make_dna_examples.py: {header.split()[0]} back-translated, a G inserted behind codon "
            f"{SHIFT_AFTER}, third base of every 25th codon ambiguous, {FLANK} random bases before and after"
        )
        write_record(out, f"engb_dna {title}", flanked(gene, 1))


def make_database():
    """Pieces of unrelated proteins, and the EngB relatives: every third one shifted, every fourth on the other strand."""
    relatives = itertools.count(1)
    with open(HERE / "dna_sample.fasta", "w", encoding="ascii") as out:
        for number, (header, protein) in enumerate(read_fasta(HERE / "uniprot_sample.fasta")):
            relative = "GTP-binding protein EngB" in header
            if number % EVERY != 0 and not relative:
                continue
            codons = back_translate(protein[:PIECE])
            remarks = []
            if relative:
                k = next(relatives)
                if k % 3 == 0:
                    codons.insert(len(codons) // 2, "A")
                    remarks.append("a base inserted")
            bases = flanked("".join(codons), number)
            if relative and k % 4 == 0:
                bases = bases.translate(COMPLEMENT)[::-1]
                remarks.append("complemented")
            title = ", ".join([f"residues 1-{min(PIECE, len(protein))} back-translated", *remarks])
            write_record(out, f"{header.split()[0].split('|')[-1]} {title}", bases)


if __name__ == "__main__":
    make_query()
    make_database()
