"""What the tests of zelvan-easy share: the built command, and searches with it in a folder of their own."""

import bz2
import gzip
import lzma
import os
import pathlib
import random
import subprocess
import sys

import pytest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
BUILD = pathlib.Path(os.environ["ZELVAN_BUILD"])
EXAMPLES = SOURCE / "examples"
sys.path[:0] = [str(SOURCE / "easy"), str(EXAMPLES)]
for name in ("ZELVAN", "ZELVANDIR"):  # the command has to find the program and its configuration itself
    os.environ.pop(name, None)
COMPRESS = {"gz": gzip.compress, "bz2": bz2.compress, "xz": lzma.compress}


class Folder:
    """A working folder, and zelvan-easy in it."""

    def __init__(self, path):
        self.path = path
        self.status, self.out, self.errors = None, "", ""

    def file(self, name, content):
        path = self.path / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def easy(self, *arguments, stdin=b"", environment=()):
        done = subprocess.run(
            [str(BUILD / "zelvan-easy"), *map(str, arguments)], cwd=self.path, input=stdin, capture_output=True,
            env={**os.environ, **dict(environment)}, check=False,
        )  # fmt: skip
        self.status, self.out, self.errors = done.returncode, done.stdout.decode(), done.stderr.decode()
        assert "Traceback" not in self.out + self.errors
        return self.status

    def search(self, queries, database, *arguments, status=0, **more):
        """The search, with results in a folder "out" unless told otherwise; returns the lines of hits.tsv as lists."""
        where = () if "--out" in arguments else ("--out", "out")
        assert self.easy("search", queries, database, *where, *arguments, **more) == status, self.errors
        out = self.path / (arguments[arguments.index("--out") + 1] if not where else "out")
        if not (out / "hits.tsv").exists():
            return []
        return [line.split("\t") for line in (out / "hits.tsv").read_text(errors="replace").split("\n")[:-1]]

    def summary(self, out="out"):
        names, *lines = (self.path / out / "summary.tsv").read_text().splitlines()
        return [dict(zip(names.split("\t"), line.split("\t"))) for line in lines]


@pytest.fixture
def folder(tmp_path):
    return Folder(tmp_path)


@pytest.fixture(scope="session")
def database(tmp_path_factory):
    """The sample of proteins, built."""
    path = tmp_path_factory.mktemp("database") / "sample"
    made = Folder(path.parent)
    assert made.easy("build", EXAMPLES / "uniprot_sample.fasta", path) == 0, made.errors
    return path


def fasta_of(names):
    return b"".join((EXAMPLES / f"{name}.fasta").read_bytes() for name in names)


def random_proteins(count, seed=5):
    rng = random.Random(seed)
    return "".join(f">r{k}\n{''.join(rng.choices('ACDEFGHIKLMNPQRSTVWY', k=rng.randint(60, 400)))}\n" for k in range(count))
