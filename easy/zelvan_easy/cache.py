"""Databases by any name: built ones, and text files, which are built once, into a cache.

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
import shutil
import time
from dataclasses import asdict
from pathlib import Path

from zelvan_easy.building import build, files_like
from zelvan_easy.database import Database, built_name, files_of, read_built
from zelvan_easy.failure import cause, refused


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
            for file in (path, *files_like(folder, path.stem), path.with_suffix(".lock")):
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
                    for file in files_like(folder, key):  # of a run that was killed as it stored them
                        file.unlink()
                    database = build(path, folder, key, engine)
                    part = folder / f".{key}.json"
                    part.write_text(json.dumps(asdict(database)), encoding="utf-8")
                    os.replace(part, folder / f"{key}.json")
                    _remove_others(folder, key)
        except OSError as problem:
            hint = "" if cache else "; --cache names another folder for built databases"
            raise refused(f"the database cannot be kept: {cause(problem)}{hint}") from problem
        yield database
