"""Sets of volumes that are samples of the whole: how they are built, and searched volume by volume."""

import json
import math
import os
import shutil
import signal
import subprocess
import time
from collections import Counter
from statistics import median

import pytest
from conftest import BUILD, EXAMPLES, Folder, fasta_of, random_proteins
from make_dna_examples import back_translate, read_fasta
from zelvan_easy.database import read_built, read_sequences

SMALL = {"ZELVAN": str(BUILD / "tests" / "zelvan_forced"), "ZELVANDIR": str(BUILD / "config")}
COLUMNS = "6 qseqid sseqid score qstart qend sstart send evalue"


@pytest.fixture(scope="session")
def made(tmp_path_factory):
    """A folder with 12,000 proteins in text.fa, as one database, as two volumes, and as volumes by length."""
    folder = Folder(tmp_path_factory.mktemp("volumes"))
    proteins = (EXAMPLES / "uniprot_sample.fasta").read_text() + random_proteins(8000)
    # one with an odd number between, so that two of a name come to lie in different volumes, and two more in one
    engb = "".join(fasta_of(["engb"]).decode().split("\n")[1:])
    proteins += f">twin\n{engb}\n>odd\nMKUOBZJX\n>r1\nMKV\n>twin\n{engb}\n>r2\nMKVL\n>twin\n{engb}\n"
    folder.file("text.fa", proteins)
    assert folder.easy("build", "text.fa", "one") == 0, folder.errors
    assert folder.easy("build", "--volumes", "2", "text.fa", "set") == 0 and not folder.errors, folder.errors
    limit = str((folder.path / "one.bsq").stat().st_size // 2 + 10_000)
    by_length = {**SMALL, "ZELVAN_TEST_CHARACTERS": limit}
    assert folder.easy("build", "text.fa", "by_length", environment=by_length.items()) == 0, folder.errors
    return folder


def listed(folder, database):
    """The score list that zelvan itself prints."""
    done = subprocess.run([BUILD / "zelvan", "-s", EXAMPLES / "engb.fasta", "-dd", folder.path, "-bdb", database, "-niter", "1"],
                          capture_output=True, text=True, check=True, cwd=folder.path,
                          env={**os.environ, "ZELVANDIR": str(BUILD / "config")})  # fmt: skip
    return sorted(line.split(None, 1)[1] for line in done.stdout.split("# End_Scores")[0].splitlines() if line[0] == " ")


def test_dealt_volumes_are_one_database(made):
    """zelvan takes them for one, which holds what one built at once holds; so does each volume with its share."""
    assert listed(made, "set") == listed(made, "one") and len(listed(made, "one")) > 20
    names = [line[1:].split()[0] for line in (made.path / "text.fa").read_text().splitlines() if line.startswith(">")]
    for volume in (0, 1):
        stored = [name for name, _, _ in read_sequences(made.path, f"set.{volume:02}")]
        assert sorted(stored) == sorted(names[volume::2])
        assert made.easy("info", f"set.{volume:02}") == 0 and f"sequences  {len(stored)}\n" in made.out
    lists = [(made.path / f"{name}.volumes").read_text().split("volume ")[0] for name in ("set", "by_length")]
    assert lists[0] == lists[1]  # totals, and how often each residue is there
    of_set, by_length = read_built(made.path, "set"), read_built(made.path, "by_length")
    assert [share[0] for share in of_set.shares] == [6003, 6003] and by_length.shares == []
    assert sum(share[1] for share in of_set.shares) == of_set.residues == by_length.residues


def compare(whole, dealt):
    """Every line of one table that is not near its end is in the other; E-values are about the same, and in order."""
    for query in dict.fromkeys(line[0] for line in whole):
        tables = [[line for line in lines if line[0] == query] for lines in (whole, dealt)]
        evalues = [{tuple(line[1:-1]): float(line[-1]) for line in lines} for lines in tables]
        for (one, other), values in zip((tables, tables[::-1]), evalues):
            missing = Counter(tuple(line[1:-1]) for line in one) - Counter(tuple(line[1:-1]) for line in other)
            assert not [hit for hit in missing if values[hit] < 5], query
        shared = evalues[0].keys() & evalues[1].keys()
        off = {hit: math.log(evalues[1][hit] / evalues[0][hit]) for hit in shared}
        # fits to a half and to the whole differ by some hundredths of their scale
        assert all(abs(value) < 0.6 - 0.06 * min(0, math.log(evalues[0][hit])) for hit, value in off.items()), (query, off)
        assert abs(median(value for hit, value in off.items() if evalues[0][hit] > 1e-3)) < 0.3, (query, off)
        best = {}
        for hit, value in evalues[1].items():
            best[hit[0]] = min(value, best.get(hit[0], 11))
        assert all(one < 1.01 * other for one, other in zip(best.values(), [*best.values()][1:])) and max(best.values()) <= 10


def test_volumes_are_searched_one_by_one(made):
    """With the hits, scores and alignments of the whole, E-values for the whole, and the same bytes by any processes."""
    made.file("queries.fa", fasta_of(["engb", "engb_dna"]))
    options = ("-n", "1", "--no-mask", "--outfmt", COLUMNS)
    forms = ("--json", "--a3m", "--html")
    dealt = made.search("queries.fa", "set", *options, *forms, "--threads", "2", "--out", "dealt")
    assert "in 2 volumes" in made.errors
    assert sorted(path.name.split(".", 1)[1] for path in (made.path / "dealt/reports").glob("*engb_dna*.report")) == [
        "minus.00.report", "minus.01.report", "plus.00.report", "plus.01.report"]  # fmt: skip
    compare(made.search("queries.fa", "one", *options, "--a3m", "--out", "whole"), dealt)
    names = [[line.split()[0] for line in next((made.path / out / "reports").glob("*.a3m")).read_text().split(">")[1:]]
             for out in ("whole", "dealt")]  # fmt: skip
    assert len(names[0]) > 40 and len(set(names[0]) ^ set(names[1])) < 3  # one or two are near the cut-off
    assert [line[1] for line in dealt if line[0].startswith("sp|Q600K7")].count("twin") == 3
    said = json.loads(next((made.path / "dealt/reports").glob("000001*.json")).read_text())
    assert (said["run"]["database"]["sequences"], said["iterations"][0]["cutoff"]) == (12006, 10)
    others = [("again", ("--threads", "1"), {})]
    if shutil.which("snakemake"):
        others.append(("snake", ("--engine", "snakemake", "--threads", "2"),
                       {"HOME": str(made.path), "XDG_CACHE_HOME": str(made.path)}))  # fmt: skip
    for out, how, environment in others:
        made.search("queries.fa", "set", *options, *how, *forms, "--out", out, environment=environment)
        for name in ("hits.tsv", "summary.tsv"):
            assert (made.path / "dealt" / name).read_bytes() == (made.path / out / name).read_bytes(), (out, name)
    made.search("queries.fa", "set", *options, "--max-target-seqs", "4", "--no-reports", "--out", "few")
    assert [one["hits"] for one in made.summary("few")] == ["4", "4"]


def test_volumes_and_stretches(made):
    """A contig that is searched in two stretches, each with both volumes."""
    named = {header.split("|")[1]: body for header, body in read_fasta(EXAMPLES / "uniprot_sample.fasta") if "|" in header}
    strange = "".join(random_proteins(60, seed=6).split("\n")[1::2])
    contig = "".join(back_translate(named["A5IMB8"] + strange[:5000] + named["W8PP67"]))
    made.file("contig.fa", f">contig\n{contig}\n")
    options = ("--no-mask", "--strand", "plus", "--outfmt", COLUMNS)
    lines = made.search("contig.fa", "set", *options, "--out", "contig.set")
    assert len(list((made.path / "contig.set/reports").glob("*.report"))) == 4
    compare(made.search("contig.fa", "one", *options, "--out", "contig.one"), lines)


def test_other_searches_take_the_whole(made):
    """Sorted volumes, iterations, and keys whose files are about all hits."""
    made.file("q.fa", fasta_of(["engb"]))
    one = made.search("q.fa", "one", "-n", "1", "--out", "one.out")
    for number, (database, *options) in enumerate((("by_length", "-n", "1"), ("set", "-n", "2"),
                                                   ("set", "-n", "1", "--set", "PRINT_PROFILES=1"))):  # fmt: skip
        lines = made.search("q.fa", database, *options, "--out", f"{number}.out")
        assert "volumes" not in made.errors and len(list((made.path / f"{number}.out/reports").iterdir())) == 1
        assert options[1] == "2" or sorted(lines) == sorted(one)


def interrupt(folder, command, environment, ready, by=signal.SIGINT):
    """Starts zelvan-easy, and interrupts it when it is ready for that."""
    running = subprocess.Popen([str(BUILD / "zelvan-easy"), *command], cwd=folder.path, stderr=subprocess.PIPE,
                               stdout=subprocess.DEVNULL, env={**os.environ, **environment},
                               preexec_fn=lambda: signal.signal(signal.SIGINT, signal.default_int_handler))  # fmt: skip
    while running.poll() is None and not ready():
        time.sleep(0.02)
    running.send_signal(by)
    _, errors = running.communicate(timeout=60)
    assert running.returncode == 130 and b"interrupted" in errors and b"Traceback" not in errors


def test_a_volume_that_fails_and_resuming(made):
    """A run that fails, fails its query in words; what others have found before an interruption is not searched again."""
    calls, fault, held = made.file("calls", ""), made.file("fault", "echo no disk >&2; exit 1"), made.path / "held"
    engine = made.file("zelvan", f"""#!/bin/sh
echo "$*" >>{calls}
case "$*" in *set.01*) . {fault};; esac
exec {BUILD}/zelvan "$@"
""")
    engine.chmod(0o755)
    environment = {"ZELVAN": str(engine), "ZELVANDIR": str(BUILD / "config")}
    made.file("q.fa", fasta_of(["engb"]))
    made.search("q.fa", "set", "-n", "1", "--out", "failing", status=1, environment=environment)
    assert "no disk" in made.errors and made.summary("failing")[0]["status"] == "failed"
    made.file("calls", "")
    made.file("fault", f"touch {held}; exec sleep 100")
    command = ["search", "q.fa", "set", "-n", "1", "--out", "resumed", "--threads", "2"]
    interrupt(made, command, environment,
              lambda: held.exists() and list((made.path / "resumed/.zelvan-easy.work").glob("*-0.report")))  # fmt: skip
    made.file("fault", "")
    assert len(made.search(*command[1:], environment=environment)) > 20
    assert [calls.read_text().count(f"set.{volume:02}") for volume in (0, 1)] == [1, 2]


# ---- Builds that do not come to their end


def stays(folder, before):
    return {path.name: path.read_bytes() for path in folder.path.iterdir() if path.name.startswith(("set", "."))} == before


def test_databases_named_like_volumes_stay(folder):
    """Those that a list names go with their set; without a list they may be anybody's."""
    folder.file("text.fa", random_proteins(60))
    assert folder.easy("build", "text.fa", "db.00") == 0, folder.errors
    stored = (folder.path / "db.00.bsq").read_bytes()
    for more in ((), ("--volumes", "2")):
        assert folder.easy("build", *more, "text.fa", "db") == 2 and "db.00.bix is named like" in folder.errors
        assert sorted(path.name for path in folder.path.glob("db.*")) == ["db.00.bix", "db.00.bsq"]
    assert (folder.path / "db.00.bsq").read_bytes() == stored
    for more, count in ((("--volumes", "3"), 7), (("--volumes", "2"), 5), ((), 2)):
        assert folder.easy("build", *more, "text.fa", "set") == 0, folder.errors
        assert len(list(folder.path.glob("set.*"))) == count


def test_builds_that_end_early_leave_what_was_there(folder):
    folder.file("text.fa", random_proteins(400))
    assert folder.easy("build", "--volumes", "2", "text.fa", "set") == 0, folder.errors
    assert "together" in folder.errors  # so few sequences are not searched volume by volume
    shutil.copy(folder.path / "text.fa", folder.path / "built.bix")  # an odd name, which is one of the files made on the way
    for options in ((), ("--volumes", "2")):
        assert folder.easy("build", *options, "built.bix", "odd") == 0, folder.errors
    before = {path.name: path.read_bytes() for path in folder.path.glob("set.*")}
    assert len(before) == 5
    for arguments, environment, status, words in (
        (("--volumes", "401"), {}, 2, "400 sequences"),
        (("--volumes", "2"), {**SMALL, "ZELVAN_TEST_CHARACTERS": "40000"}, 2, "at least 4"),
        (("--volumes", "2"), {"ZELVAN": "/bin/false", "ZELVANDIR": str(BUILD / "config")}, 1, "status 1"),
    ):  # fmt: skip
        assert folder.easy("build", *arguments, "text.fa", "set", environment=environment.items()) == status, folder.errors
        assert words in folder.errors and stays(folder, before), folder.errors
    command = [str(BUILD / "zelvan-easy"), "build", "--volumes", "2", "text.fa", "set"]
    full = subprocess.run(["sh", "-c", 'ulimit -f 40; exec "$@"', "sh", *command], cwd=folder.path, capture_output=True, check=False)
    assert full.returncode == 1 and b"could not be built" in full.stderr and b"too large" in full.stderr, full.stderr
    assert b"Traceback" not in full.stderr and stays(folder, before)
    engine = folder.file("zelvan", f"#!/bin/sh\ntouch {folder.path}/begun\nexec sleep 100\n")
    engine.chmod(0o755)
    environment = {"ZELVAN": str(engine), "ZELVANDIR": str(BUILD / "config")}
    interrupt(folder, command[1:], environment, (folder.path / "begun").exists, by=signal.SIGTERM)
    assert stays(folder, before)
    folder.file("text.fa", "")
    assert folder.easy("build", "--volumes", "2", "text.fa", "set") == 2 and stays(folder, before)
    folder.file("none.volumes", "")
    assert folder.easy("info", "none") == 2 and "damaged" in folder.errors
