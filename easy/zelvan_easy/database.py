"""Databases: reads what a binary one holds, and builds one from a text file, once, into a cache.

    with open_database("proteins.fasta.gz", engine) as database:
        database.folder, database.root             # what DB_DIR and BDB_ROOT are to be
        database.kind, database.sequences

A cache is a folder NAME.zelvan beside the text file, or in --cache, with one binary database for each state of the file
(its size and time). What is written appears under its name when it is complete, one run builds while others wait, and a
database that a run searches is not removed.
"""

from __future__ import annotations

import contextlib
import fcntl
import hashlib
import json
import os
import re
import shutil
import struct
import subprocess
import tempfile
import time
from array import array
from dataclasses import asdict, dataclass
from itertools import islice
from pathlib import Path

from zelvan_easy.engine import reason
from zelvan_easy.failure import Failure, cause, refused
from zelvan_easy.inputs import DNA, kind_of, open_bytes, read_errors

_HEAD = 1 << 20  # bytes of a text file that are looked at to tell DNA from protein
_RECORD = struct.Struct("=6i")
_DNA_LETTERS = bytes.maketrans(b"UXux", b"TNtn")  # the searches know no U, and N for what is not known
_TEXT_ENDINGS = re.compile(r"\.(fa|fasta|faa|fna|fas|ffn|frn|seq|txt|gz|bz2|xz|zst)$", re.I)
LEAST_SEQUENCES = 50  # fewer do not tell what scores chance reaches


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


# ---- Binary databases


def _numbers(file, count=1):
    data = file.read(4 * count)
    if len(data) != 4 * count:
        raise struct.error("cut off")
    values = struct.unpack(f"={count}i", data)
    return values[0] if count == 1 else values


def _header(file):
    indexed, length = _numbers(file, 2)
    alphabet = file.read(length).decode("latin-1")
    sequences, residues, size = _numbers(file, 3)
    built = file.read(_numbers(file)).rstrip(b"\n\0").decode("latin-1")
    source = os.fsdecode(file.read(_numbers(file)).rstrip(b"\0"))
    return bool(indexed), alphabet, sequences, residues, size, built, source


def _index_blocks(file):
    """Whole records of the index, some thousand at a time."""
    while True:
        block = file.read(_RECORD.size * 4096)
        if not block:
            return
        yield block[: len(block) // _RECORD.size * _RECORD.size]


def _index(file):
    """The (identifier position, length, title position, length, residue position, length) of each sequence."""
    for block in _index_blocks(file):
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
    longest, sequences, residues, digest = [0, 0, 0], 0, 0, hashlib.sha256()
    try:
        for volume in names:
            with open(Path(folder, volume + ".bix"), "rb") as file:
                indexed, alphabet, count, number, size, built, source = _header(file)
                records = 0
                for block in _index_blocks(file):
                    numbers = array("i", block)  # there may be millions
                    records += len(numbers) // 6
                    of_block = (max(numbers[5::6], default=2) - 2, max(numbers[1::6], default=0), max(numbers[3::6], default=0))
                    longest = [max(pair) for pair in zip(longest, of_block)]
                letters = Path(folder, volume + ".bsq").stat().st_size
                if (records, letters) != (count, size):
                    raise ValueError("the files do not fit the header")
                file.seek(0)
                for block in iter(lambda: file.read(1 << 20), b""):
                    digest.update(block)
            digest.update(str(letters).encode())
            sequences, residues = sequences + count, residues + number
        sample = "".join(letters for _, _, letters in islice(read_sequences(folder, root), 200))
    except OSError as problem:
        raise refused(f"the database cannot be read: {cause(problem)}") from problem
    except (struct.error, ValueError, IndexError) as problem:
        raise refused(
            f"the database {Path(folder, volume)}.bix, .bsq is damaged, or is none: build it again") from problem
    return Database(str(folder), root, source, built, kind_of(sample), indexed, alphabet, sequences, residues, *longest,
                    digest.hexdigest())  # fmt: skip


def read_sequences(folder, root):
    """Yields (identifier, title, residues) of each sequence of a binary database, in stored order."""
    for volume in volumes(folder, root):
        yield from _read_volume(folder, volume)


def _read_volume(folder, root):
    with open(Path(folder, root + ".bix"), "rb") as index, open(Path(folder, root + ".bsq"), "rb") as file:
        indexed, alphabet, *_ = _header(index)
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


# ---- Building


def _describe(path, head):
    """Kind of the sequences at the beginning of a text file."""
    start = head.lstrip()
    if not start:
        raise refused(f"{path} is empty")
    if not start.startswith(b">"):
        raise refused(f"{path} is not FASTA: it does not begin with >")
    if re.match(rb">[PFDRNX][1-3LC];", start):
        raise refused(f"{path} is a PIR file: build it with zelvan -mode 99 -db_format 0, and search what that makes")
    lines = head.split(b"\n")
    lines = lines[:-1] if len(head) >= _HEAD and len(lines) > 1 else lines  # the last one may be half a header
    residues = b"".join(line for line in lines if not line.startswith(b">")).decode("latin-1")
    return kind_of("".join(filter(str.isalpha, residues)).upper())


def _copy_sequences(head, source, sink, kind):
    """Copies FASTA to zelvan, with names for sequences that have none (it would stop there), and DNA in its letters.
    Returns the digest of what was copied."""
    unnamed, digest = 0, hashlib.sha256()
    rest = head.lstrip()
    while rest:
        more = source.read(_HEAD)
        # whole lines are handled at once; only headers, which are few, are looked at one by one
        end = rest.rfind(b"\n") + 1 if more else len(rest)
        if end == 0 and not rest.startswith(b">"):
            end = len(rest)  # a sequence of one very long line
        block, rest = rest[:end], rest[end:] + more
        parts = []
        for record in re.split(rb"(?m)^(?=>)", block):
            header, newline, residues = record.partition(b"\n") if record.startswith(b">") else (b"", b"", record)
            if newline and header[1:2] in b" \t\r\n":
                unnamed += 1
                header = b">unnamed_%d %s" % (unnamed, header[1:].strip())
            if kind == DNA:
                residues = residues.translate(_DNA_LETTERS)
            parts.append(header.replace(b"\r", b"") + newline + residues)
        block = b"".join(parts)
        digest.update(block)
        sink.write(block)
    return digest.hexdigest()


def build(path, folder, root, engine, kind=None):
    """Builds folder/root.bix and .bsq, or a set of volumes, from a text file; they appear when they are complete."""
    source = None
    try:
        source = open_bytes(str(path))
        head = source.read(_HEAD)
        kind = kind or _describe(path, head)
        os.makedirs(folder, exist_ok=True)
        with tempfile.TemporaryDirectory(prefix=".building-", dir=folder) as work:
            # zelvan reads a pipe under the name that reports are to show
            name = os.path.basename(str(path)) or "database"
            os.symlink("/dev/stdin", os.path.join(work, name))
            command = [engine.program, "-mode", "99", "-d", name, "-db_format", "1", "-dd", ".", "-bdb", "built",
                       "-ai", "0", "-md", engine.matrices, "-max_nseq", "1000000000", "-max_seq_len", "2147483647",
                       "-v", "0", "-time", "0"]  # fmt: skip
            with tempfile.TemporaryFile() as errors:
                process = subprocess.Popen(command, cwd=work, env=engine.environment, stdin=subprocess.PIPE,
                                           stdout=subprocess.DEVNULL, stderr=errors)  # fmt: skip
                digest = ""
                try:
                    with contextlib.suppress(BrokenPipeError), process.stdin as sink:
                        digest = _copy_sequences(head, source, sink, kind)
                    status = process.wait()
                except BaseException:
                    process.kill()
                    process.wait()
                    raise
                errors.seek(0)
                if status != 0 or not all(path.exists() for path in files_of(work, "built")):
                    raise Failure(f"the database {path} could not be built: {reason(errors.read(), status)}")
            database = read_built(work, "built")
            if database.residues == 0:
                raise refused(f"{path} has no residues: it is not a FASTA file of sequences")
            _move(work, "built", folder, root)
    except read_errors() as problem:
        text = cause(problem) if isinstance(problem, OSError) else f"{path}: {problem}"
        raise Failure(f"the database could not be built: {text}") from problem
    finally:
        if source is not None and str(path) != "-":
            source.close()
    database.folder, database.root, database.kind, database.digest = str(folder), root, kind, digest
    return database


def _move(folder, root, to_folder, to_root):
    """Puts a new database in the place of another one: what belongs together ends with what is read first, and files of
    the other one go before or after, so that files of two builds are never taken for a database."""
    new = {to_root + path.name[len(root) :]: path for path in files_of(folder, root)}
    stale = [path for path in _files_like(Path(to_folder), to_root) if path.name not in new]
    Path(to_folder, to_root + ".volumes").unlink(missing_ok=True)
    for name, path in reversed(new.items()):
        os.replace(path, Path(to_folder, name))
    for path in stale:
        path.unlink(missing_ok=True)


def _files_like(folder, root):
    pattern = re.compile(re.escape(root) + r"(\.\d\d+)?\.(bix|bsq)|" + re.escape(root) + r"\.volumes")
    return [path for path in folder.iterdir() if pattern.fullmatch(path.name)]


# ---- The cache


def _state(path):
    """What changes when the file does."""
    status = os.stat(path)
    return hashlib.sha256(repr((status.st_size, status.st_mtime_ns, status.st_ino)).encode()).hexdigest()[:16]


def _cache_folder(path, chosen):
    """The cache of a text file, beside it unless that folder cannot be written."""
    name = os.path.basename(path) + ".zelvan"
    if chosen:
        # two files of the same name may have the same cache
        return Path(chosen) / f"{hashlib.sha256(os.path.abspath(path).encode()).hexdigest()[:8]}-{name}"
    beside = Path(os.path.abspath(path)).parent
    if os.access(beside, os.W_OK) or (beside / name).is_dir() and os.access(beside / name, os.W_OK):
        return beside / name
    home = os.environ.get("XDG_CACHE_HOME") or os.path.join(os.path.expanduser("~"), ".cache")
    return _cache_folder(path, os.path.join(home, "zelvan"))


def _lock(path, how):
    file = open(path, "a", encoding="ascii")
    try:
        fcntl.flock(file, how)
    except OSError:
        file.close()
        raise
    return file


def _cached(folder, key):
    try:
        with open(folder / f"{key}.json", encoding="utf-8") as file:
            fields = json.load(file)
        database = Database(**{**fields, "folder": str(folder), "root": key})
        if all(path.is_file() for path in files_of(folder, key)):
            return database
    except (OSError, ValueError, TypeError):
        pass
    return None


def _remove_others(folder, key):
    """Removes databases of earlier states of the text that no run is using."""
    for path in folder.glob("*.json"):
        if path.stem == key:
            continue
        with contextlib.suppress(OSError), _lock(folder / f"{path.stem}.lock", fcntl.LOCK_EX | fcntl.LOCK_NB):
            for file in (path, *_files_like(folder, path.stem), path.with_suffix(".lock")):
                file.unlink(missing_ok=True)
    for path in folder.glob(".building-*"):  # left by a run that was killed
        with contextlib.suppress(OSError):
            if time.time() - path.stat().st_mtime > 86400:
                shutil.rmtree(path)


@contextlib.contextmanager
def open_database(path, engine, cache=None, tell=lambda text: None):
    """The database of that name, built first where it is a text that was not built or has changed since."""
    named = built_name(path)
    if named:
        yield read_built(*named)
        return
    if path == "-":
        raise refused("a database cannot come from the standard input: give a file")
    if not os.path.exists(path):
        raise refused(f"there is no database {path}, and no {path}.bix")
    if not os.path.isfile(path):
        raise refused(f"{path} is not a file")
    with contextlib.ExitStack() as stack:
        try:
            folder = _cache_folder(path, cache and os.path.abspath(cache))
            folder.mkdir(parents=True, exist_ok=True)
            key = _state(path)
            building = _lock(folder / "building.lock", fcntl.LOCK_EX)
            with building:  # the others wait here until the database is there
                stack.enter_context(_lock(folder / f"{key}.lock", fcntl.LOCK_SH))
                database = _cached(folder, key)
                if database is None:
                    beside = f"{path}.zelvan" if str(folder) == os.path.abspath(path) + ".zelvan" else folder
                    tell(f"Building a database from {path}, once; it is kept in {beside}")
                    database = build(path, folder, key, engine)
                    part = folder / f".{key}.json"
                    part.write_text(json.dumps(asdict(database)), encoding="utf-8")
                    os.replace(part, folder / f"{key}.json")
                    _remove_others(folder, key)
        except OSError as problem:
            hint = "" if cache else "; --cache names another folder for built databases"
            raise refused(f"the database cannot be kept: {cause(problem)}{hint}") from problem
        yield database


def default_root(path):
    """Name of the binary database made from a text file when none is given."""
    name = os.path.basename(path)
    while _TEXT_ENDINGS.search(name):
        name = _TEXT_ENDINGS.sub("", name)
    return name or "database"


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
