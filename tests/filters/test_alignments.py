"""Multiple alignments and profiles: the rows hold the sequences, and the programs that they are made for read them and
find the family again."""

import re
import shutil
import subprocess

import pytest
from conftest import QUERY, SAMPLE, fasta, run_filter, table

PROTEINS = fasta(SAMPLE)
(RESIDUES,) = fasta(QUERY).values()


def rows(text):
    """[(name, letters)] of FASTA or a3m, the query first."""
    return [(record.split()[0], record.splitlines()[1]) for record in text.split(">")[1:]]


@pytest.fixture
def families(report, tmp_path):
    """Files of the alignment in every layout, and the members of the family that the second pass was sure of."""
    text = report("-niter", 2)
    for layout in ("stockholm", "fasta", "clustal", "a3m"):
        (tmp_path / layout).write_text(run_filter("zelvan2msa", text, "-f", layout, "-q", QUERY))
    (tmp_path / "columns").write_text(run_filter("zelvan2msa", text, "-f", "fasta", "--no-insertions", "-q", QUERY))
    return tmp_path, {row[1] for row in table(text, "-e", 1e-6)}


def call(*command, **more):
    """What a program writes; the test is skipped where it is not installed."""
    if not shutil.which(command[0]):
        pytest.skip(f"{command[0]} is not installed")
    done = subprocess.run(list(map(str, command)), capture_output=True, encoding="utf-8", check=False, **more)
    assert done.returncode == 0, done.stderr + done.stdout
    return done.stdout


def check_found(found, family):
    """At least nine of ten members."""
    assert len(family) > 50
    assert len(family & set(found)) >= 0.9 * len(family)


def test_rows_hold_the_sequences_themselves(report):
    text = report("-niter", 2, "-print_block_file", 1)
    block = (report.work / "block_file_out.blc").read_text()
    made = rows(run_filter("zelvan2a3m", text, "-q", QUERY))
    (_, first), *others = made
    assert first == RESIDUES
    listed = re.search(r"# Multiple alignment Start for iteration: 1\n(.*?)# Multiple alignment End", text, re.S)
    assert len(others) + 1 == listed[1].split("#\n")[1].count(": ")
    for name, row in others:
        target, _, span = name.rpartition("/")
        start, end = map(int, span.split("-"))
        assert row.replace("-", "").upper() == PROTEINS[target][start - 1 : end]
        assert sum(not c.islower() for c in row) == len(RESIDUES)
    columns = ["".join(c for c in row if not c.islower()) for _, row in made]
    assert [row for _, row in rows(run_filter("zelvan2a3m", block))] == columns
    assert [row for _, row in rows(run_filter("zelvan2msa", text, "-f", "fasta", "--no-insertions", "-q", QUERY))] == columns
    # Without a hit there is only the report's own multiple alignment, whose blocks lack their last columns.
    unknown = run_filter("zelvan2a3m", report("-niter", 1, "-e", 0, "-e2", 0), errors="4 residues of the query are not")
    assert [row for _, row in rows(unknown)] == ["".join("X" if i % 40 == 39 else c for i, c in enumerate(RESIDUES))]


def test_layouts_hold_the_same_alignment(families):
    align_io = pytest.importorskip("Bio.AlignIO", reason="python3-biopython is not installed")
    folder, _ = families
    read = {layout: align_io.read(folder / layout, layout) for layout in ("stockholm", "fasta", "clustal")}
    letters = {layout: [str(row.seq).upper().replace(".", "-") for row in made] for layout, made in read.items()}
    assert letters["stockholm"] == letters["fasta"] == letters["clustal"]
    names = {tuple(row.id for row in made) for made in read.values()}
    assert names == {tuple(name for name, _ in rows((folder / "a3m").read_text()))}
    reference = re.search(r"#=GC RF +(\S+)", (folder / "stockholm").read_text())[1]
    kept = ["".join(c for c, mark in zip(row, reference) if mark == "x") for row in letters["stockholm"]]
    assert kept == [row for _, row in rows((folder / "columns").read_text())]


@pytest.mark.parametrize("layout", ["stockholm", "fasta", "clustal"])
def test_hmmer(families, layout):
    folder, family = families
    told = call("hmmbuild", "--hand" if layout == "stockholm" else "--fast", folder / "hmm", folder / layout)
    assert re.search(r"\n1 +\S+ +\d+ +\d+ +(\d+)", told)[1] == "198" or layout != "stockholm"
    call("hmmsearch", "--noali", "-E", 1e-3, "--tblout", folder / "table", folder / "hmm", SAMPLE)
    check_found({line.split()[0] for line in (folder / "table").read_text().splitlines() if line[0] != "#"}, family)


@pytest.mark.parametrize("layout", ["fasta", "columns", "clustal"])
def test_psiblast(families, layout):
    folder, family = families
    call("makeblastdb", "-in", SAMPLE, "-dbtype", "prot", "-out", folder / "sample")
    told = call("psiblast", "-in_msa", folder / layout, "-db", folder / "sample", "-evalue", 1e-3, "-outfmt", "6 sseqid")
    check_found(told.split(), family)


def test_hhsuite(families):
    folder, _ = families
    call("hhmake", "-i", folder / "a3m", "-o", folder / "hhm", "-v", 1)
    text = (folder / "hhm").read_text()
    assert re.search(r"\nLENG +198 ", text)
    assert float(re.search(r"\nNEFF +(\S+)", text)[1]) > 3  # of the rows, not of the query alone


def test_mmseqs(families):
    folder, family = families

    def mmseqs(*words):
        call("mmseqs", *words, "-v", 1, cwd=folder)

    mmseqs("createdb", SAMPLE, "targets")
    mmseqs("convertmsa", "stockholm", "msa")
    mmseqs("msa2profile", "msa", "profile", "--match-mode", 0)
    mmseqs("search", "profile", "targets", "result", "tmp", "--threads", 2, "-s", 7)
    mmseqs("convertalis", "profile", "targets", "result", "table", "--format-output", "theader")
    check_found({line.split()[0] for line in (folder / "table").read_text().splitlines()}, family)


def test_matrix_of_the_profile(report):
    text = report("-niter", 2, "-print_profiles", 1)
    made = run_filter("zelvan2pssm", text, "-q", QUERY).splitlines()
    residues = made[2].split()
    assert residues == list("ARNDCQEGHILKMFPSTWYV") * 2
    lines = [line.split() for line in made[3:-1]]
    assert [line[1] for line in lines] == list(RESIDUES)
    table_text = text[text.rindex("# Lookup table (profile)") :].splitlines()
    alphabet = table_text[1][5:][3::4]
    for line, printed in zip(lines, table_text[2:]):
        scores = dict(zip(alphabet, printed.split(":", 1)[1].split()))
        assert line[2:22] == [scores[residue] for residue in residues[:20]]
        assert len(line) == 44 and sum(map(int, line[22:42])) <= 100
    # The P-loop, GRSNVGKS: its second glycine and its lysine are in nearly every row.
    loop = RESIDUES.index("GRSNVGKS")
    for place, residue in ((loop + 5, "G"), (loop + 6, "K")):
        assert int(lines[place][22 + residues.index(residue)]) > 90 and float(lines[place][42]) > 2


def test_blast_reads_the_layout_of_its_own_matrix(report, families):
    """Column by column as psiblast writes it for the same alignment."""
    folder, _ = families
    call("makeblastdb", "-in", SAMPLE, "-dbtype", "prot", "-out", folder / "sample")
    call("psiblast", "-in_msa", folder / "columns", "-db", folder / "sample", "-out_ascii_pssm", folder / "theirs",
         "-num_iterations", 1, "-outfmt", "6")  # fmt: skip
    theirs = (folder / "theirs").read_text().splitlines()
    ours = run_filter("zelvan2pssm", report("-niter", 2, "-print_profiles", 1), "-q", QUERY).splitlines()
    assert ours[2] == theirs[2]
    for mine, other in zip(ours[3:201], theirs[3:201]):
        assert [m.end() for m in re.finditer(r"\S+", mine)][:43] == [m.end() for m in re.finditer(r"\S+", other)][:43]
