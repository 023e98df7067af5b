"""What can be taken from a page: files that stand in it, compressed, unless they are too large for it."""

from __future__ import annotations

import base64
import gzip
import io
import shutil
from typing import NamedTuple

from zelvan_easy.formats import printable
from zelvan_easy.formats.alignment import UNKNOWN, fasta_record, query_row
from zelvan_easy.formats.json_report import write_json
from zelvan_easy.formats.table import COLUMNS, DEFAULT, format_row, row_values
from zelvan_easy.report import STOP

_LARGEST = 700_000  # compressed bytes of each
_ALL = 1_400_000  # and of all
_AT_ONCE = 1 << 16  # characters
_TABLE = [*DEFAULT, "qlen", "slen", "stitle"]


class Download(NamedTuple):
    name: str
    label: str
    part: str  # what it is confined to, where everything is too large
    link: str


class _TooLarge(Exception):
    pass


class _Packer:
    """A text stream that compresses what is written, up to a number of bytes."""

    def __init__(self, most):
        self._most = most
        self._packed = io.BytesIO()
        self._file = gzip.GzipFile(fileobj=self._packed, mode="wb", compresslevel=6, mtime=0)
        self._waiting, self._length = [], 0

    def write(self, text):
        self._waiting.append(text)
        self._length += len(text)
        if self._length >= _AT_ONCE:
            self._compress()
            if self._packed.tell() > self._most:
                raise _TooLarge

    def _compress(self):
        self._file.write(printable("".join(self._waiting)).encode("utf-8"))
        self._waiting, self._length = [], 0

    def link(self):
        self._compress()
        self._file.close()
        return "data:application/gzip;base64," + base64.b64encode(self._packed.getvalue()).decode("ascii")


def _taken(packer, text):
    """The packer, which has taken the text, or None where that was too much."""
    try:
        packer.write(text)
        return packer
    except _TooLarge:
        return None


class PassingTable:
    """The table of rows, written while they pass on the way to what the page shows: reading them takes longest."""

    def __init__(self):
        self._columns = [COLUMNS[name] for name in _TABLE]
        self._every, self._best = _Packer(_LARGEST), _Packer(_LARGEST)
        for packer in (self._every, self._best):
            packer.write("\t".join(_TABLE) + "\n")

    def passing(self, rows):
        found = None
        for row in rows:
            first = row.found is None or row.found is not found
            found = row.found
            if self._every or first and self._best:
                line = format_row(row_values(row, self._columns), _TABLE) + "\n"
                self._every = self._every and _taken(self._every, line)
                if first:
                    self._best = self._best and _taken(self._best, line)
            yield row

    def download(self, name):
        if self._every:
            return Download(name, "Table", "", self._every.link())
        return Download(name, "Table", "best alignments", self._best.link()) if self._best else None


def _download(name, label, most, writers):
    """What the first of the (part, writer) writes that is not too large, or None."""
    for part, write in writers:
        packer = _Packer(most)
        try:
            write(packer)
            return Download(name, label, part, packer.link())
        except _TooLarge:
            continue
    return None


def every_download(report, iteration, found, table, records):
    """Every Download that the page has room for. table: through which all rows have passed. records: the rows of the
    multiple alignment but for the query, as gathering left them."""
    name = "".join(c if c.isalnum() or c in "-." else "_" for c in printable(iteration.query)) or "query"

    def write_a3m(out):
        query = query_row(iteration, found.query.replace(STOP, UNKNOWN))
        out.write(fasta_record(query, query.letters))
        records.seek(0)
        shutil.copyfileobj(records, out, _AT_ONCE)

    def write_hits(out):
        write_json(report, out, iteration.number, alignments=False)

    made = [table.download(f"{name}.tsv")]
    for ending, label, writers in (
        ("a3m", "Alignment", [("", write_a3m)] if found.rows else []),
        ("json", "JSON", [("", lambda out: write_json(report, out)), ("hits", write_hits)]),
    ):
        room = _ALL - sum(len(download.link) for download in made if download) * 3 // 4
        made.append(_download(f"{name}.{ending}", label, min(_LARGEST, room), writers))
    return [download for download in made if download]
