"""The multiple alignment of an iteration, laid out along the query: a3m, aligned FASTA, Stockholm, Clustal.

It is made of the alignments of the report, not of the report's own multiple alignment: that one leaves out the last
column of each of its blocks, and residues that a hit has between two residues of the query. Columns are the residues of
the query and, between them, as many as the longest insertion there needs.
"""

from __future__ import annotations

import contextlib
import itertools
import re
import tempfile
from typing import NamedTuple

from zelvan_easy.formats import printable
from zelvan_easy.report import GAP, STOP, ReportError

UNKNOWN = "X"
_BLOCK = 60
_NO_TAB = {ord("\t"): " "}
_INSERTION = re.compile("([a-z]+)")


class Row(NamedTuple):
    """A row in a3m letters: capitals and "-" are the positions of the query, small letters residues between them."""

    name: str
    title: str
    letters: str


# ---- Rows


def read_query(path):
    """(title, residues) of the first sequence of a FASTA file."""
    try:
        with open(path, encoding="utf-8", errors="surrogateescape") as source:
            lines = itertools.dropwhile(lambda line: not line.startswith(">"), source)
            heading = next(lines, "").split(None, 1)
            body = itertools.takewhile(lambda line: not line.startswith(">"), lines)
            residues = "".join(c for line in body for c in line if c.isascii() and c.isalpha()).upper()
            return heading[1].rstrip() if len(heading) > 1 else "", residues
    except OSError as problem:
        raise ReportError(f"cannot read the query file {path}: {problem.strerror}") from problem


def gather_query(iteration):
    """The query's residues as far as the report shows them, X elsewhere, and how many are not shown."""
    residues = [UNKNOWN] * iteration.query_length
    shown = bytearray(iteration.query_length)
    for position, letter in iteration.query_letters.items():
        residues[position - 1] = letter
        shown[position - 1] = 1
    for found in iteration.aligned():
        for alignment in found.alignments:
            start, end = alignment.query_start - 1, alignment.query_end
            if shown.find(0, start, end) >= 0:
                residues[start:end] = alignment.query_row.replace(GAP, "")
                shown[start:end] = b"\1" * (end - start)
    return "".join(residues).replace(STOP, UNKNOWN), shown.count(0)


def aligned_letters(alignment, length):
    """The target in query coordinates, in a3m letters. Stops become X, which every reader takes."""
    query, target = alignment.query_row, alignment.target_row.replace(STOP, UNKNOWN)
    if GAP in query:
        target = "".join([t.lower() if q == GAP else t for q, t in zip(query, target)])
    return GAP * (alignment.query_start - 1) + target + GAP * (length - alignment.query_end)


def query_of_file(iteration, path):
    """(title, residues) of the first sequence of a file, which must be the query's."""
    title, residues = read_query(path)
    if iteration.query_length and len(residues) != iteration.query_length:
        raise ReportError(f"{path} has {len(residues)} residues, but the query of the report {iteration.query_length}")
    return title, residues


def query_of(iteration, query_file=None, warn=None):
    """The residues of the query: those of a file, or those that the report shows; warn(text) is told what is missing."""
    if query_file:
        return query_of_file(iteration, query_file)[1]
    query, missing = gather_query(iteration)
    if missing and warn:
        warn(f"{missing} residues of the query are not in the report and become {UNKNOWN}: give the query with -q FILE")
    return query


def within_cutoff(alignment, cutoff):
    return cutoff is None or alignment.significance is None or alignment.significance <= cutoff


def profile_alignments(iteration, cutoff=None):
    """(aligned hit, alignment) for each alignment up to a significance, by default the cut-off for the profile."""
    cutoff = iteration.profile_cutoff if cutoff is None else cutoff
    for found in iteration.aligned():
        if found.translated:
            raise ReportError("the query is DNA: only protein searches (modes 200 to 212) have a multiple alignment")
        for alignment in found.alignments:
            if within_cutoff(alignment, cutoff):
                yield found, alignment


def query_row(iteration, residues):
    return Row(iteration.query, iteration.header.get("Query Title", ""), residues)


def target_row(iteration, found, alignment, length, names):
    """The row of an alignment on a query of that length. It is named after the place in the target, and unlike all
    others in `names`, which takes the name."""
    name = base = f"{found.target}/{alignment.target_start}-{alignment.target_end}"
    while name in names:
        name = f"{base}_{alignment.number}" if name == base else name + "+"
    names.add(name)
    value = alignment.significance
    title = "" if value is None else f"{iteration.significance_name}={value:.3g} "
    return Row(name, f"{title}{found.title}".rstrip(), aligned_letters(alignment, length))


def without_insertions(letters):
    return letters if letters.isupper() else _INSERTION.sub("", letters)


def alignment_rows(iteration, query, cutoff=None, insertions=True):
    """The query, then a row for each alignment."""
    yield query_row(iteration, query)
    names = set()
    for found, alignment in profile_alignments(iteration, cutoff):
        row = target_row(iteration, found, alignment, len(query), names)
        yield row if insertions else row._replace(letters=without_insertions(row.letters))


def refuse_translated(iteration):
    if iteration.mode in (10, 12, 20, 22):
        raise ReportError("a translated search: only protein searches (modes 200 to 212) have a multiple alignment or a profile")


def _check(iteration):
    refuse_translated(iteration)
    if iteration.hits and next(iteration.aligned(), None) is None:
        raise ReportError("the report lists hits but no alignments: search with APRINT_TO_THRESHOLD 1, or give a block file")
    if not iteration.query_length:
        raise ReportError("the report does not say how long the query is: search with SHOW_BLURB 1")


# ---- Block files


def read_block_file(lines, iteration=None, cutoff=None):
    """The rows of a block file, the query first. It has all columns, but no insertions."""
    heads, rows, number, found = [], [], None, {}
    for line in lines:
        line = line.rstrip("\r\n")
        if number is None:
            match = re.match(r">(\S+) +(\S+) +(-?\d+) +(-?\d+) +(\d+): (.*)", line)
            if match:
                heads.append(match.groups())
            elif line.startswith("*Iteration: "):
                number, rows = int(line.split()[-1]), []
        elif line == "*":
            found[number] = (heads, rows)
            heads, number = [], None
        else:
            rows.append("".join(c if c.isalpha() else UNKNOWN if c == "!" else GAP for c in line.ljust(len(heads))))
    if not found or number is not None:
        raise ReportError("the block file is incomplete: it has no alignment that ends in a line with a *")
    number = max(found) if iteration is None else iteration
    if number not in found:
        raise ReportError(f"the block file has no iteration {number}")
    heads, columns = found[number]
    for index, (target, value, start, end, _, title) in enumerate(heads):
        if index and cutoff is not None and not float(value) <= cutoff:
            continue
        name = f"{target}/{start}-{end}" if index else target
        yield Row(name, title, "".join(column[index] for column in columns))


# ---- Columns


def _split(letters):
    """The row without its insertions, and those by the number of positions before them."""
    if letters.isupper():
        return letters, {}
    insertions, position = {}, 0
    for number, part in enumerate(_INSERTION.split(letters)):
        if number % 2:
            insertions[position] = part
        else:
            position += len(part)
    return without_insertions(letters), insertions


class Layout(NamedTuple):
    """All rows, waiting in a file, and what is known of them once all have been seen."""

    waiting: object
    places: list  # (position, columns): how many the longest insertion takes behind each position that has one
    width: int  # of the longest name

    def rows(self):
        self.waiting.seek(0)
        for line in self.waiting:
            yield Row(*line.rstrip("\n").split("\t"))


@contextlib.contextmanager
def laid_out(rows):
    longest, width = {}, 0
    with tempfile.TemporaryFile("w+", encoding="utf-8", errors="surrogateescape", newline="\n") as waiting:
        for row in rows:
            waiting.write(f"{row.name}\t{row.title.translate(_NO_TAB)}\t{row.letters}\n")
            width = max(width, len(row.name))
            if not row.letters.isupper():
                for position, part in _split(row.letters)[1].items():
                    longest[position] = max(longest.get(position, 0), len(part))
        yield Layout(waiting, sorted(longest.items()), width)


def expand(letters, places, fill):
    """A row with all columns. Insertions stay small letters, at the left of their columns."""
    matched, insertions = _split(letters)
    parts, before = [], 0
    for position, columns in places:
        parts.append(matched[before:position])
        parts.append(insertions.get(position, "").ljust(columns, fill))
        before = position
    return "".join(parts) + matched[before:]


# ---- Layouts


def fasta_record(row, letters):
    return f">{row.name} {row.title}".rstrip() + "\n" + letters + "\n"


def write_a3m(layout, out):
    for row in layout.rows():
        out.write(fasta_record(row, row.letters))


def write_fasta(layout, out):
    """All columns, capitals and "-" only."""
    for row in layout.rows():
        out.write(fasta_record(row, expand(row.letters, layout.places, GAP).upper()))


def write_stockholm(layout, out):
    """With the reference line that tells columns of the query from insertions."""
    out.write("# STOCKHOLM 1.0\n")
    query = None
    for row in layout.rows():
        title = printable(row.title)
        if query is None:
            query = row
            out.write(f"#=GF ID {row.name}\n" + (f"#=GF DE {title}\n" if title else ""))
        elif title:
            out.write(f"#=GS {row.name} DE {title}\n")
    out.write("\n")
    width = max(layout.width, len("#=GC RF"))
    for row in layout.rows():
        out.write(f"{row.name:<{width}} {expand(row.letters, layout.places, '.')}\n")
    reference = expand("X" * len(query.letters), layout.places, ".").replace("X", "x")
    out.write(f"{'#=GC RF':<{width}} {reference}\n//\n")


def write_clustal(layout, out):
    """In blocks; the rows wait in a temporary file, so that any number may come."""
    names, length = [], 0
    with tempfile.TemporaryFile() as waiting:
        for row in layout.rows():
            letters = expand(row.letters, layout.places, GAP).upper().encode("ascii")
            names.append(row.name)
            waiting.write(letters)
            length = len(letters)
        out.write("CLUSTAL W (ZELVAN) multiple sequence alignment\n\n")
        for start in range(0, length, _BLOCK):
            out.write("\n")
            for number, name in enumerate(names):
                waiting.seek(number * length + start)
                block = waiting.read(min(_BLOCK, length - start)).decode("ascii")
                out.write(f"{name:<{layout.width + 4}}{block}\n")
            out.write("\n")


WRITERS = {"a3m": write_a3m, "fasta": write_fasta, "stockholm": write_stockholm, "clustal": write_clustal}


def write_alignment(report, out, layout, iteration=None, cutoff=None, insertions=True, query_file=None, warn=None):
    """Writes the multiple alignment of an iteration to a text stream.
    layout: a key of WRITERS. cutoff: largest significance of a row, by default the one for the profile. insertions:
    False leaves out what stands between residues of the query. warn(text) is told of residues that are not known."""
    chosen = report.iteration(iteration)
    _check(chosen)
    query = query_of(chosen, query_file, warn)
    with laid_out(alignment_rows(chosen, query, cutoff, insertions)) as rows:
        WRITERS[layout](rows, out)


def write_block_file(source, out, layout, iteration=None, cutoff=None):
    """The same from the lines of a block file."""
    with laid_out(read_block_file(source, iteration, cutoff)) as rows:
        WRITERS[layout](rows, out)
