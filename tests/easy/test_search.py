"""Searches as users make them, with the built program."""

import json
import os
import random
import shutil
import signal
import subprocess
import time

import pytest
from conftest import BUILD, COMPRESS, EXAMPLES, fasta_of, random_proteins
from make_dna_examples import back_translate, read_fasta
from zelvan_easy.plan import stretches

COMPLEMENT = str.maketrans("ACGT", "TGCA")


def test_protein_and_dna_in_one_file(folder, database):
    """All queries are searched, each in its mode; what zelvan itself finds is found."""
    queries = folder.file("all.fasta", fasta_of(["engb", "hxa7", "engb_dna"]))
    lines = folder.search(queries, database, "--no-mask", "--iterations", "1", "--outfmt", "6 std sstrand shifts")
    assert [one["type"] for one in folder.summary()] == ["protein", "protein", "dna"]
    report = subprocess.run([BUILD / "zelvan", "-s", EXAMPLES / "engb.fasta", "-dd", database.parent, "-bdb", database.name,
                             "-niter", "1"], capture_output=True, text=True, check=True,
                            env={**os.environ, "ZELVANDIR": str(BUILD / "config")}).stdout  # fmt: skip
    listed = report.split("# Start_Scores")[1].split("# End_Scores")[0].splitlines()[1:]
    own = list(dict.fromkeys(line[1] for line in lines if line[0] == "sp|Q600K7|ENGB_MYCH2"))
    assert sorted(own) == sorted(line.split()[4] for line in listed)
    best = next(line for line in lines if line[0] == "engb_dna")
    assert (best[1], best[12], best[13]) == ("sp|A5IMB8|ENGB_THEP1", "plus", "1")
    assert "engb_dna" in folder.out and "best hit" in folder.out


def test_every_form_of_input_gives_the_same(folder, database):
    text = fasta_of(["engb", "hxa7"])
    expected = folder.search(folder.file("plain.fasta", text), database, "--no-mask", "-n", "1", "--out", "plain")
    records = [record.split(b"\n", 1) for record in text.split(b">")[1:]]
    residues = [(header, body.replace(b"\n", b"")) for header, body in records]
    fastq = b"".join(b"@%s\n%s\n+\n%s\n" % (header, body, b"I" * len(body)) for header, body in residues)
    forms = {ending: compress(text) for ending, compress in COMPRESS.items()}
    forms.update(crlf=text.replace(b"\n", b"\r\n"), fq=fastq, small=b"".join(
        b">" + header + b"\n" + body.lower() + b"\n" for header, body in residues))  # fmt: skip
    if shutil.which("zstd"):
        forms["zst"] = subprocess.run(["zstd", "-c"], input=text, capture_output=True, check=True).stdout
    for name, content in forms.items():
        folder.file("queries." + name, content)
        assert folder.search("queries." + name, database, "--no-mask", "-n", "1", "--out", name) == expected, name
    found = folder.search("-", database, "--no-mask", "-n", "1", "--out", "pipe", stdin=forms["gz"])
    assert found == expected


def test_both_strands(folder, database):
    """A gene is found on either strand, in the same way, in coordinates of the query; the E-value is for both."""
    _, sequence = next(read_fasta(EXAMPLES / "engb_dna.fasta"))
    turned = sequence.translate(str.maketrans("ACGTRYN", "TGCAYRN"))[::-1]
    folder.file("both.fa", f">forward\n{sequence}\n>turned\n{turned}\n")
    fields = "6 qseqid sseqid qstart qend evalue sstrand"
    lines = folder.search("both.fa", database, "--no-mask", "--outfmt", fields, "--evalue", "0.01")
    forward, back = ([line for line in lines if line[0] == name] for name in ("forward", "turned"))
    length = len(sequence)
    assert len(forward) > 15
    assert [[line[1], length + 1 - int(line[2]), length + 1 - int(line[3])] for line in forward[:15]] == \
        [[line[1], int(line[2]), int(line[3])] for line in back[:15]]  # fmt: skip
    assert {line[5] for line in forward[:15]} == {"plus"} and {line[5] for line in back[:15]} == {"minus"}
    one = folder.search("both.fa", database, "--no-mask", "--outfmt", fields, "--strand", "plus", "--out", "plus")
    assert float(forward[0][4]) == pytest.approx(2 * float(one[0][4]), rel=0.01)


def test_long_contig(folder):
    """Two genes in a contig that zelvan does not take at once: each is told once, where it is."""
    proteins = dict(read_fasta(EXAMPLES / "uniprot_sample.fasta"))
    named = {header.split("|")[1]: body for header, body in proteins.items() if "|" in header}
    first, second = "".join(back_translate(named["A5IMB8"])), "".join(back_translate(named["W8PP67"]))
    rng = random.Random(3)
    spacer = "".join(rng.choices("ACGT", k=40_000))
    # the first gene lies where two stretches overlap
    bases = spacer[:13_000] + first + spacer[13_000:30_000] + second.translate(COMPLEMENT)[::-1] + spacer[30_000:]
    folder.file("contig.fa", f">contig\n{bases}\n")
    folder.file("some.fa", random_proteins(300) + "".join(f">{name}\n{named[name]}\n" for name in ("A5IMB8", "W8PP67")))
    lines = folder.search("contig.fa", "some.fa", "--outfmt", "6 sseqid qstart qend pident evalue qlen", "--evalue", "1e-6",
                          "--max-target-seqs", "500", "--threads", "2")  # fmt: skip
    own = [line for line in lines if "A5IMB8" in line[0]]
    assert [line[1:3] for line in own] == [["13001", str(13_000 + len(first))]]
    own = [line for line in lines if "W8PP67" in line[0]]
    end = 30_000 + len(first) + len(second)
    assert [line[1:3] for line in own] == [[str(end), str(end - len(second) + 1)]]
    assert {line[5] for line in lines} == {str(len(bases))}
    assert len(list((folder.path / "out/reports").glob("*.report"))) == 2 * len(stretches(len(bases)))


def test_protein_in_dna(folder):
    lines = folder.search(EXAMPLES / "engb.fasta", EXAMPLES / "dna_sample.fasta", "--cache", "cache", "--evalue", "0.001")
    found = {line[1] for line in lines}
    assert {"A0A0A6N0I7_9THEM", "ENGB_THEP1"} <= found
    # every fourth relative lies on the other strand
    complemented = {header.split()[0] for header, _ in read_fasta(EXAMPLES / "dna_sample.fasta") if "complemented" in header}
    assert len(found & complemented) >= 3


def test_low_complexity(folder, database):
    """A repetitive protein finds its own and few strangers."""
    if not (shutil.which("tantan") or shutil.which("segmasker")):
        pytest.skip("neither tantan nor segmasker is installed")
    folder.easy("extract", database, "U5YS56")
    folder.file("ebna.fa", folder.out)
    strangers = {}
    for mask in ("--mask", "--no-mask"):
        lines = folder.search("ebna.fa", database, mask, "--evalue", "0.001", "--out", mask[2:], "--outfmt", "6 sseqid")
        strangers[mask] = {line[0] for line in lines}
    assert len(strangers["--mask"]) <= 4 < 30 < len(strangers["--no-mask"])
    assert folder.summary("mask")[0]["masked"] != "-" == folder.summary("no-mask")[0]["masked"]
    environment = {"PATH": f"{folder.path}", "ZELVAN": str(BUILD / "zelvan")}
    (folder.path / "python3").symlink_to("/usr/bin/python3")
    folder.search("ebna.fa", database, "-n", "1", "--out", "without", environment=environment)
    assert "not masked" in folder.errors
    folder.search("ebna.fa", database, "-n", "1", "--out", "without2", "--no-mask", environment=environment)
    assert "not masked" not in folder.errors


# ---- Many queries


def test_order_resume_and_changes(folder, database):
    """The same bytes from any number of processes; an interrupted search goes on; another one is not mixed in."""
    records = (EXAMPLES / "uniprot_sample.fasta").read_text().split(">")[1:240:10]
    folder.file("many.fa", "".join(">" + record for record in records))
    folder.search("many.fa", database, "-n", "1", "--threads", "1", "--out", "one")
    # A program that lets six searches through and holds the others back until it is told to go on.
    engine = folder.file("zelvan", f"""#!/bin/sh
: >calls/$$
if [ $(ls calls | wc -l) -gt 6 ]; then while [ ! -e go ]; do sleep 0.05; done; fi
exec {BUILD}/zelvan "$@"
""".replace("calls", f"{folder.path}/calls").replace(" go ", f" {folder.path}/go "))
    engine.chmod(0o755)
    (folder.path / "calls").mkdir()
    environment = {"ZELVAN": str(engine), "ZELVANDIR": str(BUILD / "config")}
    command = [BUILD / "zelvan-easy", "search", "many.fa", database, "-n", "1", "--threads", "3", "--out", "three"]
    running = subprocess.Popen([str(word) for word in command], cwd=folder.path, stderr=subprocess.PIPE, stdout=subprocess.DEVNULL,
                               env={**os.environ, **environment},
                               preexec_fn=lambda: signal.signal(signal.SIGINT, signal.default_int_handler))  # fmt: skip
    reports = folder.path / "three" / "reports"
    while running.poll() is None and not (reports.is_dir() and len(list(reports.glob("*.report"))) >= 4):
        time.sleep(0.02)
    running.send_signal(signal.SIGINT)
    _, errors = running.communicate(timeout=60)
    assert running.returncode == 130 and b"interrupted" in errors and b"Traceback" not in errors
    before = {path.name: path.stat().st_mtime_ns for path in reports.glob("*.report")}
    assert 4 <= len(before) <= 6
    (folder.path / "go").touch()
    folder.search("many.fa", database, "-n", "1", "--threads", "3", "--out", "three", environment=environment)
    after = {path.name: path.stat().st_mtime_ns for path in reports.glob("*.report")}
    # what the three processes were about when they were ended may be done again
    assert len(after) == 24 and len(before.items() - after.items()) <= 3
    for name in ("hits.tsv", "summary.tsv"):
        assert (folder.path / "one" / name).read_bytes() == (folder.path / "three" / name).read_bytes()
    folder.search("many.fa", database, "-n", "2", "--out", "three", status=2, environment=environment)
    assert "--iterations" in folder.errors
    folder.search("many.fa", database, "-n", "1", "--restart", "--evalue", "1e-30", "--out", "three", environment=environment)
    assert all(float(line[10]) <= 1e-30 for line in folder.search("many.fa", database, "-n", "1", "-e", "1e-30", "--out", "three", environment=environment))


def test_a_failure_does_not_stop_the_others(folder, database):
    folder.file("some.fa", ">none\n>a/b c\nMKVLAAGIVGLLLAQWERTYIPASDF\n>a/b c\nMKVLAAGIVGLLLAQWERTYIPASDF\n")
    folder.search("some.fa", database, "-n", "1", status=1)
    assert [(one["query"], one["status"]) for one in folder.summary()] == [("none", "failed"), ("a/b", "ok"), ("a/b", "ok")]
    assert "none: it has no residues" in folder.errors
    assert sorted(path.name for path in (folder.path / "out/reports").iterdir()) == ["000002_a_b.report", "000003_a_b.report"]


@pytest.mark.skipif(not shutil.which("snakemake"), reason="Snakemake is not installed")
def test_snakemake_gives_the_same(folder, database):
    folder.file("three.fa", fasta_of(["engb", "hxa7", "engb_dna"]) + b">none\n")
    folder.search("three.fa", database, "-n", "1", "--out", "local", status=1)
    folder.search("three.fa", database, "-n", "1", "--out", "snake", "--engine", "snakemake", "--threads", "2", status=1,
                  environment={"HOME": str(folder.path), "XDG_CACHE_HOME": str(folder.path)})  # fmt: skip
    for name in ("hits.tsv", "summary.tsv"):
        assert (folder.path / "local" / name).read_bytes() == (folder.path / "snake" / name).read_bytes()


# ---- The cache of databases


def test_text_is_built_once_and_again_when_it_changes(folder):
    text = random_proteins(300)
    folder.file("text.fa", text)
    folder.file("q.fa", fasta_of(["hxa7"]))
    both = [subprocess.Popen([str(BUILD / "zelvan-easy"), "search", "q.fa", "text.fa", "-n", "1", "--out", f"out{k}"],
                             cwd=folder.path, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE) for k in (1, 2)]  # fmt: skip
    told = [one.communicate()[1] for one in both]
    assert [one.returncode for one in both] == [0, 0]
    assert sum(b"Building" in errors for errors in told) == 1
    assert (folder.path / "out1/hits.tsv").read_bytes() == (folder.path / "out2/hits.tsv").read_bytes()
    folder.file("text.fa", text + fasta_of(["hxa7"]).decode())
    folder.search("q.fa", "text.fa", "-n", "1", "--out", "out1", status=2)
    assert "the database" in folder.errors
    lines = folder.search("q.fa", "text.fa", "-n", "1", "--no-mask", "--out", "out3")
    assert lines[0][1] == "sp|A1YGK7|HXA7_PANPA"
    assert len(list((folder.path / "text.fa.zelvan").glob("*.bsq"))) == 1
    folder.easy("info", "text.fa")
    assert "sequences  301" in folder.out


def test_a_database_of_several_volumes_is_one(folder):
    """Built small by a test-only program; the cache, extraction and searches see all of it, and rebuilding leaves nothing."""
    small = {"ZELVAN": str(BUILD / "tests" / "zelvan_forced"), "ZELVANDIR": str(BUILD / "config"),
             "ZELVAN_TEST_CHARACTERS": "40000"}  # fmt: skip
    folder.file("text.fa", random_proteins(400) + fasta_of(["hxa7"]).decode())
    folder.file("q.fa", fasta_of(["hxa7"]))
    assert folder.easy("build", "text.fa", "set", environment=small.items()) == 0, folder.errors
    assert "sequences  401\n" in folder.out and "set.00.bix, .bsq and 2 more volumes" in folder.out
    assert folder.easy("build", "text.fa", "one") == 0
    of_set = folder.search("q.fa", "set", "-n", "1", "--out", "set.out")
    assert of_set == folder.search("q.fa", "one", "-n", "1", "--out", "one.out") and of_set
    assert of_set == folder.search("q.fa", "text.fa", "-n", "1", "--out", "text.out", environment=small.items())
    assert folder.easy("extract", "set", "r7", "sp|A1YGK7|HXA7_PANPA") == 0 and folder.out.count(">") == 2
    assert folder.easy("build", "text.fa", "set") == 0 and folder.easy("info", "set") == 0
    assert sorted(path.name for path in folder.path.glob("set.*")) == ["set.bix", "set.bsq", "set.out"]


# ---- Odd input

PROTEIN = ">p\nMKVLAAGIVGLLLAQWERTYIPASDFGHKLCVNM\n"
ODD = {  # name: (content, status as a query, as a database)
    "empty": (b"", 2, 2),
    "blank": (b"\n\n  \n", 2, 2),
    "text": (b"hello world\n", 2, 2),
    "noise": (bytes(range(256)) * 400, 2, 2),
    "noise_below_a_name": (b">x\n" + bytes(range(256)) * 40, 0, 2),
    "no_residues": (b">a\n", 1, 2),
    "pir": (b">P1;A\ntitle\nMKV*\n", 2, 2),
    "cut_off.gz": (COMPRESS["gz"](PROTEIN.encode() * 9)[:40], 2, 1),
    "bad.fastq": (b"@r\nACGT\n+\nII\n", 2, 2),
    "long_title": (b">a " + b"y" * 10_000_000 + b"\nMKVLAAGIVGLLLAQWERTYIPASDF\n", 0, 2),
    "long_name": (b">" + b"y" * 10_000_000 + b"\nMKVLAAGIVGLLLAQWERTYIPASDF\n", 0, 2),
    "nameless": (b">\nMKVLAAGIVGLLLAQWERTYIPASDF\n> \nMKVLAAGIVGLLLAQWERTYIPASDF\n", 0, 2),
    "no_ascii": ">\u00e9t\u00e9 caf\u00e9\nMKVLAAGIVGLLLAQWERTYIPASDF\n".encode() + b"\xff\n", 
}  # fmt: skip
ODD["no_ascii"] = (ODD["no_ascii"], 0, 2)


@pytest.mark.parametrize("name", ODD)
def test_odd_input_is_told_in_a_sentence(folder, database, name):
    content, as_query, as_database = ODD[name]
    folder.file(name, content)
    folder.search(name, database, "-n", "1", "--quiet", status=as_query)
    assert as_query == 0 or 0 < len(folder.errors) < 600
    folder.file("p.fa", PROTEIN)
    folder.search("p.fa", name, "--quiet", "--out", "other", status=as_database)
    assert 0 < len(folder.errors) < 600
    # among others, nothing is lost and nothing of it harms
    if content.startswith(b">") and name != "pir":
        folder.file("more", random_proteins(300).encode() + content + b"\n" + fasta_of(["engb"]))
        lines = folder.search(EXAMPLES / "engb.fasta", "more", "-n", "1", "--out", "more.out")
        assert lines[0][1] == "sp|Q600K7|ENGB_MYCH2"


def test_places_that_cannot_be_used(folder, database):
    folder.file("p.fa", PROTEIN)
    for arguments, status, words in (
        (("missing.fa", database), 2, "missing.fa"), (("p.fa", "missing.fa"), 2, "missing.fa"),
        ((".", database), 2, "directory"), (("p.fa", "."), 2, "not a file"),
        (("p.fa", database, "--out", "/dev/null/x"), 2, "/dev/null"), (("p.fa", "p.fa", "--cache", "/dev/null/x"), 2, "kept"),
        (("p.fa", database, "--evalu", "1"), 2, "--evalu"), (("p.fa", database, "--iterations", "0"), 2, "0"),
        (("p.fa", database, "--outfmt", "6 foo"), 2, "foo"),
    ):  # fmt: skip
        assert folder.easy("search", *arguments) == status, folder.errors
        assert words in folder.errors, folder.errors
    environment = {"ZELVAN": "/nowhere/zelvan"}
    assert folder.easy("search", "p.fa", database, environment=environment) == 2 and "/nowhere/zelvan" in folder.errors
    assert not (folder.path / "p.results").exists()


@pytest.mark.skipif(not os.path.exists("/dev/full"), reason="there is no /dev/full")
def test_full_disk(folder, database):
    """Reports that cannot be written are told as failures of their queries, a table as one of the search."""
    folder.file("p.fa", PROTEIN)
    folder.search("p.fa", database, "-n", "1", "--quiet")
    (folder.path / "out" / "hits.tsv.part").symlink_to("/dev/full")
    folder.search("p.fa", database, "-n", "1", "--quiet", status=1)
    assert "hits.tsv" in folder.errors and "space" in folder.errors


def test_help_version_and_words(folder, database):
    for arguments in (["--help"], ["--version"], ["search", "--help"], ["build", "--help"]):
        assert folder.easy(*arguments) == 0 and folder.out
    assert folder.easy("extract", database, "A5IMB8", "nonesuch") == 1
    assert folder.out.startswith(">sp|A5IMB8|ENGB_THEP1 Probable GTP-binding") and "nonesuch" in folder.errors
    expected = (EXAMPLES / "uniprot_sample.fasta").read_text().split(">sp|A5IMB8|")[1].split(">")[0].split("\n", 1)[1]
    assert "".join(folder.out.splitlines()[1:]) == expected.replace("\n", "")
    completed = folder.easy(environment={"_ZELVAN_EASY_COMPLETE": "complete_bash", "COMP_CWORD": "2",
                                         "COMP_WORDS": "zelvan-easy search --max"})  # fmt: skip
    assert completed == 0 and "--max-target-seqs" in folder.out


def test_forms(folder, database):
    folder.file("two.fa", fasta_of(["engb", "hxa7"]))
    folder.search("two.fa", database, "-n", "1", "--mask", "--json", "--a3m", "--stockholm", "--pssm", "--html", "--outfmt", "7 std qlen")
    reports = folder.path / "out/reports"
    rows = (reports / "000002_sp_A1YGK7_HXA7_PANPA.a3m").read_text().split(">")[1:]
    query = "".join(fasta_of(["hxa7"]).decode().split("\n", 1)[1].split())
    assert rows[0].split("\n")[1] == query  # what was masked in the search stands here
    assert len(rows) > 5 and len({sum(not c.islower() for c in row.split("\n")[1]) for row in rows}) == 1
    said = json.loads((reports / "000001_sp_Q600K7_ENGB_MYCH2.json").read_text())
    title = fasta_of(["engb"]).decode().split("\n")[0].split(" ", 1)[1]  # longer than a report shows
    assert said["iterations"][0]["hits"] and said["run"]["query"]["title"] == title
    assert title in (reports / "000001_sp_Q600K7_ENGB_MYCH2.html").read_text()
    assert sorted({path.suffix for path in reports.iterdir()}) == [".a3m", ".html", ".json", ".pssm", ".report", ".sto"]
    index = (folder.path / "out/index.html").read_text()
    assert 'href="reports/000001_sp_Q600K7_ENGB_MYCH2.html"' in index and index.count("000002_") == 1
    assert folder.easy("convert", reports / "000001_sp_Q600K7_ENGB_MYCH2.report", "--to", "tsv") == 0
    hits = (folder.path / "out/hits.tsv").read_text().splitlines()
    assert sum(line.startswith("# Fields: ") for line in hits) == 2
    own = [line for line in hits if line.startswith("sp|Q600K7")]
    assert folder.out.splitlines() == [line.rsplit("\t", 1)[0] for line in own] and own[0].endswith("\t198")
    again = folder.easy("convert", reports / "000001_sp_Q600K7_ENGB_MYCH2.report", "--to", "json", "--query", "two.fa")
    assert again == 0 and json.loads(folder.out)["run"]["query"]["title"] == title
    assert folder.easy("convert", "two.fa", "--to", "json") == 1 and folder.easy("convert", "two.fa", "--to", "x") == 2
    folder.search(EXAMPLES / "engb_dna.fasta", database, "--a3m", "--out", "dna", status=2)
    assert "--a3m" in folder.errors
    folder.search(EXAMPLES / "engb_dna.fasta", database, "--json", "--out", "dna", "--evalue", "1e-5")
    merged = json.loads(next((folder.path / "dna/reports").glob("*.json")).read_text())
    assert merged["iterations"][0]["hits"][0]["alignments"]
