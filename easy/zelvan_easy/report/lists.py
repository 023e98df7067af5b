"""Headers and score lists."""

from __future__ import annotations

import re

from zelvan_easy.report.pieces import text_of
from zelvan_easy.report.records import Hit, ReportError

_WITH_X = re.compile(rb"(?: *(\d+) )? *(-?\d+) +(-?\d+\.\d+|-?inf|-?nan) +(\S+)")
_WITH_RANK = re.compile(rb" *(\d+) (-?\d+) ")
_PLAIN = re.compile(rb"(-?\d+) ")
_LENGTH = re.compile(rb"^(.*?)  (\d+)$")
_VALUE_WIDTH = 8


def read_header(lines):
    header = {}
    for line in lines:
        if line.startswith(b"# ") and b":" in line:
            name, _, value = text_of(line[2:]).partition(":")
            header[name.strip()] = value.strip()
    return header


def read_hits(lines):
    lines = list(lines)
    if not lines:
        return []
    if _WITH_X.match(lines[0]):
        return [_hit_with_statistics(line, rank) for rank, line in enumerate(lines, 1)]
    matches = [_WITH_RANK.match(line) for line in lines]
    if not all(match and int(match[1]) == rank for rank, match in enumerate(matches, 1)):
        matches = [_PLAIN.match(line) for line in lines]
    rests = [line[match.end() :] if match else _unreadable(line) for line, match in zip(lines, matches)]
    lengths = [None] * len(lines)
    # SHOW_LEN puts the length behind the padded names, so that it begins in the same column on every line.
    split = [_LENGTH.fullmatch(rest) for rest in rests]
    if all(split) and len({len(part[1]) for part in split}) == 1:
        rests, lengths = [part[1] for part in split], [int(part[2]) for part in split]
    return [
        Hit(rank, int(match[match.lastindex]), None, None, *_names(rest), length)
        for rank, (match, rest, length) in enumerate(zip(matches, rests, lengths), 1)
    ]


def _unreadable(line):
    raise ReportError(f"cannot read this line of the score list: {text_of(line)}")


def _hit_with_statistics(line, rank):
    match = _WITH_X.match(line) or _unreadable(line)
    try:
        value = float(match[4])
    except ValueError:
        _unreadable(line)
    names = line[match.start(4) + max(_VALUE_WIDTH, len(match[4])) + 1 :]
    return Hit(rank, int(match[2]), float(match[3]), value, *_names(names))


def _names(text):
    """Identifier (which has no blanks, but may be empty) and title."""
    target, _, title = text_of(text).partition(" ")
    return target, title.strip()


_CHANGES = (b"# Reported in iteration ", b"# Reported in this iteration ")


def read_changes(lines):
    lists, taken = ([], []), None
    for line in lines:
        if line.startswith(_CHANGES):
            taken = lists[line.startswith(_CHANGES[1])]
        elif line.startswith(b"# Start_Alignments_Rank: ") or taken is None and line not in (b"", b"#"):
            break
        elif taken is not None and line and not line.startswith(b"#"):
            match = _WITH_X.match(line)
            taken.append(_hit_with_statistics(line, int(match[1]) if match and match[1] else len(taken) + 1))
    return lists
