"""A report as one self-contained page, and an index of many.

    with open_report(path) as report:
        summary = write_page(report, out)                 # a text stream
    write_index([(summary, "engb.html"), ...], out)

Pages need neither network nor scripts; with scripts the table sorts and filters, and downloads come unpacked. Colours
repeat what letters, markers and numbers say, so that a page can be read without them and printed.
"""

from __future__ import annotations

import pathlib
import tempfile
from typing import NamedTuple

import jinja2
from markupsafe import Markup

from zelvan_easy.formats import printable
from zelvan_easy.formats.table import rows_of
from zelvan_easy.page import charts, view
from zelvan_easy.page.downloads import PassingTable, every_download
from zelvan_easy.report import Report

_HERE = pathlib.Path(__file__).parent
_PARTS_AT_ONCE = 2000
HITS_AT_ONCE = 500  # rows of the table: a browser lays out thousands only when they are asked for
LIBRARIES = [("tablesort", "5.7.1", "tablesort.LICENSE")]


class Summary(NamedTuple):
    """What an index says of a report."""

    query: str
    title: str
    length: int | None
    hits: int
    sure: int  # up to the cut-off for the profile
    best: str
    best_title: str
    best_value: float | None
    rounds: int
    converged: bool


def _environment():
    environment = jinja2.Environment(
        loader=jinja2.FileSystemLoader(_HERE), autoescape=True, trim_blocks=True, lstrip_blocks=True
    )
    environment.filters["short"] = view.short
    environment.filters["thousands"] = lambda number: f"{number:,}"
    return environment


def _file(name):
    return (_HERE / name).read_text(encoding="utf-8")


def _write(out, template, context):
    common = {
        "style": Markup(_file("style.css")),
        "script": Markup(_file("tablesort.min.js") + _file("page.js")),
        "libraries": [(name, version, _file(licence)) for name, version, licence in LIBRARIES],
    }
    parts = _environment().get_template(template).stream(common, **context)
    parts.enable_buffering(_PARTS_AT_ONCE)
    for text in parts:
        out.write(text)


def best_of(hits):
    """The first of a ranked list; lists without statistics may stand in the order of the database."""
    if hits and hits[0].significance is None:
        return max(hits, key=lambda hit: hit.score)
    return hits[0] if hits else None


def summary_of(report, iteration):
    header = iteration.header
    best = best_of(iteration.hits)
    return Summary(
        printable(iteration.query), printable(header.get("Query Title", "")), iteration.query_length,
        len(iteration.hits), sum(view.is_sure(hit, iteration) for hit in iteration.hits),
        printable(best.target) if best else "", printable(best.title) if best else "",
        best.significance if best else None, len(report.iterations),
        iteration.number > 0 and not iteration.appeared and not iteration.dropped,
    )  # fmt: skip


def write_page(report, out, iteration=None, most=250, residues=None):
    """Writes the page of an iteration, with at most so many alignments one by one, and returns its Summary. residues:
    those of the query, which a report shows as far as they are aligned, and without what was masked."""
    chosen = report.iteration(iteration)
    table = PassingTable()
    with tempfile.TemporaryFile("w+", encoding="utf-8", errors="surrogateescape", newline="\n") as records:
        found = view.gather(chosen, table.passing(rows_of(Report([chosen], {}), unaligned=True)), most, records, residues)
        taken = every_download(report, chosen, found, table, records)
    summary = summary_of(report, chosen)
    _write(out, "page.html.j2", {
        "summary": summary,
        "iteration": chosen,
        "facts": view.facts(report, chosen),
        "overview": view.overview(chosen, found),
        "hits": found.hits,
        "at_once": HITS_AT_ONCE,
        "has_cut": chosen.profile_cutoff is not None,
        "rounds": view.rounds(report),
        "figures": charts.figures(chosen, found.lengths, chosen.query_length or 0),
        "alignments": found.shown,
        "left": found.left,
        "multiple": view.multiple_alignment(chosen, found),
        "downloads": taken,
    })  # fmt: skip
    return summary


def write_index(entries, out, title="ZELVAN searches"):
    """Writes a page with a line for each (Summary, link) to a text stream."""
    entries = list(entries)
    widest = max((summary.hits for summary, _ in entries), default=0) or 1
    _write(out, "index.html.j2", {
        "title": title,
        "entries": [(summary, link, 100 * summary.hits / widest, 100 * summary.sure / widest) for summary, link in entries],
    })  # fmt: skip
