#!/usr/bin/env python3
"""Measures the translated modes: DNA with substitutions and lost or gained bases, and genes without any.

  frames.py reads   PROTEINS ZELVAN WORK [--mode 22] [--errors 0 1 3 6] [--seeds 1 2 3 4] [-- ZELVAN ARGUMENTS]
  frames.py chance  PROTEINS ZELVAN WORK [--mode 22] [--seeds 1 2 3 4] [-- ZELVAN ARGUMENTS]
  frames.py domains PROTEINS ZELVAN WORK [--mode 22] --domains FASTA --queries IDS [-- ZELVAN ARGUMENTS]
  frames.py all     ... one after another
  frames.py all proteins.fa build/release/zelvan work --domains domains.fa --queries queries.ids -- -m BLOSUM62

PROTEINS is a FASTA file; its first 5,000 sequences are the database of `reads` and `chance`, all of them the background
of `domains`. WORK receives databases and reports; a search is not repeated, as with homology.py, which describes the
arguments --domains and --queries, and ZELVANDIR. The modes are 20 and 22, where the DNA is the query, and 12, where it
is the database.

reads    Each seed gives stretches of 200 residues from 40 proteins of 200 to 400 residues. 60 % of the residues, at
         places without pattern, become other ones, drawn by how often evolution puts them there (SUBSTITUTES, after
         BLOSUM62); then every residue becomes one of its codons, and that many per cent of the bases are deleted or
         get another one behind them, with even odds. In mode 12 the reads stand in the database among the genes of
         the 5,000, and the whole proteins search them. A read is found if its own protein has an E-value up to .001;
         its coverage is the share of the stretch within the aligned residues, mean over the reads found.
chance   The same reads with 1 % of errors (in mode 12 the proteins) against the 5,000, shuffled: hits per query up to
         an E-value of 0.1, 1 and 10, each divided by it.
domains  Classified domains as genes, as they are and with one base lost or gained within their middle half, judged by
         the figures of homology.py.
"""
import argparse
import os
import pathlib
import random
import re
import shutil
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "examples"))

import homology  # noqa: E402
from fasta_records import records  # noqa: E402
from make_dna_examples import CODONS  # noqa: E402

RESIDUES = "ARNDCQEGHILKMFPSTWYV"
BLOSUM62 = pathlib.Path(__file__).resolve().parent.parent / "data" / "matrices" / "BLOSUM62"
# Per cent of residues in proteins, in the order of RESIDUES.
COMMON = (8.3, 5.5, 4.1, 5.5, 1.4, 3.9, 6.7, 7.1, 2.3, 5.9, 9.7, 5.8, 2.4, 3.9, 4.7, 6.6, 5.4, 1.1, 2.9, 6.9)

DATABASE = 5000  # proteins of `reads` and `chance`
READS = 40  # of one seed
STRETCH = 200  # residues of a read
SUBSTITUTED = 0.6  # of them
FOUND = 0.001  # E-value
LIMITS = (0.1, 1, 10)  # E-values at which false hits are counted


def substitutes():
    """{residue: weights of RESIDUES that take its place, 0 for itself}"""
    lines = [line.split() for line in BLOSUM62.read_text().splitlines() if line.strip() and line[0] != "#"]
    score = {(row[0], column): int(value) for row in lines[1:] for column, value in zip(lines[0], row[1:])}
    return {a: [0 if a == b else often * 2 ** (score[a, b] / 2) for b, often in zip(RESIDUES, COMMON)]
            for a in RESIDUES}  # fmt: skip


SUBSTITUTES = substitutes()


def substituted(stretch, rng):
    residues = list(stretch)
    for k in rng.sample(range(len(residues)), round(SUBSTITUTED * len(residues))):
        residues[k] = rng.choices(RESIDUES, SUBSTITUTES[residues[k]])[0]
    return "".join(residues)


def gene(protein, rng):
    """Random codons; what no codon stands for is left out."""
    return "".join(rng.choice(CODONS[residue]) for residue in protein if residue in CODONS)


def with_errors(bases, places, rng):
    """Each of the places lost, or followed by another base."""
    bases = list(bases)
    for place in places:
        bases[place] = "" if rng.random() < 0.5 else bases[place] + rng.choice("ACGT")
    return "".join(bases)


class Read:
    """A stretch of a protein: residues begin + 1 to begin + STRETCH of it."""

    def __init__(self, name, protein, rng):
        self.protein_name, self.protein = name, protein
        self.begin = rng.randrange(len(protein) - STRETCH + 1)
        self.error_free = gene(substituted(protein[self.begin : self.begin + STRETCH], rng), rng)
        self.seed = rng.random()

    def bases(self, percent):
        rng = random.Random(self.seed)
        count = round(len(self.error_free) * percent / 100)
        return with_errors(self.error_free, rng.sample(range(len(self.error_free)), count), rng)

    def coverage(self, first, last):
        """Of the stretch, by residues first to last of the protein."""
        return max(0, min(last, self.begin + STRETCH) - max(first - 1, self.begin)) / STRETCH


def read_proteins(path):
    proteins = {}
    for header, sequence in records(path):
        proteins.setdefault(header.split()[0], sequence.upper())
    return proteins


def make_reads(proteins, seeds):
    """{name: Read}"""
    fitting = [name for name, protein in proteins.items()
               if STRETCH <= len(protein) <= 2 * STRETCH and set(protein) <= set(RESIDUES)]  # fmt: skip
    if len(fitting) < READS:
        sys.exit(f"{len(fitting)} proteins of {STRETCH} to {2 * STRETCH} residues; {READS} are needed")
    reads = {}
    for seed in seeds:
        rng = random.Random(seed)
        for number, name in enumerate(rng.sample(fitting, READS)):
            reads[f"read{seed}.{number}"] = Read(name, proteins[name], rng)
    return reads


def database(options, name, proteins):
    """Builds the database of one kind, as DNA for mode 12; returns what homology.search takes."""
    if options.mode == 12:
        rng = random.Random(5)
        name, proteins = name + "_dna", [(identifier, gene(protein, rng)) for identifier, protein in proteins]
    return name, homology.make_binary(options.zelvan, options.work, name, list(proteins))


def search(options, base, sequences, probcut, alignments=False):
    width = max(len(header) for header, _ in records(options.work / f"{base[0]}.fa"))
    arguments = ["-mode", str(options.mode), "-do_stats", "1", "-probcut", f"{probcut:g}", *options.further,
                 "-nprint_to_threshold", "1", "-aprint_to_threshold", str(int(alignments)), "-max_aout", "0",
                 "-show_blurb", "1", "-show_titles", "0", "-show_ident_width", str(width)]  # fmt: skip
    return homology.search(options.zelvan, options.work, base, arguments, sequences, 1)


def hits(reports):
    return [homology.read_report(report)[0] for report in reports]


ALIGNED = re.compile(r"^# Query: \S+ Target: (\S+) .*\n(?:# Target_Title.*\n)?# N: 1 .*\n# Residues: (\d+)-(\d+)", re.M)


def aligned(report):
    """{identifier: (first, last residue)} of the best alignment of every hit."""
    return {match[1]: (int(match[2]), int(match[3])) for match in ALIGNED.finditer(report.read_text())}


def print_row(*cells):
    shown = (f"{cell:.3f}" if isinstance(cell, float) else str(cell) for cell in cells)
    print("| " + " | ".join(shown) + " |", flush=True)


def print_head(*cells):
    print_row(*cells)
    print("|---" * len(cells) + "|")


def measure_reads(options):
    proteins = dict(list(read_proteins(options.proteins).items())[:DATABASE])
    reads = make_reads(proteins, options.seeds)
    print_head("% of bases lost or gained", "reads", f"found at E <= {FOUND}", "coverage")
    if options.mode == 12:
        rng = random.Random(5)
        genes = [(name, gene(protein, rng)) for name, protein in proteins.items()]
        genes += [(f"{name}:{e:g}", read.bases(e)) for name, read in reads.items() for e in options.errors]
        base = "reads_dna", homology.make_binary(options.zelvan, options.work, "reads_dna", genes)
        reports = search(options, base, {name: read.protein for name, read in reads.items()}, FOUND)
        lists = hits(reports)
        for percent in options.errors:
            found = sum(f"{name}:{percent:g}" in own for name, own in zip(reads, lists))
            print_row(f"{percent:g}", len(reads), found, "")
        return
    base = database(options, "proteins", proteins.items())
    for percent in options.errors:
        reports = search(options, base, {name: read.bases(percent) for name, read in reads.items()}, FOUND, True)
        shares = [read.coverage(*aligned(report)[read.protein_name])
                  for read, report, own in zip(reads.values(), reports, hits(reports)) if read.protein_name in own]
        print_row(f"{percent:g}", len(reads), len(shares), sum(shares) / max(1, len(shares)))


def measure_chance(options):
    proteins = dict(list(read_proteins(options.proteins).items())[:DATABASE])
    reads = make_reads(proteins, options.seeds)
    rng = random.Random(6)
    shuffled = [(name, "".join(rng.sample(protein, len(protein)))) for name, protein in proteins.items()]
    queries = {name: read.protein if options.mode == 12 else read.bases(1) for name, read in reads.items()}
    lists = hits(search(options, database(options, "shuffled", shuffled), queries, LIMITS[-1]))
    counts = [homology.false_ratio([own.values() for own in lists], [1] * len(lists), limit) for limit in LIMITS]
    print_head("queries", *(f"shuffled E <= {limit:g}" for limit in LIMITS))
    print_row(len(queries), *counts)


def with_one_error(bases, rng):
    quarter = len(bases) // 4
    return with_errors(bases, [rng.randrange(quarter, len(bases) - quarter)], rng)


def measure_domains(options):
    domains = homology.read_domains(options.domains)
    queries = homology.read_queries(options.queries, domains)
    sequences = {name: domain.sequence for name, domain in domains.items()} | read_proteins(options.proteins)
    table = homology.Measure(domains, queries, homology.size(sequences.values()), 3, False)
    print_head("bases lost or gained", *table.columns())
    for count in (0, 1):
        rng = random.Random(8)
        spoilt = with_one_error if count else lambda bases, _: bases
        if options.mode == 12:
            genes = {name: gene(sequence, rng) for name, sequence in sequences.items()}
            genes = [(name, spoilt(bases, rng) if name in domains else bases) for name, bases in genes.items()]
            name = f"domains{count}_dna"
            base = name, homology.make_binary(options.zelvan, options.work, name, genes)
            searched = {query: domains[query].sequence for query in queries}
        else:
            base = database(options, "domains", sequences.items())
            searched = {query: spoilt(gene(domains[query].sequence, rng), rng) for query in queries}
        lists = hits(search(options, base, searched, max(100, table.lowest_probcut())))
        print_row(count, *table.figures(lists))


MEASURES = {"reads": measure_reads, "chance": measure_chance, "domains": measure_domains}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=[*MEASURES, "all"])
    parser.add_argument("proteins")
    parser.add_argument("zelvan")
    parser.add_argument("work", type=pathlib.Path)
    parser.add_argument("--mode", type=int, default=22, choices=(12, 20, 22))
    parser.add_argument("--errors", nargs="+", type=float, default=[0, 1, 3, 6], help="per cent of the bases (0 1 3 6)")
    parser.add_argument("--seeds", nargs="+", type=int, default=[1, 2, 3, 4], help="40 reads each (1 2 3 4)")
    parser.add_argument("--domains", help="FASTA file of classified domains")
    parser.add_argument("--queries", help="identifiers of those that are searched for")
    own = [*sys.argv[1:], "--"]
    split = own.index("--")
    options = parser.parse_args(own[:split])
    options.further = own[split + 1 : -1]
    program = shutil.which(options.zelvan)
    if program is None:
        sys.exit(f"{options.zelvan}: no such program")
    options.zelvan = os.path.abspath(program)
    measures = list(MEASURES) if options.what == "all" else [options.what]
    if "domains" in measures and not (options.domains and options.queries):
        sys.exit("domains: give --domains and --queries too")
    os.environ["ZELVANDIR"] = os.path.abspath(os.environ.get("ZELVANDIR", "."))
    options.work.mkdir(parents=True, exist_ok=True)
    for what in measures:
        MEASURES[what](options)
        print()


if __name__ == "__main__":
    main()
