"""Failures that are told in a sentence, and the exit statuses."""

from __future__ import annotations

import signal

FAILED = 1  # some query could not be searched, or something could not be written
WRONG_USAGE = 2  # what was asked for cannot be done; nothing was run
INTERRUPTED = 130


class Failure(Exception):
    """What went wrong and what to do about it, in a sentence for the user."""

    def __init__(self, text, status=FAILED):
        super().__init__(text)
        self.status = status


def refused(text):
    """The failure of something that is not begun."""
    return Failure(text, WRONG_USAGE)


def take_signals():
    """Has the signals that end a program end it as an interruption does: in words, with nothing half-done left behind."""
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.default_int_handler)


def cause(problem):
    """An OSError in the system's words, with the file that it is about."""
    text = problem.strerror or str(problem)
    return f"{problem.filename}: {text}" if problem.filename else text
