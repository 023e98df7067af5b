"""What reports hold, as records."""

from __future__ import annotations

from typing import NamedTuple

GAP = "-"
STOP = "*"
SHIFT = "^"


class ReportError(Exception):
    """The input is not what it should be; the text says what to do."""


class Hit(NamedTuple):
    """One line of a score list."""

    rank: int
    score: int  # matrix units
    standardised: float | None  # x of the fit, or z-score; None without statistics
    significance: float | None  # E- or P-value
    target: str  # cut to SHOW_IDENT_WIDTH
    title: str  # cut to SHOW_TITLES_WIDTH
    length: int | None = None  # only with SHOW_LEN


class Alignment(NamedTuple):
    number: int  # 1 is the target's best
    score: int
    significance: float | None
    query_start: int
    query_end: int
    target_start: int
    target_end: int
    query_row: str
    target_row: str
    markers: str  # "*" identical, "." positive score, "^" frame shift
    frame_shifts: int = 0
    codons: tuple = ("", "", "")  # translated: the three bases of each column


class AlignedHit(NamedTuple):
    """A hit with its alignments."""

    rank: int
    query: str
    target: str
    title: str  # cut to SHOW_TITLES_WIDTH
    query_length: int | None  # None without alignments
    target_length: int | None
    translated: bool  # query positions are nucleotides
    alignments: list


class Profile(NamedTuple):
    alphabet: str
    rows: list  # of scores in the order of the alphabet, one row for each residue of the query
