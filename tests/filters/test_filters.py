"""The filters on reports of real searches, held against the sequences themselves and a run of their own arithmetic."""

import html
import os
import pathlib
import re
import subprocess
import sys
import unittest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
FILTERS = SOURCE / "filters"
sys.path[:0] = [str(FILTERS), str(SOURCE / "tests" / "cli")]

import zelvan_charts  # noqa: E402
import zelvan_cli  # noqa: E402
import zelvan_report  # noqa: E402

EXAMPLES = zelvan_cli.EXAMPLES
PROTEINS = zelvan_cli.fasta(zelvan_cli.SAMPLE)
(QUERY,) = zelvan_cli.fasta(zelvan_cli.QUERY).values()


class FilterTest(zelvan_cli.TestCase):
    reports = {}

    def report(self, *args):
        """A search of the sample with the small GTPase (unless args say otherwise) and the shipped defaults; each
        is made once."""
        if args not in self.reports:
            self.configure(defaults=None)
            self.reports[args] = self.succeed("-s", zelvan_cli.QUERY, "-d", zelvan_cli.SAMPLE, *args).stdout
        return self.reports[args]

    def dna_report(self, *more):
        return self.report("-s", EXAMPLES / "engb_dna.fasta", "-mode", 22, "-do_stats", 1, *more)

    def run_filter(self, name, text, *args, status=0, errors=""):
        """What the filter writes; `errors` is in its messages, which are empty unless it says otherwise."""
        done = subprocess.run([sys.executable, FILTERS / name, *args], input=text, capture_output=True,
                              encoding="latin-1", check=False)  # fmt: skip
        self.assertEqual(done.returncode, status, done.stderr)
        self.assertTrue(errors in done.stderr if errors else done.stderr == "", done.stderr)
        if status != 0:
            self.assertEqual(done.stdout, "")
        return done.stdout

    def table(self, text, *args):
        return [line.split("\t") for line in self.run_filter("zelvan2tsv", text, *args).splitlines()]


class TableTest(FilterTest):
    def check_line(self, line):
        """Everything that a line says, from the positions and the sequences alone."""
        _, target, identity, *numbers, _, score = line
        length, mismatches, opens, qstart, qend, tstart, tend = map(int, numbers)
        query, protein = QUERY[qstart - 1 : qend], PROTEINS[target][tstart - 1 : tend]
        self.assertEqual((len(query), len(protein)), (qend - qstart + 1, tend - tstart + 1))
        identical = round(float(identity) * length / 100)
        aligned = identical + mismatches
        self.assertEqual(len(query) + len(protein) - 2 * aligned, length - aligned)  # gapped residues are gap columns
        self.assertEqual(opens > 0, length > aligned)
        self.assertGreater(int(score), 0)
        if opens == 0:
            self.assertEqual(sum(q == t for q, t in zip(query, protein)), identical)

    def test_alignments_and_score_lists_of_an_iteration(self):
        report = self.report("-niter", 2)
        first, last = report.split("# Iteration: 1\n")
        names, *lines = self.table(report, "--header")
        self.assertEqual(len(names), 12)
        self.assertEqual(len(lines), last.count("\n# N: "))
        self.assertGreater(len(lines), 100)
        for line in lines:
            self.check_line(line)
        best = re.search(r"# N: 1 Raw_Score: (\d+) .*Evalue: (\S+)", last)
        self.assertEqual(lines[0][10:], [f"{float(best[2]):.3g}", best[1]])
        self.assertEqual(len(self.table(report, "-i", "0")), first.count("\n# N: "))
        hits = self.table(report, "-i", "0", "--hits")
        for line, printed in zip(hits, zelvan_cli.score_lists(report)[0], strict=True):
            _, rank, target, score, x, value, title = line
            self.assertEqual([rank, score, x, value, target, *title.split()], printed)

    def test_gap_characters_and_list_layouts_of_other_settings(self):
        other = self.report("-niter", 1, "-gap_character", "-", "-show_titles", 0, "-output_length", 37)
        self.assertEqual(self.table(other), self.table(self.report("-niter", 1)))
        hits = self.table(other, "--hits")
        self.assertEqual(len(hits), len(zelvan_cli.score_lists(other)[0]))
        self.assertEqual(hits[0][1:4], ["1", "sp|A5IMB8|ENGB_THEP1", "394"])

    def test_translated_query(self):
        first = self.table(self.dna_report())[0]
        section = re.search(r"# Residues: (\d+)-(\d+) Nucleotides: (\d+)-(\d+) Identical: (\d+)", self.dna_report())
        self.assertEqual(first[6:10], [section[3], section[4], section[1], section[2]])
        self.assertEqual(round(float(first[2]) * int(first[3]) / 100), int(section[5]))
        self.assertEqual((int(first[7]) - int(first[6]) + 1) % 3, 1)  # the planted base
        rows = self.table(self.dna_report("-do_stats", 0, "-min_score", 200))
        self.assertEqual({row[10] for row in rows}, {"NA"})
        self.assertEqual([first[:10]], [row[:10] for row in rows if row[1] == first[1]])


class MultipleAlignmentTest(FilterTest):
    def rows(self, text, *args):
        """[(name, letters)], the query first."""
        records = self.run_filter("zelvan2a3m", text, *args).split(">")[1:]
        return [(record.split()[0], record.splitlines()[1]) for record in records]

    def test_rows_hold_the_sequences_themselves(self):
        report = self.report("-niter", 2, "-print_block_file", 1)
        block = (self.work / "block_file_out.blc").read_text()
        (_, first), *others = self.rows(report, "-q", zelvan_cli.QUERY)
        self.assertEqual(first, QUERY)
        listed = re.search(r"# Multiple alignment Start for iteration: 1\n(.*?)# Multiple alignment End", report, re.S)
        self.assertEqual(len(others) + 1, listed[1].split("#\n")[1].count(": "))
        for name, row in others:
            target, _, span = name.rpartition("/")
            start, end = map(int, span.split("-"))
            self.assertEqual(row.replace("-", "").upper(), PROTEINS[target][start - 1 : end])
            self.assertEqual(sum(not c.islower() for c in row), len(QUERY))
        # A block file has no insertions.
        expected = [QUERY, *("".join(c for c in row if not c.islower()) for _, row in others)]
        self.assertEqual([row for _, row in self.rows(block)], expected)


class RefusalTest(FilterTest):
    def test_what_cannot_be_converted_is_refused_in_words(self):
        report = self.report("-niter", 1)
        for name, text, args, says in (
            ("zelvan2tsv", "", [], "no score list in the input"),
            ("zelvan2tsv", report, ["-i", "7"], "the report has no iteration 7: it has 0"),
            ("zelvan2tsv", report[: report.index("# End_Scores")], [], 'a line "# End_Scores: ..." is missing'),
            ("zelvan2tsv", report[: report.index("# End_N")], [], 'a line "# End_N: ..." is missing'),
            ("zelvan2a3m", self.dna_report(), [], "the query is DNA"),
            ("zelvan2a3m", report, ["-q", "/nowhere"], "cannot read the query file /nowhere"),
            ("zelvan2a3m", report, ["-q", EXAMPLES / "mvk.fasta"], "residues, but the query of the report 198"),
            ("zelvan2a3m", "# Alignment from izelvan iteration:0\n", [], "the block file is incomplete"),
        ):
            self.run_filter(name, text, *args, status=1, errors=says)
        self.run_filter("zelvan2tsv", self.report("-niter", 1, "-apt", 0, "-aout", 0), errors="hits but no alignments")


class PageTest(FilterTest):
    def page(self, report, *args):
        """The text of a page, after checking that it refers to nothing outside, and the places that one can refer
        to."""
        page = self.run_filter("zelvan2html", report, *args)
        self.assertNotIn("http", page)
        anchors = set(re.findall(r'\bid="?([^" >]+)', page))
        for link in re.findall(r'\b(?:src|href)="?([^" >]+)', page):
            self.assertIn(link, {f"#{anchor}" for anchor in anchors})
        return html.unescape(re.sub(r"<[^>]*>", "", page)), anchors

    def test_page_of_an_iterated_search(self):
        report = self.report("-niter", 2, "-v", 1000)
        text, anchors = self.page(report)
        iteration = zelvan_report.read_report(report.splitlines()).iteration()
        self.assertEqual(len(iteration.scores), len(PROTEINS))
        for words in (f"{len(iteration.hits)} hits", "Iterations", "All sequences searched", "Multiple alignment",
                      *(hit.target for hit in iteration.hits)):  # fmt: skip
            self.assertIn(words, text)
        self.assertLessEqual({f"rank{alignment.rank}" for alignment in iteration.alignments}, anchors)

    def test_pages_of_other_reports(self):
        one = self.report("-niter", 1)
        for report, args, words, there in (
            (self.report("-niter", 1, "-npt", 0, "-nout", 9), (), "number that chance brings", False),
            (one, (), "number that chance brings", True),
            (self.dna_report(), (), "1 frame shifts", True),
            (self.report("-niter", 1, "-e", 0, "-e2", 0), (), "No sequence reached", True),
            (self.report("-niter", 1, "-pt", 0, "-e", 0.0001), (), "All sequences searched", False),
            (one.replace("GTPase Era OS", "&<x>"), ("-a", "7"), "&<x>", True),
        ):
            self.assertEqual(words in self.page(report, *args)[0], there, words)

    def test_fitted_line_is_the_one_of_the_search(self):
        """Scores that the page's formulas give for what the report prints of its best hits."""
        iteration = zelvan_report.read_report(self.report("-niter", 1).splitlines()).iteration()
        lengths = {a.target: a.target_length for a in iteration.alignments}
        reach = zelvan_charts.score_reaching(iteration, len(QUERY))
        for hit in iteration.hits[:20]:
            self.assertAlmostEqual(reach(lengths[hit.target], hit.significance), hit.score, delta=0.05 * hit.score)


if __name__ == "__main__":
    unittest.main()
