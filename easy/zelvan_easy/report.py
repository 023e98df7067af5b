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
from typing import NamedTuple

GAP = "-"
STOP = "*"
SHIFT = "^"

_CHUNK = 1 << 20
_MARGIN = 8  # position and blank before the letters of an alignment line, and blank and position after them
_LONGEST = 9_999_999  # the largest position that fits its seven columns


class ReportError(Exception):
    """The input is not what it should be; the text says what to do."""


class Hit(NamedTuple):
    """One line of a score list."""

    rank: int
    score: int  # matrix units
    standardised: float | None  # x of the fit, or z-score; None without statistics
    significance: float | None  # E- or P-value
    target: str  # cut to SHOW_IDENT_WIDTH
    title: str  # cut to SHOW_TITLES_WIDTH
    length: int | None = None  # only with SHOW_LEN


class Alignment(NamedTuple):
    number: int  # 1 is the target's best
    score: int
    significance: float | None
    query_start: int
    query_end: int
    target_start: int
    target_end: int
    query_row: str
    target_row: str
    markers: str  # "*" identical, "." positive score, "^" frame shift
    frame_shifts: int = 0
    codons: tuple = ("", "", "")  # translated: the three bases of each column


class AlignedHit(NamedTuple):
    """A hit with its alignments."""

    rank: int
    query: str
    target: str
    title: str  # cut to SHOW_TITLES_WIDTH
    query_length: int | None  # None without alignments
    target_length: int | None
    translated: bool  # query positions are nucleotides
    alignments: list


class Profile(NamedTuple):
    alphabet: str
    rows: list  # of scores in the order of the alphabet, one row for each residue of the query


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
        return _read_hits(_lines(self.file, *self.list_span))

    @cached_property
    def changes(self):
        """Hits that this iteration no longer, and that it newly, has up to the cut-off for the profile."""
        return _read_changes(_lines(self.file, *self.body))

    @property
    def dropped(self):
        return self.changes[0]

    @property
    def appeared(self):
        return self.changes[1]

    def aligned(self):
        """The hits with their alignments, in report order."""
        return _read_aligned(self.file, *self.body)

    @property
    def scores(self):
        """(target length, score) of every sequence searched, if VERBOSE 1000 had them printed."""
        return _read_scores(self.file, *self.prelude)

    @property
    def query_letters(self):
        """Residues of the query by position, as far as the report's own multiple alignment shows them."""
        return _read_query_letters(self.file, *self.body)

    @property
    def profile(self):
        """The scores that the next iteration would search with (PRINT_PROFILES 1), or None."""
        return _read_profile(self.file, b"\n# Lookup table (profile) derived from iteration:", *self.body)

    @property
    def counts(self):
        """How often each residue was aligned to each position (PRINT_FRQ_TABS 1), or None."""
        return _read_profile(self.file, b"\n# Frequency table derived from iteration:", *self.body)

    @property
    def query(self):
        return self.header.get("Query ID", "query")

    @property
    def query_length(self):
        return _whole(self.header.get("Query Length"))

    @property
    def residues(self):
        """Residues (bases) in the database."""
        return _whole(self.header.get("Number of residues/bases in database"))

    @property
    def mode(self):
        return _whole(self.header.get("ZELVAN MODE"))

    @property
    def location(self):
        """a1, a2, a3 of the fitted location, or None."""
        return _numbers(self.header.get("FIT_A"))

    @property
    def scale(self):
        """b1, b2 of the fitted scale, or None."""
        return _numbers(self.header.get("FIT_B"))

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
                shutil.copyfileobj(source, file, _CHUNK)
        else:
            try:
                file = stack.enter_context(open(source, "rb"))
            except OSError as problem:
                raise ReportError(f"cannot read the report {source}: {problem.strerror}") from problem
        if b"\r\n" in _read(file, 0, _CHUNK):
            file = stack.enter_context(_with_plain_line_ends(file))
        yield _read_report(file)


# ---- The file


def _with_plain_line_ends(file):
    copy = tempfile.TemporaryFile()
    file.seek(0)
    for line in file:
        copy.write(line.replace(b"\r\n", b"\n"))
    return copy


def _read(file, start, length):
    file.seek(start)
    return file.read(max(0, length))


def _find(file, mark, start, end):
    """Where the mark stands between start and end, or None."""
    while start < end:
        text = _read(file, start, min(_CHUNK + len(mark), end - start))
        at = text.find(mark)
        if at >= 0:
            return start + at
        start += _CHUNK
    return None


def _lines(file, start, end):
    """The lines between two places, without their ends. Other parts of the file may be read between them."""
    rest = b""
    while start < end:
        text = rest + _read(file, start, min(_CHUNK, end - start))
        start += _CHUNK
        *whole, rest = text.split(b"\n")
        yield from whole
    if rest:
        yield rest


def _text(bytes_):
    return bytes_.decode("utf-8", "surrogateescape")  # titles may hold any bytes


def _whole(text):
    return int(text) if text and re.fullmatch(r"-?\d+", text) else None


def _numbers(text):
    return [float(word) for word in text.split()] if text else None


# ---- The whole report

_HEADER = b"# ZELVAN Scan:"
_LIST = b"\n# Start_Scores: "
_LIST_END = b"\n# End_Scores: "
_TIMES = b"\n# Scan Completed at:"


def _incomplete(mark):
    return ReportError(f'the report is incomplete: a line "{_text(mark).strip()} ..." is missing')


def _read_report(file):
    size = file.seek(0, 2)
    starts = [0] if _read(file, 0, len(_HEADER)) == _HEADER else []
    at = _find(file, b"\n" + _HEADER, 0, size)
    while at is not None:
        starts.append(at + 1)
        at = _find(file, b"\n" + _HEADER, at + 1, size)
    iterations, before = [], 0
    for start, end in zip(starts, [*starts[1:], size]):
        iterations.append(_read_iteration(file, before, start, end))
        before = iterations[-1].body[0]
    if len({(i.header.get("Query ID"), i.header.get("ZELVAN MODE")) for i in iterations}) > 1:
        raise ReportError("the input holds the reports of several searches: give them one at a time")
    if not iterations:
        iterations = [_headless_list(file, size)]
    body = iterations[-1].body
    at = _find(file, _TIMES, max(body[0], body[1] - 4096), body[1])
    times = _read_header(_lines(file, at, size)) if at is not None else {}
    return Report(iterations, times)


def _read_iteration(file, before, start, end):
    listed = _find(file, _LIST, start, end)
    if listed is None:
        raise _incomplete(_LIST)
    header = _read_header(_lines(file, start, listed))
    listed = _find(file, b"\n", listed + 1, end)
    ended = None if listed is None else _find(file, _LIST_END, listed, end)
    if ended is None:
        raise _incomplete(_LIST_END)
    after = _find(file, b"\n", ended + 1, end)
    span = (listed + 1, max(ended, listed + 1))
    body = (end if after is None else after, end)
    return Iteration(file, int(header.get("Iteration", 0)), header, (before, start), span, body)


def _headless_list(file, size):
    """Mode 10 writes a score and an identifier for every sequence, and nothing else."""
    lines = list(_lines(file, 0, min(size, 1 << 16)))[: 100 if size > 1 << 16 else None]
    if not size:
        raise ReportError("the input is empty: the search wrote no report; what was wrong is on its error stream")
    if not lines or not all(re.fullmatch(rb"-?\d+ \S*", line) for line in lines):
        raise ReportError("no score list in the input: give it a report of a search made with SHOW_BLURB 1")
    return Iteration(file, 0, {"ZELVAN MODE": "10"}, (0, 0), (0, size), (size, size))


def _read_header(lines):
    header = {}
    for line in lines:
        if line.startswith(b"# ") and b":" in line:
            name, _, value = _text(line[2:]).partition(":")
            header[name.strip()] = value.strip()
    return header


# ---- Score lists

_WITH_X = re.compile(rb"(?: *(\d+) )? *(-?\d+) +(-?\d+\.\d+|-?inf|-?nan) +(\S+)")
_WITH_RANK = re.compile(rb" *(\d+) (-?\d+) ")
_PLAIN = re.compile(rb"(-?\d+) ")
_LENGTH = re.compile(rb"^(.*?)  (\d+)$")
_VALUE_WIDTH = 8


def _read_hits(lines):
    lines = list(lines)
    if not lines:
        return []
    if _WITH_X.match(lines[0]):
        return [_hit_with_statistics(line, rank) for rank, line in enumerate(lines, 1)]
    matches = [_WITH_RANK.match(line) for line in lines]
    if not all(match and int(match[1]) == rank for rank, match in enumerate(matches, 1)):
        matches = [_PLAIN.match(line) for line in lines]
    rests = [line[match.end() :] if match else _unreadable(line) for line, match in zip(lines, matches)]
    lengths = [None] * len(lines)
    # SHOW_LEN puts the length behind the padded names, so that it begins in the same column on every line.
    split = [_LENGTH.fullmatch(rest) for rest in rests]
    if all(split) and len({len(part[1]) for part in split}) == 1:
        rests, lengths = [part[1] for part in split], [int(part[2]) for part in split]
    return [
        Hit(rank, int(match[match.lastindex]), None, None, *_names(rest), length)
        for rank, (match, rest, length) in enumerate(zip(matches, rests, lengths), 1)
    ]


def _unreadable(line):
    raise ReportError(f"cannot read this line of the score list: {_text(line)}")


def _hit_with_statistics(line, rank):
    match = _WITH_X.match(line) or _unreadable(line)
    try:
        value = float(match[4])
    except ValueError:
        _unreadable(line)
    names = line[match.start(4) + max(_VALUE_WIDTH, len(match[4])) + 1 :]
    return Hit(rank, int(match[2]), float(match[3]), value, *_names(names))


def _names(text):
    """Identifier (which has no blanks, but may be empty) and title."""
    target, _, title = _text(text).partition(" ")
    return target, title.strip()


_CHANGES = (b"# Reported in iteration ", b"# Reported in this iteration ")


def _read_changes(lines):
    lists, taken = ([], []), None
    for line in lines:
        if line.startswith(_CHANGES):
            taken = lists[line.startswith(_CHANGES[1])]
        elif line.startswith(b"# Start_Alignments_Rank: ") or taken is None and line not in (b"", b"#"):
            break
        elif taken is not None and line and not line.startswith(b"#"):
            match = _WITH_X.match(line)
            taken.append(_hit_with_statistics(line, int(match[1]) if match and match[1] else len(taken) + 1))
    return lists


# ---- Alignments

_SECTION = b"\n# Start_Alignments_Rank: "
_SECTION_END = b"\n# End_Alignments_Rank: "
_HEADING = re.compile(
    rb"(\d+)\n# Query: (\S*) Target: (\S*) Number_of_Alignments: (\d+)\n# Target_Title: ?([^\n]*)(?=\n|\Z)"
)
_FIGURES = re.compile(
    rb"(\d+) Raw_Score: (-?\d+) Query_Length: (\d+) Target_Length: (\d+) (?:[EP]value: (\S+)|ln\(\)_Score: \S+)?([^\n]*)\n"
)
_FRAMES = re.compile(rb"# Residues: (\d+)-(\d+) Nucleotides: (\d+)-(\d+) Identical: \d+ Frame_Shifts: (\d+)\n")
_PLAIN_ROW = bytes(
    c if chr(c).isalpha() and c < 128 else ord(STOP) if c == ord("!") else ord(GAP) for c in range(256)
)


def _read_aligned(file, start, end):
    text, at = b"", 0
    while True:
        begin = text.find(_SECTION, at)
        close = text.find(_SECTION_END, begin) if begin >= 0 else -1
        if close >= 0:
            yield _aligned_hit(text[begin + len(_SECTION) : close])
            at = close
            continue
        text = text[begin if begin >= 0 else max(at, len(text) - len(_SECTION)) :]
        at = 0
        if start >= end:
            break
        text += _read(file, start, min(max(_CHUNK, len(text)), end - start))
        start = min(file.tell(), end)
    if begin >= 0:
        raise _incomplete(_SECTION_END)


def _aligned_hit(text):
    heading, *parts = text.split(b"\n# N: ")
    match = _HEADING.match(heading)
    if not match:
        raise ReportError(f"cannot read the heading of the alignments of rank {_text(heading.partition(_NEWLINE)[0])}")
    rank, query, target, _, title = match.groups()
    alignments, query_length, target_length, translated = [], None, None, False
    for part in parts:
        figures = _FIGURES.match(part)
        close = part.rfind(b"# End_N: ")
        if not figures or close < 0:
            raise _incomplete(b"# End_N:") if figures else _odd_alignment(part)
        if query_length is None:
            query_length, target_length = int(figures[3]), int(figures[4])
        body = part[figures.end() : close]
        if not figures[5] and figures[6]:
            body = figures[6] + b"\n" + body  # without statistics the first markers stand on this line
        translated = body.startswith(b"# Residues: ")
        read = _translated_alignment if translated else _alignment
        alignments.append(read(figures, body, max(query_length, target_length)))
    return AlignedHit(int(rank), _text(query), _text(target), _text(title).strip(), query_length, target_length,
                      translated, alignments)  # fmt: skip


_NEWLINE = b"\n"


def _odd_alignment(part):
    return ReportError(f"cannot read this line of an alignment: {_text(part.partition(_NEWLINE)[0])}")


def _joined(lines, longest):
    """The letters of lines "%7d letters %7d", joined, and the number at the start of the first."""
    if longest <= _LONGEST:
        return int(lines[0][:_MARGIN]), b"".join([line[_MARGIN:-_MARGIN] for line in lines])
    return int(lines[0].split(None, 1)[0]), b"".join([_wide_letters(line) for line in lines])


def _wide_letters(line):
    start, end = re.match(rb" *\d+ ", line), re.search(rb" +-?\d+$", line)
    return line[start.end() : -max(_MARGIN, len(end[0].lstrip()) + 1)]


def _unnumbered(lines, of, row, blocks):
    """The letters of markers or bases; an editor may have taken blanks from their ends."""
    return b"".join([line[_MARGIN:].ljust(len(like) - 2 * _MARGIN) for line, like in zip(lines[row::of], blocks)])


def _significance(figures):
    return float(figures[5]) if figures[5] else None


def _alignment(figures, body, longest):
    lines = body.split(b"\n")
    try:
        query_start, query = _joined(lines[1::4], longest)
        target_start, target = _joined(lines[2::4], longest)
    except (IndexError, ValueError, AttributeError):
        raise _odd_alignment(b"# N: " + figures[0]) from None
    markers = b"".join([line[_MARGIN:] for line in lines[0::4][: len(lines) // 4]])
    if len(markers) != len(query):
        markers = _unnumbered(lines, 4, 0, lines[1::4])
    if len(query) != len(target) or len(markers) != len(query):
        raise _odd_alignment(b"# N: " + figures[0])
    query_row = query.translate(_PLAIN_ROW).decode("ascii")
    target_row = target.translate(_PLAIN_ROW).decode("ascii")
    # counted here: the positions printed at line ends count a GAP_CHARACTER other than a blank as a residue
    query_end = query_start + len(query_row) - query_row.count(GAP) - 1
    target_end = target_start + len(target_row) - target_row.count(GAP) - 1
    return Alignment(int(figures[1]), int(figures[2]), _significance(figures), query_start, query_end, target_start,
                     target_end, query_row, target_row, markers.decode("latin-1"))  # fmt: skip


def _translated_alignment(figures, body, longest):
    """The protein stands on top, the translated query below the markers, its codons below that."""
    places = _FRAMES.match(body)
    if not places:
        raise _odd_alignment(body)
    lines = body[places.end() :].split(b"\n")
    try:
        like = lines[0::7]
        (_, target), (_, query) = _joined(like, longest), _joined(lines[2::7], longest)
        markers = _unnumbered(lines, 7, 1, like).decode("latin-1")
        codons = tuple(_unnumbered(lines, 7, row, like).decode("latin-1") for row in (3, 4, 5))
    except (IndexError, ValueError, AttributeError):
        raise _odd_alignment(b"# N: " + figures[0]) from None
    query_row = query.translate(_PLAIN_ROW).decode("ascii")
    target_row = target.translate(_PLAIN_ROW).decode("ascii")
    if len(query_row) != len(target_row) or len(markers) != len(query_row):
        raise _odd_alignment(b"# N: " + figures[0])
    shifts = int(places[5])
    if shifts:  # whatever FGAP_CHARACTER was: only there neither row has a residue
        markers = "".join([SHIFT if q == t == GAP else m for q, t, m in zip(query_row, target_row, markers)])
    return Alignment(int(figures[1]), int(figures[2]), _significance(figures), int(places[3]), int(places[4]),
                     int(places[1]), int(places[2]), query_row, target_row, markers, shifts, codons)  # fmt: skip


# ---- Other parts

_DUMPED = re.compile(rb"#!\d+ (\d+) (-?[\d.]+)")
_ALIGNED_ROW = re.compile(rb"\S* +\S+ +-?\d+ +-?\d+ +\d+: ([^\n]*)")
_MULTIPLE = b"\n# Multiple alignment Start"


def _read_scores(file, start, end):
    begin = _find(file, b"##START DUMP OF LPFIT INPUT", start, end)
    if begin is None:
        return
    for line in _lines(file, begin, end):
        match = _DUMPED.fullmatch(line)
        if match:
            yield int(match[1]), float(match[2])


def _read_query_letters(file, start, end):
    letters, position, first = {}, 1, False
    begin = _find(file, _MULTIPLE, start, end)
    for line in _lines(file, begin + 1, end) if begin is not None else ():
        if line.startswith(b"#"):
            words = line[1:].split()
            if line.startswith(b"# Multiple alignment End"):
                break
            if len(words) == 1 and words[0].isdigit():
                position, first = int(words[0]), True
        elif first:
            match = _ALIGNED_ROW.fullmatch(line)
            if not match:
                raise ReportError(f"cannot read this line of the multiple alignment: {_text(line)}")
            first = False
            for offset, letter in enumerate(match[1].translate(_PLAIN_ROW).decode("ascii")):
                letters[position + offset] = letter
    return letters


def _read_profile(file, mark, start, end):
    begin = _find(file, mark, start, end)
    if begin is None:
        return None
    lines = _lines(file, begin + 1, end)
    next(lines)
    heading = next(lines, b"")
    if not heading.startswith(b"Posn:"):
        raise ReportError(f"cannot read the heading of this table of a profile: {_text(heading)}")
    alphabet = heading[len(b"Posn:") :].decode("latin-1")[3::4]
    rows = []
    for line in lines:
        match = re.match(rb" *(\d+):", line)
        if not match:
            break
        rows.append([int(word) for word in line[match.end() :].split()])
        if len(rows[-1]) != len(alphabet):
            raise ReportError(f"cannot read this line of the table of a profile: {_text(line)}")
    return Profile(alphabet, rows)
