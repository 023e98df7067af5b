"""Inputs at the edge of what is allowed: long, many, empty, alike, and scores of any size."""

import random
import unittest

import zelvan_cli
from zelvan_cli import QUERY, SAMPLE, SANITIZED

MANY = 50_000 if SANITIZED else 1_000_000
NO_FIT = r"Failure in fitting routines - exiting with Error: \d+\n[^\n]+\n"
OUT_OF_RANGE = r"Scores of this query x PRECISION \({}\) could reach \d+ .*"


class Limits(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)
        self.chance = random.Random(35)
        self.sample = zelvan_cli.first_records(SAMPLE, 1000)

    def inputs(self, database, query=None):
        """Arguments of a search; both are texts."""
        return ("-mode", 202, "-niter", 1, "-lpfit_minbuck", 40, "-d", self.file("db", database),
                "-s", QUERY if query is None else self.file("q", query))  # fmt: skip

    def hits(self, *args):
        """The score list of a run without complaint."""
        run = self.succeed(*args)
        self.assertEqual(run.stderr, "")
        (lines,) = zelvan_cli.score_lists(run.stdout)
        return lines

    def test_very_many_sequences(self):
        lengths = [5 + k % 60 for k in range(MANY)]
        pool = zelvan_cli.draw(self.chance, 100_000)
        search = self.inputs("".join(f">s{k}\n{pool[k * 7 % 99_000 :][:n]}\n" for k, n in enumerate(lengths)))
        run = self.succeed(*search, "-probcut", 1e9, "-npt", 0, "-max_nout", 50, "-apt", 0, "-max_aout", 3)
        self.assertIn(f"# Number of residues/bases in database: {sum(lengths)}\n", run.stdout)
        self.assertEqual([len(lines) for lines in zelvan_cli.score_lists(run.stdout)], [50])

    def test_long_sequences(self):
        titin = zelvan_cli.draw(self.chance, 3_000 if SANITIZED else 35_000)
        database = self.sample + f">long\n{titin}\n"
        self.assertEqual(self.hits(*self.inputs(database, f">q\n{titin[-15_998:]}\n"))[0][4], "long")
        for length in (1, 2):  # there may be too few different scores to fit a distribution to
            run = self.zelvan(*self.inputs(database, f">q\n{titin[-length:]}\n"))
            if run.status == 0:
                self.assertIn("# End_Scores", run.stdout)
            else:
                self.assertRegex(run.stderr, f"\\A{NO_FIT}\\Z")

    def test_nothing_to_tell_apart(self):
        same = self.sample.split(">")[1]
        for database, query, reason in (
            (self.sample, "X" * 300, "The scores follow no extreme-value distribution"),
            (">a\nMKVLAWX\n" * 1000, "MKVLAW", "Nearly all sequences of the database have the same length"),
            (f">{same}" * 1000 + ">a\nMKV\n", "MKVLAW", "Nearly all sequences of the database have the same length"),
            (">a\n" * 1000, "MKV", "Nearly all sequences of the database have no residues"),
            (">a\n>b\nM\n", "MKV", "The database is too small"),
            ("", "MKV", "The database has no sequence"),
            (self.sample, "", "The query has no residues"),
        ):
            run = self.zelvan(*self.inputs(database, f">q\n{query}\n"))
            self.assertEqual(run.status, 255, (query, run.stdout[:100]))
            self.assertRegex(run.stderr, f"{NO_FIT}\\Z")
            self.assertIn(f"\n{reason}", run.stderr)

    def test_precision_does_not_show(self):
        expected = None
        for precision in (100, 1, 10, 1000, 10_000):
            # In the defaults file, so that the shipped penalties are scaled by it.
            self.configure(f"PRECISION {precision}\nDO_STATS 2\nMATRIX_FILE BLOSUM62\nQSEQ_FORMAT 1\nMAX_NSEQ 10000\n"
                           "MAX_SEQ_LEN 100000\nPROBCUT 10\nSHOW_TITLES 1\n")  # fmt: skip
            found = self.hits(*self.inputs(self.sample))
            expected = expected or found
            self.assertEqual(found, expected)

    def test_precision_zero_is_told_or_needless(self):
        search = (*self.inputs(self.sample), "-precision", 0)
        self.refuse("PRECISION is 0: scores cannot be divided by it. .*", *search)
        self.succeed(*search, "-mode", 99, "-bdb", "db")

    def test_scores_up_to_32_bits(self):
        # Every third position of the translated query is a W, the others never score.
        codons = 5_332
        most = (2**31 - 1) // codons
        search = (*self.inputs(f">w\n{'W' * codons}\n>none\nGV\n", f">q\n{'TGG' * codons}\n"), "-mode", 22,
                  "-do_stats", 0, "-ugd", 0, "-ld_pen", 1, "-li_pen", 1, "-fs_pen", 1, "-md", self.work,
                  "-m", "matrix")  # fmt: skip
        for value, precision, fits in ((most, 1, True), (most + 1, 1, False), (most // 1000, 1000, True),
                                       (most // 1000 + 1, 1000, False), (2**31 - 1, 1, False)):  # fmt: skip
            self.file("matrix", f"# c\n   W G V X\nW {value} -1 -1 -1\n" + "".join(f"{c} -1 -1 -1 -1\n" for c in "GVX"))
            args = (*search, "-precision", precision, "-apt", 0, "-max_aout", 1)
            if fits:
                self.assertIn([str(codons * value), "w"], [line[1:3] for line in self.hits(*args)])
            else:
                self.refuse(OUT_OF_RANGE.format(precision), *args)


if __name__ == "__main__":
    unittest.main()
