"""Runs the built program with a private configuration directory, for the end-to-end tests.

    class SearchTest(zelvan_cli.TestCase):
        def test_it(self):
            self.configure("MODE 202\n")                      # optional: what the defaults file holds
            run = self.zelvan("-s", self.file("q.fasta", ">q\nMKV\n"), ...)
            self.assertEqual(run.status, 0, run.stderr)

$ZELVAN names the program and $ZELVAN_SOURCE the source tree. The shipped alias and gap-defaults files are in
force unless a test writes its own; the defaults file holds the directories of the shipped data and nothing
else (built-in defaults), or what the shipped one holds after configure(defaults=None).
"""

import os
import pathlib
import subprocess
import tempfile
import unittest
from typing import NamedTuple

PROGRAM = os.environ["ZELVAN"]
SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
EXAMPLES = SOURCE / "examples"
CONFIGURATION = SOURCE / "data" / "config"
MATRICES = SOURCE / "data" / "matrices"
CODONS = SOURCE / "data" / "codons"


class Run(NamedTuple):
    """What one run left: exit status as the shell sees it (-1 is 255; killed by a signal: negative)."""

    status: int
    stdout: str
    stderr: str


class TestCase(unittest.TestCase):
    """A test with a working directory `self.work` and a configuration directory `self.config` of its own."""

    def setUp(self):
        holder = tempfile.TemporaryDirectory(prefix="zelvan_test_")
        self.addCleanup(holder.cleanup)
        self.config = pathlib.Path(holder.name) / "config"
        self.work = pathlib.Path(holder.name) / "work"
        self.config.mkdir()
        self.work.mkdir()
        self.configure()

    def configure(self, defaults="", gapdefs=None, aliases=None):
        """Writes the three configuration files (text or bytes); None stands for the shipped file."""
        if isinstance(defaults, str):
            defaults = f"MATRIX_DIR {MATRICES}\nGENERAL_DIR {CODONS}\n{defaults}"
        elif defaults is None:
            template = (CONFIGURATION / "zelvan_defaults.dat.in").read_text()
            defaults = template.replace("@ZELVAN_DATA_DIR@", str(SOURCE / "data"))
        for name, content in (("defaults", defaults), ("gapdefs", gapdefs), ("alias", aliases)):
            if content is None:
                content = (CONFIGURATION / f"zelvan_{name}.dat").read_bytes()
            self.file(self.config / f"zelvan_{name}.dat", content)

    def file(self, name, content):
        """Writes a file (text as Latin-1, or bytes) in the working directory and returns its path."""
        path = self.work / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode("latin-1"))
        return path

    def zelvan(self, *args, cwd=None, env=None, stdin="", timeout=600):
        """Runs the program; `env` adds to the environment (a None value removes a variable)."""
        environment = dict(os.environ, ZELVANDIR=str(self.config), TZ="UTC", LC_ALL="C")
        for name, value in (env or {}).items():
            environment.pop(name, None)
            if value is not None:
                environment[name] = value
        done = subprocess.run(
            [PROGRAM, *map(str, args)],
            cwd=cwd or self.work,
            env=environment,
            input=stdin.encode("latin-1"),
            capture_output=True,
            timeout=timeout,
            check=False,
        )
        return Run(done.returncode, done.stdout.decode("latin-1"), done.stderr.decode("latin-1"))
