#!/usr/bin/env python3
"""Times whole searches against other programs, in alternation, and prints medians and ratios.

  compare.py --database big.fasta --query q.fasta [--query ...] [--iterations 3] [--rounds 5] [--other "NAME=COMMAND"] ...

The first command of every round is ours, on a binary database that is made beside the FASTA file when it is not
there yet. With one iteration (mode 202) it shows the list and 20 alignments, with more what the shipped settings show.
What is installed of these takes part: ssearch36 (Debian package fasta3; it shows as many) and parasail_aligner
(scores only) with one iteration, psiblast (ncbi-blast+, on a database made beside the FASTA file) and jackhmmer
(hmmer) with any number. Further programs come as NAME=COMMAND, with {q} for the query file and {d} for the FASTA
database. Everything runs on one core. Ratios are medians over the rounds, of user time. Needs ZELVANDIR and, when
zelvan is not in the PATH, --zelvan.
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


def our_command(program, folder, root, query, iterations):
    command = [program, "QSEQ_FILE", query, "QSEQ_FORMAT", "1", "DB_DIR", folder, "BDB_ROOT", root, "MODE", "202",
               "NITER", str(iterations)]
    if iterations == 1:
        command += ["NPRINT_TO_THRESHOLD", "0", "MAX_NOUT", "20", "PROBCUT", "10", "APRINT_TO_THRESHOLD", "0",
                    "MAX_AOUT", "20"]
    return command


def other_commands(database, query, iterations):
    commands = {}
    if iterations == 1:
        commands["ssearch36"] = ["ssearch36", "-q", "-T", "1", "-s", "BL62", "-f", "-11", "-g", "-1", "-E", "10",
                                 "-b", "20", "-d", "20", query, database]
        # It takes the query from standard input, if that is no terminal, and then no other.
        commands["parasail_aligner"] = ["sh", "-c", 'exec parasail_aligner -x -t 1 -a sw_striped_avx2_256_sat -m blosum62 '
                                        '-o 11 -e 1 -f "$1" -g /dev/null < "$2"', "sh", database, query]
    commands["psiblast"] = ["psiblast", "-query", query, "-db", database, "-num_iterations", str(iterations)]
    commands["jackhmmer"] = ["jackhmmer", "--cpu", "0", "-N", str(iterations), query, database]
    return {name: command for name, command in commands.items() if shutil.which(name)}


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("--database", required=True)
    options.add_argument("--query", action="append", required=True)
    options.add_argument("--iterations", type=int, default=1)
    options.add_argument("--rounds", type=int, default=5)
    options.add_argument("--zelvan", default="zelvan")
    options.add_argument("--other", action="append", default=[])
    given = options.parse_args()

    database = os.path.abspath(given.database)
    folder, root = os.path.dirname(database), os.path.basename(database) + ".zelvan"
    if not os.path.exists(os.path.join(folder, root + ".bsq")):
        subprocess.run([given.zelvan, "MODE", "99", "DB_FILE", database, "DB_FORMAT", "1", "APPLY_INDEX", "1",
                        "DB_DIR", folder, "BDB_ROOT", root], check=True)
    if shutil.which("makeblastdb") and not os.path.exists(database + ".pdb"):
        subprocess.run(["makeblastdb", "-dbtype", "prot", "-in", database], check=True, stdout=subprocess.DEVNULL)
    print("| query residues | program | median s | user s | ours is faster by |")
    print("|---|---|---|---|---|")
    for query in given.query:
        commands = {"zelvan": our_command(given.zelvan, folder, root, query, given.iterations)}
        commands |= other_commands(database, query, given.iterations)
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
            ratio = statistics.median(theirs[1] / ours[1] for theirs, ours in zip(taken, times["zelvan"]))
            print(f"| {length} | {name} | {elapsed:.2f} | {user:.2f} | {ratio:.2f} |", flush=True)


if __name__ == "__main__":
    main()
