#!/usr/bin/env python3
"""Measures how many relatives searches find and whether their E-values are true, on a set of classified domains.

  homology.py DOMAINS QUERIES ZELVAN WORK [--background FASTA] [--decoys] [--iterations 1 3 5] [-- ZELVAN ARGUMENTS]
  homology.py domains.fa queries.ids build/release/zelvan work --background proteins.fa -- -mode 200

DOMAINS is a FASTA file with class.fold.superfamily.family (a.1.1.2) as second word of every header; QUERIES lists
identifiers of domains, the first word of each line. WORK receives the binary database and one report per search;
a search whose report is there from the same program, configuration, database and arguments is not repeated.
ZELVANDIR names the configuration, as for zelvan itself.

A hit is true if it is of the query's superfamily and false if of another fold. What may or may not be related does
not count: other superfamilies of the fold, pairs among Rossmann-like folds or among beta-propellers, the background.

  ROC5         mean over queries of the share of relatives found before the 1st, 2nd ... 5th false hit, averaged
  TPR1FP       mean over queries of the share of relatives found before the first false hit
  TP@r         mean over queries of the share of relatives found, in one list of all hits by E-value, before there
               are more than r false hits per query
  strangers    queries with a false hit below an E-value of 0.002: most came into the profile themselves
  false E<=c   false hits per query up to E-value c, divided by their ideal number c. E-values count the whole
               database; they are scaled to the part of it that can be a known false hit
--decoys appends the domains reversed and shuffled (rev_..., shf_...) to the database and counts them as false hits
of their own; the column "most E<=0.001" is the largest number of one query. This lowers sensitivity a little, so
measure that without them.
"""
import argparse
import concurrent.futures
import hashlib
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
from typing import NamedTuple

from fasta_records import records as read_fasta

UNCERTAIN = ({"c.2", "c.3", "c.4", "c.5", "c.27", "c.28", "c.30", "c.31"}, {"b.66", "b.67", "b.68", "b.69", "b.70"})
RATES = (0.01, 0.1, 1, 10)  # false hits per query
LIMITS = (0.1, 1, 10)  # E-values up to which false hits are counted
STRANGER, DECOY = 0.002, 0.001  # E-values below which a false hit of one query is too much
DECOYS = {"reversed": "rev_", "shuffled": "shf_"}


class Domain(NamedTuple):
    fold: str
    superfamily: str
    sequence: str


class Size(NamedTuple):
    """Of a database or a part of it."""

    sequences: int
    residues: int


# Which field of Size the E-values of a PROB_TYPE are proportional to.
SIZE_OF = {3: 0, 2: 1, 1: 1}


def read_domains(path):
    """{identifier: Domain}"""
    domains = {}
    for header, sequence in read_fasta(path):
        words = header.split()
        if len(words) < 2 or not re.fullmatch(r"\w\.\d+\.\d+\.\d+", words[1]):
            sys.exit(f"{path}: the second word of '>{header}' should be a class such as a.1.1.2")
        if words[0] in domains:
            sys.exit(f"{path}: there are two domains {words[0]}; give each its own identifier")
        level = words[1].split(".")
        domains[words[0]] = Domain(".".join(level[:2]), ".".join(level[:3]), sequence.upper())
    return domains


def read_queries(path, domains):
    with open(path, encoding="latin-1") as source:
        queries = [line.split()[0] for line in source if line.strip()]
    if not queries:
        sys.exit(f"{path}: no identifiers; list one query a line")
    for query in queries:
        if query not in domains:
            sys.exit(f"{path}: {query} is none of the domains; take it off the list")
        if not relatives(query, domains):
            sys.exit(f"{path}: {query} has no relative among the domains; take it off the list")
    return queries


def relatives(query, domains):
    return sum(d.superfamily == domains[query].superfamily for d in domains.values()) - 1


def false_folds(fold, folds):
    """Those of `folds` whose domains are certainly unrelated to domains of `fold`."""
    unclear = {fold}.union(*(group for group in UNCERTAIN if fold in group))
    return folds - unclear


def size(sequences):
    lengths = [len(sequence) for sequence in sequences]
    return Size(len(lengths), sum(lengths))


# ---- Database and searches


def write_fasta(path, records):
    with open(path, "w", encoding="latin-1") as target:
        for header, sequence in records:
            lines = (sequence[i : i + 60] for i in range(0, len(sequence), 60))
            target.write(f">{header}\n" + "\n".join(lines) + "\n")


def decoys(domains):
    """Yields (identifier, sequence): each domain reversed, then shuffled, the same in every run."""
    rng = random.Random(7)
    for name, domain in domains.items():
        yield DECOYS["reversed"] + name, domain.sequence[::-1]
        yield DECOYS["shuffled"] + name, "".join(rng.sample(domain.sequence, len(domain.sequence)))


def run_zelvan(program, arguments, output):
    """Runs zelvan in the folder of `output`, a path that appears only when the search has succeeded."""
    part = output.with_suffix(".part")
    with open(part, "wb") as report:
        done = subprocess.run(
            [program, *arguments], stdout=report, stderr=subprocess.PIPE, cwd=output.parent, check=False
        )
    if done.returncode != 0:
        sys.exit(f"{output.stem}: zelvan ended with status {done.returncode}\n{done.stderr.decode(errors='replace')}")
    part.rename(output)


def make_binary(program, work, name, records, *arguments):
    """Writes WORK/NAME.* unless it is there from the same records and arguments; returns their digest."""
    fasta, built = work / f"{name}.fa", work / f"{name}.built"
    write_fasta(fasta, records)
    digest = hashlib.sha256(fasta.read_bytes() + repr(arguments).encode()).hexdigest()
    if not built.exists() or built.read_text() != digest:
        command = ["-mode", "99", "-d", fasta.name, "-db_format", "1", "-db_dir", ".", "-bdb", name, *arguments]
        run_zelvan(program, command, work / f"{name}.log")
        built.write_text(digest)
    return digest


def build_database(program, work, domains, background, with_decoys):
    """Writes WORK/real.* or WORK/decoys.*; returns (name, Size of the whole database, digest of its sequences)."""
    name = "decoys" if with_decoys else "real"
    records = [(identifier, domain.sequence) for identifier, domain in domains.items()]
    for header, sequence in read_fasta(background) if background else ():
        identifier = header.split()[0]
        if identifier in domains:
            sys.exit(f"{background}: {identifier} is also a domain; take it out of one of the files")
        records.append((identifier, sequence.upper()))
    records += decoys(domains) if with_decoys else []
    return name, size(sequence for _, sequence in records), make_binary(program, work, name, records)


def configuration(program):
    """What, besides arguments and database, decides about a report."""
    folder = pathlib.Path(os.environ.get("ZELVANDIR", "."))
    return b"".join(path.read_bytes() for path in [pathlib.Path(program), *sorted(folder.glob("zelvan_*.dat"))])


def masked_sequences(sequences):
    """The sequences, by identifier, as zelvan-easy searches with them."""
    sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "easy"))
    from zelvan_easy.inputs import PROTEIN, make_query
    from zelvan_easy.masking import find_masker, masked, masked_ranges

    if find_masker(PROTEIN) is None:
        sys.exit("no program that masks low complexity is installed")
    queries = [make_query(number, name, text, PROTEIN) for number, (name, text) in enumerate(sequences.items(), 1)]
    ranges = masked_ranges(queries, PROTEIN)
    return {query.name: masked(query.residues, ranges[query.number], "X") for query in queries}


def search(program, work, database, arguments, sequences, jobs):
    """Runs the missing searches; returns the paths of the reports in the order of `sequences`, the queries by name."""
    name, digest = database
    key = hashlib.sha256(configuration(program) + repr((digest, arguments, sequences)).encode()).hexdigest()
    folder = work / f"{name}-{key[:12]}"
    folder.mkdir(exist_ok=True)
    (folder / "arguments").write_text(" ".join(arguments) + "\n")
    reports = [folder / f"{query}.out" for query in sequences]

    def one(query, report):
        if report.exists():
            return
        fasta = folder / f"{query}.fa"
        write_fasta(fasta, [(query, sequences[query])])
        run_zelvan(program, ["-s", fasta.name, "-qseq_format", "1", "-db_dir", "..", "-bdb", name, *arguments], report)

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        list(pool.map(one, sequences, reports))
    return reports


def parse_report(text):
    """One {identifier: E-value} per iteration, from lists without titles: score, x, E-value, identifier."""
    iterations, inside = [], False
    for line in text.splitlines():
        if line.startswith("# Start_Scores"):
            iterations.append({})
            inside = True
        elif line.startswith("# End_Scores"):
            inside = False
        elif inside and not line.startswith("#") and line.strip():
            _, _, significance, identifier = line.split()[:4]
            iterations[-1].setdefault(identifier, float(significance))
    if not iterations or inside:
        raise ValueError("no complete score list")
    return iterations


# ---- Figures


def classify(query, hits, domains, folds):
    """[(E-value, is true)] of the hits that are either, best first; a false hit precedes a true one of the same E."""
    own, unrelated = domains[query], false_folds(domains[query].fold, folds)
    judged = []
    for identifier, significance in hits.items():
        domain = domains.get(identifier)
        if domain is None or identifier == query:
            continue
        if domain.superfamily == own.superfamily:
            judged.append((significance, True))
        elif domain.fold in unrelated:
            judged.append((significance, False))
    return sorted(judged)


def roc(judged, total, depth):
    """Mean share of `total` relatives found before each of the first `depth` false hits."""
    found, before = 0, []
    for _, is_true in judged:
        if is_true:
            found += 1
        else:
            before.append(found)
    before = (before + [found] * depth)[:depth]
    return sum(before) / (depth * total)


def found_at(lists, totals, rate):
    """Mean share of relatives in the common list of all queries before more than `rate` false hits per query."""
    common = sorted((*hit, 1 / total) for hits, total in zip(lists, totals) for hit in hits)
    false, share = 0, 0.0
    for _, is_true, weight in common:
        if is_true:
            share += weight
        else:
            false += 1
            if false > rate * len(lists):
                break
    return share / len(lists)


def false_ratio(lists, shares, limit):
    """lists: E-values of each query's false hits; shares: the part of the database they can come from."""
    count = sum(value * share <= limit for values, share in zip(lists, shares) for value in values)
    return count / len(lists) / limit


class Measure:
    """Computes the figures of one set of searches after another on the same domains and database."""

    def __init__(self, domains, queries, whole, prob_type, with_decoys):
        self.domains, self.queries, self.with_decoys = domains, queries, with_decoys
        self.folds = {domain.fold for domain in domains.values()}
        self.totals = [relatives(query, domains) for query in queries]
        index = SIZE_OF[prob_type]
        of_fold = dict.fromkeys(self.folds, 0)
        for domain in domains.values():
            of_fold[domain.fold] += size([domain.sequence])[index]
        self.decoy_share = sum(of_fold.values()) / whole[index]
        self.false_shares = [
            sum(of_fold[fold] for fold in false_folds(domains[query].fold, self.folds)) / whole[index]
            for query in queries
        ]

    def lowest_probcut(self):
        """The lists must reach this E-value for the largest of LIMITS to be counted."""
        return LIMITS[-1] / min(self.false_shares)

    def columns(self):
        names = ["ROC5", "TPR1FP", *(f"TP@{rate:g}" for rate in RATES), "strangers",
                 *(f"different fold E<={limit:g}" for limit in LIMITS)]  # fmt: skip
        for kind in DECOYS if self.with_decoys else ():
            names += [*(f"{kind} E<={limit:g}" for limit in LIMITS), f"{kind}, most E<={DECOY:g}"]
        return names

    def figures(self, results):
        """results: {identifier: E-value} of each query, in the order of the queries. One number for each column."""
        judged = [classify(query, hits, self.domains, self.folds) for query, hits in zip(self.queries, results)]
        line = [
            sum(roc(hits, total, depth) for hits, total in zip(judged, self.totals)) / len(judged) for depth in (5, 1)
        ]
        line += [found_at(judged, self.totals, rate) for rate in RATES]
        false = [[value for value, is_true in hits if not is_true] for hits in judged]
        line.append(sum(any(value < STRANGER for value in values) for values in false))
        line += [false_ratio(false, self.false_shares, limit) for limit in LIMITS]
        for prefix in DECOYS.values() if self.with_decoys else ():
            false = [[value for name, value in hits.items() if name.startswith(prefix)] for hits in results]
            line += [false_ratio(false, [self.decoy_share] * len(false), limit) for limit in LIMITS]
            line.append(max(sum(value < DECOY for value in values) for values in false))
        return line


def cells(figures):
    """The figures of a Measure as text: shares, then ratios, and numbers of queries or hits among them."""
    shares = 2 + len(RATES)
    return [f"{x:.3f}" for x in figures[:shares]] + [
        str(x) if isinstance(x, int) else f"{x:.2f}" for x in figures[shares:]
    ]


def read_report(path):
    try:
        return parse_report(path.read_text(encoding="latin-1"))
    except ValueError as problem:
        sys.exit(f"{path}: {problem}; remove the file and run the measurement again")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("domains")
    parser.add_argument("queries")
    parser.add_argument("zelvan")
    parser.add_argument("work", type=pathlib.Path)
    parser.add_argument("--background", help="FASTA file of further sequences that are searched but not judged")
    parser.add_argument("--decoys", action="store_true", help="append reversed and shuffled domains")
    parser.add_argument("--mask", action="store_true", help="mask low complexity in queries as zelvan-easy does")
    parser.add_argument("--iterations", nargs="+", type=int, default=[1], help="after which to measure")
    parser.add_argument("--prob-type", type=int, default=3, choices=sorted(SIZE_OF), help="kind of E-value (3)")
    parser.add_argument("--jobs", type=int, default=1, help="searches at a time (1)")
    own, further = sys.argv[1:], []
    if "--" in own:
        split = own.index("--")
        own, further = own[:split], own[split + 1 :]
    options = parser.parse_args(own)
    domains = read_domains(options.domains)
    queries = read_queries(options.queries, domains)
    program = shutil.which(options.zelvan)
    if program is None:
        sys.exit(f"{options.zelvan}: no such program")
    program = os.path.abspath(program)
    os.environ["ZELVANDIR"] = os.path.abspath(os.environ.get("ZELVANDIR", "."))
    options.work.mkdir(parents=True, exist_ok=True)

    name, whole, digest = build_database(program, options.work, domains, options.background, options.decoys)
    table = Measure(domains, queries, whole, options.prob_type, options.decoys)
    width = max(map(len, domains)) + max(map(len, DECOYS.values()))
    # PROBCUT comes first because a PROBCUT2 given by the user must not exceed it; what the report looks like
    # comes last because it must not be changed.
    arguments = ["-niter", str(max(options.iterations)), "-prob_type", str(options.prob_type),
                 "-probcut", f"{max(100, table.lowest_probcut()):.0f}", *further,
                 "-aprint_to_threshold", "0", "-max_aout", "0", "-nprint_to_threshold", "1", "-show_blurb", "1",
                 "-show_titles", "0", "-show_ident_width", str(width)]  # fmt: skip
    sequences = {query: domains[query].sequence for query in queries}
    sequences = masked_sequences(sequences) if options.mask else sequences
    reports = search(program, options.work, (name, digest), arguments, sequences, options.jobs)
    lists = [read_report(report) for report in reports]
    print("| iterations | " + " | ".join(table.columns()) + " |")
    print("|---" * (1 + len(table.columns())) + "|")
    for count in options.iterations:
        # A search that converged earlier keeps its last list.
        figures = table.figures([iterations[min(count, len(iterations)) - 1] for iterations in lists])
        print(f"| {count} | " + " | ".join(cells(figures)) + " |")


if __name__ == "__main__":
    main()
