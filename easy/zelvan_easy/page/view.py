"""What a page shows, gathered from a report in one pass over its alignments."""

from __future__ import annotations

import math
from collections import Counter
from typing import NamedTuple

from markupsafe import Markup, escape

from zelvan_easy.formats import printable
from zelvan_easy.formats.alignment import UNKNOWN, fasta_record, target_row, within_cutoff, without_insertions
from zelvan_easy.formats.json_report import run_record
from zelvan_easy.formats.pssm import information
from zelvan_easy.formats.table import COLUMNS
from zelvan_easy.page.links import link_of
from zelvan_easy.report import GAP, SHIFT

COLUMNS_SHOWN = 60  # of an alignment block
OVERVIEW_HITS = 60
ALIGNED_ROWS = 150  # of the multiple alignment
OPEN_ALIGNMENTS = 3
_UNKNOWN = UNKNOWN.encode("ascii")
_COUNTED_AT_ONCE = 1 << 20  # letters
CLASSES = ((1e-50, "s1"), (1e-20, "s2"), (1e-5, "s3"), (1e-2, "s4"), (math.inf, "s5"))
HEIGHTS = " ▁▂▃▄▅▆▇█"
_ROUND_HITS = 500  # listed as new or gone


class HitView(NamedTuple):
    rank: int
    target: str
    link: tuple | None
    shown: bool  # its alignment is on the page
    new: bool
    sure: bool
    significance: float | None
    bits: float | None
    score: int
    identity: float | None
    coverage: int | None
    length: int | None
    title: str


class Shown(NamedTuple):
    """An alignment that is shown whole."""

    rank: int
    first: bool  # of its hit
    open: bool
    target: str
    title: str
    words: str
    block: Markup


class Found(NamedTuple):
    hits: list
    stretches: list  # (HitView, [(start, end, significance)]) of the first hits
    shown: list
    left: int  # alignments that are not shown
    rows: list  # (name, letters in query coordinates) of the multiple alignment
    rows_left: int
    query: str
    columns: list  # a Counter of the letters at each position, of all rows
    lengths: dict  # rank -> (target length, best score)


def short(value):
    """A number with two digits; the E-values of chance whole."""
    return "" if value is None else f"{value:.0f}" if 99 < value < 1e6 else f"{value:.2g}"


def is_sure(hit, iteration):
    cutoff = iteration.profile_cutoff
    return cutoff is not None and hit.significance is not None and hit.significance <= cutoff


def class_of(significance):
    if significance is None:
        return "s3"
    return next(name for limit, name in CLASSES if not significance > limit)


# ---- Alignments


def spans(letters, classes):
    """Letters with their classes, one span for every run of the same class."""
    parts, start = [], 0
    for i in range(1, len(letters) + 1):
        if i == len(letters) or classes[i] != classes[start]:
            run = escape(letters[start:i])
            parts.append(f"<b class={classes[start]}>{run}</b>" if classes[start] else str(run))
            start = i
    return "".join(parts)


def column_classes(alignment):
    return [
        "x" if mark == SHIFT else "g" if GAP in (q, t) else "i" if mark == "*" else "p" if mark == "." else ""
        for q, t, mark in zip(alignment.query_row, alignment.target_row, alignment.markers)
    ]


def _ruler(row, first):
    """The numbers of every tenth residue of a line of letters, their last digits over the residues."""
    line, number = [" "] * (len(row) + 8), first
    for column, letter in enumerate(row):
        if letter == GAP:
            continue
        if number % 10 == 0:
            text = str(number)
            begin = column - len(text) + 1
            if begin >= 0 and not any(c != " " for c in line[max(0, begin - 1) : column + 1]):
                line[begin : column + 1] = text
        number += 1
    return "".join(line).rstrip()


def alignment_block(alignment, translated):
    """The alignment as in the report, with a ruler over the protein's letters, coloured by column."""
    step = 3 if translated else 1
    direction = -1 if alignment.query_end < alignment.query_start else 1
    query_at, target_at = alignment.query_start, alignment.target_start
    width = max(5, len(str(max(query_at, alignment.query_end, alignment.target_end))))
    margin = " " * (8 + width)
    classes, lines = column_classes(alignment), []
    for start in range(0, len(alignment.query_row), COLUMNS_SHOWN):
        cut = slice(start, start + COLUMNS_SHOWN)
        query, target, marks = alignment.query_row[cut], alignment.target_row[cut], alignment.markers[cut]
        query_next = query_at + direction * (step * sum(c != GAP for c in query) + marks.count(SHIFT))
        target_next = target_at + sum(c != GAP for c in target)
        query_line = f"query  {query_at:>{width}} {spans(query, classes[cut])} {query_next - direction:>{width}}"
        target_line = f"target {target_at:>{width}} {spans(target, classes[cut])} {target_next - 1:>{width}}"
        mark_line = margin + str(escape(marks)).rstrip()
        if translated:  # the codons stand below the residues that they make
            lines += [f"<i>{margin}{_ruler(target, target_at)}</i>", target_line, mark_line, query_line]
            lines += [margin + str(escape(bases[cut])).rstrip() for bases in alignment.codons]
        else:
            lines += [f"<i>{margin}{_ruler(query, query_at)}</i>", query_line, mark_line, target_line]
        lines.append("")
        query_at, target_at = query_next, target_next
    return Markup("\n".join(lines).rstrip())


def _words(row, iteration):
    alignment = row.alignment
    parts = [f"score {alignment.score}"]
    if alignment.significance is not None:
        parts.append(f"{iteration.significance_name} {alignment.significance:.3g}")
    if row.bits is not None:
        parts.append(f"{row.bits:.0f} bits")
    parts.append(f"{row.identical} of {row.length} identical ({100 * row.identical / max(1, row.length):.0f} %)")
    if row.gaps:
        parts.append(f"{row.gaps} in gaps")
    if row.found.translated:
        parts.append(f"{alignment.frame_shifts} frame shift{'' if alignment.frame_shifts == 1 else 's'}")
        parts.append(f"frame {COLUMNS['qframe'].value(row):+d}")
    parts.append(f"query {alignment.query_start}-{alignment.query_end} of {row.found.query_length}")
    parts.append(f"target {alignment.target_start}-{alignment.target_end} of {row.found.target_length}")
    return ", ".join(parts)


# ---- One pass


def _hit_view(rows, iteration, appeared, shown):
    row = rows[0]
    hit = row.hit
    aligned = row.alignment is not None
    target = printable(COLUMNS["sseqid"].value(row))
    value = hit.significance if hit else row.alignment.significance
    return HitView(
        hit.rank if hit else row.found.rank, target, link_of(target), shown,
        bool(hit) and hit.target in appeared, bool(hit) and is_sure(hit, iteration), value, row.bits,
        hit.score if hit else row.alignment.score,
        100 * row.identical / row.length if aligned and row.length else None,
        round(COLUMNS["qcovs"].value(row)) if aligned else None,
        COLUMNS["slen"].value(row), printable(COLUMNS["stitle"].value(row)),
    )  # fmt: skip


def _grouped(rows):
    """Lists of the rows of each hit."""
    group = []
    for row in rows:
        if group and (row.found is None or group[0].found is not row.found):
            yield group
            group = []
        group.append(row)
    if group:
        yield group


class _Columns:
    """How often each letter stands at each position, counted for many rows at a time."""

    def __init__(self, length):
        self.counts = [Counter() for _ in range(length)]
        self._waiting, self._most = [], max(1, _COUNTED_AT_ONCE // max(1, length))

    def add(self, letters):
        self._waiting.append(letters)
        if len(self._waiting) >= self._most:
            self.count()

    def count(self):
        for counter, letters in zip(self.counts, zip(*self._waiting)):
            counter.update(letters)
        self._waiting = []


def gather(iteration, rows, most, records, residues=None):
    """Everything of the alignments that the page shows. rows: those of the iteration, also of hits without alignment.
    most: alignments shown one by one. records: a text stream that takes the rows of the multiple alignment, as a3m.
    residues: of the query, where they are known."""
    length = iteration.query_length or 0
    if residues and len(residues) != length:
        residues = None
    translated = iteration.mode in (10, 12, 20, 22)
    columns = _Columns(0 if translated else length)
    query = bytearray(residues.encode("ascii") if residues else _UNKNOWN * length)
    for position, letter in () if residues else iteration.query_letters.items():
        query[position - 1] = ord(letter)
    appeared, cutoff = {hit.target for hit in iteration.appeared}, iteration.profile_cutoff
    hits, stretches, shown, aligned_rows, lengths, names = [], [], [], [], {}, set()
    left = rows_left = 0
    for group in _grouped(rows):
        aligned = [row for row in group if row.alignment]
        taken = aligned[: max(0, most - len(shown))]
        view = _hit_view(group, iteration, appeared, bool(taken))
        hits.append(view)
        left += len(aligned) - len(taken)
        if len(stretches) < OVERVIEW_HITS:
            stretches.append((view, [(r.alignment.query_start, r.alignment.query_end, r.alignment.significance)
                                     for r in aligned]))  # fmt: skip
        for number, row in enumerate(taken):
            shown.append(Shown(view.rank, number == 0, len(shown) < OPEN_ALIGNMENTS, view.target, view.title,
                               _words(row, iteration), alignment_block(row.alignment, row.found.translated)))  # fmt: skip
        if aligned:
            lengths[view.rank] = (view.length, max(row.alignment.score for row in aligned))
        for row in () if translated else aligned:
            alignment = row.alignment
            at, end = alignment.query_start - 1, alignment.query_end
            if not residues and query.find(_UNKNOWN, at, end) >= 0:
                query[at:end] = alignment.query_row.replace(GAP, "").encode("ascii")
            if not within_cutoff(alignment, cutoff):
                continue
            record = target_row(iteration, row.found, alignment, length, names)
            records.write(fasta_record(record, record.letters))
            letters = " " * at + without_insertions(record.letters)[at:end] + " " * (length - end)
            columns.add(letters)
            if len(aligned_rows) < ALIGNED_ROWS:
                aligned_rows.append((view.target, letters))
            else:
                rows_left += 1
    columns.count()
    for counter in columns.counts:
        del counter[" "]  # beside the alignments
    return Found(hits, stretches, shown, left, aligned_rows, rows_left, query.decode("ascii"), columns.counts, lengths)


# ---- Parts of the page


def facts(report, iteration):
    """(name, text) of what was searched how."""
    run = run_record(report)
    penalties = [f"{name.replace('_', ' ')} {value:g}" for name, value in run["penalties"].items()]
    database = run["database"]
    residues = f"{database.get('residues', 0):,} {'bases' if database['molecule'] == 'DNA' else 'residues'}"
    if "sequences" in database:
        residues = f"{database['sequences']:,} sequences, {residues}"
    settings = run["profile_settings"]
    pairs = [
        ("Query", f"{run['query'].get('id', '?')}, {run['query'].get('length', '?')} "
                  + ("bases" if run["query"]["molecule"] == "DNA" else "residues")),
        ("Query file", run["query"].get("file")),
        ("Database", database.get("name", "text file")),
        ("Searched", residues if database.get("residues") else None),
        ("Mode", run["mode"]),
        ("Matrix", run["matrix"].get("file", "").rsplit("/", 1)[-1] or None),
        ("Gap penalties", ", ".join(penalties) or "by position"),
        (f"{iteration.significance_name} cut-off of the list", short(iteration.cutoff) or None),
        (f"{iteration.significance_name} cut-off of the profile", short(iteration.profile_cutoff) or None),
        ("Iterations", f"{len(report.iterations)} (at most {settings['iterations']})" if "iterations" in settings else None),
        ("Weights of rows by method", settings.get("weight_method")),
        ("Started", run["started"]),
        ("Completed", run["completed"] or "the report does not say so"),
        ("Program", run["program"]),
    ]  # fmt: skip
    return [(name, printable(str(text))) for name, text in pairs if text not in (None, "")]


def overview(iteration, found):
    """The first hits as bars under a scale of the query, or None: {ticks, rows}."""
    length = iteration.query_length
    if not length or not any(stretches for _, stretches in found.stretches):
        return None
    step = 10 ** math.floor(math.log10(max(length / 4, 1)))
    step *= next(m for m in (1, 2, 5, 10) if length / (m * step) <= 6)
    ticks = [(number, 100 * (number - 0.5) / length) for number in range(step, length + 1, step)]
    rows = []
    for hit, stretches in found.stretches:
        bars = [
            (100 * (min(start, end) - 1) / length, 100 * (abs(end - start) + 1) / length, class_of(value),
             f"{min(start, end)}-{max(start, end)}", start > end)
            for start, end, value in reversed(stretches)
        ]  # fmt: skip
        rows.append((hit, bars))
    return {"ticks": ticks, "rows": rows, "left": len(found.hits) - len(rows), "length": length}


def rounds(report):
    """What each iteration brought and lost; nothing where there is only one."""
    if len(report.iterations) < 2:
        return []
    result = []
    for one in report.iterations:
        sure = sum(is_sure(hit, one) for hit in one.hits)
        lists = [(kind, [(h.rank, printable(h.target), h.significance, printable(h.title)) for h in hits[:_ROUND_HITS]], len(hits))
                 for kind, hits in (("came in", one.appeared), ("went", one.dropped))]  # fmt: skip
        best = [(h.rank, printable(h.target), h.significance, printable(h.title)) for h in one.hits[:10]]
        result.append({"number": one.number, "hits": len(one.hits), "sure": sure, "lists": lists, "best": best})
    return result


def multiple_alignment(iteration, found):
    """Blocks of the query, its profile's rows and what the columns say, as marked-up lines; None without rows."""
    if not found.rows:
        return None
    length, rows = iteration.query_length, len(found.rows) + found.rows_left
    fewest = max(2, rows // 10)
    commonest, bits, covered, sums = [], [], [], []
    for column, letter in zip(found.columns, found.query):
        letters = Counter({c: n for c, n in column.items() if c != GAP}) + Counter(letter)
        best, count = letters.most_common(1)[0]
        total = sum(letters.values())
        share = count / total if total >= fewest else 0
        commonest.append((best, "i" if share >= 0.8 else "p" if share >= 0.4 else ""))
        bits.append(max(0.0, information(letters)) if total >= fewest else 0.0)
        covered.append(sum(column.values()) - column[GAP])
        sums.append((best if share >= 0.5 else best.lower() if share >= 0.2 else ".", best, count, total))
    width = min(24, max([5, *(len(name) for name, _ in found.rows)]))
    blocks = []
    for start in range(0, length, COLUMNS_SHOWN):
        cut = slice(start, min(start + COLUMNS_SHOWN, length))
        ruler = _ruler("x" * (cut.stop - start), start + 1)
        lines = [f"<i>{' ' * width} {ruler}</i>"]
        lines.append(f"{'information':<{width}} <u>{_bars(bits[cut], 4.3)}</u>")
        lines.append(f"{'rows aligned':<{width}} <u>{_bars(covered[cut], rows)}</u>")
        lines.append(f"{'commonest':<{width}} {escape(''.join(mark for mark, *_ in sums[cut]))}")
        for name, letters in [("query", found.query[cut])] + [(name, row[cut]) for name, row in found.rows]:
            if name != "query" and not letters.strip():
                continue
            classes = [css if c == best else "g" if c == GAP else "" for c, (best, css) in zip(letters, commonest[cut])]
            lines.append(f"{escape(name[:width].ljust(width))} {spans(letters, classes)}")
        blocks.append(Markup("\n".join(lines)))
    table = [
        (position, letter, best, count, total, value, covered[position - 1])
        for position, (letter, (_, best, count, total), value) in enumerate(zip(found.query, sums, bits), 1)
    ]
    return {"blocks": blocks, "rows": rows, "left": found.rows_left, "columns": table}


def _bars(values, largest):
    return "".join(HEIGHTS[min(8, math.ceil(8 * value / largest))] if largest else " " for value in values)
