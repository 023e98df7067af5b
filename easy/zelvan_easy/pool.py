"""Processes that do jobs, and end with the one that started them.

    with Pool(4, function) as pool:    # function(job) is called in the processes
        pool.give(job)                 # while pool.idle
        for job, answer in pool.wait(timeout): ...

An exception that a job raises is its answer; so is ProcessLost when a process ended before it had one.
"""

from __future__ import annotations

import multiprocessing
import os
import signal
import threading
import traceback
from multiprocessing.connection import wait

from zelvan_easy import child


SIGNALS = (signal.SIGINT, signal.SIGHUP, signal.SIGTERM)


class ProcessLost(Exception):
    pass


class Pool:
    def __init__(self, count, function):
        # forked, so that the processes have what is loaded already
        methods = multiprocessing.get_all_start_methods()
        self._context = multiprocessing.get_context("fork" if "fork" in methods else None)
        self._function = function
        self._idle, self._busy, self._processes = [], {}, {}
        for _ in range(count):
            self._start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        """Ends the processes and what they run."""
        for connection, process in self._processes.items():
            process.terminate()
            connection.close()
        for process in self._processes.values():
            process.join(10)

    def _start(self):
        here, there = self._context.Pipe()
        process = self._context.Process(target=_serve, args=(there, self._function, [here, *self._processes]), daemon=True)
        # A signal waits until the new process knows what to do with it.
        before = signal.pthread_sigmask(signal.SIG_BLOCK, SIGNALS)
        try:
            process.start()
        finally:
            signal.pthread_sigmask(signal.SIG_SETMASK, before)
        there.close()
        self._processes[here] = process
        self._idle.append(here)

    @property
    def idle(self):
        return bool(self._idle)

    @property
    def busy(self):
        return bool(self._busy)

    def give(self, job):
        connection = self._idle.pop()
        self._busy[connection] = job
        try:
            connection.send(job)
        except OSError:
            pass  # the process is gone, which wait() sees

    def wait(self, timeout=None):
        """(job, answer) of the jobs that have ended, after at most so many seconds."""
        answers = []
        for connection in wait(list(self._busy), timeout):
            job = self._busy.pop(connection)
            try:
                answers.append((job, connection.recv()))
                self._idle.append(connection)
            except (EOFError, OSError):
                process = self._processes.pop(connection)
                process.join(10)
                answers.append((job, ProcessLost(f"its process ended unexpectedly (status {process.exitcode})")))
                self._start()
        return answers


def _serve(connection, function, others):
    """The life of a process: an answer for every job, until the connection is closed."""
    for other in others:
        other.close()
    for signal_ in (signal.SIGINT, signal.SIGHUP):  # an interruption is for the process that started this one
        signal.signal(signal_, signal.SIG_IGN)
    signal.signal(signal.SIGTERM, lambda *_: _leave())
    signal.pthread_sigmask(signal.SIG_UNBLOCK, SIGNALS)
    threading.Thread(target=_watch, daemon=True).start()
    while True:
        try:
            job = connection.recv()
        except (EOFError, OSError):
            return
        try:
            answer = function(job)
        except Exception as problem:
            if os.environ.get("ZELVAN_EASY_DEBUG"):
                traceback.print_exc()
            answer = problem
        try:
            connection.send(answer)
        except OSError:
            return


def _leave():
    child.end()
    os._exit(143)


def _watch():
    """Ends this process and its run of zelvan when the process that started it is gone."""
    wait([multiprocessing.parent_process().sentinel])
    _leave()
