"""A report as one self-contained page, and an index of many.

    with open_report(path) as report:
        summary = write_page(report, out)                 # a text stream
    write_index([(summary, "engb.html"), ...], out)

Pages need neither network nor scripts; with scripts the table sorts and filters, and downloads come unpacked. Colours
repeat what letters, markers and numbers say, so that a page can be read without them and printed.
"""

from __future__ import annotations

import base64
import gzip
import io
import pathlib
from typing import NamedTuple

import jinja2
from markupsafe import Markup

from zelvan_easy.formats import printable
from zelvan_easy.page import charts, view

_HERE = pathlib.Path(__file__).parent
_LARGEST_DOWNLOAD = 700_000  # compressed bytes of each
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


class _TooLarge(Exception):
    pass


class _Packer:
    """A text stream that compresses, up to the largest download."""

    def __init__(self):
        self.packed = io.BytesIO()
        self.file = gzip.GzipFile(fileobj=self.packed, mode="wb", mtime=0)

    def write(self, text):
        self.file.write(printable(text).encode("utf-8"))
        if self.packed.tell() > _LARGEST_DOWNLOAD:
            raise _TooLarge


def _packed(writers):
    """What the first of the writers writes that is not too large to stand in a page, compressed for a link, or None."""
    for write in writers:
        packer = _Packer()
        try:
            write(packer)
        except _TooLarge:
            continue
        packer.file.close()
        return "data:application/gzip;base64," + base64.b64encode(packer.packed.getvalue()).decode("ascii")
    return None


def summary_of(report, iteration):
    header = iteration.header
    best = iteration.hits[0] if iteration.hits else None
    return Summary(
        printable(iteration.query), printable(header.get("Query Title", "")), iteration.query_length,
        len(iteration.hits), sum(view.is_sure(hit, iteration) for hit in iteration.hits),
        printable(best.target) if best else "", printable(best.title) if best else "",
        best.significance if best else None, len(report.iterations),
        iteration.number > 0 and not iteration.appeared and not iteration.dropped,
    )  # fmt: skip


def write_page(report, out, iteration=None, most=250):
    """Writes the page of an iteration, with at most so many alignments one by one, and returns its Summary."""
    chosen = report.iteration(iteration)
    found = view.gather(chosen, most)
    summary = summary_of(report, chosen)
    query_length = chosen.query_length or 0
    context = {
        "summary": summary,
        "iteration": chosen,
        "facts": view.facts(report, chosen),
        "overview": view.overview(chosen, found),
        "hits": found.hits,
        "has_cut": chosen.profile_cutoff is not None,
        "rounds": view.rounds(report),
        "figures": charts.figures(chosen, found.lengths, query_length),
        "alignments": found.shown,
        "left": found.left,
        "multiple": view.multiple_alignment(chosen, found),
        "downloads": [
            (name, label, data)
            for name, label, writers in view.downloads(report, chosen, found)
            if (data := _packed(writers)) is not None
        ],
        "style": Markup(_file("style.css")),
        "script": Markup(_file("tablesort.min.js") + _file("page.js")),
        "libraries": [(name, version, _file(licence)) for name, version, licence in LIBRARIES],
    }
    for part in _environment().get_template("page.html.j2").generate(context):
        out.write(part)
    return summary


def write_index(entries, out, title="ZELVAN searches"):
    """Writes a page with a line for each (Summary, link) to a text stream."""
    entries = list(entries)
    widest = max((summary.hits for summary, _ in entries), default=0) or 1
    context = {
        "title": title,
        "entries": [(summary, link, 100 * summary.hits / widest, 100 * summary.sure / widest) for summary, link in entries],
        "style": Markup(_file("style.css")),
        "script": Markup(_file("tablesort.min.js") + _file("page.js")),
        "libraries": [(name, version, _file(licence)) for name, version, licence in LIBRARIES],
    }
    for part in _environment().get_template("index.html.j2").generate(context):
        out.write(part)
