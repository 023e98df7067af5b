"""What a search prints when it is asked to: scores of all sequences, multiple alignments, profiles."""

from __future__ import annotations

import re

from zelvan_easy.report.pieces import PLAIN_ROW, find, lines_of, text_of
from zelvan_easy.report.records import Profile, ReportError

_DUMPED = re.compile(rb"#!\d+ (\d+) (-?[\d.]+)")
_ALIGNED_ROW = re.compile(rb"\S* +\S+ +-?\d+ +-?\d+ +\d+: ([^\n]*)")
_MULTIPLE = b"\n# Multiple alignment Start"


def read_scores(file, start, end):
    begin = find(file, b"##START DUMP OF LPFIT INPUT", start, end)
    if begin is None:
        return
    for line in lines_of(file, begin, end):
        match = _DUMPED.fullmatch(line)
        if match:
            yield int(match[1]), float(match[2])


def read_query_letters(file, start, end):
    letters, position, first = {}, 1, False
    begin = find(file, _MULTIPLE, start, end)
    for line in lines_of(file, begin + 1, end) if begin is not None else ():
        if line.startswith(b"#"):
            words = line[1:].split()
            if line.startswith(b"# Multiple alignment End"):
                break
            if len(words) == 1 and words[0].isdigit():
                position, first = int(words[0]), True
        elif first:
            match = _ALIGNED_ROW.fullmatch(line)
            if not match:
                raise ReportError(f"cannot read this line of the multiple alignment: {text_of(line)}")
            first = False
            for offset, letter in enumerate(match[1].translate(PLAIN_ROW).decode("ascii")):
                letters[position + offset] = letter
    return letters


def read_profile(file, mark, start, end):
    begin = find(file, mark, start, end)
    if begin is None:
        return None
    lines = lines_of(file, begin + 1, end)
    next(lines)
    heading = next(lines, b"")
    if not heading.startswith(b"Posn:"):
        raise ReportError(f"cannot read the heading of this table of a profile: {text_of(heading)}")
    alphabet = heading[len(b"Posn:") :].decode("latin-1")[3::4]
    rows = []
    for line in lines:
        match = re.match(rb" *(\d+):", line)
        if not match:
            break
        rows.append([int(word) for word in line[match.end() :].split()])
        if len(rows[-1]) != len(alphabet):
            raise ReportError(f"cannot read this line of the table of a profile: {text_of(line)}")
    return Profile(alphabet, rows)
