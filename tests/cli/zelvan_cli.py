"""Runs the built program with a private configuration directory, for the end-to-end tests.

    class SearchTest(zelvan_cli.TestCase):
        def test_it(self):
            self.configure("MODE 202\n")                      # optional: what the defaults file holds
            run = self.succeed("-s", self.file("q.fasta", ">q\nMKV\n"), ...)
            self.refuse("No Query\n", "-s", os.devnull, ...)

$ZELVAN names the program and $ZELVAN_SOURCE the source tree. The shipped alias and gap-defaults files are in
force unless a test writes its own; the defaults file holds the directories of the shipped data and nothing
else (built-in defaults), or what the shipped one holds after configure(defaults=None).
"""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest
from typing import NamedTuple

PROGRAM = os.environ["ZELVAN"]
SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
SANITIZED = os.environ.get("ZELVAN_SANITIZED") == "1"  # slow: small inputs will do
EMULATED = os.environ.get("ZELVAN_EMULATED") == "1"  # the emulator is a process of its own around the program
CONFIGURATION = SOURCE / "data" / "config"
MATRICES = SOURCE / "data" / "matrices"
CODONS = SOURCE / "data" / "codons"
EXAMPLES = SOURCE / "examples"
QUERY = EXAMPLES / "engb.fasta"
SAMPLE = EXAMPLES / "uniprot_sample.fasta"
RESIDUES = "ACDEFGHIKLMNPQRSTVWY"
FREQUENCIES = (83, 14, 55, 67, 39, 71, 23, 59, 58, 97, 24, 41, 47, 39, 55, 66, 53, 69, 11, 29)


def draw(rng, length):
    """Residues as a natural protein has them, in random order."""
    return "".join(rng.choices(RESIDUES, FREQUENCIES, k=length))


def fasta(path):
    """Identifier to residues, in the order of the file."""
    return {r.split()[0]: "".join(r.split("\n")[1:]) for r in ("\n" + path.read_text()).split("\n>")[1:]}


def first_records(path, count):
    return "".join(">" + record for record in path.read_text().split(">")[1 : count + 1])


def score_lists(report):
    """The lines of each score list, split at blanks: rank, numbers, identifier, title."""
    lists = re.findall(r"# Start_Scores: -{52}\n(.*?)# End_Scores: -{54}\n", report, re.S)
    return [[line.split() for line in part.splitlines()] for part in lists]


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

    def start(self, *args, program=PROGRAM, cwd=None, env=None, **options):
        """Starts the program; `env` adds to the environment (a None value removes a variable)."""
        added = {"ZELVANDIR": str(self.config), "TZ": "UTC", "LC_ALL": "C"} | (env or {})
        environment = {name: value for name, value in (os.environ | added).items() if value is not None}
        pipes = dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.PIPE)
        process = subprocess.Popen(
            [program, *map(str, args)], cwd=cwd or self.work, env=environment, **(pipes | options)
        )
        self.addCleanup(process.__exit__, None, None, None)
        self.addCleanup(process.kill)
        return process

    def zelvan(self, *args, stdin="", **how):
        """Runs the program to its end."""
        process = self.start(*args, **how)
        outputs = process.communicate(stdin.encode("latin-1"), timeout=600)
        return Run(process.returncode, *((output or b"").decode("latin-1") for output in outputs))

    def succeed(self, *args, **how):
        run = self.zelvan(*args, **how)
        self.assertEqual(run.status, 0, run.stderr)
        return run

    def refuse(self, sentence, *args, status=255, **how):
        """The run must end with this status, no report, and messages that match the pattern as a whole."""
        run = self.zelvan(*args, **how)
        self.assertEqual((run.status, run.stdout), (status, ""), (args, run.stderr))
        self.assertRegex(run.stderr, rf"(?s)\A(?:{sentence})\Z")
