"""Reads ZELVAN reports and block files; shared by the filters beside it.

    report = read_report(sys.stdin)
    for iteration in report.iterations:            # one per score list; the translated modes have one
        iteration.hits                             # the score list, best first
        iteration.alignments                       # every printed local alignment, in report order
        iteration.rows                             # the multiple alignment, with the columns that it shows

Rows of alignments are letters with "-" for a gap and "*" for a stop, whatever characters the search was told
to print for them.
"""

import argparse
import re
import sys
from dataclasses import dataclass, field

GAP = "-"
STOP = "*"
NUMBER_WIDTH = 7  # positions at both ends of an alignment line, one blank between them and the letters


class ReportError(Exception):
    """The input is not what it should be; the text says what to do."""


@dataclass
class Hit:
    """One line of a score list."""

    rank: int
    score: int
    standardised: float | None  # x of the fit, or z-score; None without statistics
    significance: float | None  # E- or P-value
    target: str  # cut to SHOW_IDENT_WIDTH
    title: str


@dataclass
class Alignment:
    """One local alignment. Positions are 1-based and inclusive; a complemented DNA query runs downwards."""

    rank: int
    number: int  # 1 is the target's best
    query: str
    target: str
    title: str  # cut to SHOW_TITLES_WIDTH
    score: int
    query_length: int
    target_length: int
    significance: float | None
    translated: bool = False  # query positions are nucleotides
    frame_shifts: int = 0
    query_start: int = 0
    query_end: int = 0
    target_start: int = 0
    target_end: int = 0
    query_row: str = ""
    target_row: str = ""
    markers: str = ""  # "*" identical, "." positive score, "^" frame shift
    codons: list = field(default_factory=lambda: ["", "", ""])  # translated: the three bases of each column


@dataclass
class AlignedRow:
    """One row of a multiple alignment: letters in query coordinates, by position (1-based)."""

    target: str
    significance: float
    start: int
    end: int
    length: int
    letters: dict = field(default_factory=dict)
    title: str = ""


@dataclass
class Iteration:
    number: int = 0
    header: dict = field(default_factory=dict)  # "Query ID" -> text
    hits: list = field(default_factory=list)
    alignments: list = field(default_factory=list)
    rows: list = field(default_factory=list)  # the query first
    appeared: set = field(default_factory=set)  # hits that this iteration brought in
    scores: list = field(default_factory=list)  # (target length, score) of every sequence, if they were dumped

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
    iterations: list = field(default_factory=list)
    times: dict = field(default_factory=dict)

    def iteration(self, number=None):
        """The iteration of that number, by default the last."""
        if not self.iterations:
            raise ReportError("no score list in the input: give it a report of a search made with SHOW_BLURB 1")
        if number is None:
            return self.iterations[-1]
        for iteration in self.iterations:
            if iteration.number == number:
                return iteration
        have = ", ".join(str(i.number) for i in self.iterations)
        raise ReportError(f"the report has no iteration {number}: it has {have}")


def _numbers(text):
    return [float(word) for word in text.split()] if text else None


# ---- Score lists

_LINE = [
    (re.compile(r" *(\d+) +(-?\d+) +(-?\d+\.\d+|-?inf|-?nan) +(\S+) +(\S+) ?(.*)"), "rank score x value target title"),
    (re.compile(r" *(-?\d+) +(-?\d+\.\d+|-?inf|-?nan) +(\S+) +(\S+) *()"), "score x value target title"),
    (re.compile(r" *(\d+) (-?\d+) (\S+) ?(.*)"), "rank score target title"),
    (re.compile(r" *(-?\d+) (\S+)(.*)"), "score target title"),
]


def _read_hit(line, rank, layout):
    """The hit of a list line; layout is an entry of _LINE."""
    match = layout[0].fullmatch(line)
    if not match:
        raise ReportError(f"cannot read this line of the score list: {line}")
    part = dict(zip(layout[1].split(), match.groups()))
    return Hit(
        rank,
        int(part["score"]),
        float(part["x"]) if "x" in part else None,
        float(part["value"]) if "value" in part else None,
        part["target"],
        part["title"].strip(),
    )


def _read_hits(lines):
    """All hits of a list. One layout holds for all of its lines: the first of _LINE that fits every one."""
    for layout in _LINE:
        if all(layout[0].fullmatch(line) for line in lines):
            return [_read_hit(line, rank, layout) for rank, line in enumerate(lines, 1)]
    return [_read_hit(line, rank, _LINE[0]) for rank, line in enumerate(lines, 1)]


# ---- Alignments

_SECTION = re.compile(r"# Query: (\S+) Target: (\S+) Number_of_Alignments: (\d+)")
_ALIGNMENT = re.compile(r"# N: (\d+) Raw_Score: (-?\d+) Query_Length: (\d+) Target_Length: (\d+) (.*)")
_FRAMES = re.compile(r"# Residues: (\d+)-(\d+) Nucleotides: (\d+)-(\d+) Identical: \d+ Frame_Shifts: (\d+)")


def _plain(row):
    """A printed row with uniform characters."""
    return "".join(c if c.isalpha() else STOP if c == "!" else GAP for c in row)


def _split_line(line):
    """Start position and letters of a line "  start letters  end"."""
    start = re.match(r" {0,6}(\d+) ", line)
    end = re.search(r"(-?\d+)$", line)
    if not start or not end:
        raise ReportError(f"cannot read this line of an alignment: {line}")
    tail = 1 + max(NUMBER_WIDTH, len(end.group(1)))
    return int(start.group(1)), line[start.end() : -tail]


def _count(row):
    return sum(c != GAP for c in row)


def _read_alignment(section, first, lines):
    """One alignment from its "# N:" line and the lines up to "# End_N:"."""
    n, score, query_length, target_length, rest = _ALIGNMENT.fullmatch(first).groups()
    rank, query, target, title = section
    value = re.match(r"[EP]value: (\S+)", rest)
    result = Alignment(
        rank, int(n), query, target, title, int(score), int(query_length), int(target_length),
        float(value.group(1)) if value else None,
    )  # fmt: skip
    lines = list(lines)
    if not value and rest.strip() and not rest.startswith("ln()"):
        lines.insert(0, rest)  # without statistics the first markers stand on the heading's line
    if lines and _FRAMES.fullmatch(lines[0]):
        _add_translated_blocks(result, lines)
    else:
        _add_blocks(result, lines)
    return result


def _blocks(lines):
    """The lines of each block: those with positions, and the others without their margin."""
    numbered, others = [], []
    for line in [*lines, ""]:
        if line == "" and numbered:
            yield numbered, others
            numbered, others = [], []
        elif line[:NUMBER_WIDTH].strip():
            numbered.append(_split_line(line))
        elif line != "":
            others.append(line[NUMBER_WIDTH + 1 :])


def _add_blocks(result, lines):
    for numbered, others in _blocks(lines):
        (query_start, query_row), (target_start, target_row) = numbered
        if not result.query_row:
            result.query_start, result.target_start = query_start, target_start
        result.query_row += _plain(query_row)
        result.target_row += _plain(target_row)
        result.markers += (others[0] if others else "").ljust(len(query_row))
    # counted here: the positions printed at line ends count a GAP_CHARACTER other than a blank as a residue
    result.query_end = result.query_start + _count(result.query_row) - 1
    result.target_end = result.target_start + _count(result.target_row) - 1


def _add_translated_blocks(result, lines):
    """The protein stands on top, the translated query below the markers, its codons below that."""
    places = [int(word) for word in _FRAMES.fullmatch(lines[0]).groups()]
    result.translated = True
    result.target_start, result.target_end, result.query_start, result.query_end, result.frame_shifts = places
    for numbered, others in _blocks(lines[1:]):
        (_, target_row), (_, query_row) = numbered
        width = len(query_row)
        result.target_row += _plain(target_row)
        result.query_row += _plain(query_row)
        result.markers += (others[0] if others else "").ljust(width)
        for base, letters in enumerate(others[1:4]):
            result.codons[base] += letters.ljust(width)


# ---- Multiple alignments

_ROW = re.compile(r"(\S+) +(\S+) +(-?\d+) +(-?\d+) +(\d+): (.*)")


def _read_multiple_alignment(lines):
    rows, at, position = [], 0, 1
    for line in lines:
        if line.startswith("#"):
            words = line[1:].split()
            if len(words) == 1 and words[0].isdigit():
                at, position = 0, int(words[0])
            continue
        match = _ROW.fullmatch(line)
        if not match:
            raise ReportError(f"cannot read this line of the multiple alignment: {line}")
        target, value, start, end, length, letters = match.groups()
        if at == len(rows):
            rows.append(AlignedRow(target, float(value), int(start), int(end), int(length)))
        for offset, letter in enumerate(_plain(letters)):
            rows[at].letters[position + offset] = letter
        at += 1
    return rows


# ---- The whole report

_DUMPED = re.compile(r"#!\d+ (\d+) (-?[\d.]+)")


def read_report(lines):
    """Reads a report; what is not part of it (e.g. tables of profiles) is passed over."""
    report = Report()
    header, dumped = {}, []
    current = None
    lines = iter([line.rstrip("\n") for line in lines])

    def until(mark):
        """The lines up to the one that begins with the mark."""
        taken = []
        for inner in lines:
            if inner.startswith(mark):
                return taken
            taken.append(inner)
        raise ReportError(f'the report is incomplete: a line "{mark.strip()} ..." is missing')

    rank, appearing = 0, False
    for line in lines:
        if line.startswith("# Start_Scores: "):
            current = Iteration(int(header.get("Iteration", 0)), header, scores=dumped)
            report.iterations.append(current)
            header, dumped = {}, []
            current.hits = _read_hits(until("# End_Scores: "))
        elif line.startswith("# Start_Alignments_Rank: ") and current:
            rank = int(line.split()[-1])
            section = _SECTION.match(next(lines, ""))
            if not section:
                raise ReportError(f"cannot read the heading of the alignments of rank {rank}")
            title = next(lines, "").removeprefix("# Target_Title: ").strip()
        elif _ALIGNMENT.fullmatch(line) and current:
            body = until("# End_N: ")
            current.alignments.append(_read_alignment((rank, section[1], section[2], title), line, body))
        elif line.startswith("# Multiple alignment Start") and current:
            current.rows = _read_multiple_alignment(until("# Multiple alignment End"))
        elif line.startswith("# Reported in this iteration") and current:
            appearing = True
        elif appearing and not line.startswith("#"):
            appearing = line != ""
            current.appeared |= _appeared(line)
        elif _DUMPED.fullmatch(line):
            length, score = _DUMPED.fullmatch(line).groups()
            dumped.append((int(length), float(score)))
        elif line.startswith("# ") and ":" in line:
            name, _, value = line[2:].partition(":")
            header[name.strip()] = value.strip()
    report.times = header
    return report


def _appeared(line):
    """The identifier in a line of the change report, as a set: "rank score x significance target title"."""
    words = line.split()
    values = [i for i, word in enumerate(words) if re.fullmatch(r"-?\d+\.\d\d|-?inf|-?nan", word)]
    return set(words[values[0] + 2 : values[0] + 3]) if values else set()


# ---- Block files


def read_block_file(lines):
    """The multiple alignments of a block file: iteration number to rows, the query first."""
    alignments, rows, number = {}, [], None
    for line in lines:
        line = line.rstrip("\n")
        if number is None:
            match = re.match(r">(\S+) +(\S+) +(-?\d+) +(-?\d+) +(\d+): (.*)", line)
            if match:
                target, value, start, end, length, title = match.groups()
                rows.append(AlignedRow(target, float(value), int(start), int(end), int(length), title=title))
            elif line.startswith("*Iteration: "):
                number, position = int(line.split()[-1]), 0
        elif line == "*":
            alignments[number] = rows
            rows, number = [], None
        else:
            position += 1
            for row, letter in zip(rows, _plain(line.ljust(len(rows)))):
                row.letters[position] = letter
    if not alignments or number is not None:
        raise ReportError("the block file is incomplete: it has no alignment that ends in a line with a *")
    return alignments


# ---- What the filters have in common


def options(name, description, **more):
    parser = argparse.ArgumentParser(prog=name, description=description, **more)
    parser.add_argument("-i", "--iteration", type=int, metavar="N", help="iteration to take (default: the last)")
    return parser


def run(name, work):
    """Runs a filter: errors become one sentence and status 1; a reader that stops early is no error."""
    for stream in (sys.stdin, sys.stdout):
        stream.reconfigure(encoding="utf-8", errors="surrogateescape")  # titles may hold any bytes
    try:
        work()
        sys.stdout.flush()
    except ReportError as problem:
        sys.exit(f"{name}: {problem}")
    except BrokenPipeError:
        sys.stderr.close()
        sys.exit(0)


def warn(name, text):
    print(f"{name}: {text}", file=sys.stderr)
