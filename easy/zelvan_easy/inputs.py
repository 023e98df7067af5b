"""Reads queries as people have them: FASTA or FASTQ, compressed or not, DNA and protein, from files or a pipe."""

from __future__ import annotations

import bz2
import gzip
import io
import lzma
import os
import re
import sys
import zlib
from typing import NamedTuple

from zelvan_easy.failure import Failure, cause, refused

PROTEIN, DNA = "protein", "dna"
NAME_LIMIT = 1000  # characters of a name that are kept; longer ones are not names

_BASES = "ACGTUN"
_NUCLEOTIDES = frozenset("ACGTUNRYSWKMBDHVX")
_MAGIC = {b"\x1f\x8b": "gzip", b"BZh": "bzip2", b"\xfd7zXZ\x00": "xz", b"\x28\xb5\x2f\xfd": "zstd"}
# What a damaged or cut off compressed file raises while it is read.
READ_ERRORS = (OSError, EOFError, zlib.error, lzma.LZMAError)


class Query(NamedTuple):
    number: int  # from 1, in the order of the file
    name: str
    title: str
    kind: str
    residues: str  # capitals only; T for U and N for X in DNA
    problem: str = ""  # why it cannot be searched


def open_bytes(path):
    """A binary stream of what the file holds, decompressed; "-" is the standard input. Compression is recognised by
    the first bytes, whatever the name."""
    try:
        raw = sys.stdin.buffer if path == "-" else open(path, "rb")
        start = raw.peek(6)[:6]
    except OSError as problem:
        raise refused(f"cannot read {cause(problem)}") from problem
    kind = next((kind for magic, kind in _MAGIC.items() if start.startswith(magic)), None)
    if kind == "gzip":
        return gzip.GzipFile(fileobj=raw)
    if kind == "bzip2":
        return bz2.BZ2File(raw)
    if kind == "xz":
        return lzma.LZMAFile(raw)
    if kind == "zstd":
        return _open_zstd(raw, path)
    return raw


def _open_zstd(raw, path):
    try:
        import zstandard
    except ImportError as problem:
        raise refused(f"{path} is compressed with zstd: install the package python3-zstandard") from problem
    READ_ERRORS_OF_ZSTD[0] = zstandard.ZstdError
    return io.BufferedReader(zstandard.ZstdDecompressor().stream_reader(raw, read_across_frames=True), 1 << 17)


READ_ERRORS_OF_ZSTD = [OSError]  # zstandard is only imported where it is needed


def read_errors():
    return (*READ_ERRORS, READ_ERRORS_OF_ZSTD[0])


class _Plain(io.RawIOBase):
    """A stream with bytes that are not ASCII, which the readers refuse, shown as "?"."""

    _TABLE = bytes(c if 0 < c < 128 else ord("?") for c in range(256))

    def __init__(self, source, start):
        self._source, self._start = source, start

    def readable(self):
        return True

    def readinto(self, target):
        data = self._start[: len(target)] or self._source.read(len(target))
        self._start = self._start[len(data) :]
        target[: len(data)] = data.translate(self._TABLE)
        return len(data)


def read_queries(path, kind=None):
    """Yields the queries of a file. kind: what they are; None: each one is looked at."""
    import dnaio  # only here, so that all else does without it

    shown = "the standard input" if path == "-" else path
    number = 0
    try:
        source = open_bytes(path)
        start = source.read(1 << 16)
        if start.startswith(b"\xef\xbb\xbf"):
            start = start[3:]
        while start and not start.strip():
            start = source.read(1 << 16)
        start = start.lstrip()
        if not start:
            raise refused(f"{shown} is empty")
        if start[:1] not in (b">", b"@"):
            raise refused(f"{shown} is neither FASTA nor FASTQ: it begins with neither > nor @")
        layout = "fasta" if start[:1] == b">" else "fastq"
        if re.match(rb">[PFDRNX][1-3LC];", start):
            raise refused(f"{shown} is a PIR file: convert it to FASTA")
        with dnaio.open(io.BufferedReader(_Plain(source, start), 1 << 17), fileformat=layout) as records:
            for number, record in enumerate(records, 1):
                yield make_query(number, record.name, record.sequence, kind)
    except dnaio.FileFormatError as problem:
        raise Failure(f"{shown} is damaged after {number} sequences: {str(problem).rstrip('.')}") from problem
    except read_errors() as problem:
        text = cause(problem) if isinstance(problem, OSError) else str(problem)
        raise Failure(f"{shown} could not be read after {number} sequences: {text}") from problem


_NOT_LETTERS = {c: None for c in range(128) if not chr(c).isalpha()}


def make_query(number, header, sequence, kind=None):
    name, _, title = header.strip().partition(" ")
    name, _, tabbed = name.partition("\t")
    title = f"{tabbed} {title}".strip()
    residues = sequence.translate(_NOT_LETTERS).upper()
    kind = kind or kind_of(residues)
    problem = ""
    if not residues:
        problem = "it has no residues"
    elif kind == DNA:
        strange = sorted(set(residues) - _NUCLEOTIDES)
        residues = residues.replace("U", "T").replace("X", "N")
        if strange:
            problem = f"letters that are no nucleotides: {''.join(strange)}; is it protein?"
    return Query(number, name[:NAME_LIMIT] or f"query_{number}", title[:NAME_LIMIT], kind, residues, problem)


def kind_of(residues):
    """DNA where all letters are nucleotide codes and nine tenths of them bases."""
    bases = sum(residues.count(base) for base in _BASES)
    return DNA if residues and bases >= 0.9 * len(residues) and set(residues) <= _NUCLEOTIDES else PROTEIN


def file_name(query):
    """A name for the files of a query: unique by its number, the rest for people."""
    plain = re.sub(r"[^A-Za-z0-9.-]+", "_", query.name).strip("_.-")[:60]
    return f"{query.number:06d}_{plain}".rstrip("_")


def folder_name(number):
    """Where the files of that query go: below the folder of reports, a thousand queries together."""
    first = (number - 1) // 1000 * 1000
    return "" if first == 0 else f"{first + 1:07d}"


def default_output(path):
    stem = "queries" if path == "-" else re.sub(r"(\.(fa|fasta|faa|fna|fq|fastq|txt|gz|bz2|xz|zst))+$", "",
                                                os.path.basename(path), flags=re.I)  # fmt: skip
    return f"{stem or 'queries'}.results"
