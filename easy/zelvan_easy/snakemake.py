"""Hands the jobs of a search to Snakemake, which runs them on this machine or on a cluster.

Queries go into files, so many together, and each file is a job: "zelvan-easy work FILE DONE" searches with its queries
one after the other. What the jobs leave is collected when Snakemake has ended.
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

_TOGETHER = 100  # queries of a job, at most
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
    batches, subjects = [], []
    while not source.finished:
        subjects += source.next_subjects()
        source.advance(teller)
        while len(subjects) >= _TOGETHER:
            batches.append(_write_batch(folder, len(batches), subjects[:_TOGETHER]))
            subjects = subjects[_TOGETHER:]
    # the rest in batches small enough that all processors have work
    size = max(1, len(subjects) // (4 * threads))
    for at in range(0, len(subjects), size):
        batches.append(_write_batch(folder, len(batches), subjects[at : at + size]))
    if not batches:
        return
    command = ["snakemake", "--snakefile", str(_SNAKEFILE), "--directory", str(folder), "--keep-going", "--nolock",
               "--config", f"batches={len(batches)}", f"python={sys.executable}", f"command={_command()}"]  # fmt: skip
    command += ["--profile", profile] if profile else ["--cores", str(threads)]
    teller.end()  # Snakemake tells of its own progress
    with open(folder / "log", "wb") as log:
        process = subprocess.Popen(command, stdout=log, stderr=log, env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1"})
        try:
            status = process.wait()
        except KeyboardInterrupt:
            process.send_signal(signal.SIGTERM)
            process.wait()
            _collect(folder, batches, store, teller, complete=False)
            raise
    missing = _collect(folder, batches, store, teller, complete=True)
    if status != 0 and missing:
        text = (folder / "log").read_text(encoding="utf-8", errors="replace").strip().splitlines()
        teller.warn(f"Snakemake ended with status {status}: " + " ".join(text[-3:])[-500:])


def _command():
    return os.path.abspath(sys.argv[0])


def _write_batch(folder, number, subjects):
    with open(folder / f"{number}.queries", "wb") as file:
        pickle.dump(subjects, file)
    return [subject.query.number for subject in subjects]


def _collect(folder, batches, store, teller, complete):
    """Takes what the jobs have left into the store; returns how many have left nothing."""
    missing = 0
    for number in range(len(batches)):
        with open(folder / f"{number}.queries", "rb") as file:
            subjects = pickle.load(file)
        try:
            with open(folder / f"{number}.done", "rb") as file:
                answers = pickle.load(file)
        except OSError:
            missing += 1
            note = "its job on Snakemake did not end"
            answers = [failed(subject, note) for subject in subjects] if complete else []
        for subject, (result, rows) in zip(subjects, answers):
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
            subjects = pickle.load(file)
        answers = [_search(task, subject) for subject in subjects]
        with open(done + ".part", "wb") as file:
            pickle.dump(answers, file)
        os.replace(done + ".part", done)
    except OSError as problem:
        raise Failure(cause(problem)) from problem


def _search(task, subject):
    answer = None
    for number in range(len(subject.runs)):
        answer = do(task, Run(subject, number))
        if answer is not None:
            return failed(subject, answer) if isinstance(answer, str) else answer
    return do(task, Finish(subject))
