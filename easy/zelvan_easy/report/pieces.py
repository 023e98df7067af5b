"""Pieces of a report file: found, read and decoded."""

from __future__ import annotations

import re

from zelvan_easy.report.records import GAP, STOP, ReportError

CHUNK = 1 << 20

# Letters of an aligned row, whatever its characters for gaps and stops were.
PLAIN_ROW = bytes(
    c if chr(c).isalpha() and c < 128 else ord(STOP) if c == ord("!") else ord(GAP) for c in range(256)
)


def read(file, start, length):
    file.seek(start)
    return file.read(max(0, length))


def find(file, mark, start, end):
    """Where the mark stands between start and end, or None."""
    while start < end:
        text = read(file, start, min(CHUNK + len(mark), end - start))
        at = text.find(mark)
        if at >= 0:
            return start + at
        start += CHUNK
    return None


def lines_of(file, start, end):
    """The lines between two places, without their ends. Other parts of the file may be read between them."""
    rest = b""
    while start < end:
        text = rest + read(file, start, min(CHUNK, end - start))
        start += CHUNK
        *whole, rest = text.split(b"\n")
        yield from whole
    if rest:
        yield rest


def text_of(bytes_):
    return bytes_.decode("utf-8", "surrogateescape")  # titles may hold any bytes


def whole_number(text):
    return int(text) if text and re.fullmatch(r"-?\d+", text) else None


def numbers(text):
    return [float(word) for word in text.split()] if text else None


def incomplete(mark):
    return ReportError(f'the report is incomplete: a line "{text_of(mark).strip()} ..." is missing')
