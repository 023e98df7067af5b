"""Inputs at the edge of what is allowed: long, many, empty, alike, and scores of any size."""

import os
import random
import re
import time
import unittest

import zelvan_cli

EXAMPLES = zelvan_cli.EXAMPLES
SANITIZED = os.environ.get("ZELVAN_SANITIZED") == "1"
MANY = 50_000 if SANITIZED else 1_000_000
LETTERS = "ARNDCQEGHILKMFPSTWYV"
DEFAULTS = (
    "MODE 202\nDO_STATS 2\nMATRIX_FILE BLOSUM62\nQSEQ_FORMAT 1\nMAX_NSEQ 10000\nMAX_SEQ_LEN 100000\nPROBCUT 10\n"
)
HIT = re.compile(r"^ *[0-9]+ .*", re.M)


class Limits(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)
        self.chance = random.Random(35)
        text = (EXAMPLES / "uniprot_sample.fasta").read_text()
        self.sample = "".join(">" + record for record in text.split(">")[1:1001])

    def residues(self, length):
        return "".join(self.chance.choices(LETTERS, k=length))

    def search(self, database, *args, query=EXAMPLES / "engb.fasta"):
        return self.zelvan("-mode", 202, "-niter", 1, "-lpfit_minbuck", 40, "-s", query, "-d", database, *args)

    def passed(self, run):
        self.assertEqual((run.status, run.stderr), (0, ""))
        self.assertIn("# End_Scores", run.stdout)
        return run.stdout

    def hits(self, report):
        return HIT.findall(report[report.index("# Start_Scores") : report.index("# End_Scores")])

    def test_names_of_a_megabyte(self):
        residues = (EXAMPLES / "engb.fasta").read_text().partition("\n")[2]
        record = f">{'i' * 1_000_000} {'t' * 1_000_000}\n{residues}"
        query = self.file("q", record)
        database = self.file("db", self.sample + record)
        report = self.passed(self.search(database, "-extract_seq", 3, "-extract_file", "best", query=query))
        self.assertIn("i" * 30 + " ", self.hits(report)[0])
        self.assertTrue((self.work / "best").read_text().startswith(record.partition("\n")[0] + "\n"))

    def test_very_many_sequences(self):
        lengths = [5 + k % 60 for k in range(MANY)]
        pool = self.residues(100_000)
        database = self.file("db", "".join(
            f">s{k}\n{pool[k * 7 % 99_000 :][:length]}\n" for k, length in enumerate(lengths)))
        begun = time.monotonic()
        report = self.passed(self.search(database, "-probcut", 1e9, "-npt", 0, "-max_nout", 50, "-apt", 0, "-max_aout", 3))
        self.assertLess(time.monotonic() - begun, 300)
        self.assertIn(f"# Number of residues/bases in database: {sum(lengths)}\n", report)
        self.assertEqual(len(self.hits(report)), 50)

    def test_long_sequences(self):
        longest = 3_000 if SANITIZED else 35_000
        titin = self.residues(longest)
        database = self.file("db", self.sample + f">long\n{titin}\n")
        for length in (1, 2, 2_000 if SANITIZED else 15_998):
            query = self.file("q", f">q\n{titin[-length:]}\n")
            run = self.search(database, query=query)
            if length > 2:
                self.assertIn(" long ", self.hits(self.passed(run))[0])
            elif run.status == 0:
                self.passed(run)
            else:  # so few different scores that there is nothing to fit a distribution to
                self.assertEqual(run.status, 255)
                self.assertRegex(run.stderr, r"^Failure in fitting routines - exiting with Error: \d+\n")

    def test_nothing_to_tell_apart(self):
        for content, query in ((self.sample, "X" * 300), (">a\nMKVLAWX\n" * 1000, "MKVLAW"),
                               (">a\n" * 1000, "MKV"), (">a\n>b\nM\n", "MKV"), ("", "MKV"), (self.sample, "")):
            run = self.search(self.file("db", content), query=self.file("q", f">q\n{query}\n"))
            self.assertEqual(run.status, 255, (query, run.stdout[:100]))
            self.assertRegex(run.stderr, r"Failure in fitting routines - exiting with Error: \d+\n")

    def test_precision_does_not_show(self):
        database = self.file("db", self.sample)
        expected = None
        for precision in (100, 1, 10, 1000, 10_000):
            # In the defaults file, so that the shipped penalties are scaled by it.
            self.configure(f"PRECISION {precision}\n" + DEFAULTS)
            found = self.hits(self.passed(self.search(database)))
            expected = expected or found
            self.assertEqual(found, expected)

    def test_precision_zero_is_told_or_needless(self):
        database = self.file("db", self.sample)
        for verbose in (0, 1, 11):
            run = self.search(database, "-precision", 0, "-verbose", verbose)
            self.assertEqual((run.status, run.stdout), (255, ""))
            self.assertIn("PRECISION is 0: scores cannot be divided by it.", run.stderr)
            run = self.zelvan("-mode", 99, "-precision", 0, "-verbose", verbose, "-d", database, "-bdb", "db")
            self.assertEqual(run.status, 0, run.stderr)

    def test_scores_up_to_32_bits(self):
        # Every third position of the translated query is a W, the others never score.
        codons = 5_332
        most = (2**31 - 1) // codons
        self.file("dna", f">q\n{'TGG' * codons}\n")
        self.file("db", f">w\n{'W' * codons}\n>none\nGV\n")
        for value, precision, fits in ((most, 1, True), (most + 1, 1, False), (most // 1000, 1000, True),
                                       (most // 1000 + 1, 1000, False), (2**31 - 1, 1, False)):
            self.file("matrix", f"# c\n   W G V X\nW {value} -1 -1 -1\n" + "".join(f"{c} -1 -1 -1 -1\n" for c in "GVX"))
            run = self.zelvan("-precision", precision, "-md", self.work, "-m", "matrix", "-mode", 22, "-do_stats", 0,
                              "-ugd", 0, "-ld_pen", 1, "-li_pen", 1, "-fs_pen", 1, "-s", "dna", "-d", "db", "-apt", 0,
                              "-max_aout", 1)
            if fits:
                report = self.passed(run)
                self.assertRegex(report, rf"\b{codons * value}(\.0+)?\b")
            else:
                self.assertEqual((run.status, run.stdout), (255, ""))
                self.assertRegex(run.stderr, rf"^Scores of this query x PRECISION \({precision}\) could reach \d+ ")

    def test_negative_penalties_without_end_are_refused(self):
        for key in ("-ld_pen", "-li_pen"):
            run = self.search(self.file("db", self.sample), "-ugd", 0, key, -1e300)
            self.assertEqual((run.status, run.stdout), (255, ""))
            self.assertRegex(run.stderr, "^Scores of this query x PRECISION")


if __name__ == "__main__":
    unittest.main()
