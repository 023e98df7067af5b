"""Reports of real searches of the sample, each made once, and the filters run on them."""

import os
import pathlib
import subprocess
import sys

import pytest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
EXAMPLES = SOURCE / "examples"
SAMPLE, QUERY = EXAMPLES / "uniprot_sample.fasta", EXAMPLES / "engb.fasta"
sys.path[:0] = [str(SOURCE / "easy")]


def fasta(path):
    """Identifier to residues, in the order of the file."""
    return {r.split()[0]: "".join(r.split("\n")[1:]) for r in ("\n" + path.read_text()).split("\n>")[1:]}


@pytest.fixture(scope="session")
def report(tmp_path_factory):
    """report(*args): the text of a search, with the shipped defaults, of the sample with the small GTPase unless args
    say otherwise. Files that the search writes are in report.work."""
    config, made = tmp_path_factory.mktemp("config"), {}
    for name in ("alias.dat", "gapdefs.dat", "defaults.dat.in"):
        text = (SOURCE / "data/config" / f"zelvan_{name}").read_text()
        text = text.replace("@ZELVAN_DATA_DIR@", str(SOURCE / "data"))
        (config / f"zelvan_{name.removesuffix('.in')}").write_text(text)

    def search(*args):
        if args not in made:
            command = [os.environ["ZELVAN"], "-s", QUERY, "-d", SAMPLE, *map(str, args)]
            made[args] = subprocess.run(command, env=os.environ | {"ZELVANDIR": str(config)}, cwd=search.work,
                                        capture_output=True, encoding="latin-1", check=True).stdout  # fmt: skip
        return made[args]

    search.work = tmp_path_factory.mktemp("work")
    return search


@pytest.fixture(scope="session")
def dna(report):
    """dna(*args): the text of a search with the DNA query that has a base planted behind its codon 70."""
    return lambda *more: report("-s", EXAMPLES / "engb_dna.fasta", "-mode", 22, "-do_stats", 1, *more)


def run_filter(name, text, *args, status=0, errors=""):
    """What a filter writes; `errors` is in its messages, which are empty unless it says otherwise."""
    done = subprocess.run([sys.executable, SOURCE / "filters" / name, *map(str, args)], input=text, capture_output=True,
                          encoding="latin-1", check=False)  # fmt: skip
    assert done.returncode == status, done.stderr
    assert (errors in done.stderr) if errors else done.stderr == ""
    if status != 0:
        assert done.stdout == ""
    return done.stdout


def table(text, *args):
    return [line.split("\t") for line in run_filter("zelvan2tsv", text, *args).splitlines()]
