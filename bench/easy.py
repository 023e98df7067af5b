#!/usr/bin/env python3
"""Measures zelvan-easy: what it finds, whether its E-values are true, and what it costs beside zelvan itself.

  easy.py frames  PROTEINS ZELVAN_EASY WORK    40 proteins as DNA, mutated, a base inserted, on either strand
  easy.py chance  PROTEINS ZELVAN_EASY WORK    shuffled reads and contigs: hits up to E, divided by E
  easy.py speed   PROTEINS ZELVAN_EASY WORK    200 queries by 2 processes, and by zelvan one after another
  easy.py volumes PROTEINS ZELVAN_EASY WORK    one query by 2 processes, each with a volume; E-values beside those of the whole
  easy.py short   PROTEINS ZELVAN_EASY WORK    2,000 short queries against 100 sequences: cost of each, memory

PROTEINS is a FASTA file, the database; queries are made of its sequences, the same in every run.
"""
import argparse
import os
import pathlib
import random
import resource
import shutil
import statistics
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "examples"))

from fasta_records import records  # noqa: E402
from make_dna_examples import back_translate, flanked  # noqa: E402

COMPLEMENT = str.maketrans("ACGT", "TGCA")
RESIDUES = "ACDEFGHIKLMNPQRSTVWY"


def complement(bases):
    return bases.translate(COMPLEMENT)[::-1]


def mutated(protein, share, rng):
    return "".join(rng.choice(RESIDUES) if rng.random() < share else residue for residue in protein)


def proteins_of(path, count, least, most, rng):
    """(identifier, residues) of that many proteins with so many residues."""
    fitting = [(header.split()[0], residues) for header, residues in records(path) if least <= len(residues) <= most]
    return rng.sample(fitting, count)


def write_fasta(path, named):
    path.write_text("".join(f">{name}\n{residues}\n" for name, residues in named))


def run_easy(options, queries, *arguments, database=None):
    """Runs the search and returns (seconds, lines of hits.tsv as lists, kilobytes of memory)."""
    out = options.work / "out"
    shutil.rmtree(out, ignore_errors=True)
    began = time.monotonic()
    command = [options.easy, "search", queries, database or options.proteins, "--out", out, "--cache", options.work / "cache",
               "--quiet", *arguments]  # fmt: skip
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False)
    if done.returncode:
        sys.exit(f"{' '.join(map(str, command))}\nended with status {done.returncode}: {done.stderr}")
    lines = [line.rstrip("\n").split("\t") for line in open(out / "hits.tsv", encoding="utf-8")]
    return time.monotonic() - began, lines, resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss


def warm_up(options):
    """Builds the database."""
    queries = options.work / "one.fa"
    write_fasta(queries, [("one", "MKVLAAGIVGLLLAQWERTYIPASDFGHKLCVNM")])
    run_easy(options, queries, "--iterations", "1")


def frames(options):
    rng = random.Random(11)
    queries = []
    for number, (name, protein) in enumerate(proteins_of(options.proteins, 40, 120, 600, rng)):
        codons = back_translate(mutated(protein, 0.3, rng))
        codons.insert(len(codons) // 2, "A")
        bases = flanked("".join(codons), number)
        queries += [("plus|" + name, bases), ("minus|" + name, complement(bases))]
    path = options.work / "frames.fa"
    write_fasta(path, queries)
    _, lines, _ = run_easy(options, path, "--evalue", "0.001", "--outfmt", "6 qseqid sseqid evalue sstrand shifts")
    for strand in ("plus", "minus"):
        own = [line for line in lines if line[0].startswith(strand)]
        found = {line[0]: line for line in own if line[0] == f"{strand}|{line[1]}" and line[3] == strand}
        shifted = sum(line[4] != "0" for line in found.values())
        print(f"{strand:5}: of 40 proteins {len(found)} found, {shifted} of them across the shift; {len(own)} alignments in all")


def chance(options):
    rng = random.Random(12)
    warm_up(options)
    proteins = proteins_of(options.proteins, 64, 250, 1000, rng)

    def shuffled(protein, length):
        codons = back_translate(protein)
        rng.shuffle(codons)
        bases = "".join(codons)
        return (bases * (length // len(bases) + 1))[:length] if length else bases

    def contig(length):
        """Shuffled genes end to end."""
        parts = []
        while sum(map(len, parts)) < length:
            parts.append(shuffled(rng.choice(proteins)[1], 0))
        return "".join(parts)[:length]

    reads = [(f"read{k}", shuffled(protein, 0)) for k, (_, protein) in enumerate(proteins)]
    whole = [(f"contig{k}", contig(15_000)) for k in range(12)]
    contigs = [(f"contig{k}", contig(51_000)) for k in range(6)]
    for name, queries in (("reads", reads), ("contigs of 15,000", whole), ("contigs of 51,000 in 4 stretches", contigs)):
        path = options.work / "chance.fa"
        write_fasta(path, queries)
        for strand in ("plus", "both"):
            _, lines, _ = run_easy(options, path, "--evalue", "10", "--strand", strand, "--outfmt", "6 qseqid sseqid evalue")
            best = {}
            for query, target, value in lines:
                best[query, target] = min(float(value), best.get((query, target), 11))
            counts = [sum(value <= limit for value in best.values()) / len(queries) / limit for limit in (1, 10)]
            print(f"{len(queries)} shuffled {name}, strand {strand}: hits up to E, divided by E: "
                  f"{counts[0]:.2f} (E 1), {counts[1]:.2f} (E 10)")  # fmt: skip


def processor_seconds():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def zelvan_alone(options, named, database, *arguments):
    """Seconds that zelvan takes for the queries one after another, and nothing else."""
    environment = dict(os.environ)
    (index,) = (options.work / "cache").glob(f"*-{pathlib.Path(database).name}.zelvan/*.bix")
    seconds = 0.0
    for name, residues in named:
        path = options.work / "alone.fa"
        write_fasta(path, [(name, residues)])
        began = time.monotonic()
        with open(options.work / "alone.report", "wb") as out:
            subprocess.run([options.zelvan, "-s", path, "-dd", index.parent, "-bdb", index.stem, "-niter", "1", *arguments],
                           stdout=out, env=environment, check=True)  # fmt: skip
        seconds += time.monotonic() - began
    return seconds


def speed(options):
    rng = random.Random(13)
    warm_up(options)
    queries = proteins_of(options.proteins, 200, 50, 1500, rng)
    path = options.work / "speed.fa"
    write_fasta(path, queries)
    before = processor_seconds()
    alone = zelvan_alone(options, queries, options.proteins)
    print(f"zelvan one after another: {alone:.1f} s, {processor_seconds() - before:.1f} s of a processor")
    for threads in ("1", "2"):
        before = processor_seconds()
        easy, _, _ = run_easy(options, path, "--iterations", "1", "--threads", threads, "--no-mask")
        print(f"zelvan-easy --threads {threads}: {easy:.1f} s, {processor_seconds() - before:.1f} s of processors; "
              f"{alone / easy:.2f} times")  # fmt: skip


def best_values(options, queries, database):
    """{(query, target): E-value of the best alignment}"""
    best = {}
    _, lines, _ = run_easy(options, queries, "--iterations", "1", database=options.work / database)
    for line in lines:
        best[line[0], line[1]] = min(float(line[10]), best.get((line[0], line[1]), 11))
    return best


def volumes(options):
    rng = random.Random(15)
    for name, more in (("whole", ()), ("dealt", ("--volumes", "2"))):
        began = time.monotonic()
        subprocess.run([options.easy, "build", *more, options.proteins, options.work / name], check=True, capture_output=True)
        print(f"built {name} in {time.monotonic() - began:.1f} s")
    path = options.work / "volumes.fa"
    write_fasta(path, proteins_of(options.proteins, 1, 950, 1050, rng))
    runs = [("whole", "1"), ("dealt", "1"), ("dealt", "2")]
    seconds = {run: [] for run in runs}
    for name, threads in runs * 3:
        taken, _, _ = run_easy(options, path, "--iterations", "1", "--threads", threads, database=options.work / name)
        seconds[name, threads].append(taken)
    for (name, threads), taken in seconds.items():
        print(f"one query, {name}, --threads {threads}: {statistics.median(taken):.2f} s")

    write_fasta(path, proteins_of(options.proteins, 50, 200, 800, rng))
    whole, dealt = (best_values(options, path, name) for name in ("whole", "dealt"))
    print(f"{len(whole)} hits of the whole, {len(dealt)} of volumes; the best that the other lacks: "
          f"{min((whole[hit] for hit in whole.keys() - dealt.keys()), default=None)}, "
          f"{min((dealt[hit] for hit in dealt.keys() - whole.keys()), default=None)}")  # fmt: skip
    for low, high in ((1, 11), (1e-3, 1), (1e-10, 1e-3), (1e-50, 1e-10), (1e-100, 1e-50)):
        ratios = sorted(dealt[hit] / whole[hit] for hit in whole.keys() & dealt.keys() if low <= whole[hit] < high)
        if len(ratios) > 20:
            near = sum(1 / 1.5 <= ratio <= 1.5 for ratio in ratios) / len(ratios)
            print(f"E {low:g} to {min(high, 10):g}: E-values in volumes divided by those of the whole: {statistics.median(ratios):.2f}, "
                  f"5-95 % {ratios[len(ratios) // 20]:.2f}-{ratios[-len(ratios) // 20]:.2f}, {100 * near:.0f} % within a factor of 1.5")

    shuffled = ["".join(rng.sample(residues, len(residues))) for _, residues in proteins_of(options.proteins, 200, 150, 1000, rng)]
    write_fasta(path, [(f"shuffled{number}", residues) for number, residues in enumerate(shuffled)])
    for name in ("whole", "dealt"):
        values = best_values(options, path, name).values()
        counts = [sum(value <= limit for value in values) / len(shuffled) for limit in (1, 10)]
        print(f"200 shuffled proteins, {name}: {counts[0]:.2f} hits each up to E 1, {counts[1]:.2f} up to E 10")


def short(options):
    rng = random.Random(14)
    small = options.work / "small.fa"
    write_fasta(small, proteins_of(options.proteins, 100, 50, 150, rng))
    peptides = [(f"peptide{k}", "".join(rng.choices(RESIDUES, k=30))) for k in range(2000)]
    path = options.work / "short.fa"
    write_fasta(path, peptides[:1])
    run_easy(options, path, "--iterations", "1", database=small)
    alone = zelvan_alone(options, peptides[:200], small, "-lpb", "10") / 200
    for count in (200, 2000):
        write_fasta(path, peptides[:count])
        easy, _, memory = run_easy(options, path, "--iterations", "1", "--threads", "1", database=small)
        print(f"{count} queries of 30 residues: zelvan alone {1000 * alone:.1f} ms, with zelvan-easy {1000 * easy / count:.1f} ms "
              f"each; {memory // 1024} MB")  # fmt: skip


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=("frames", "chance", "speed", "volumes", "short"))
    parser.add_argument("proteins", type=pathlib.Path)
    parser.add_argument("easy", type=pathlib.Path)
    parser.add_argument("work", type=pathlib.Path)
    options = parser.parse_args()
    options.easy = options.easy.absolute()
    options.zelvan = options.easy.parent / "zelvan"
    if "ZELVANDIR" not in os.environ:
        os.environ["ZELVANDIR"] = str(options.zelvan.parent / "config")
    options.work.mkdir(parents=True, exist_ok=True)
    globals()[options.what](options)


if __name__ == "__main__":
    main()
