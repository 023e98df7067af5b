"""Alignments of hits."""

from __future__ import annotations

import re

from zelvan_easy.report.pieces import CHUNK, PLAIN_ROW, incomplete, read, text_of
from zelvan_easy.report.records import GAP, SHIFT, AlignedHit, Alignment, ReportError

_MARGIN = 8  # position and blank before the letters of an alignment line, and blank and position after them
_LONGEST = 9_999_999  # the largest position that fits its seven columns
_NEWLINE = b"\n"
_SECTION = b"\n# Start_Alignments_Rank: "
_SECTION_END = b"\n# End_Alignments_Rank: "
_HEADING = re.compile(
    rb"(\d+)\n# Query: (\S*) Target: (\S*) Number_of_Alignments: (\d+)\n# Target_Title: ?([^\n]*)(?=\n|\Z)"
)
_FIGURES = re.compile(
    rb"(\d+) Raw_Score: (-?\d+) Query_Length: (\d+) Target_Length: (\d+) (?:[EP]value: (\S+)|ln\(\)_Score: \S+)?([^\n]*)\n"
)
_FRAMES = re.compile(rb"# Residues: (\d+)-(\d+) Nucleotides: (\d+)-(\d+) Identical: \d+ Frame_Shifts: (\d+)\n")


def read_aligned(file, start, end):
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
        text += read(file, start, min(max(CHUNK, len(text)), end - start))
        start = min(file.tell(), end)
    if begin >= 0:
        raise incomplete(_SECTION_END)


def _aligned_hit(text):
    heading, *parts = text.split(b"\n# N: ")
    match = _HEADING.match(heading)
    if not match:
        raise ReportError(f"cannot read the heading of the alignments of rank {text_of(heading.partition(_NEWLINE)[0])}")
    rank, query, target, _, title = match.groups()
    alignments, query_length, target_length, translated = [], None, None, False
    for part in parts:
        figures = _FIGURES.match(part)
        close = part.rfind(b"# End_N: ")
        if not figures or close < 0:
            raise incomplete(b"# End_N:") if figures else _odd_alignment(part)
        if query_length is None:
            query_length, target_length = int(figures[3]), int(figures[4])
        body = part[figures.end() : close]
        if not figures[5] and figures[6]:
            body = figures[6] + b"\n" + body  # without statistics the first markers stand on this line
        translated = body.startswith(b"# Residues: ")
        read = _translated_alignment if translated else _alignment
        alignments.append(read(figures, body, max(query_length, target_length)))
    return AlignedHit(int(rank), text_of(query), text_of(target), text_of(title).strip(), query_length, target_length,
                      translated, alignments)  # fmt: skip


def _odd_alignment(part):
    return ReportError(f"cannot read this line of an alignment: {text_of(part.partition(_NEWLINE)[0])}")


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
    query_row = query.translate(PLAIN_ROW).decode("ascii")
    target_row = target.translate(PLAIN_ROW).decode("ascii")
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
    query_row = query.translate(PLAIN_ROW).decode("ascii")
    target_row = target.translate(PLAIN_ROW).decode("ascii")
    if len(query_row) != len(target_row) or len(markers) != len(query_row):
        raise _odd_alignment(b"# N: " + figures[0])
    shifts = int(places[5])
    if shifts:  # whatever FGAP_CHARACTER was: only there neither row has a residue
        markers = "".join([SHIFT if q == t == GAP else m for q, t, m in zip(query_row, target_row, markers)])
    return Alignment(int(figures[1]), int(figures[2]), _significance(figures), int(places[3]), int(places[4]),
                     int(places[1]), int(places[2]), query_row, target_row, markers, shifts, codons)  # fmt: skip
