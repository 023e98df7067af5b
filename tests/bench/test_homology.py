"""bench/homology.py: its figures by hand, and a measurement on planted families."""

import os
import pathlib
import random
import subprocess
import sys
import unittest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
SCRIPT = SOURCE / "bench" / "homology.py"
sys.path[:0] = [str(SCRIPT.parent), str(SOURCE / "tests" / "cli")]

import homology  # noqa: E402
import zelvan_cli  # noqa: E402

DOMAINS = {name: homology.Domain(*level.split(), "ACDE") for name, level in {
    "q": "c.2 c.2.1", "kin": "c.2 c.2.1", "kin2": "c.2 c.2.1", "fold": "c.2 c.2.9", "rossmann": "c.30 c.30.1",
    "other": "c.1 c.1.1", "other2": "b.66 b.66.1", "propeller": "b.70 b.70.1"}.items()}  # fmt: skip
FOLDS = {domain.fold for domain in DOMAINS.values()}


class FiguresTest(unittest.TestCase):
    def test_hits_that_may_be_related_do_not_count(self):
        hits = {"q": 0, "kin": 1, "fold": 2, "rossmann": 3, "other": 4, "rest": 5, "kin2": 4, "rev_q": 6, "other2": 7}
        self.assertEqual(homology.classify("q", hits, DOMAINS, FOLDS), [(1, True), (4, False), (4, True), (7, False)])
        self.assertEqual(homology.false_folds("b.66", FOLDS), {"c.1", "c.2", "c.30"})
        self.assertEqual(homology.relatives("q", DOMAINS), 2)

    def test_roc_counts_relatives_before_false_hits(self):
        hits = [(e, letter == "t") for e, letter in enumerate("tfttfft")]
        self.assertAlmostEqual(homology.roc(hits, 8, 1), 1 / 8)
        self.assertAlmostEqual(homology.roc(hits, 8, 3), (1 + 3 + 3) / 24)
        self.assertAlmostEqual(homology.roc(hits, 8, 5), (1 + 3 + 3 + 4 + 4) / 40)  # the list ends early

    def test_common_list_weighs_queries_alike(self):
        lists = [[(1, True), (2, True), (5, False), (9, True)], [(3, False), (4, True), (6, False), (7, True)]]
        for rate, share in ((0, 2 / 4), (0.5, 2 / 4 + 1 / 2), (1, 2 / 4 + 1 / 2), (1.5, 1.75)):
            self.assertAlmostEqual(homology.found_at(lists, [4, 2], rate), share / 2, msg=rate)

    def test_false_hits_are_scaled_to_the_false_part(self):
        self.assertAlmostEqual(homology.false_ratio([[0.1, 0.5], [0.2, 0.3]], [1, 0.5], 0.1), 2 / 2 / 0.1)

    def test_strangers_are_counted_once_a_query(self):
        table = homology.Measure(DOMAINS, ["q", "kin", "kin2"], homology.Size(100, 1000), 3, True)
        lists = [{"other": 1e-9, "other2": 0.0019, "rev_q": 1e-4, "rev_kin": 9e-4, "shf_q": 0.0011},
                 {"other": 0.0021, "kin2": 1e-9, "rev_q": 1e-9}, {"fold": 1e-9, "shf_q": 1e-9}]  # fmt: skip
        figures = dict(zip(table.columns(), table.figures(lists)))
        self.assertEqual(figures["strangers"], 1)
        self.assertEqual(figures["reversed, most E<=0.001"], 2)
        self.assertEqual(figures["shuffled, most E<=0.001"], 1)


class MeasurementTest(zelvan_cli.TestCase):
    def test_planted_families_are_found(self):
        self.configure(defaults=None)
        rng = random.Random(3)
        domains = [(f"x{i} b.{i}.1.1", zelvan_cli.draw(rng, 100)) for i in range(200)]
        for family in range(4):
            ancestor = zelvan_cli.draw(rng, 120)
            for i in range(5):
                copy = "".join(c if rng.random() < 0.6 else zelvan_cli.draw(rng, 1) for c in ancestor)
                domains.append((f"f{family}m{i} a.{family}.1.1", copy))
        rest = [(f"r{i}", zelvan_cli.draw(rng, rng.randint(40, 600))) for i in range(4000)]
        homology.write_fasta(self.work / "domains.fa", domains)
        homology.write_fasta(self.work / "rest.fa", rest)
        self.file("ids", "f0m0\nf1m1 more\nf2m2\nf3m3\n")
        command = [sys.executable, SCRIPT, "domains.fa", "ids", zelvan_cli.PROGRAM, "work", "--background", "rest.fa",
                   "--decoys", "--iterations", "1", "2", "--jobs", "2"]  # fmt: skip
        environment = dict(os.environ, ZELVANDIR=str(self.config))
        run = subprocess.run(command, cwd=self.work, env=environment, capture_output=True, text=True, check=False)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        head, _, *lines = ([cell.strip() for cell in line.split("|")[1:-1]] for line in run.stdout.splitlines())
        self.assertEqual([line[0] for line in lines], ["1", "2"])
        for line in lines:
            figures = dict(zip(head, map(float, line)))
            self.assertGreater(figures["ROC5"], 0.9)
            self.assertGreater(figures["TP@0.1"], 0.9)
            for kind in ("different fold", *homology.DECOYS):
                self.assertLess(figures[f"{kind} E<=0.1"], 10)  # at most three false hits
                self.assertTrue(0.3 < figures[f"{kind} E<=10"] < 3, line)


if __name__ == "__main__":
    unittest.main()
