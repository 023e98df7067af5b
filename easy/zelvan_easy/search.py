"""The command "search": many queries against a database, by processes of zelvan side by side.

Queries are read as they are needed, so that any number may come; of those waiting the longest goes first. What is done
is kept in a store (store.py), from which an interrupted search goes on, and the results are written at the end.
"""

from __future__ import annotations

import contextlib
import hashlib
import heapq
import importlib.util
import itertools
import os
import shutil
from dataclasses import asdict, dataclass, field
from functools import partial
from typing import Optional

from zelvan_easy import inputs, snakemake
from zelvan_easy.cache import open_database
from zelvan_easy.database import refuse_small
from zelvan_easy.engine import find_engine
from zelvan_easy.failure import FAILED, INTERRUPTED, Failure, cause, refused, take_signals
from zelvan_easy.forms import FORMS
from zelvan_easy.formats.table import parse_columns
from zelvan_easy.inputs import DNA, PROTEIN, default_output, read_queries
from zelvan_easy.masking import PROGRAMS, find_masker, masked_ranges
from zelvan_easy.plan import Options, make_plan, parse_sets, with_sets
from zelvan_easy.pool import Pool, ProcessLost
from zelvan_easy.progress import Teller, print_table
from zelvan_easy.report import ReportError
from zelvan_easy.store import NAME as STORE_NAME
from zelvan_easy.store import Store
from zelvan_easy.worker import Finish, Run, Task, digest, do, failed, make_subject

_WAITING = 1000  # jobs, from which the longest is taken
_READ_AT_ONCE = 100  # queries
_REPORTS, _WORK = "reports", ".zelvan-easy.work"


@dataclass
class Request:
    """The command line."""

    queries: str
    database: str
    out: Optional[str] = None
    options: Options = field(default_factory=Options)
    sets: list = field(default_factory=list)
    query_type: Optional[str] = None
    threads: int = 1
    engine: str = "local"
    profile: Optional[str] = None
    cache: Optional[str] = None
    restart: bool = False
    outfmt: str = "6"
    forms: list = field(default_factory=list)
    keep_reports: bool = True
    quiet: bool = False


def parse_outfmt(text):
    """(columns, header) of a description such as "7 std qlen"."""
    number, _, names = text.strip().partition(" ")
    if number not in ("6", "7"):
        raise refused(f'--outfmt is 6 (a table) or 7 (with comments), then names of columns: "6 std qlen", not {text}')
    try:
        return (parse_columns(names) if names.strip() else None), number == "7"
    except ReportError as problem:
        raise refused(f"--outfmt: {problem}") from problem


def search(request):
    """Does what the request asks for; returns the exit status."""
    teller = Teller(request.quiet)
    engine = find_engine()
    options = request.options
    options.sets = parse_sets(request.sets, engine)
    if "pssm" in request.forms:
        options.sets.setdefault("PRINT_PROFILES", "1")
    options = with_sets(options)
    if request.query_type not in (None, PROTEIN, DNA):
        raise refused(f"--query-type is {PROTEIN} or {DNA}, not {request.query_type}")
    if request.engine not in ("local", "snakemake"):
        raise refused(f"--engine is local or snakemake, not {request.engine}")
    if request.engine == "snakemake":
        snakemake.check()
    elif request.profile:
        raise refused("--profile is for --engine snakemake")
    if "html" in request.forms and importlib.util.find_spec("jinja2") is None:
        raise refused("--html needs Jinja2: install the package python3-jinja2")
    columns, header = parse_outfmt(request.outfmt)
    take_signals()

    total, work, queries, first = _look_at(request)
    with contextlib.ExitStack() as stack:
        database = stack.enter_context(open_database(request.database, engine, request.cache, teller.note))
        refuse_small(database)
        plans = {kind: _plan_or_sentence(kind, database, options, engine) for kind in (PROTEIN, DNA)}
        if isinstance(plans[first.kind], str):
            raise refused(plans[first.kind])
        for note in plans[first.kind].notes:
            teller.warn(note)
        if any(not FORMS[name].translated for name in request.forms) and plans[first.kind].mode < 200:
            names = ", ".join(f"--{name}" for name in request.forms if not FORMS[name].translated)
            raise refused(f"{names}: only of searches of proteins against proteins")
        out = request.out or default_output(request.queries)
        maskers = _maskers(options, first.kind, teller)
        settings = _settings(request, database, engine, maskers)
        store, done = _open_output(stack, out, request.restart, settings)
        task = Task(engine, database, plans, os.path.abspath(os.path.join(out, _REPORTS)),
                    os.path.abspath(os.path.join(out, _WORK)), _query_name(request.queries), columns, header,
                    request.forms, request.keep_reports)  # fmt: skip
        _make_work_folder(task)
        teller.note(f"Searching with {'the queries' if total is None else _count(total, 'query', 'queries')} in "
                    f"{database.source}, {database.sequences:,} sequences{_volumes(plans[first.kind])}"
                    + (f"; {done} done before" if done else ""))  # fmt: skip
        source = _Source(queries, maskers, plans, store)
        try:
            run = partial(_run_local, threads=request.threads)
            if request.engine == "snakemake":
                run = partial(snakemake.run, threads=request.threads, profile=request.profile)
            teller.begin(total, work, 0)
            run(task, source, store, teller)
        except KeyboardInterrupt:
            teller.end()
            ready = sum(1 for _ in store.results())
            done = _count(ready, "query is", "queries are")
            teller.warn(f"interrupted; {done} done, and the same command goes on from there")
            return INTERRUPTED
        finally:
            teller.end()
        return _end(request, task, store, source, out, teller)


def _count(number, one, many):
    return f"{number:,} {one if number == 1 else many}"


def _volumes(plan):
    return "" if len(plan.volumes) == 1 else f" in {len(plan.volumes)} volumes, searched one by one"


def _look_at(request):
    """(number of queries, their residues, an iterator of them, the first). A file is read through before anything
    runs, which shows what is wrong with it; a pipe cannot be."""
    kind = request.query_type
    if request.queries == "-" or not os.path.isfile(request.queries):
        queries = read_queries(request.queries, kind)
        first = next(queries)
        return None, None, itertools.chain([first], queries), first
    total = work = 0
    first = None
    try:
        for query in read_queries(request.queries, kind):
            first = first or query
            total += 1
            work += len(query.residues) + 1
    except Failure as problem:
        raise refused(f"{problem}. Nothing was searched") from problem
    return total, work, read_queries(request.queries, kind), first


def _plan_or_sentence(kind, database, options, engine):
    try:
        return make_plan(kind, database, options, engine)
    except Failure as problem:
        return str(problem)


def _maskers(options, kind, teller):
    """Whether to mask, by kind of query; says so where no program for it is there."""
    if not options.mask:
        return {}
    maskers = {kind: os.path.basename(find_masker(kind)) for kind in (PROTEIN, DNA) if find_masker(kind)}
    if kind not in maskers:
        teller.warn(f"low complexity is not masked, because {' or '.join(PROGRAMS[kind])} is not installed (--no-mask "
                    "silences this)")  # fmt: skip
    return maskers


def _settings(request, database, engine, maskers):
    """What results depend on, in the words of the command line."""
    program = hashlib.sha256(engine.program.read_bytes())
    for path in sorted(engine.config.glob("zelvan_*.dat")):
        program.update(path.read_bytes())
    options = {f"--{name.replace('_', '-')}": value for name, value in asdict(request.options).items()}
    options["--set"] = options.pop("--sets")
    return {"the database": database.digest, "zelvan or its configuration": program.hexdigest(), **options,
            "--query-type": request.query_type, "--outfmt": request.outfmt, "the forms of results": sorted(request.forms),
            "the program that masks": maskers, "--keep-reports": request.keep_reports}  # fmt: skip


def _query_name(path):
    return "queries" if path == "-" else os.path.basename(path) or "queries"


def _open_output(stack, out, restart, settings):
    """The store of the folder, and how many queries it has."""
    try:
        if restart and os.path.exists(os.path.join(out, STORE_NAME)):
            for folder in (_REPORTS, _WORK):
                shutil.rmtree(os.path.join(out, folder), ignore_errors=True)
            for name in (STORE_NAME, "hits.tsv", "summary.tsv", "index.html"):
                with contextlib.suppress(FileNotFoundError):
                    os.unlink(os.path.join(out, name))
        os.makedirs(os.path.join(out, _WORK), exist_ok=True)
    except OSError as problem:
        raise refused(f"the results cannot be written: {cause(problem)}") from problem
    store = stack.enter_context(Store(out, settings))
    return store, sum(1 for result in store.results() if result.status == "ok")


def _make_work_folder(task):
    """zelvan reads queries from a pipe, under the name that reports are to show."""
    link = os.path.join(task.work, task.query_file)
    with contextlib.suppress(FileExistsError):
        os.symlink("/dev/stdin", link)


# ---- Queries that wait


class _Source:
    """Queries that are still to be searched, masked, as subjects; what cannot be searched goes to the store."""

    def __init__(self, queries, maskers, plans, store):
        self._queries, self._maskers, self._plans, self._store = iter(queries), maskers, plans, store
        self.last = 0  # number of the last query read
        self.skipped = []  # queries done before, to be told of
        self.refused = []  # results of those that cannot be searched, to be told of
        self.failure = None  # why reading ended early
        self.finished = False

    def next_subjects(self):
        """The next of them, fewer or none where they are done already; `finished` says that there are no more."""
        fresh, read = [], 0
        try:
            for query in itertools.islice(self._queries, _READ_AT_ONCE):
                read, self.last = read + 1, query.number
                if self._store.has(query.number, digest(query)):
                    self.skipped.append(query)
                else:
                    fresh.append(query)
        except Failure as problem:
            self.failure = str(problem)
        self.finished = read < _READ_AT_ONCE
        return self._subjects(fresh)

    def _subjects(self, queries):
        ranges = {}
        for kind in self._maskers:
            if not isinstance(self._plans[kind], str):
                ranges.update(masked_ranges([q for q in queries if q.kind == kind and not q.problem], kind))
        subjects = []
        for query in queries:
            plan = self._plans[query.kind]
            subject = make_subject(query, ranges.get(query.number, []), plan)
            problem = query.problem or (plan if isinstance(plan, str) else "")
            if problem:
                self.refused.append(failed(subject, problem))
                self._store.add(self.refused[-1][0], digest(query), "")
            else:
                subjects.append(subject)
        return subjects

    def advance(self, teller):
        """Tells of the queries that need no search."""
        for query in self.skipped:
            teller.advance(query_work(query))
        for result, _ in self.refused:
            teller.warn(f"{result.name}: {result.note}")
            teller.advance(result.length + 1)
        self.skipped, self.refused = [], []


def query_work(query):
    return len(query.residues) + 1


def finished(subject, answer, store, teller):
    """Keeps what came out for a query: the answer of its last job, or the exception that it ended with."""
    if isinstance(answer, Exception):
        answer = failed(subject, f"an error in zelvan-easy itself, please report it: {answer!r}"
                        if not isinstance(answer, ProcessLost) else str(answer))  # fmt: skip
    result, rows = answer
    store.add(result, digest(subject.query), rows)
    if result.status == "failed":
        teller.warn(f"{result.name}: {result.note}")


# ---- Processes of this machine


def _run_local(task, source, store, teller, threads):
    waiting, order = [], itertools.count()  # a heap: the job with the most work first
    runs_left, given_up = {}, set()

    def put(job, work):
        heapq.heappush(waiting, (-work, next(order), job))

    def refill():
        for subject in source.next_subjects():
            runs_left[subject.query.number] = len(subject.runs)
            for number, span in enumerate(subject.runs):
                put(Run(subject, number), span.end - span.start)
        source.advance(teller)

    def handle(job, answer):
        subject, number = job.subject, job.subject.query.number
        share = query_work(subject.query) / len(subject.runs)
        if isinstance(job, Run) and len(subject.runs) > 1:
            runs_left[number] -= 1
            if answer is not None and number not in given_up:
                given_up.add(number)
                answer = answer if isinstance(answer, Exception) else failed(subject, answer)
                finished(subject, answer, store, teller)
            elif runs_left[number] == 0 and number not in given_up:
                put(Finish(subject), float("inf"))
            teller.advance(share, runs_left[number] == 0 and number in given_up)
        else:
            finished(subject, answer, store, teller)
            teller.advance(share if isinstance(job, Run) else 0)

    with Pool(threads, partial(do, task)) as pool:
        while len(waiting) < _WAITING and not source.finished:
            refill()
        while waiting or pool.busy or not source.finished:
            while pool.idle and waiting:
                pool.give(heapq.heappop(waiting)[2])
            short = len(waiting) < _WAITING and not source.finished
            if pool.busy:
                for job, answer in pool.wait(0 if short else None):
                    handle(job, answer)
            if short:
                refill()


# ---- The end


def _write_index(task, store, path):
    """The page that leads to those of the queries."""
    from zelvan_easy import page

    entries = []
    for result in store.results():
        if result.page:
            link = os.path.join(_REPORTS, inputs.folder_name(result.number), inputs.file_name(result) + ".html")
            entries.append((page.Summary(*result.page), link))
    with open(path + ".part", "w", encoding="utf-8", errors="surrogateescape", newline="\n") as out:
        page.write_index(entries, out, f"Searches in {task.database.source}")
    os.replace(path + ".part", path)


def _end(request, task, store, source, out, teller):
    if source.failure is None:
        store.drop_after(source.last)
    for name, write in (("hits.tsv", store.write_table), ("summary.tsv", store.write_summary)):
        try:
            write(os.path.join(out, name))
        except OSError as problem:
            raise Failure(f"{os.path.join(out, name)} cannot be written: {problem.strerror}") from problem
    if "html" in request.forms:
        _write_index(task, store, os.path.join(out, "index.html"))
    shutil.rmtree(task.work, ignore_errors=True)
    if not request.quiet:
        print_table(store.results(), store.count())
    teller.note(f"hits.tsv, summary.tsv{' and reports' if request.keep_reports or request.forms else ''} are in {out}")
    failures = store.failures()
    if failures:
        teller.warn(f"{_count(failures, 'query', 'queries')} failed; the same command tries them again")
    if source.failure:
        teller.warn(source.failure)
    return FAILED if failures or source.failure else 0
