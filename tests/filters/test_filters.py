"""The filters on reports of real searches, held against the sequences themselves and a run of their own arithmetic."""

import html.parser
import os
import pathlib
import re
import subprocess
import sys
import unittest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
FILTERS = SOURCE / "filters"
EXAMPLES = SOURCE / "examples"
sys.path.insert(0, str(FILTERS))
sys.path.insert(0, str(SOURCE / "tests" / "cli"))

import zelvan_charts  # noqa: E402
import zelvan_cli  # noqa: E402
import zelvan_report  # noqa: E402


def read_fasta(text):
    return {r.split()[0]: "".join(r.split("\n")[1:]) for r in ("\n" + text).split("\n>")[1:]}


PROTEINS = read_fasta((EXAMPLES / "uniprot_sample.fasta").read_text())
QUERY = read_fasta((EXAMPLES / "engb.fasta").read_text())["sp|Q600K7|ENGB_MYCH2"]


def run_filter(name, text, *args):
    done = subprocess.run([sys.executable, FILTERS / name, *args], input=text, capture_output=True,
                          encoding="latin-1", check=False)  # fmt: skip
    return done.returncode, done.stdout, done.stderr


class FilterTest(zelvan_cli.TestCase):
    reports = {}

    def report(self, *args):
        """A search of the sample with the small GTPase (unless args say otherwise) and the shipped defaults; each
        is made once."""
        if args not in self.reports:
            self.configure(defaults=None)
            run = self.zelvan("-s", EXAMPLES / "engb.fasta", "-d", EXAMPLES / "uniprot_sample.fasta", *args)
            self.assertEqual(run.status, 0, run.stderr)
            self.reports[args] = run.stdout
        return self.reports[args]

    def dna_report(self, *more):
        return self.report("-s", EXAMPLES / "engb_dna.fasta", "-mode", 22, "-do_stats", 1, *more)


class TableTest(FilterTest):
    def check_line(self, line):
        """Everything that a line says, from the positions and the sequences alone."""
        query, target, identity, length, mismatches, opens, qstart, qend, tstart, tend, _, score = line.split("\t")
        length, mismatches, opens = int(length), int(mismatches), int(opens)
        qspan, tspan = int(qend) - int(qstart) + 1, int(tend) - int(tstart) + 1
        identical = round(float(identity) * length / 100)
        aligned = identical + mismatches
        self.assertEqual((qspan - aligned) + (tspan - aligned), length - aligned)  # gapped residues are gap columns
        self.assertEqual(opens > 0, length > aligned)
        self.assertTrue(1 <= int(qstart) <= int(qend) <= len(QUERY))
        self.assertTrue(1 <= int(tstart) <= int(tend) <= len(PROTEINS[target]))
        self.assertGreater(int(score), 0)
        if opens == 0:
            pairs = zip(QUERY[int(qstart) - 1 : int(qend)], PROTEINS[target][int(tstart) - 1 : int(tend)])
            self.assertEqual(sum(q == t for q, t in pairs), identical)

    def test_every_alignment_of_the_last_iteration_is_a_line(self):
        report = self.report("-niter", 2)
        last = report[report.index("# Iteration: 1\n") :]
        status, table, errors = run_filter("zelvan2tsv", report, "--header")
        self.assertEqual((status, errors), (0, ""))
        names, *lines = table.splitlines()
        self.assertEqual(len(names.split("\t")), 12)
        self.assertEqual(len(lines), last.count("\n# N: "))
        self.assertGreater(len(lines), 100)
        for line in lines:
            self.check_line(line)
        first = re.search(r"# N: 1 Raw_Score: (\d+) .*Evalue: (\S+)", last)
        self.assertEqual(lines[0].split("\t")[10:], [f"{float(first[2]):.3g}", first[1]])

    def test_iterations_and_score_lists(self):
        report = self.report("-niter", 2)
        _, first, _ = run_filter("zelvan2tsv", report, "-i", "0")
        self.assertEqual(len(first.splitlines()), report[: report.index("# Iteration: 1\n")].count("\n# N: "))
        _, hits, _ = run_filter("zelvan2tsv", report, "-i", "0", "--hits")
        body = re.search(r"# Start_Scores: -+\n(.*?)# End_Scores", report, re.S)[1].splitlines()
        self.assertEqual(len(hits.splitlines()), len(body))
        for line, printed in zip(hits.splitlines(), body):
            _, rank, target, score, x, value, title = line.split("\t")
            self.assertEqual([rank, score, x, value, target], printed.split()[:5])
            self.assertTrue(printed.rstrip().endswith(title))

    def test_gap_characters_and_list_layouts_of_other_settings(self):
        plain = run_filter("zelvan2tsv", self.report("-niter", 1))[1]
        other = self.report("-niter", 1, "-gap_character", "-", "-show_titles", 0, "-output_length", 37)
        self.assertEqual(run_filter("zelvan2tsv", other)[1], plain)
        hits = run_filter("zelvan2tsv", other, "--hits")[1].splitlines()
        self.assertEqual(len(hits), other.split("# End_Scores")[0].split("# Start_Scores")[1].count("\n") - 1)
        self.assertEqual(hits[0].split("\t")[1:4], ["1", "tr|B2V7P2|B2V7P2_SULSY", "295"])

    def test_translated_query(self):
        _, table, errors = run_filter("zelvan2tsv", self.dna_report())
        first = table.splitlines()[0].split("\t")
        self.assertEqual(errors, "")
        nucleotides = int(first[7]) - int(first[6]) + 1
        section = re.search(r"# Residues: (\d+)-(\d+) Nucleotides: (\d+)-(\d+) Identical: (\d+)", self.dna_report())
        self.assertEqual(first[6:10], [section[3], section[4], section[1], section[2]])
        self.assertEqual(round(float(first[2]) * int(first[3]) / 100), int(section[5]))
        self.assertEqual(nucleotides % 3, 1)  # the planted base
        without = self.dna_report("-do_stats", 0, "-min_score", 200)
        rows = [line.split("\t") for line in run_filter("zelvan2tsv", without)[1].splitlines()]
        self.assertEqual({row[10] for row in rows}, {"NA"})
        self.assertEqual([first[:10]], [row[:10] for row in rows if row[1] == first[1]])

    def test_what_is_no_report_is_refused_in_words(self):
        report = self.report("-niter", 1)
        for text, args, says in (
            ("", [], "no score list in the input"),
            (report, ["-i", "7"], "the report has no iteration 7: it has 0"),
            (report[: report.index("# End_Scores")], [], 'a line "# End_Scores: ..." is missing'),
            (report[: report.index("# End_N")], [], 'a line "# End_N: ..." is missing'),
        ):
            status, out, errors = run_filter("zelvan2tsv", text, *args)
            self.assertEqual((status, out), (1, ""))
            self.assertIn(says, errors)
        status, _, errors = run_filter("zelvan2tsv", self.report("-niter", 1, "-apt", 0, "-aout", 0))
        self.assertEqual(status, 0)
        self.assertIn("hits but no alignments", errors)


class MultipleAlignmentTest(FilterTest):
    def test_rows_hold_the_sequences_themselves(self):
        report = self.report("-niter", 2)
        status, text, _ = run_filter("zelvan2a3m", report, "-q", EXAMPLES / "engb.fasta")
        self.assertEqual(status, 0)
        names = re.findall(r">(\S+)", text)
        rows = [line for line in text.splitlines() if not line.startswith(">")]
        self.assertEqual(rows[0], QUERY)
        listed = re.search(r"# Multiple alignment Start for iteration: 1\n(.*?)# Multiple alignment End", report, re.S)
        self.assertEqual(len(rows), listed[1].split("#\n")[1].count(": ") if "#\n" in listed[1] else 0)
        for name, row in zip(names[1:], rows[1:]):
            target, _, span = name.rpartition("/")
            start, end = map(int, span.split("-"))
            self.assertEqual(row.replace("-", "").upper(), PROTEINS[target][start - 1 : end])
            self.assertEqual(sum(not c.islower() for c in row), len(QUERY))

    def test_block_file_gives_the_same_without_insertions(self):
        report = self.report("-niter", 2, "-print_block_file", 1)
        block = (self.work / "block_file_out.blc").read_text()
        _, from_block, _ = run_filter("zelvan2a3m", block)
        _, from_report, _ = run_filter("zelvan2a3m", report, "-q", EXAMPLES / "engb.fasta")
        rows = [[r for r in text.splitlines() if not r.startswith(">")] for text in (from_block, from_report)]
        self.assertEqual(rows[0], ["".join(c for c in r if not c.islower()) for r in rows[1]])

    def test_residues_that_the_report_does_not_show(self):
        _, text, errors = run_filter("zelvan2a3m", self.report("-niter", 1, "-max_nout", 5, "-npt", 0))
        query = text.splitlines()[1]
        self.assertEqual(len(query), len(QUERY))
        self.assertTrue(all(c in ("X", q) for c, q in zip(query, QUERY)))
        self.assertEqual("X" in query, "not in the report" in errors)
        for text, args, says in (
            (self.dna_report(), [], "the query is DNA"),
            (self.report("-niter", 1), ["-q", "/nowhere"], "cannot read the query file /nowhere"),
            (self.report("-niter", 1), ["-q", EXAMPLES / "mvk.fasta"], "residues, but the query of the report 198"),
            ("# Alignment from izelvan iteration:0\n", [], "the block file is incomplete"),
        ):
            status, _, errors = run_filter("zelvan2a3m", text, *args)
            self.assertEqual(status, 1)
            self.assertIn(says, errors)


class PageParser(html.parser.HTMLParser):
    """Collects what a page refers to and holds, and whether its tags pair up."""

    VOID = {"meta", "br", "link", "img", "circle", "line", "path", "rect"}
    OPTIONAL = {"th"}

    def __init__(self, text):
        super().__init__()
        self.open, self.links, self.anchors, self.addresses, pieces = [], [], set(), [], []
        self.handle_data = pieces.append
        self.feed(text)
        self.text = "".join(pieces)

    def handle_starttag(self, tag, attrs):
        attrs = dict(attrs)
        self.anchors.add(attrs.get("id"))
        if "href" in attrs:
            self.links.append(attrs["href"])
        self.addresses += [v for k, v in attrs.items() if k in ("src", "href") and not v.startswith("#")]
        if tag not in self.VOID | self.OPTIONAL:
            self.open.append(tag)

    def handle_startendtag(self, tag, attrs):
        pass

    def handle_endtag(self, tag):
        if tag not in self.VOID and (not self.open or self.open.pop() != tag):
            raise ValueError(f"</{tag}> closes nothing")


class PageTest(FilterTest):
    def page(self, report, *args):
        status, text, errors = run_filter("zelvan2html", report, *args)
        self.assertEqual((status, errors), (0, ""))
        page = PageParser(text)
        self.assertEqual(page.open, [])
        self.assertEqual(page.addresses, [])  # nothing from outside
        self.assertNotIn("http", text)
        for link in page.links:
            self.assertIn(link.removeprefix("#"), page.anchors)
        return page

    def test_page_of_an_iterated_search(self):
        report = self.report("-niter", 2, "-v", 1000)
        page = self.page(report)
        iteration = zelvan_report.read_report(report.splitlines()).iteration()
        self.assertEqual(len(iteration.scores), len(PROTEINS))
        for hit in iteration.hits:
            self.assertIn(hit.target, page.text)
        for words in (f"{len(iteration.hits)} hits", "Iterations", "All sequences searched", "Multiple alignment"):
            self.assertIn(words, page.text)
        for alignment in iteration.alignments:
            self.assertIn(f"rank{alignment.rank}", page.anchors)

    def test_pages_of_other_reports(self):
        self.assertNotIn("number that chance brings", self.page(self.report("-niter", 1, "-npt", 0, "-nout", 9)).text)
        self.assertIn("number that chance brings", self.page(self.report("-niter", 1)).text)
        self.assertIn("1 frame shifts", self.page(self.dna_report()).text)
        self.assertIn("No sequence reached", self.page(self.report("-niter", 1, "-e", 0, "-e2", 0)).text)
        self.assertNotIn("All sequences searched", self.page(self.report("-niter", 1, "-pt", 0, "-e", 0.0001)).text)
        self.assertIn("&<x>", self.page(self.report("-niter", 1).replace("GTPase Era OS", "&<x>"), "-a", "7").text)

    def test_fitted_line_is_the_one_of_the_search(self):
        """x from the page's formulas is the x that the report prints, where the scale is not limited."""
        report = zelvan_report.read_report(self.report("-niter", 1).splitlines())
        iteration = report.iteration()
        lengths = {a.target: a.target_length for a in iteration.alignments}
        close = [
            abs(zelvan_charts.standardised(iteration, len(QUERY), lengths[h.target], h.score) - h.standardised) < 0.02
            for h in iteration.hits
        ]
        self.assertGreater(sum(close), len(close) // 2)
        reach = zelvan_charts.score_reaching(iteration, len(QUERY))
        for hit in iteration.hits[:20]:
            self.assertAlmostEqual(reach(lengths[hit.target], hit.significance), hit.score, delta=0.05 * hit.score)


if __name__ == "__main__":
    unittest.main()
