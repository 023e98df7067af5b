"""What can be proven without a search: recognition, genetic codes, stretches, merging, masking, processes."""

import signal

import pytest
from conftest import SOURCE
from zelvan_easy.codes import CODES, code_file, read_code
from zelvan_easy.database import Database
from zelvan_easy.engine import Engine
from zelvan_easy.failure import Failure
from zelvan_easy.inputs import DNA, PROTEIN, file_name, kind_of, make_query
from zelvan_easy.masking import dna_filling, masked
from zelvan_easy.merge import _without_repetitions
from zelvan_easy.plan import LONGEST, OVERLAP, Options, make_plan, parse_sets, stretches, with_sets
from zelvan_easy.pool import Pool
from zelvan_easy.report import Alignment


@pytest.mark.parametrize("letters, kind", [
    ("ACGTACGT", DNA), ("ACGUN", DNA), ("ACGTRYKMACGTACGTACGTACGTACGTACGTACGTACGT", DNA), ("ACGTRYKM", PROTEIN),
    ("MKVLAAGIV", PROTEIN), ("GATTACAE", PROTEIN), ("", PROTEIN), ("NNNN", DNA),
])  # fmt: skip
def test_dna_is_told_from_protein(letters, kind):
    assert kind_of(letters) == kind


def test_queries_keep_what_matters():
    query = make_query(7, "a/b|c  some title", "acg-uX*\n12")
    assert query[:5] == (7, "a/b|c", "some title", PROTEIN, "ACGUX")
    query = make_query(7, "", "acguacguacguacgux")
    assert (query.name, query.residues, query.problem) == ("query_7", "ACGTACGTACGTACGTN", "")
    assert "EF" in make_query(1, "x", "ACEF", DNA).problem
    assert file_name(make_query(7, "a/b c", "MKV")) == "000007_a_b"
    assert "/" not in file_name(make_query(7, "../../etc", "MKV"))


def test_genetic_codes_are_those_that_are_published():
    tables = pytest.importorskip("Bio.Data.CodonTable").unambiguous_dna_by_id
    for number in CODES:
        code = read_code(SOURCE / "data/codons" / code_file(number))
        expected = {codon: "!" for codon in tables[number].stop_codons}
        assert code == {**expected, **tables[number].forward_table}, number
        assert len(code) == 64 and list(code) == sorted(code)


@pytest.mark.parametrize("length", [1, LONGEST, LONGEST + 1, 27_000, 27_001, 1_000_000])
def test_stretches_cover_and_overlap(length):
    parts = stretches(length)
    assert parts[0][0] == 0 and parts[-1][1] == length
    assert all(end - start <= LONGEST for start, end in parts)
    for (_, end), (start, _) in zip(parts, parts[1:]):
        assert end - start >= OVERLAP


def alignment(query, target, score):
    return Alignment(1, score, 1 / score, *query, *target, "", "", "")


def test_a_hit_in_an_overlap_is_told_once():
    whole = 0, alignment((9_001, 12_000), (1, 1000), 500)
    cut = 1, alignment((9_901, 12_000), (301, 1000), 300)  # the same, begun where the next stretch begins
    elsewhere = 1, alignment((20_001, 20_900), (1, 300), 250)  # another copy of a part of the gene
    other_strand = 2, alignment((12_000, 9_001), (1, 1000), 200)
    same_stretch = 0, alignment((9_001, 12_000), (1, 1000), 100)
    longer = 1, alignment((11_000, 15_000), (700, 2000), 90)  # runs on beyond the overlap
    found = [cut, same_stretch, elsewhere, whole, other_strand, longer]
    assert _without_repetitions(found) == [one for _, one in (whole, elsewhere, other_strand, same_stretch, longer)]


def test_masked_dna_is_stopped_in_every_frame_of_both_strands():
    complement = str.maketrans("ACGT", "TGCA")
    for number in CODES:
        code = read_code(SOURCE / "data/codons" / code_file(number))
        stops = [codon for codon, letter in code.items() if letter == "!"]
        text = masked("A" * 60, [(11, 50)], dna_filling(stops))
        assert text[:10] == text[50:] == "A" * 10
        for strand in (text, text.translate(complement)[::-1]):
            for frame in range(3):
                assert "!" in [code[strand[at : at + 3]] for at in range(10 + frame, 48, 3)], (number, frame)


# ---- From words to keys


@pytest.fixture
def engine():
    engine = Engine("zelvan", SOURCE / "data/config", SOURCE / "data")
    engine.settings = {"PROBCUT": "10", "PROBCUT2": "0.02", "NITER": "3", "MATRIX_FILE": "VTML160"}
    return engine


def plan(engine, kind=PROTEIN, database_kind=PROTEIN, sequences=5000, sets=(), **options):
    database = Database("", "", "", "", database_kind, False, "", sequences, 10**6, 500, 10, 30, "")
    found = with_sets(Options(sets=parse_sets(sets, engine), **options))
    made = make_plan(kind, database, found, engine)
    keys = {engine.key(made.arguments[at]): made.arguments[at + 1] for at in range(0, len(made.arguments), 2)}
    return made, keys


def test_modes(engine):
    for kind, database_kind, linear, mode, runs in (
        (PROTEIN, PROTEIN, False, 202, [0]), (PROTEIN, PROTEIN, True, 200, [0]), (DNA, PROTEIN, False, 22, [0, 1]),
        (DNA, PROTEIN, True, 20, [0, 1]), (PROTEIN, DNA, False, 12, [0, 1]),
    ):  # fmt: skip
        made, keys = plan(engine, kind, database_kind, linear=linear)
        assert (made.mode, made.complements, keys["MODE"]) == (mode, runs, str(mode))
        assert keys["DO_STATS"] == ("2" if mode >= 200 else "1")
    assert plan(engine, DNA, strand="minus")[0].complements == [1]
    assert plan(engine, DNA, genetic_code=4)[1]["CODON_FILE"] == "ncbi_4.tst"


def test_penalties_reach_zelvan(engine):
    assert "USE_GAPDEFS" not in plan(engine)[1]
    _, keys = plan(engine, matrix="BLOSUM62", gap_open=11, gap_extend=1)
    assert (keys["USE_GAPDEFS"], keys["LI_PEN"], keys["LD_PEN"]) == ("0", "12", "1")
    _, keys = plan(engine, kind=DNA, gap_extend=3)  # opening and frame shifts as they are by default: 14 - 2, 12
    assert (keys["LI_PEN"], keys["LD_PEN"], keys["FS_PEN"]) == ("15", "3", "12")
    _, keys = plan(engine, sets=["ld=1.5"])
    assert (keys["USE_GAPDEFS"], keys["LI_PEN"], keys["LD_PEN"]) == ("0", "12.5", "1.5")


def test_evalues_are_shared_out(engine):
    made, _ = plan(engine, kind=DNA, evalue=1)
    assert made.values(4) == ["-e", "0.25"]
    made, keys = plan(engine, sets=["PROBCUT=0.001", "NITER=5"])
    assert (made.values(1), keys["NITER"]) == (["-e", "0.001", "-e2", "0.001"], "5")


@pytest.mark.parametrize("what", [
    {"evalue": 0}, {"evalue": float("nan")}, {"evalue": 1, "inclusion_evalue": 2}, {"matrix": "NONE"}, {"gap_open": -1},
    {"linear": True, "gap_open": 1}, {"linear": True, "database_kind": DNA}, {"kind": DNA, "database_kind": DNA},
    {"genetic_code": 7}, {"strand": "up"}, {"sets": ["FOO=1"]}, {"sets": ["NITER=2.5"]}, {"sets": ["LD_PEN=x"]},
    {"sets": ["STDOUT=x"]}, {"sets": ["COMPLEMENT_QUERY=1"]}, {"sets": ["MODE=22"]}, {"sets": ["NITER"]},
    {"sets": ["NITER=2"], "iterations": 3}, {"sets": ["LD_PEN=2"], "gap_open": 3}, {"sets": ["LPFIT_PRINT=1"]},
])  # fmt: skip
def test_what_cannot_be_is_refused(engine, what):
    with pytest.raises(Failure) as refusal:
        plan(engine, **what)
    assert refusal.value.status == 2


def test_processes_that_are_ended_at_once_say_nothing(capfd):
    before = signal.signal(signal.SIGTERM, signal.default_int_handler)  # as a search has it
    try:
        for _ in range(20):
            with Pool(4, len):
                pass
    finally:
        signal.signal(signal.SIGTERM, before)
    assert capfd.readouterr().err == ""
