"""What is done for one query: runs of zelvan, one for each strand, stretch and volume, and their results put together.

A job is one run, or the end of a query whose runs are done; a query of a single run is one job. Jobs run in processes
of their own (see pool.py), or on other machines, and share nothing but the Task, which is fixed for the whole search.
"""

from __future__ import annotations

import contextlib
import hashlib
import io
import os
from dataclasses import dataclass
from typing import NamedTuple, Optional

from zelvan_easy import child, inputs
from zelvan_easy.database import Database
from zelvan_easy.engine import ENDED, Engine, reason
from zelvan_easy.failure import Failure, cause
from zelvan_easy.forms import FORMS
from zelvan_easy.formats.table import write_table
from zelvan_easy.inputs import Query
from zelvan_easy.masking import masked
from zelvan_easy.merge import Part, merged_report
from zelvan_easy.plan import stretches
from zelvan_easy.report import ReportError, open_report

_NO_FIT = b"Failure in fitting routines"
_COARSE = ".coarse"  # ending of an empty file beside the report of a run that took a coarser fit


@dataclass
class Task:
    """What holds for all jobs of a search."""

    engine: Engine
    database: Database
    plans: dict  # by kind of query: a Plan, or the sentence that says why there is none
    reports: str  # folder of what is left for each query
    work: str  # folder for what is not finished
    query_file: str  # its name; in the work folder, it leads to the standard input
    columns: Optional[list]  # of the table
    header: bool  # comments before the table of each query
    forms: list  # names of further forms of the results
    keep: bool  # the reports themselves


class Subject(NamedTuple):
    """A query, ready to be searched with."""

    query: Query
    ranges: list  # what is masked
    masked: str  # its residues, masked
    runs: list  # a Span for each run


class Span(NamedTuple):
    """What a run compares: the masked residues from start up to, but excluding, end with a volume."""

    start: int
    end: int
    complement: int
    volume: int  # of the plan's
    factor: float  # that its E-values are multiplied with: what chance brings in all runs is so many times as much


class Run(NamedTuple):
    subject: Subject
    number: int


class Finish(NamedTuple):
    subject: Subject


class Result(NamedTuple):
    """What is told of a query."""

    number: int
    name: str
    kind: str
    length: int
    masked: str  # ranges of residues
    status: str  # "ok" or "failed"
    hits: int = 0
    best: str = ""
    evalue: str = ""
    rounds: int = 0
    converged: str = ""  # "yes", "no"; "" where there is nothing to converge
    note: str = ""
    page: list = []  # with --html: what the index tells of the query


def make_subject(query, ranges, plan):
    if isinstance(plan, str):
        return Subject(query, [], query.residues, [])
    text = masked(query.residues, ranges, plan.filling) if ranges else query.residues
    spans = [(start, end, flag) for flag in plan.complements for start, end in stretches(len(text))]
    runs = [Span(*span, number, len(spans) * volume.parts) for number, volume in enumerate(plan.volumes) for span in spans]
    return Subject(query, ranges, text, runs)


def digest(query):
    return hashlib.sha256(f"{query.name}\n{query.title}\n{query.kind}\n{query.residues}".encode()).hexdigest()[:16]


def _result(subject, status, **more):
    query = subject.query
    ranges = ",".join(f"{first}-{last}" for first, last in subject.ranges)
    return Result(query.number, query.name, query.kind, len(query.residues), ranges, status, **more)


def failed(subject, note):
    return _result(subject, "failed", note=" ".join(note.split())), ""


def do(task, job):
    """Does a job. A Run that is not the query's only one returns nothing, or the sentence of its failure; other jobs
    return (Result, lines of the table)."""
    try:
        if isinstance(job, Run):
            _search(task, job)
            if len(job.subject.runs) > 1:
                return None
        return _finish(task, job.subject)
    except Failure as problem:
        return failed(job.subject, str(problem)) if _ends(job) else str(problem)
    except ReportError as problem:
        return failed(job.subject, f"the report cannot be read: {problem}")
    except OSError as problem:
        return failed(job.subject, cause(problem)) if _ends(job) else cause(problem)


def _ends(job):
    return isinstance(job, Finish) or len(job.subject.runs) == 1


# ---- Running zelvan


def _unfinished(task, subject, number):
    """Where the report of a run waits for the others."""
    return os.path.join(task.work, f"{subject.query.number}-{digest(subject.query)}-{number}.report")


def _search(task, job):
    """Runs zelvan. What an interrupted search has left is taken as it is."""
    subject, query = job.subject, job.subject.query
    target = _unfinished(task, subject, job.number)
    if os.path.exists(target):
        return
    plan = task.plans[query.kind]
    span = subject.runs[job.number]
    arguments = ["-bdb", plan.volumes[span.volume].root, *plan.arguments, *plan.values(span.factor), *_side_files(task, job)]
    if plan.mode < 200:
        arguments += ["-comp", str(span.complement)]
    text = f">{query.name} {query.title}".rstrip() + "\n" + subject.masked[span.start : span.end] + "\n"
    for fit in plan.fits:
        errors, status = _run_zelvan(task, [*arguments, *fit], text, target + ".part")
        if status == 0 or _NO_FIT not in errors:
            break
    if status == 0 and _is_whole(target + ".part"):
        if fit:
            with open(target + _COARSE, "wb"):
                pass
        os.replace(target + ".part", target)
        return
    with contextlib.suppress(OSError):
        os.unlink(target + ".part")
    raise Failure(reason(errors, status))


def _run_zelvan(task, arguments, text, report):
    command = [task.engine.program, "-s", task.query_file, "-qf", "1", "-dd", task.database.folder, "-ai",
               int(task.database.indexed), *arguments]  # fmt: skip
    with open(report, "wb") as out:
        return child.run(command, text.encode("ascii", "replace"), cwd=task.work, env=task.engine.environment, stdout=out)


def _tail(path):
    with open(path, "rb") as file:
        file.seek(max(0, file.seek(0, 2) - 4096))
        return file.read()


def _is_whole(path):
    """Whether the report has its last line: a search that runs out of memory ends with status 0."""
    return _tail(path).rstrip(b"\n").rpartition(b"\n")[2].startswith(ENDED)


def _side_files(task, job):
    """Names for the files that some keys ask for."""
    stem = stem_of(task, job.subject) + _suffix(task, job.subject, job.number)
    os.makedirs(os.path.dirname(stem), exist_ok=True)
    return ["-block", stem + ".blc", "-frag", stem + ".frag", "-exto", stem + ".extract"]


# ---- Results


def stem_of(task, subject):
    """Path of the files of a query, without their endings."""
    number = subject.query.number
    return os.path.join(task.reports, inputs.folder_name(number), inputs.file_name(subject.query))


def _suffix(task, subject, number):
    """What tells the runs of a query apart."""
    if len(subject.runs) == 1:
        return ""
    span, plan = subject.runs[number], task.plans[subject.query.kind]
    parts = [] if len(plan.complements) == 1 else [("plus", "minus")[span.complement]]
    parts += [] if span.end - span.start == len(subject.masked) else [f"{span.start + 1}-{span.end}"]
    parts += [] if len(plan.volumes) == 1 else [f"{span.volume:02}"]
    return "." + ".".join(parts)


def _finish(task, subject):
    stem = stem_of(task, subject)
    os.makedirs(os.path.dirname(stem), exist_ok=True)
    plan = task.plans[subject.query.kind]
    paths = [_unfinished(task, subject, number) for number in range(len(subject.runs))]
    notes = ["few sequences: E-values are coarse"] if any(os.path.exists(path + _COARSE) for path in paths) else []
    with contextlib.ExitStack() as stack:
        reports = [stack.enter_context(open_report(path)) for path in paths]
        report = reports[0]
        if len(reports) > 1:
            parts = [Part(one, span.start, span.factor, span.volume) for one, span in zip(reports, subject.runs)]
            report = merged_report(parts, len(subject.masked), task.database, plan)
        report.entitle(subject.query.title)
        lines = io.StringIO()
        write_table(report, lines, task.columns, task.header, unaligned=True)
        page = []
        for name in task.forms:
            if plan.mode >= 200 or FORMS[name].translated:
                told = _write_form(report, subject, stem, FORMS[name])
                page = list(told) if name == "html" else page
            else:
                notes.append(f"no {name} of a translated search")
        hits = report.iteration().hits
        best = hits[0] if hits else None
        result = _result(
            subject, "ok", hits=len(hits), best=best.target if best else "",
            evalue="" if best is None or best.significance is None else f"{best.significance:.3g}",
            rounds=max(len(one.iterations) for one in reports), note="; ".join(notes),
            converged=_converged(paths) if plan.mode >= 200 else "", page=page,
        )  # fmt: skip
    for number, path in enumerate(paths):
        if task.keep:
            os.replace(path, stem + _suffix(task, subject, number) + ".report")
        else:
            os.unlink(path)
        with contextlib.suppress(FileNotFoundError):
            os.unlink(path + _COARSE)
    return result, lines.getvalue()


def _converged(paths):
    return "yes" if all(b"\n# Have converged" in _tail(path) for path in paths) else "no"


def _write_form(report, subject, stem, form):
    part = f"{stem}.{form.ending}.part"
    with open(part, "w", encoding="utf-8", errors="surrogateescape", newline="\n") as out:
        told = form.write(report, out, subject.query.residues)
    os.replace(part, part[: -len(".part")])
    return told
