"""Builds sets of volumes each of which is a sample of the whole: their sequences are dealt out like cards.

Such volumes can be searched one by one, each with statistics of its own (plan.py). Those that zelvan makes of a text that
is too large for one database are no samples, as it orders the sequences by length over the whole set.

The text is dealt into a file for each volume, zelvan builds them side by side, and a list makes one database of them. It
holds what src/bdb/volume_list.h says.
"""

from __future__ import annotations

import contextlib
import mmap
import os
import subprocess
from array import array
from functools import partial
from pathlib import Path
from typing import NamedTuple

from zelvan_easy import child
from zelvan_easy.database import index_blocks, read_header, volumes
from zelvan_easy.engine import reason
from zelvan_easy.failure import Failure, refused
from zelvan_easy.pool import Pool

_TEXT_TOGETHER = 4 << 30  # bytes of text that are built at a time; it takes as much memory
_COUNTED_TOGETHER = 1 << 20  # residues
_FREQUENT = b"LAGVESIKRDTPNQFYMHCWX"  # residues, the most frequent first
_ODD, _BITS = 0x9E3779B97F4A7C15, (1 << 64) - 1


class Entry(NamedTuple):
    """What a list tells of a volume."""

    sequences: int
    residues: int
    characters: int
    fingerprint: int
    counts: dict  # of the bytes that residues are stored as


def deal(blocks, count, work, name, engine):
    """Builds work/built.volumes and so many volumes from lists of pieces of FASTA, each with a ">" where a sequence
    begins. name: of the text, for reports. A failure tells the rest of "could not be built: ..."."""
    folders = [Path(work, f"{volume:02}") for volume in range(count)]
    texts = [folder / "text" / name for folder in folders]
    for text in texts:
        text.parent.mkdir(parents=True)
    dealt = _deal(blocks, texts)
    if dealt < count:
        raise refused(f"it has {dealt} sequences, which do not make {count} volumes")
    largest = max(text.stat().st_size for text in texts)
    processors = len(os.sched_getaffinity(0)) if hasattr(os, "sched_getaffinity") else os.cpu_count() or 1
    with Pool(max(1, min(count, processors, _TEXT_TOGETHER // largest)), partial(_build_volume, engine)) as pool:
        entries = _entries(pool, texts)
    for volume, folder in enumerate(folders):
        for ending in (".bix", ".bsq"):
            os.replace(folder / f"built{ending}", Path(work, f"built.{volume:02}{ending}"))
    Path(work, "built.volumes").write_text(_list(entries), encoding="ascii")


def _deal(blocks, texts):
    """Returns how many sequences there were."""
    dealt = 0
    with contextlib.ExitStack() as stack:
        files = [stack.enter_context(open(text, "wb")) for text in texts]
        for pieces in blocks:
            shares = [[] for _ in files]
            for piece in pieces:
                dealt += piece.startswith(b">")
                shares[(dealt - 1) % len(files)].append(piece)
            for file, share in zip(files, shares):
                file.writelines(share)
    return dealt


def _entries(pool, texts):
    waiting, found = list(reversed(texts)), {}
    while waiting or pool.busy:
        while waiting and pool.idle:
            pool.give(waiting.pop())
        for text, answer in pool.wait():
            if isinstance(answer, Exception):
                raise answer if isinstance(answer, (Failure, OSError)) else Failure(str(answer))
            if isinstance(answer, int):
                raise refused(f"{len(texts)} volumes would be larger than volumes can be: "
                              f"make at least {len(texts) * answer}")  # fmt: skip
            found[text] = answer
    return [found[text] for text in texts]


# ---- One volume


def build_command(engine, name):
    """The arguments of zelvan for building "built" from a text in the folder below it, which zelvan runs in: a text may
    have any name."""
    return [engine.program, "-mode", "99", "-d", name, "-db_format", "1", "-dd", "..", "-bdb", "built", "-ai", "0",
            "-md", engine.matrices, "-max_nseq", "1000000000", "-max_seq_len", "2147483647", "-v", "0", "-time", "0"]  # fmt: skip


def _build_volume(engine, text):
    """The Entry of the volume, or the number of volumes that zelvan made because one does not hold the text."""
    folder = text.parent.parent
    errors, status = child.run(build_command(engine, text.name), cwd=text.parent, env=engine.environment,
                               stdout=subprocess.DEVNULL)  # fmt: skip
    if status != 0:
        raise Failure(reason(errors, status))
    made = volumes(folder, "built")
    text.unlink()
    return len(made) if len(made) > 1 else _entry(folder)


def _entry(folder):
    path = folder / "built.bix"
    counts = {}
    with contextlib.ExitStack() as stack:
        index = stack.enter_context(open(path, "rb"))
        file = stack.enter_context(open(folder / "built.bsq", "rb"))
        stored = stack.enter_context(mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ))
        _, _, sequences, residues, characters, *_ = read_header(index)
        parts, held = [], 0
        for block in index_blocks(index):
            numbers = array("i", block)
            for at, size in zip(numbers[4::6], numbers[5::6]):
                parts.append(stored[at + 1 : at + size - 1])  # without the pads at both ends
                held += size
                if held > _COUNTED_TOGETHER:
                    _count(b"".join(parts), counts)
                    parts, held = [], 0
        _count(b"".join(parts), counts)
    return Entry(sequences, residues, characters, fingerprint(path), counts)


def _count(residues, counts):
    """Adds them up letter by letter, taking each one out: much faster in Python than a loop over the bytes."""
    rare = set(residues.translate(None, _FREQUENT))
    for byte in (*_FREQUENT, *rare):
        rest = residues.translate(None, bytes((byte,)))
        counts[byte] = counts.get(byte, 0) + len(residues) - len(rest)
        residues = rest


def fingerprint(path):
    """As src/bdb/volume_list.cpp computes it."""
    value = os.path.getsize(path) * _ODD & _BITS
    with open(path, "rb") as file:
        for block in iter(lambda: file.read(1 << 16), b""):
            for word in array("Q", block + bytes(-len(block) % 8)):
                value = (value ^ word) * _ODD & _BITS
                value = (value << 29 | value >> 35) & _BITS
    return value


def _list(entries):
    counts = {}
    for entry in entries:
        for byte, number in entry.counts.items():
            counts[byte] = counts.get(byte, 0) + number
    return "".join((
        "ZELVAN volumes 1\n",
        f"sequences {sum(entry.sequences for entry in entries)}\n",
        f"residues {sum(entry.residues for entry in entries)}\n",
        f"characters {sum(entry.characters for entry in entries)}\n",
        *(f"count {byte} {number}\n" for byte, number in sorted(counts.items()) if number),
        *(f"volume {one.sequences} {one.residues} {one.characters} {one.fingerprint:016x}\n" for one in entries),
        "end\n",
    ))  # fmt: skip
