"""Reads the reports of zelvan: the one place that knows their layout.

    with open_report("engb.report") as report:      # a path, or a binary stream such as sys.stdin.buffer
        iteration = report.iteration()              # the last; report.iterations has all of them
        iteration.header["Query Length"]            # texts by name
        iteration.hits                              # the score list, best first
        for found in iteration.aligned():           # one section per aligned hit, read as they are asked for
            for alignment in found.alignments:
                alignment.query_row, alignment.target_row

A report may be larger than memory: only where its iterations begin is kept, and every list and alignment is read when
it is asked for. What is not read twice is not checked twice: an incomplete report shows when its end is reached.

Rows of alignments are letters with "-" for a gap and "*" for a stop, whatever characters the search was told to
print for them. Positions are 1-based and inclusive; those of a complemented DNA query run downwards.
"""

from __future__ import annotations

import contextlib
import re
import shutil
import tempfile
from dataclasses import dataclass
from functools import cached_property

from zelvan_easy.report.alignments import read_aligned
from zelvan_easy.report.lists import read_changes, read_header, read_hits
from zelvan_easy.report.pieces import CHUNK, find, incomplete, lines_of, numbers, read, whole_number
from zelvan_easy.report.records import GAP, SHIFT, STOP, AlignedHit, Alignment, Hit, Profile, ReportError
from zelvan_easy.report.tables import read_profile, read_query_letters, read_scores

__all__ = [
    "GAP", "SHIFT", "STOP", "AlignedHit", "Alignment", "Hit", "Iteration", "Profile", "Report", "ReportError",
    "open_report",
]  # fmt: skip

_HEADER = b"# ZELVAN Scan:"
_LIST = b"\n# Start_Scores: "
_LIST_END = b"\n# End_Scores: "
_TIMES = b"\n# Scan Completed at:"


@dataclass
class Iteration:
    """One score list and what belongs to it; the translated modes have one."""

    file: object
    number: int
    header: dict  # "Query ID" -> text
    prelude: tuple  # where in the file things stand, in bytes: what was printed before the header,
    list_span: tuple  # the lines of the score list,
    body: tuple  # and everything after it

    @cached_property
    def hits(self):
        return read_hits(lines_of(self.file, *self.list_span))

    @cached_property
    def changes(self):
        """Hits that this iteration no longer, and that it newly, has up to the cut-off for the profile."""
        return read_changes(lines_of(self.file, *self.body))

    @property
    def dropped(self):
        return self.changes[0]

    @property
    def appeared(self):
        return self.changes[1]

    def aligned(self):
        """The hits with their alignments, in report order."""
        return read_aligned(self.file, *self.body)

    @property
    def scores(self):
        """(target length, score) of every sequence searched, if VERBOSE 1000 had them printed."""
        return read_scores(self.file, *self.prelude)

    @property
    def query_letters(self):
        """Residues of the query by position, as far as the report's own multiple alignment shows them."""
        return read_query_letters(self.file, *self.body)

    @property
    def profile(self):
        """The scores that the next iteration would search with (PRINT_PROFILES 1), or None."""
        return read_profile(self.file, b"\n# Lookup table (profile) derived from iteration:", *self.body)

    @property
    def counts(self):
        """How often each residue was aligned to each position (PRINT_FRQ_TABS 1), or None."""
        return read_profile(self.file, b"\n# Frequency table derived from iteration:", *self.body)

    @property
    def query(self):
        return self.header.get("Query ID", "query")

    @property
    def query_length(self):
        return whole_number(self.header.get("Query Length"))

    @property
    def residues(self):
        """Residues (bases) in the database."""
        return whole_number(self.header.get("Number of residues/bases in database"))

    @property
    def mode(self):
        return whole_number(self.header.get("ZELVAN MODE"))

    @property
    def location(self):
        """a1, a2, a3 of the fitted location, or None."""
        return numbers(self.header.get("FIT_A"))

    @property
    def scale(self):
        """b1, b2 of the fitted scale, or None."""
        return numbers(self.header.get("FIT_B"))

    @property
    def cutoff(self):
        """What the list goes up to."""
        for name in ("Eval Cutoff", "Pval Cutoff", "PROBCUT"):
            if name in self.header:
                return float(self.header[name])
        return None

    @property
    def profile_cutoff(self):
        for name in ("Eval Cutoff for profile", "Pval Cutoff for profile"):
            if name in self.header:
                return float(self.header[name])
        return None

    @property
    def significance_name(self):
        return "P-value" if "Pval Cutoff" in self.header else "E-value"


@dataclass
class Report:
    iterations: list
    times: dict  # "Scan Completed at" -> text; empty where the run did not end

    def entitle(self, title):
        """Gives the query its whole title, which reports cut to 61 characters."""
        for iteration in self.iterations:
            if "Query Title" in iteration.header:
                iteration.header["Query Title"] = title

    def iteration(self, number=None):
        """The iteration of that number, by default the last."""
        if number is None:
            return self.iterations[-1]
        for iteration in self.iterations:
            if iteration.number == number:
                return iteration
        have = ", ".join(str(i.number) for i in self.iterations)
        raise ReportError(f"the report has no iteration {number}: it has {have}")


@contextlib.contextmanager
def open_report(source):
    """The report in a file, given by its path or as a binary stream. A stream that cannot be read twice is copied
    to a temporary file."""
    with contextlib.ExitStack() as stack:
        if hasattr(source, "read"):
            file = source if source.seekable() else stack.enter_context(tempfile.TemporaryFile())
            if file is not source:
                shutil.copyfileobj(source, file, CHUNK)
        else:
            try:
                file = stack.enter_context(open(source, "rb"))
            except OSError as problem:
                raise ReportError(f"cannot read the report {source}: {problem.strerror}") from problem
        if b"\r\n" in read(file, 0, CHUNK):
            file = stack.enter_context(_with_plain_line_ends(file))
        yield _read_report(file)


def _with_plain_line_ends(file):
    copy = tempfile.TemporaryFile()
    file.seek(0)
    for line in file:
        copy.write(line.replace(b"\r\n", b"\n"))
    return copy


def _read_report(file):
    size = file.seek(0, 2)
    starts = [0] if read(file, 0, len(_HEADER)) == _HEADER else []
    at = find(file, b"\n" + _HEADER, 0, size)
    while at is not None:
        starts.append(at + 1)
        at = find(file, b"\n" + _HEADER, at + 1, size)
    iterations, before = [], 0
    for start, end in zip(starts, [*starts[1:], size]):
        iterations.append(_read_iteration(file, before, start, end))
        before = iterations[-1].body[0]
    if len({(i.header.get("Query ID"), i.header.get("ZELVAN MODE")) for i in iterations}) > 1:
        raise ReportError("the input holds the reports of several searches: give them one at a time")
    if not iterations:
        iterations = [_headless_list(file, size)]
    body = iterations[-1].body
    at = find(file, _TIMES, max(body[0], body[1] - 4096), body[1])
    times = read_header(lines_of(file, at, size)) if at is not None else {}
    return Report(iterations, times)


def _read_iteration(file, before, start, end):
    listed = find(file, _LIST, start, end)
    if listed is None:
        raise incomplete(_LIST)
    header = read_header(lines_of(file, start, listed))
    listed = find(file, b"\n", listed + 1, end)
    ended = None if listed is None else find(file, _LIST_END, listed, end)
    if ended is None:
        raise incomplete(_LIST_END)
    after = find(file, b"\n", ended + 1, end)
    span = (listed + 1, max(ended, listed + 1))
    body = (end if after is None else after, end)
    return Iteration(file, int(header.get("Iteration", 0)), header, (before, start), span, body)


def _headless_list(file, size):
    """Mode 10 writes a score and an identifier for every sequence, and nothing else."""
    lines = list(lines_of(file, 0, min(size, 1 << 16)))[: 100 if size > 1 << 16 else None]
    if not size:
        raise ReportError("the input is empty: the search wrote no report; what was wrong is on its error stream")
    if not lines or not all(re.fullmatch(rb"-?\d+ \S*", line) for line in lines):
        raise ReportError("no score list in the input: give it a report of a search made with SHOW_BLURB 1")
    return Iteration(file, 0, {"ZELVAN MODE": "10"}, (0, 0), (0, size), (size, size))
