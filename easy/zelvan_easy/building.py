"""Builds binary databases from text files."""

from __future__ import annotations

import contextlib
import hashlib
import os
import re
import subprocess
import tempfile
from pathlib import Path

from zelvan_easy.database import files_of, read_built
from zelvan_easy.dealing import build_command, deal
from zelvan_easy.engine import reason
from zelvan_easy.failure import Failure, cause, refused
from zelvan_easy.inputs import DNA, kind_of, open_bytes, read_errors

_HEAD = 1 << 20  # bytes of a text file that are looked at to tell DNA from protein
_DNA_LETTERS = bytes.maketrans(b"UXux", b"TNtn")  # the searches know no U, and N for what is not known
_TEXT_ENDINGS = re.compile(r"\.(fa|fasta|faa|fna|fas|ffn|frn|seq|txt|gz|bz2|xz|zst)$", re.I)


def default_root(path):
    """Name of the binary database made from a text file when none is given."""
    name = os.path.basename(path)
    while _TEXT_ENDINGS.search(name):
        name = _TEXT_ENDINGS.sub("", name)
    return name or "database"


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


def _blocks(head, source, kind):
    """Lists of pieces of FASTA, as zelvan is to read it, each with a ">" where a sequence begins: with names for sequences
    that have none (it would stop there), and DNA in its letters."""
    unnamed = 0
    rest = head.lstrip()
    while rest:
        more = source.read(_HEAD)
        # whole lines are handled at once; only headers, which are few, are looked at one by one
        end = rest.rfind(b"\n") + 1 if more else len(rest)
        if end == 0 and not rest.startswith(b">"):
            end = len(rest)  # a sequence of one very long line
        block, rest = rest[:end], rest[end:] + more
        pieces = []
        for record in re.split(rb"(?m)^(?=>)", block):
            header, newline, residues = record.partition(b"\n") if record.startswith(b">") else (b"", b"", record)
            if newline and header[1:2] in b" \t\r\n":
                unnamed += 1
                header = b">unnamed_%d %s" % (unnamed, header[1:].strip())
            if kind == DNA:
                residues = residues.translate(_DNA_LETTERS)
            pieces.append(header.replace(b"\r", b"") + newline + residues)
        yield pieces


def _digested(blocks, digest):
    for pieces in blocks:
        digest.update(b"".join(pieces))
        yield pieces


def build(path, folder, root, engine, kind=None, count=1):
    """Builds folder/root.bix and .bsq from a text file, or a set of volumes: so many, or what its size takes; they appear
    when they are complete."""
    source = None
    try:
        source = open_bytes(str(path))
        head = source.read(_HEAD)
        kind = kind or _describe(path, head)
        digest = hashlib.sha256()
        blocks = _digested(_blocks(head, source, kind), digest)
        name = os.path.basename(str(path)) or "database"
        os.makedirs(folder, exist_ok=True)
        with tempfile.TemporaryDirectory(prefix=".building-", dir=folder) as work:
            try:
                if count == 1:
                    _build_one(blocks, work, name, engine)
                else:
                    deal(blocks, count, work, name, engine)
            except Failure as problem:
                raise Failure(f"the database {path} could not be built: {problem}", problem.status) from problem
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
    database.folder, database.root, database.kind, database.digest = str(folder), root, kind, digest.hexdigest()
    return database


def _build_one(blocks, work, name, engine):
    """Builds work/built, a single database if that is possible."""
    # zelvan reads a pipe under the name that reports are to show
    folder = os.path.join(work, "text")
    os.mkdir(folder)
    os.symlink("/dev/stdin", os.path.join(folder, name))
    with tempfile.TemporaryFile() as errors:
        process = subprocess.Popen(build_command(engine, name), cwd=folder, env=engine.environment, stdin=subprocess.PIPE,
                                   stdout=subprocess.DEVNULL, stderr=errors)  # fmt: skip
        try:
            with contextlib.suppress(BrokenPipeError), process.stdin as sink:
                for pieces in blocks:
                    sink.write(b"".join(pieces))
            status = process.wait()
        except BaseException:
            process.kill()
            process.wait()
            raise
        errors.seek(0)
        if status != 0 or not all(path.exists() for path in files_of(work, "built")):
            raise Failure(reason(errors.read(), status))


def _move(folder, root, to_folder, to_root):
    """Puts a new database in the place of another one: what belongs together ends with what is read first, and files of
    the other one go before or after, so that files of two builds are never taken for a database. What is named like a
    volume is one only where there is a list; else it may be a database of its own, and nothing is stored."""
    new = {to_root + path.name[len(root) :]: path for path in files_of(folder, root)}
    there = files_like(Path(to_folder), to_root)
    own = [] if Path(to_folder, to_root + ".volumes").exists() else [path for path in there if path.stem != to_root]
    if own:
        raise refused(f"{min(own)} is named like a volume of {to_root}, but no list names it: remove it, or choose another name")
    stale = [path for path in there if path.name not in new]
    Path(to_folder, to_root + ".volumes").unlink(missing_ok=True)
    for name, path in reversed(new.items()):
        os.replace(path, Path(to_folder, name))
    for path in stale:
        path.unlink(missing_ok=True)


def files_like(folder, root):
    pattern = re.compile(re.escape(root) + r"(\.\d\d+)?\.(bix|bsq)|" + re.escape(root) + r"\.volumes")
    return [path for path in folder.iterdir() if pattern.fullmatch(path.name)]
