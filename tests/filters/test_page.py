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
