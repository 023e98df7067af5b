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
    stale = [path for path in files_like(Path(to_folder), to_root) if path.name not in new]
    Path(to_folder, to_root + ".volumes").unlink(missing_ok=True)
    for name, path in reversed(new.items()):
        os.replace(path, Path(to_folder, name))
    for path in stale:
        path.unlink(missing_ok=True)


def files_like(folder, root):
    pattern = re.compile(re.escape(root) + r"(\.\d\d+)?\.(bix|bsq)|" + re.escape(root) + r"\.volumes")
    return [path for path in folder.iterdir() if pattern.fullmatch(path.name)]
