"""Binary databases: reads what they hold."""

from __future__ import annotations

import hashlib
import math
import os
import struct
from array import array
from dataclasses import dataclass, field
from itertools import islice
from pathlib import Path

from zelvan_easy.failure import cause, refused
from zelvan_easy.inputs import kind_of

_RECORD = struct.Struct("=6i")
LEAST_SEQUENCES = 50  # fewer do not tell what scores chance reaches
LEAST_IN_SHARE = 5000  # the shipped fit needs some thousand; fewer are searched in less time than runs take to start
_UNLIKE = 0.1  # parts of the spread of lengths; samples of 5,000 differ by 0.014 from the whole, sorted volumes by 0.5 and more


@dataclass
class Database:
    folder: str
    root: str
    source: str  # the text that it was built from
    built: str  # when
    kind: str
    indexed: bool  # holds codes instead of letters
    alphabet: str  # that the codes belong to
    sequences: int
    residues: int
    longest: int
    longest_name: int
    longest_title: int
    digest: str  # of its content
    shares: list = field(default_factory=list)  # [sequences, residues] of each volume, if each is a sample of the whole


# ---- Binary databases


def _numbers(file, count=1):
    data = file.read(4 * count)
    if len(data) != 4 * count:
        raise struct.error("cut off")
    values = struct.unpack(f"={count}i", data)
    return values[0] if count == 1 else values


def read_header(file):
    indexed, length = _numbers(file, 2)
    alphabet = file.read(length).decode("latin-1")
    sequences, residues, size = _numbers(file, 3)
    built = file.read(_numbers(file)).rstrip(b"\n\0").decode("latin-1")
    source = os.fsdecode(file.read(_numbers(file)).rstrip(b"\0"))
    return bool(indexed), alphabet, sequences, residues, size, built, source


def index_blocks(file):
    """Whole records of the index, some thousand at a time."""
    while True:
        block = file.read(_RECORD.size * 4096)
        if not block:
            return
        yield block[: len(block) // _RECORD.size * _RECORD.size]


def _index(file):
    """The (identifier position, length, title position, length, residue position, length) of each sequence."""
    for block in index_blocks(file):
        yield from _RECORD.iter_unpack(block)


def volumes(folder, root):
    """The names of the databases that the name stands for: itself, or the volumes of a set."""
    try:
        listed = Path(folder, root + ".volumes").read_bytes()
    except FileNotFoundError:
        return [root]
    if os.path.exists(Path(folder, root + ".bix")):
        return [root]  # zelvan refuses it if there are volumes, too
    return [f"{root}.{volume:02}" for volume in range(listed.count(b"\nvolume "))]


def files_of(folder, root):
    """All files of a binary database, a set's list first."""
    names = volumes(folder, root)
    paths = [Path(folder, name + ending) for name in names for ending in (".bix", ".bsq")]
    return paths if names == [root] else [Path(folder, root + ".volumes"), *paths]


def read_built(folder, root):
    """The binary database of that name."""
    names = volumes(folder, root)
    longest, sequences, residues, digest, samples = [0, 0, 0], 0, 0, hashlib.sha256(), []
    volume = root
    try:
        if not names:
            raise ValueError("the list names no volumes")
        for volume in names:
            with open(Path(folder, volume + ".bix"), "rb") as file:
                indexed, alphabet, count, number, size, built, source = read_header(file)
                records, logs = 0, array("d")
                step = 6 * (1 + count // 100_000)  # a part of the lengths tells how those of many are distributed
                for block in index_blocks(file):
                    numbers = array("i", block)  # there may be millions
                    records += len(numbers) // 6
                    of_block = (max(numbers[5::6], default=2) - 2, max(numbers[1::6], default=0), max(numbers[3::6], default=0))
                    longest = [max(pair) for pair in zip(longest, of_block)]
                    if len(names) > 1:
                        logs.extend(math.log(max(1, length - 2)) for length in numbers[5::step])
                letters = Path(folder, volume + ".bsq").stat().st_size
                if (records, letters) != (count, size):
                    raise ValueError("the files do not fit the header")
                file.seek(0)
                for block in iter(lambda: file.read(1 << 20), b""):
                    digest.update(block)
            digest.update(str(letters).encode())
            sequences, residues = sequences + count, residues + number
            samples.append((count, number, logs))
        sample = "".join(letters for _, _, letters in islice(read_sequences(folder, root), 200))
    except OSError as problem:
        raise refused(f"the database cannot be read: {cause(problem)}") from problem
    except (struct.error, ValueError, IndexError) as problem:
        raise refused(
            f"the database {Path(folder, volume)}.bix, .bsq is damaged, or is none: build it again") from problem
    return Database(str(folder), root, source, built, kind_of(sample), indexed, alphabet, sequences, residues, *longest,
                    digest.hexdigest(), _shares(samples))  # fmt: skip


def _shares(samples):
    """[sequences, residues] of each volume if each is a sample of the whole, so that it can be searched with statistics of
    its own; else nothing. Scores depend on lengths, so these tell it: the mean of their logarithms, and its spread.
    samples: sequences, residues and logarithms of lengths of each volume."""
    if len(samples) == 1 or min(count for count, *_ in samples) < LEAST_IN_SHARE:
        return []
    means = [math.fsum(logs) / len(logs) for _, _, logs in samples]
    squares = [math.fsum(value * value for value in logs) / len(logs) for _, _, logs in samples]
    total = sum(count for count, *_ in samples)
    mean, square = (sum(one[0] * value for one, value in zip(samples, values)) / total for values in (means, squares))

    def spread(mean, square):
        return math.sqrt(max(0.0, square - mean * mean))

    unlike = _UNLIKE * spread(mean, square)
    alike = all(abs(own - mean) <= unlike and abs(spread(own, own_square) - spread(mean, square)) <= unlike
                for own, own_square in zip(means, squares))  # fmt: skip
    return [[count, residues] for count, residues, _ in samples] if alike else []


def read_sequences(folder, root):
    """Yields (identifier, title, residues) of each sequence of a binary database, in stored order."""
    for volume in volumes(folder, root):
        yield from _read_volume(folder, volume)


def _read_volume(folder, root):
    with open(Path(folder, root + ".bix"), "rb") as index, open(Path(folder, root + ".bsq"), "rb") as file:
        indexed, alphabet, *_ = read_header(index)
        for at, name, title_at, title, residues_at, length in _index(index):
            file.seek(at)
            data = file.read(residues_at - at + length)
            residues = data[residues_at - at + 1 : -1]
            if indexed:
                residues = "".join(alphabet[code] for code in residues)
            else:
                residues = residues.decode("latin-1")
            yield (data[:name].decode("utf-8", "surrogateescape"),
                   data[title_at - at : title_at - at + title].decode("utf-8", "surrogateescape"), residues)  # fmt: skip


def built_name(path):
    """(folder, root) if the path names a binary database, with or without its endings; else None."""
    text = str(path)
    ending = next((ending for ending in (".bix", ".bsq", ".volumes") if text.endswith(ending)), "")
    root = text[: -len(ending) or None]
    if root != text or not os.path.isfile(text):
        if os.path.isfile(root + ".bix") and os.path.isfile(root + ".bsq") or os.path.isfile(root + ".volumes"):
            folder, name = os.path.split(os.path.abspath(root))
            return folder, name
    return None


# ---- What is asked of them


def extract(database, wanted, out):
    """Writes the sequences with these identifiers as FASTA, in the order asked for; returns those not found."""
    places = {name: [] for name in wanted}
    found = {}
    for name, title, residues in read_sequences(database.folder, database.root):
        # "P12345" finds sp|P12345|NAME_SPECIES
        for key in (name, *name.split("|")):
            if key in places and key not in found:
                found[key] = (name, title, residues)
        if len(found) == len(places):
            break
    for key in wanted:
        if key in found:
            name, title, residues = found[key]
            out.write(f">{name} {title}".rstrip(" -") + "\n" if title == "-" else f">{name} {title}\n")
            out.writelines(residues[at : at + 60] + "\n" for at in range(0, len(residues), 60))
    return [key for key in wanted if key not in found]


def refuse_small(database):
    if database.sequences < LEAST_SEQUENCES:
        raise refused(
            f"the database has {database.sequences} sequences: at least {LEAST_SEQUENCES} are needed to learn what "
            "scores chance reaches. Search them together with a larger database"
        )
