"""What a search tells while it runs: a bar with the time left on a terminal, a line now and then elsewhere; and the
table at its end."""

from __future__ import annotations

import shutil
import sys
import time
from itertools import islice

from rich.console import Console
from rich.progress import BarColumn, Progress, TextColumn, TimeElapsedColumn, TimeRemainingColumn
from rich.table import Table

_LINE_EVERY = 10.0  # seconds
_SHOWN = 100  # lines of the table at the end


def _clock(seconds):
    minutes, seconds = divmod(int(seconds), 60)
    hours, minutes = divmod(minutes, 60)
    return f"{hours}:{minutes:02d}:{seconds:02d}" if hours else f"{minutes:02d}:{seconds:02d}"


class Teller:
    """Lines on the error stream, and the progress between them."""

    def __init__(self, quiet=False):
        self.quiet = quiet
        self._console = Console(stderr=True, soft_wrap=True, highlight=False, markup=False)
        self._bar = None
        self._done = self._work = self._total = self._total_work = 0
        self._began = self._told = time.monotonic()

    def note(self, text):
        if not self.quiet:
            self._console.print(text)

    def warn(self, text):
        self._console.print(f"zelvan-easy: {text}")

    def begin(self, total, total_work, done):
        """total: queries; total_work: their residues, by which time is estimated; None where they are not known."""
        self._total, self._total_work, self._done = total, total_work, done
        self._began = self._told = time.monotonic()
        if self.quiet or not self._console.is_terminal:
            return
        columns = [TextColumn("{task.description}"), BarColumn(), TextColumn("{task.fields[queries]} queries"),
                   TimeElapsedColumn(), TextColumn("left"), TimeRemainingColumn()]  # fmt: skip
        self._bar = Progress(*columns, console=self._console, transient=True)
        self._task = self._bar.add_task("Searching", total=total_work, queries=self._count())
        self._bar.start()

    def _count(self):
        return f"{self._done} of {self._total}" if self._total is not None else str(self._done)

    def advance(self, work, query_is_done=True):
        self._done += query_is_done
        self._work += work
        if self._bar:
            self._bar.update(self._task, completed=self._work, queries=self._count())
        elif not self.quiet and time.monotonic() - self._told > _LINE_EVERY:
            self._told = time.monotonic()
            left = ""
            if self._total_work and self._work:
                rest = (self._told - self._began) * (self._total_work / self._work - 1)
                left = f", about {_clock(max(0, rest))} left"
            self.note(f"{self._count()} queries are done{left}")

    def end(self):
        if self._bar:
            self._bar.stop()
            self._bar = None


def print_table(results, total):
    """One line for each query, on the standard output."""
    console = Console(highlight=False, markup=False)
    if not console.is_terminal:
        console = Console(highlight=False, markup=False, width=max(120, shutil.get_terminal_size().columns))
    table = Table(box=None, header_style="bold", pad_edge=False)
    for name, how in (("query", {"overflow": "fold"}), ("type", {}), ("hits", {"justify": "right"}),
                      ("best hit", {"overflow": "fold"}), ("E-value", {"justify": "right"}),
                      ("rounds", {"justify": "right"}), ("converged", {})):  # fmt: skip
        table.add_column(name, **how)
    for result in islice(results, _SHOWN):
        if result.status == "ok":
            cells = (str(result.hits), result.best[:60], result.evalue or "-", str(result.rounds), result.converged or "-")
        else:
            cells = ("failed", result.note, "", "", "")
        table.add_row(_printable(result.name[:60]), result.kind, *map(_printable, cells))
    console.print(table)
    if total > _SHOWN:
        console.print(f"and {total - _SHOWN} more")
    sys.stdout.flush()


def _printable(text):
    return "".join(c if c.isprintable() else "?" for c in text)
