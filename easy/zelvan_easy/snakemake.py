"""Hands the jobs of a search to Snakemake, which runs them on this machine or on a cluster.

Queries go into files, so many together, and each file is a job: "zelvan-easy work FILE DONE" searches with its queries
one after the other. Where a query has a run for each volume of the database, these are what goes into the files. What
the jobs leave is collected when Snakemake has ended.
"""

from __future__ import annotations

import os
import pickle
import shutil
import signal
import subprocess
import sys
from pathlib import Path

from zelvan_easy.failure import Failure, cause, refused
from zelvan_easy.worker import Finish, Run, digest, do, failed

_TOGETHER = 100  # queries, or runs, of a job, at most
_LOST = "its job on Snakemake did not end"
_SNAKEFILE = Path(__file__).with_name("Snakefile")


def check():
    if not shutil.which("snakemake"):
        raise refused("--engine snakemake needs Snakemake: install the package snakemake")


def run(task, source, store, teller, threads, profile):
    folder = Path(task.work, "snakemake")
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    with open(folder / "task", "wb") as file:
        pickle.dump(task, file)
    batches, items = 0, []

    def write_batch(size):
        nonlocal batches, items
        with open(folder / f"{batches}.queries", "wb") as file:
            pickle.dump(items[:size], file)
        batches, items = batches + 1, items[size:]

    while not source.finished:
        for subject in source.next_subjects():
            items += _items(task, subject)
        source.advance(teller)
        while len(items) >= _TOGETHER:
            write_batch(_TOGETHER)
    # the rest in batches small enough that all processors have work
    size = max(1, len(items) // (4 * threads))
    while items:
        write_batch(size)
    if not batches:
        return
    command = ["snakemake", "--snakefile", str(_SNAKEFILE), "--directory", str(folder), "--keep-going", "--nolock",
               "--config", f"batches={batches}", f"python={sys.executable}", f"command={_command()}"]  # fmt: skip
    command += ["--profile", profile] if profile else ["--cores", str(threads)]
    teller.end()  # Snakemake tells of its own progress
    with open(folder / "log", "wb") as log:
        process = subprocess.Popen(command, stdout=log, stderr=log, env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1"})
        try:
            status = process.wait()
        except KeyboardInterrupt:
            process.send_signal(signal.SIGTERM)
            process.wait()
            _collect(task, folder, batches, store, teller, complete=False)
            raise
    missing = _collect(task, folder, batches, store, teller, complete=True)
    if status != 0 and missing:
        text = (folder / "log").read_text(encoding="utf-8", errors="replace").strip().splitlines()
        teller.warn(f"Snakemake ended with status {status}: " + " ".join(text[-3:])[-500:])


def _command():
    return os.path.abspath(sys.argv[0])


def _items(task, subject):
    """The parts of a query's work that are done one after the other, in one job."""
    several = len(task.plans[subject.query.kind].volumes) > 1
    return [Run(subject, number) for number in range(len(subject.runs))] if several else [subject]


def _collect(task, folder, batches, store, teller, complete):
    """Takes what the jobs have left into the store; returns how many have left nothing."""
    missing, answers = 0, []  # of the runs of a query
    for number in range(batches):
        with open(folder / f"{number}.queries", "rb") as file:
            items = pickle.load(file)
        try:
            with open(folder / f"{number}.done", "rb") as file:
                done = pickle.load(file)
        except OSError:
            missing += 1
            done = [_LOST] * len(items)
        for item, answer in zip(items, done):
            subject = item
            if isinstance(item, Run):
                subject, answers = item.subject, [*(answers if item.number else []), answer]
                if len(answers) < len(subject.runs):
                    continue
                answer = next(filter(None, answers), None)
                answer = do(task, Finish(subject)) if answer is None else answer
            if answer == _LOST and not complete:
                continue
            result, rows = failed(subject, answer) if isinstance(answer, str) else answer
            store.add(result, digest(subject.query), rows)
            if result.status == "failed":
                teller.warn(f"{result.name}: {result.note}")
            teller.advance(len(subject.query.residues) + 1)
    return missing


def work(batch, done):
    """What a job does."""
    try:
        with open(Path(batch).with_name("task"), "rb") as file:
            task = pickle.load(file)
        with open(batch, "rb") as file:
            items = pickle.load(file)
        answers = [_answer(task, item) for item in items]
        with open(done + ".part", "wb") as file:
            pickle.dump(answers, file)
        os.replace(done + ".part", done)
    except OSError as problem:
        raise Failure(cause(problem)) from problem


def _answer(task, item):
    """Of a query, its result; of a run, nothing or the sentence of its failure."""
    if isinstance(item, Run):
        return do(task, item)
    answer = None
    for number in range(len(item.runs)):
        answer = do(task, Run(item, number))
        if answer is not None:
            return failed(item, answer) if isinstance(answer, str) else answer
    return do(task, Finish(item))
