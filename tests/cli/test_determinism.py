"""The same input gives the same bytes: whatever vector kernels run, from text and from binary databases.

$ZELVAN_FORCED names a program that takes the instruction set of its kernels from $ZELVAN_TEST_SET.
"""

import os
import re
import unittest

import zelvan_cli
from zelvan_cli import EXAMPLES, QUERY, SAMPLE, SANITIZED

SETS = ("reference", "portable", "SSE41", "AVX2", "AVX512", "AVX512VBMI", "NEON")
UNKNOWN_SET = 77  # status when this machine cannot run a set
# What may differ: the time of day and the times taken.
MASKED = re.compile(
    r"^# (ZELVAN Scan:|Scan Completed at|Load |Scan database|Output scores|Generate and write|Millions of).*$", re.M
)
SOURCE_OF_DATABASE = re.compile(r"^# (Database|Created on|Number of sequences).*\n", re.M)
SIDE_FILES = {"block": "-block_file_out", "frag": "-frag_file_out", "best": "-extract_file"}


class Determinism(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)
        self.database = self.file("db.fasta", zelvan_cli.first_records(SAMPLE, 500 if SANITIZED else 1000))
        self.dna = self.file("dna.fasta", zelvan_cli.first_records(EXAMPLES / "dna_sample.fasta", 30))

    def searches(self):
        """(mode, database, arguments)"""
        for mode in (200, 202, 210, 212):
            yield mode, self.database, ("-mode", mode, "-s", QUERY, "-d", self.database, "-niter", 2,
                                        "-lpfit_minbuck", 20, "-probcut2", 0.01, "-print_profiles", 1,
                                        "-print_frq_tabs", 1, "-print_block_file", 1, "-print_frag_file", 1,
                                        "-extract_seq", 9)  # fmt: skip
        for mode in (10, 12, 20, 22):
            query, database = (QUERY, self.dna) if mode < 20 else (EXAMPLES / "engb_dna.fasta", self.database)
            yield mode, database, ("-mode", mode, "-s", query, "-d", database, "-do_stats", 1, "-min_nstats", 20,
                                   "-extract_seq", 9)  # fmt: skip

    def results(self, args, **how):
        """Report, with the times masked, and side files of one run; None when the set is not to be had."""
        for name, key in SIDE_FILES.items():
            (self.work / name).unlink(missing_ok=True)
            args = (*args, key, name)
        run = self.zelvan(*args, **how)
        if run.status == UNKNOWN_SET:
            return None
        self.assertEqual((run.status, run.stderr), (0, ""))
        files = [(self.work / name).read_bytes() if (self.work / name).exists() else None for name in SIDE_FILES]
        return MASKED.sub("#", run.stdout), files

    def test_kernels_do_not_show(self):
        compared = set()
        for mode, _, args in self.searches():
            expected = self.results(args)
            self.assertGreater(len(expected[0]), 400)
            self.assertTrue(self.results(args) == expected, f"mode {mode}: two runs differ")
            for name in SETS:
                found = self.results(args, program=os.environ["ZELVAN_FORCED"], env={"ZELVAN_TEST_SET": name})
                if found is not None:
                    compared.add(name)
                    self.assertTrue(found == expected, f"mode {mode}: {name} differs")
        self.assertLessEqual({"reference", "portable"}, compared)
        print("instruction sets compared:", *sorted(compared))

    def test_the_form_of_the_database_does_not_show(self):
        for mode, database, args in self.searches():
            if mode == 10:
                continue  # reads text only
            expected = self.results(args)
            for codes in (0,) if mode == 12 else (0, 1):
                self.succeed("-mode", 99, "-d", database, "-bdb", "db", "-apply_index", codes, "-do_sort", 0)
                report, files = self.results((*args, "-bdb", "db"))
                self.assertTrue((SOURCE_OF_DATABASE.sub("", report), files) == expected, f"mode {mode}, {codes}")


if __name__ == "__main__":
    unittest.main()
