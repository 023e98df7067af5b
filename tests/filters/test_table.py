"""Tables and JSON, held against the sequences themselves, against each other, and read by others' programs."""

import io
import json
import math
import re
import subprocess
import sys
import tempfile

import pytest
from conftest import EXAMPLES, QUERY, SAMPLE, SOURCE, fasta, run_filter, table
from zelvan_easy.formats.table import write_table
from zelvan_easy.report import open_report

PROTEINS = fasta(SAMPLE)
(RESIDUES,) = fasta(QUERY).values()
TOTAL = sum(map(len, PROTEINS.values()))
ALL = "std,qlen,slen,qcovhsp,nident,positive,gaps,btop,score,iteration,rank"


def replayed(operations, query):
    """The target's residues that traceback operations make of the query's, and how many columns of each kind."""
    target, kinds, at = "", {"same": 0, "other": 0, "gap": 0}, 0
    for same, pair in re.findall(r"(\d+)|([A-Z*-]{2})", operations):
        if same:
            target += query[at : at + int(same)]
            at += int(same)
            kinds["same"] += int(same)
        else:
            assert pair[0] in ("-", query[at])
            at += pair[0] != "-"
            target += pair[1].replace("-", "")
            kinds["gap" if "-" in pair else "other"] += 1
    assert at == len(query)
    return target, kinds


def test_every_line_follows_from_positions_and_sequences(report):
    text = report("-niter", 2)
    first, last = text.split("# Iteration: 1\n")
    lines = table(text, "-c", ALL)
    assert len(lines) == last.count("\n# N: ") > 100
    for line in lines:
        target, (_, opens), places = line[1], line[4:6], list(map(int, line[6:10]))
        length, mismatches, slen, identical, _, gaps = (int(line[i]) for i in (3, 4, 13, 15, 16, 17))
        letters, kinds = replayed(line[18], RESIDUES[places[0] - 1 : places[1]])
        assert letters == PROTEINS[target][places[2] - 1 : places[3]] and slen == len(PROTEINS[target])
        assert kinds == {"same": identical, "other": mismatches, "gap": gaps}
        assert length == identical + mismatches + gaps and (int(opens) > 0) == (gaps > 0)
        assert line[2] == f"{100 * identical / length:.2f}"
        assert float(line[11]) == pytest.approx(math.log2(198 * TOTAL / float(line[10])), abs=0.1)
    covered, rows = {}, table(text, "-c", "sseqid,qstart,qend,qcovs")
    for target, start, end, _ in rows:
        covered.setdefault(target, set()).update(range(int(start), int(end) + 1))
    assert [row[3] for row in rows] == [f"{100 * len(covered[row[0]]) / 198:.0f}" for row in rows]
    best = re.search(r"# N: 1 Raw_Score: (\d+) .*Evalue: (\S+)", last)
    assert [float(lines[0][10]), lines[0][19:]] == [pytest.approx(float(best[2]), rel=0.01), [best[1], "1", "1"]]
    assert len(table(text, "-i", 0)) == first.count("\n# N: ")
    assert len(table(text, "-i", "all")) == text.count("\n# N: ")
    hits = [line.split() for line in re.search(r"# Start_Scores.*\n([^#]*)", first)[1].splitlines()]
    for (_, rank, target, score, x, value, title), printed in zip(table(text, "-i", 0, "--hits"), hits):
        assert [rank, score, x, value, target, *title.split()] == printed
    assert len(hits) == len(table(text, "-i", 0, "--hits")) > 50


def test_limits_keep_what_is_within_them(report):
    text = report("-niter", 2)
    everything = table(text, "-c", ALL)
    for option, limit, keeps in (
        ("-e", 1e-20, lambda line: float(line[10]) <= 1e-20),
        ("--min-identity", 30, lambda line: float(line[2]) >= 30),
        ("--min-coverage", 80, lambda line: int(line[7]) - int(line[6]) + 1 >= 0.8 * 198),
    ):
        expected = list(filter(keeps, everything))
        assert 0 < len(expected) < len(everything)
        assert table(text, "-c", ALL, option, limit) == expected


def test_other_layouts_say_the_same(report):
    usual = report("-niter", 1)
    for other in (
        report("-niter", 1, "-gap_character", "-", "-show_titles", 0, "-output_length", 37),
        usual.replace("\n", "\r\n"),
    ):
        assert table(other) == table(usual)
    narrow = report("-niter", 1, "-show_ident_width", 5, "-gap_character", "-", "-show_titles_width", 9)
    assert table(narrow, "-c", "std,rank") == table(usual, "-c", "std,rank")


def test_bits_go_on_where_significance_has_no_digits_left(report):
    """A protein found by itself: its E-value prints as 0 once the score is scaled up."""
    text = report("-niter", 1)
    best, second = re.findall(r"Evalue: (\S+)", text)[:2]
    listed = re.search(r"\n +1 +\d+ (\S+) +(\S+) ", text)
    gone = text.replace(f"Evalue: {best}\n", "Evalue: 0\n").replace(listed[2], "0".ljust(len(listed[2])), 1)
    bits = [float(line[11]) for line in table(gone)[:2]]
    assert bits[0] == pytest.approx(math.log2(198 * TOTAL / float(best)), abs=0.1)
    assert bits[1] == pytest.approx(math.log2(198 * TOTAL / float(second)), abs=0.1)


def test_translated_searches(report, dna):
    names = "std,qcovs,qframe,sframe,sstrand,shifts"
    first = table(dna(), "-c", names)[0]
    section = re.search(r"# Residues: (\d+)-(\d+) Nucleotides: (\d+)-(\d+) Identical: (\d+)", dna())
    assert first[6:10] == [section[3], section[4], section[1], section[2]]
    assert round(float(first[2]) * int(first[3]) / 100) == int(section[5])
    assert (int(first[7]) - int(first[6]) + 1) % 3 == 1  # the planted base
    assert first[13:] == ["2", "0", "plus", "1"]
    assert {int(gaps) - steps.count("-") for gaps, steps in table(dna(), "-c", "gaps,btop")} == {0}
    for line in table(dna("-complement_query", 1), "-c", names):
        start, end, frame, _, strand, shifts = line[6:8] + line[13:]
        assert (strand, (int(start) - int(end) + 1 - int(shifts)) % 3) == ("minus", 0)
        assert int(frame) == -((675 - int(start)) % 3 + 1)
    rows = table(dna("-do_stats", 0, "-min_score", 200))
    assert {(row[10], row[11]) for row in rows} == {("NA", "NA")}
    assert [first[:10]] == [row[:10] for row in rows if row[1] == first[1]]
    database = ("-d", EXAMPLES / "dna_sample.fasta")
    plain = report(*database, "-mode", 10)
    assert [" ".join(line) for line in table(plain, "--hits", "-c", "score,sseqid")] == plain.splitlines()
    for more in ((), ("-show_len", 1), ("-show_len", 1, "-show_titles", 0)):
        text = report(*database, "-mode", 12, "-do_stats", 0, "-min_score", 30, *more)
        rows = table(text, "--unaligned", "-c", "sseqid,slen,score,qstart")
        assert len(rows) > 300
        for target, length, score, start in rows:
            assert start == "NA" and length == ("NA" if not more else str(len(fasta(database[1])[target])))
            assert int(score) >= 30


def test_commented_table_is_read_by_biopython(report):
    search_io = pytest.importorskip("Bio.SearchIO", reason="python3-biopython is not installed")
    text = run_filter("zelvan2tsv", report("-niter", 2), "-H", "-c", "std,qlen,slen,score,btop,stitle")
    result = search_io.read(io.StringIO(text), "blast-tab", comments=True)
    best, *others = table(report("-niter", 2), "-c", "std,slen")
    assert (result.id, len(result)) == ("sp|Q600K7|ENGB_MYCH2", len({line[1] for line in [best, *others]}))
    assert (result[0].id, f"{result[0][0].bitscore:.1f}", result[0].seq_len) == (best[1], best[11], int(best[12]))


def test_json_follows_its_schema_and_says_what_the_table_says(report, dna):
    jsonschema = pytest.importorskip("jsonschema", reason="python3-jsonschema is not installed")
    schema = json.loads((SOURCE / "doc/zelvan_report.schema.json").read_text())
    jsonschema.Draft202012Validator.check_schema(schema)
    text = report("-niter", 2, "-print_profiles", 1, "-print_frq_tabs", 1, "-e", 1e-9)
    no_utf8 = text.replace("GTPase Era OS", "GTPase \xe9 \"OS\"")
    database = EXAMPLES / "dna_sample.fasta"
    for made in (text, no_utf8, dna("-probcut", 0.1), report("-niter", 1, "-e", 0), report("-niter", 1, "-prob_type", 0, "-v", 1000, "-e", 1e-9),
                 report("-d", database, "-mode", 12, "-do_stats", 1), report("-d", database, "-mode", 10)):  # fmt: skip
        document = json.loads(run_filter("zelvan2json", made))
        jsonschema.Draft202012Validator(schema).validate(document)
        for iteration in document["iterations"]:
            listed = table(made, "-i", iteration["number"], "--hits")
            assert [[str(hit["rank"]), hit["target"], str(hit["score"])] for hit in iteration["hits"]] == \
                [line[1:4] for line in listed]  # fmt: skip
        told = [[a["query_start"], a["target_end"], a["length"], a["identical"], a["gaps"]]
                for hit in document["iterations"][-1]["hits"] for a in hit["alignments"]]  # fmt: skip
        shown = table(made, "-c", "qstart,send,length,nident,gaps") if told else []
        assert told == [list(map(int, line)) for line in shown]
    document = json.loads(run_filter("zelvan2json", text))
    second = document["iterations"][1]
    entered = re.search(r"# Reported in this iteration \(1\).*\n#\n((?: +\d+ .*\n)*)", text)[1].splitlines()
    assert [str(hit["rank"]) for hit in second["appeared"]] == [line.split()[0] for line in entered] != []
    assert len(second["profile"]["rows"]) == len(RESIDUES) == len(second["counts"]["rows"])
    lengths = {"M": (1, 1), "I": (1, 0), "D": (0, 1), "F": (0, 0)}
    for hit in second["hits"]:
        for found in hit["alignments"]:
            steps = [(int(n), lengths[move]) for n, move in re.findall(r"(\d+)([MIDF])", found["path"])]
            assert sum(n * q for n, (q, _) in steps) == found["query_end"] - found["query_start"] + 1
            assert sum(n * t for n, (_, t) in steps) == found["target_end"] - found["target_start"] + 1


def test_a_stream_and_a_file_read_the_same(report):
    text = report("-niter", 2)
    with tempfile.NamedTemporaryFile() as file:
        file.write(text.encode("latin-1"))
        file.flush()
        out = io.StringIO()
        with open_report(file.name) as read:
            assert write_table(read, out) == text.split("# Iteration: 1\n")[1].count("\n# N: ")
    assert out.getvalue() == run_filter("zelvan2tsv", text)


def test_what_cannot_be_converted_is_refused_in_words(report, dna):
    text = report("-niter", 1)
    for name, given, args, says in (
        ("zelvan2tsv", "", [], "the input is empty"),
        ("zelvan2tsv", ">q\nMKV\n", [], "no score list in the input"),
        ("zelvan2tsv", text, ["-i", 7], "the report has no iteration 7: it has 0"),
        ("zelvan2tsv", text, ["-c", "qstart,x"], "no such column: x; there are std"),
        ("zelvan2tsv", text[: text.index("# End_Scores")], [], 'a line "# End_Scores: ..." is missing'),
        ("zelvan2json", text + dna(), [], "the reports of several searches"),
        ("zelvan2a3m", dna(), [], "only protein searches"),
        ("zelvan2a3m", text, ["-q", "/nowhere"], "cannot read the query file /nowhere"),
        ("zelvan2a3m", text, ["-q", EXAMPLES / "mvk.fasta"], "residues, but the query of the report 198"),
        ("zelvan2a3m", "# Alignment from izelvan iteration:0\n", [], "the block file is incomplete"),
        ("zelvan2pssm", text, [], "search with PRINT_PROFILES 1"),
        ("zelvan2pssm", dna(), [], "only protein searches"),
        ("zelvan2tsv", "", ["/nowhere"], "cannot read /nowhere"),
    ):
        run_filter(name, given, *args, status=1, errors=says)
    # The table of a report is written while it is read.
    cut = text[: text.rindex("# End_Alignments_Rank")]
    done = subprocess.run([sys.executable, SOURCE / "filters/zelvan2tsv"], input=cut, capture_output=True,
                          encoding="latin-1", check=False)  # fmt: skip
    assert done.returncode == 1 and 'a line "# End_Alignments_Rank: ..." is missing' in done.stderr
    run_filter("zelvan2tsv", report("-niter", 1, "-apt", 0, "-aout", 0), errors="hits but no alignments")
