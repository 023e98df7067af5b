"""What a search has finished, in a file of its output folder: interrupted searches go on from it, and results come out in
the order of the queries whatever order they were found in.

    with Store(folder, settings) as store:
        store.has(number, digest)            # done already, by the same search
        store.add(result, digest, rows)
        store.write_table(path)
"""

from __future__ import annotations

import contextlib
import itertools
import json
import os
import sqlite3
import time

from zelvan_easy.failure import Failure, refused
from zelvan_easy.worker import Result

NAME = ".zelvan-easy.sqlite"
_EVERY = 2.0  # seconds that may be lost when the machine stops
_LAYOUT = """
create table if not exists settings (name text primary key, value text);
create table if not exists done (number integer primary key, digest text, ok integer, result text, rows blob);
"""
SUMMARY = "query type length masked status hits best_hit evalue rounds converged note".split()


class Store:
    def __init__(self, folder, settings):
        """Goes on with what is in the folder if it is of a search with the same settings: {what it is: value}."""
        self._path = os.path.join(folder, NAME)
        self._committed = time.monotonic()
        with self._told():
            self._database = sqlite3.connect(self._path, timeout=2, isolation_level="EXCLUSIVE")
            self._database.execute("pragma locking_mode = exclusive")
            self._database.execute("pragma synchronous = off")
            self._database.execute("begin exclusive")  # a second search in the same folder stops here
            for statement in _LAYOUT.split(";"):
                self._database.execute(statement)
            before = dict(self._database.execute("select name, value from settings"))
            now = {name: json.dumps(value) for name, value in settings.items()}
            changed = [name for name in now if before and before.get(name) != now[name]]
            if changed:
                self._database.close()
                raise refused(
                    f"{folder} has results of another search (changed: {', '.join(changed)}): name another folder "
                    "with --out, or begin anew with --restart"
                )
            self._database.executemany("insert or replace into settings values (?, ?)", now.items())
            self._commit()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        with contextlib.suppress(sqlite3.Error):
            self._database.commit()
        self._database.close()

    @contextlib.contextmanager
    def _told(self):
        try:
            yield
        except sqlite3.OperationalError as problem:
            if "locked" in str(problem):
                raise refused(f"another search is working in {os.path.dirname(self._path)}") from problem
            raise Failure(f"{self._path}: {problem}") from problem
        except sqlite3.DatabaseError as problem:
            raise refused(f"{self._path} is damaged ({problem}): begin anew with --restart") from problem

    def _commit(self):
        self._database.commit()
        self._database.execute("begin exclusive")
        self._committed = time.monotonic()

    def has(self, number, digest):
        with self._told():
            found = self._database.execute("select ok from done where number = ? and digest = ?", (number, digest))
            return found.fetchone() == (1,)

    def add(self, result, digest, rows):
        with self._told():
            self._database.execute(
                "insert or replace into done values (?, ?, ?, ?, ?)",
                (result.number, digest, int(result.status == "ok"), json.dumps(result),
                 rows.encode("utf-8", "surrogateescape")),
            )
            if time.monotonic() - self._committed > _EVERY:
                self._commit()

    def drop_after(self, number):
        """Forgets queries that are no longer in the file."""
        with self._told():
            self._database.execute("delete from done where number > ?", (number,))
            self._commit()

    def results(self):
        with self._told():
            for (text,) in self._database.execute("select result from done order by number"):
                yield Result(*json.loads(text))

    def count(self):
        with self._told():
            return self._database.execute("select count(*) from done").fetchone()[0]

    def failures(self):
        with self._told():
            return self._database.execute("select count(*) from done where ok = 0").fetchone()[0]

    def write_table(self, path):
        """The tables of all queries, one after the other."""
        with self._told():
            rows = self._database.execute("select rows from done order by number")
            _write(path, (text.decode("utf-8", "surrogateescape") for (text,) in rows))

    def write_summary(self, path):
        def line(result):
            fields = result.name, result.kind, result.length, result.masked, *result[5:-1]
            return "\t".join(str(value) if value != "" else "-" for value in fields) + "\n"

        _write(path, itertools.chain(["\t".join(SUMMARY) + "\n"], map(line, self.results())))


def _write(path, texts):
    part = path + ".part"
    with open(part, "w", encoding="utf-8", errors="surrogateescape", newline="\n") as out:
        out.writelines(texts)
    os.replace(part, path)
