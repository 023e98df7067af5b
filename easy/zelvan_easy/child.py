"""The program that this process runs, which is ended with it."""

from __future__ import annotations

import contextlib
import os
import signal
import subprocess

_child = None


def run(command, stdin=b"", **where):
    """Runs a program to its end: (what it wrote on the error stream, its status). where: cwd, env, stdout."""
    global _child
    _child = subprocess.Popen([str(word) for word in command], stdin=subprocess.PIPE, stderr=subprocess.PIPE, **where)
    _, errors = _child.communicate(stdin)
    return errors, _child.returncode


def end():
    """Ends it. For the handler of a signal: what `run` waits for may be held."""
    if _child is not None and _child.poll() is None:
        _child.send_signal(signal.SIGTERM)
        with contextlib.suppress(ChildProcessError):
            os.waitpid(_child.pid, 0)
