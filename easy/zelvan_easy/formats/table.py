"""Tables: a line for each local alignment, in columns that are named and mean the same as in BLAST's tables.

    with open_report(path) as report:
        write_table(report, sys.stdout)                                       # the twelve usual columns
        write_table(report, out, columns=["sseqid", "evalue", "stitle"], header=True, max_evalue=0.001)
        for values in table_rows(report, columns=["qstart", "qend"]):         # numbers, texts and None
            ...

Percentages and counts are of the columns of an alignment that stand for residues; frame shifts are none of them.
Query positions of a DNA query are nucleotides and run downwards on the other strand.
"""

from __future__ import annotations

import contextlib
import re
import shutil
import tempfile
from typing import Callable, NamedTuple

from zelvan_easy.report import GAP, ReportError, SHIFT
from zelvan_easy.significance import Scale, standardised_scores

HIT_COLUMNS = "qseqid rank sseqid score standardised evalue stitle".split()
DEFAULT = "qseqid sseqid pident length mismatch gapopen qstart qend sstart send evalue bitscore".split()
MISSING = "NA"
_RUN_OF_GAPS = re.compile(GAP + "+")


class Row:
    """An alignment (None for a hit without one) and what its line is made of."""

    __slots__ = ("iteration", "found", "hit", "alignment", "length", "identical", "positive", "gaps", "bits")

    def __init__(self, iteration, found, hit, alignment, bits):
        self.iteration, self.found, self.hit, self.alignment, self.bits = iteration, found, hit, alignment, bits
        if alignment is None:
            self.length = self.identical = self.positive = self.gaps = None
            return
        markers = alignment.markers
        shifted = markers.count(SHIFT) if alignment.frame_shifts else 0
        self.length = len(markers) - shifted
        self.identical = markers.count("*")
        self.positive = self.identical + markers.count(".")
        self.gaps = alignment.query_row.count(GAP) + alignment.target_row.count(GAP) - 2 * shifted


class Column(NamedTuple):
    field: str  # in the "# Fields:" line
    value: Callable  # of a Row; None where the report does not say it
    form: str = ""
    aligned: bool = False  # needs an alignment


def _percent(part, whole):
    return 100 * part / whole if whole else 0.0


def _span(first, last):
    return abs(last - first) + 1


def residue_pairs(alignment):
    """The columns of an alignment, without those of frame shifts: (query letter, target letter)."""
    pairs = zip(alignment.query_row, alignment.target_row)
    if alignment.frame_shifts:
        return [pair for pair in pairs if pair != (GAP, GAP)]
    return list(pairs)


def _gap_openings(row):
    if not row.gaps:
        return 0
    rows = row.alignment.query_row, row.alignment.target_row
    if row.alignment.frame_shifts:
        rows = ["".join(letters) for letters in zip(*residue_pairs(row.alignment))]
    return sum(len(_RUN_OF_GAPS.findall(letters)) for letters in rows)


def _covered(row):
    """Per cent of the query under any of the hit's alignments."""
    spans = sorted(sorted((a.query_start, a.query_end)) for a in row.found.alignments)
    total = reached = 0
    for start, end in spans:
        total += max(0, end - max(start - 1, reached))
        reached = max(reached, end)
    return _percent(total, row.found.query_length)


def _operations(row):
    """Traceback operations: a number of identical columns, or the two letters of another one."""
    parts, same = [], 0
    for query, target in residue_pairs(row.alignment):
        if query == target:
            same += 1
            continue
        parts.append((str(same) if same else "") + query + target)
        same = 0
    return "".join(parts) + (str(same) if same else "")


def _query_frame(row):
    """1, 2, 3 from the start of the query, -1, -2, -3 from its end; a protein has 1, as in BLAST's tables."""
    if not row.found.translated:
        return 1
    alignment = row.alignment
    if alignment.query_start <= alignment.query_end:
        return (alignment.query_start - 1) % 3 + 1
    return -((row.found.query_length - alignment.query_start) % 3 + 1)


def _strand(row):
    """Of the query's nucleotides, which is the only side that can lie on the other strand."""
    if not row.found.translated:
        return None
    return "plus" if row.alignment.query_start <= row.alignment.query_end else "minus"


def _target_length(row):
    length = row.found.target_length if row.found else None
    return row.hit.length if length is None and row.hit else length


def _rank(row):
    return row.found.rank if row.found else row.hit.rank


def _title(row):
    """The longer of the two: either list may have been cut."""
    return max((row.found.title if row.found else "", row.hit.title if row.hit else ""), key=len)


COLUMNS = {
    "qseqid": Column("query id", lambda r: r.found.query if r.found else r.iteration.query),
    "sseqid": Column("subject id", lambda r: r.found.target if r.found else r.hit.target),
    "pident": Column("% identity", lambda r: _percent(r.identical, r.length), ".2f", True),
    "length": Column("alignment length", lambda r: r.length, "", True),
    "mismatch": Column("mismatches", lambda r: r.length - r.identical - r.gaps, "", True),
    "gapopen": Column("gap opens", _gap_openings, "", True),
    "qstart": Column("q. start", lambda r: r.alignment.query_start, "", True),
    "qend": Column("q. end", lambda r: r.alignment.query_end, "", True),
    "sstart": Column("s. start", lambda r: r.alignment.target_start, "", True),
    "send": Column("s. end", lambda r: r.alignment.target_end, "", True),
    "evalue": Column("evalue", lambda r: (r.alignment or r.hit).significance, ".3g"),
    "bitscore": Column("bit score", lambda r: r.bits, ".1f"),
    "qlen": Column("query length", lambda r: r.iteration.query_length),
    "slen": Column("subject length", _target_length),
    "qcovs": Column("% query coverage per subject", _covered, ".0f", True),
    "qcovhsp": Column("% query coverage per hsp",
                      lambda r: _percent(_span(r.alignment.query_start, r.alignment.query_end), r.found.query_length),
                      ".0f", True),
    "scovhsp": Column("% subject coverage per hsp",
                      lambda r: _percent(_span(r.alignment.target_start, r.alignment.target_end), r.found.target_length),
                      ".0f", True),
    "score": Column("score", lambda r: (r.alignment or r.hit).score),
    "nident": Column("identical", lambda r: r.identical, "", True),
    "positive": Column("positives", lambda r: r.positive, "", True),
    "gaps": Column("gaps", lambda r: r.gaps, "", True),
    "ppos": Column("% positives", lambda r: _percent(r.positive, r.length), ".2f", True),
    "stitle": Column("subject title", _title),
    "btop": Column("BTOP", _operations, "", True),
    "qframe": Column("query frame", _query_frame, "", True),
    "sframe": Column("sbjct frame", lambda r: 0 if r.found.translated else 1, "", True),
    "sstrand": Column("subject strand", _strand, "", True),
    "shifts": Column("frame shifts", lambda r: r.alignment.frame_shifts, "", True),
    "iteration": Column("iteration", lambda r: r.iteration.number),
    "rank": Column("rank", _rank),
    "standardised": Column("standardised score", lambda r: r.hit.standardised if r.hit else None, ".2f"),
}  # fmt: skip


def parse_columns(text):
    """Names of columns from a text as users give it; "std" stands for the twelve usual ones."""
    names = []
    for word in text.replace(",", " ").split():
        names += DEFAULT if word == "std" else [word]
    unknown = [name for name in names if name not in COLUMNS]
    if unknown or not names:
        raise ReportError(f"no such column: {', '.join(unknown) or 'none named'}; there are std {' '.join(COLUMNS)}")
    return names


# ---- Rows


def _hit_of(found, hits, by_name):
    """The line of the score list that a section of alignments belongs to. Lists without statistics may leave lines
    out, so that ranks differ."""
    if found.rank <= len(hits) and found.target.startswith(hits[found.rank - 1].target):
        return hits[found.rank - 1]
    if not by_name:
        by_name.update((hit.target, hit) for hit in reversed(hits))
    return by_name.get(found.target)


def _rows_of(iteration, unaligned):
    scale, by_name, aligned = Scale(iteration), {}, set()
    for found in iteration.aligned():
        hit = _hit_of(found, iteration.hits, by_name)
        if hit and unaligned:
            aligned.add(hit.rank)
            if not found.alignments:
                yield Row(iteration, found, hit, None, scale.bits(hit.significance, hit.standardised))
        standardised = None
        for number, alignment in enumerate(found.alignments):
            if alignment.significance is not None and alignment.significance < 1e-300 and standardised is None:
                standardised = standardised_scores(scale, found, hit)
            bits = scale.bits(alignment.significance, standardised and standardised[number])
            yield Row(iteration, found, hit, alignment, bits)
    for hit in iteration.hits if unaligned else ():
        if hit.rank not in aligned:
            yield Row(iteration, None, hit, None, scale.bits(hit.significance, hit.standardised))


def _rows_of_list(iteration):
    scale = Scale(iteration)
    for hit in iteration.hits:
        yield Row(iteration, None, hit, None, scale.bits(hit.significance, hit.standardised))


def rows_of(report, iteration=None, unaligned=False, hits=False):
    """A Row for each alignment of an iteration (None: the last; "all": of every one). unaligned: and then one for
    each hit that has no alignment in the report. hits: one for each line of the score list instead."""
    chosen = report.iterations if iteration == "all" else [report.iteration(iteration)]
    for one in chosen:
        yield from _rows_of_list(one) if hits else _rows_of(one, unaligned)


def passes(row, max_evalue=None, min_identity=None, min_coverage=None):
    """Whether a row is within limits of E-value, per cent identity and per cent of the query covered. What the report
    does not say passes no limit."""
    if max_evalue is not None:
        value = (row.alignment or row.hit).significance
        if value is None or not value <= max_evalue:
            return False
    if min_identity is None and min_coverage is None:
        return True
    if row.alignment is None:
        return False
    if min_identity is not None and not _percent(row.identical, row.length) >= min_identity:
        return False
    return min_coverage is None or COLUMNS["qcovhsp"].value(row) >= min_coverage


def row_values(row, chosen):
    """The values of these Columns, not yet texts."""
    return [None if row.alignment is None and c.aligned else c.value(row) for c in chosen]


def table_rows(report, columns=None, iteration=None, unaligned=False, hits=False, **limits):
    """The `row_values` of each line. limits: those of `passes`."""
    chosen = [COLUMNS[name] for name in columns or DEFAULT]
    for row in rows_of(report, iteration, unaligned, hits):
        if passes(row, **limits):
            yield row_values(row, chosen)


def format_row(values, columns=None):
    """The line of these values, without its end."""
    return "\t".join(
        [MISSING if value is None else format(value, COLUMNS[name].form) for name, value in zip(columns or DEFAULT, values)]
    )


def header_lines(report, columns, count):
    """Comments that say what the table of so many lines is of, as readers of commented BLAST tables expect them."""
    iteration = report.iterations[-1]
    fields = ", ".join(COLUMNS[name].field for name in columns or DEFAULT)
    version = iteration.header.get("ZELVAN Version", "").partition(" ")[0]
    query = f"{iteration.query} {iteration.header.get('Query Title', '')}".strip()
    database = iteration.header.get("Database name", "text file")
    return [f"# ZELVAN {version}".rstrip(), f"# Query: {query}", f"# Database: {database}", f"# Fields: {fields}",
            f"# {count} hits found"]  # fmt: skip


def write_table(report, out, columns=None, header=False, **how):
    """Writes the table to a text stream and returns the number of its lines, without those of the header. What only
    an alignment tells is NA for a hit without one. how: iteration, unaligned and hits as in `rows_of`; max_evalue,
    min_identity and min_coverage as in `passes`."""
    columns = columns or (HIT_COLUMNS if how.get("hits") else DEFAULT)
    count = 0
    with contextlib.ExitStack() as stack:
        lines = out
        if header:  # it tells the number of lines, which therefore wait
            lines = stack.enter_context(tempfile.TemporaryFile("w+", encoding="utf-8", errors="surrogateescape"))
        for count, values in enumerate(table_rows(report, columns, **how), 1):
            lines.write(format_row(values, columns) + "\n")
        if header:
            out.write("\n".join(header_lines(report, columns, count)) + "\n")
            lines.seek(0)
            shutil.copyfileobj(lines, out)
    return count
