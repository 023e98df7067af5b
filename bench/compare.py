#!/usr/bin/env python3
"""Times whole searches against other programs, in alternation, and prints medians and ratios.

  compare.py --database big.fasta --query q.fasta [--query ...] [--rounds 5] [--other "NAME=COMMAND"] ...

The first command of every round is ours: one pass of MODE 202 with the list and 20 alignments, on a binary
database that is made beside the FASTA file when it is not there yet. ssearch36 (Debian package fasta3), when it is
installed, shows as many. Further programs come as NAME=COMMAND, with {q} for the query file and {d} for the FASTA
database. Needs ZELVANDIR and, when zelvan is not in the PATH, --zelvan.
"""
import argparse
import os
import shlex
import shutil
import statistics
import subprocess
import time


def run(command):
    start = time.perf_counter()
    before = os.times()
    subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
    after = os.times()
    return time.perf_counter() - start, after.children_user - before.children_user


def residues(path):
    with open(path, encoding="latin-1") as source:
        return sum(len(line.strip()) for line in source if not line.startswith(">"))


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("--database", required=True)
    options.add_argument("--query", action="append", required=True)
    options.add_argument("--rounds", type=int, default=5)
    options.add_argument("--zelvan", default="zelvan")
    options.add_argument("--other", action="append", default=[])
    given = options.parse_args()

    database = os.path.abspath(given.database)
    folder, root = os.path.dirname(database), os.path.basename(database) + ".zelvan"
    if not os.path.exists(os.path.join(folder, root + ".bsq")):
        subprocess.run([given.zelvan, "MODE", "99", "DB_FILE", database, "DB_FORMAT", "1", "APPLY_INDEX", "1",
                        "DB_DIR", folder, "BDB_ROOT", root], check=True)
    size = residues(database)
    print("| query residues | program | median s | user s | GCUPS | ours is faster by |")
    print("|---|---|---|---|---|---|")
    for query in given.query:
        commands = {"zelvan": [given.zelvan, "QSEQ_FILE", query, "QSEQ_FORMAT", "1", "DB_DIR", folder, "BDB_ROOT", root,
                               "MODE", "202", "NITER", "1", "NPRINT_TO_THRESHOLD", "0", "MAX_NOUT", "20", "PROBCUT", "10",
                               "APRINT_TO_THRESHOLD", "0", "MAX_AOUT", "20"]}
        if shutil.which("ssearch36"):
            commands["ssearch36"] = ["ssearch36", "-q", "-T", "1", "-s", "BL62", "-f", "-11", "-g", "-1", "-E", "10",
                                     "-b", "20", "-d", "20", query, database]
        for other in given.other:
            name, _, command = other.partition("=")
            commands[name] = shlex.split(command.format(q=query, d=database))
        times = {name: [] for name in commands}
        for _ in range(given.rounds):
            for name, command in commands.items():
                times[name].append(run(command))
        length = residues(query)
        for name, taken in times.items():
            elapsed = statistics.median(e for e, _ in taken)
            user = statistics.median(u for _, u in taken)
            ratio = statistics.median(t[0] / o[0] for t, o in zip(taken, times["zelvan"]))
            print(f"| {length} | {name} | {elapsed:.2f} | {user:.2f} | {length * size / elapsed / 1e9:.1f} | {ratio:.2f} |")


if __name__ == "__main__":
    main()
