"""The same input gives the same bytes: whatever vector kernels run, from text and from binary databases.

$ZELVAN_FORCED names a program that takes the instruction set of its kernels from $ZELVAN_TEST_SET.
"""

import os
import re
import subprocess
import unittest

import zelvan_cli

EXAMPLES = zelvan_cli.EXAMPLES
SANITIZED = os.environ.get("ZELVAN_SANITIZED") == "1"  # slow: a small database will do
SETS = ("reference", "portable", "SSE41", "AVX2", "AVX512")
UNKNOWN_SET = 77  # status when this machine cannot run a set
# What may differ: the time of day and the times taken.
MASKED = re.compile(r"^# (ZELVAN Scan:|Scan Completed at|Load |Scan database|Output scores|Generate and write|Millions of).*$", re.M)
SIDE_FILES = {"block": "-block_file_out", "frag": "-frag_file_out", "best": "-extract_file"}


class Determinism(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)
        text = (EXAMPLES / "uniprot_sample.fasta").read_text()
        self.database = self.file("db.fasta", "".join(">" + r for r in text.split(">")[1 : 501 if SANITIZED else 1001]))
        dna = (EXAMPLES / "dna_sample.fasta").read_text()
        self.dna = self.file("dna.fasta", "".join(">" + r for r in dna.split(">")[1:31]))

    def searches(self):
        protein, coding = EXAMPLES / "engb.fasta", EXAMPLES / "engb_dna.fasta"
        for mode in (200, 202, 210, 212):
            yield ("-mode", mode, "-s", protein, "-d", self.database, "-niter", 2, "-lpfit_minbuck", 20,
                   "-probcut2", 0.01, "-print_profiles", 1, "-print_frq_tabs", 1, "-print_block_file", 1,
                   "-print_frag_file", 1, "-extract_seq", 9)
        for mode, query, database in ((10, protein, self.dna), (12, protein, self.dna),
                                      (20, coding, self.database), (22, coding, self.database)):
            yield ("-mode", mode, "-s", query, "-d", database, "-do_stats", 1, "-min_nstats", 20, "-extract_seq", 9)

    def results(self, program, args, environment=None):
        """Status, report and side files of one run, the times masked; None when the set is not to be had."""
        for name, key in SIDE_FILES.items():
            (self.work / name).unlink(missing_ok=True)
            args = (*args, key, name)
        run = subprocess.run([program, *map(str, args)], cwd=self.work, capture_output=True, check=False,
                             env=dict(os.environ, ZELVANDIR=str(self.config), TZ="UTC", LC_ALL="C", **(environment or {})))
        if run.returncode == UNKNOWN_SET:
            return None
        files = [(self.work / name).read_bytes() if (self.work / name).exists() else None for name in SIDE_FILES]
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        return MASKED.sub("#", run.stdout.decode("latin-1")), files

    def test_kernels_do_not_show(self):
        compared = set()
        for args in self.searches():
            with self.subTest(mode=args[1]):
                expected = self.results(zelvan_cli.PROGRAM, args)
                self.assertGreater(len(expected[0]), 400)
                for name in SETS:
                    found = self.results(os.environ["ZELVAN_FORCED"], args, {"ZELVAN_TEST_SET": name})
                    if found is not None:
                        compared.add(name)
                        self.assertTrue(found == expected, f"{name} differs")
        self.assertLessEqual({"reference", "portable"}, compared)
        print("instruction sets compared:", *sorted(compared))

    def test_two_runs_do_not_differ(self):
        args = next(self.searches())
        self.assertEqual(self.results(zelvan_cli.PROGRAM, args), self.results(zelvan_cli.PROGRAM, args))

    def test_the_form_of_the_database_does_not_show(self):
        def without_source(result):
            return re.sub(r"^# (Database|Created on|Number of sequences).*\n", "", result[0], flags=re.M), result[1]

        for args in self.searches():
            mode, database = args[1], args[5]
            if mode == 10:
                continue  # reads text only
            with self.subTest(mode=mode):
                expected = without_source(self.results(zelvan_cli.PROGRAM, args))
                for codes in (0,) if mode == 12 else (0, 1):
                    build = self.zelvan("-mode", 99, "-d", database, "-bdb", "db", "-apply_index", codes, "-do_sort", 0)
                    self.assertEqual(build.status, 0, build.stderr)
                    found = without_source(self.results(zelvan_cli.PROGRAM, (*args, "-bdb", "db")))
                    self.assertTrue(found == expected, f"apply_index {codes}")


if __name__ == "__main__":
    unittest.main()
