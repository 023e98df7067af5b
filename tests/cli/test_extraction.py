"""Sequences out of databases: by score list, by rank at the end of a search, as a sample by length."""
import unittest

import zelvan_cli
from zelvan_cli import EXAMPLES

SAMPLE = EXAMPLES / "uniprot_sample.fasta"
SEARCH = ("-s", EXAMPLES / "engb.fasta", "-mode", 202, "-niter", 1, "-show_ident_width", 40, "-max_aout", 0,
          "-apt", 0)  # fmt: skip


def identifiers(text):
    return [line[1:].split()[0] for line in text.splitlines() if line.startswith(">")]


def listed(report):
    lines = report.split("# Start_Scores")[1].split("# End_Scores")[0].splitlines()[1:]
    return [line.split()[4] for line in lines]


class ExtractionTest(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)

    def run_well(self, *args, **how):
        run = self.zelvan(*args, **how)
        self.assertEqual(run.status, 0, run.stderr)
        return run

    def test_from_search_to_search(self):
        """A score list names sequences, which become a text and then a binary database to search again."""
        first = self.run_well(*SEARCH, "-d", SAMPLE)
        names = listed(first.stdout)
        self.assertGreater(len(names), 5)
        self.run_well("-mode", 99, "-bdb", "all", "-d", SAMPLE, "-apply_index", 1)
        for database in (("-d", SAMPLE), ("-bdb", "all")):
            self.run_well("-mode", 100, "-extract_seq", 1000, "-extract_seq_format", 1, *database, stdin=first.stdout)
            extracted = (self.work / "zelvan_extract.seq").read_text()
            self.assertEqual(identifiers(extracted), names[:-1], "the last of the list is dropped")
        self.run_well("-mode", 99, "-bdb", "hits", "-d", "zelvan_extract.seq", "-do_sort", 0)
        binary = (self.work / "hits.bsq").read_bytes().split(b"\0")[0::3]
        self.assertEqual([name.decode() for name in binary if name], names[:-1])
        again = self.zelvan(*SEARCH, "-bdb", "hits")
        # So few sequences may be too few for the statistics, but they are all read.
        self.assertTrue(again.status == 0 or "Failure in fitting routines" in again.stderr, again.stderr)

    def test_a_search_leaves_its_best(self):
        run = self.run_well(*SEARCH, "-d", SAMPLE, "-extract_seq", 6, "-extract_file", "best.pir", "-extract_seq_format", 0)
        best = (self.work / "best.pir").read_text()
        self.assertEqual(identifiers(best), listed(run.stdout)[:4])
        self.assertEqual(best.count("*\n"), 4)

    def test_the_list_decides_what_is_written(self):
        database = self.file("d.fa", "".join(f">s{k} title {k}\n{'ACDEFGHIKL' * k}\n" for k in range(10)))
        text = "# Start_Scores: \n   1 9 s7 t\n   2 8 s0 t\n   3 7 absent t\n   4 6 s2 t\n   5 5 s3 t\n# End_Scores: \n"
        run = self.run_well("-mode", 100, "-extract_seq", 10, "-extract_seq_format", 0, "-d", database, stdin=text)
        self.assertIn("Warning: absent is not in the database", run.stderr)
        self.assertEqual(
            (self.work / "zelvan_extract.seq").read_text(),
            f">s7\ntitle 7\n{'ACDEFGHIKL' * 7}\n*\n>s0\ntitle 0\n*\n>s2\ntitle 2\n{'ACDEFGHIKL' * 2}*\n",
        )
        empty = "# Start_Scores: \n# End_Scores: \n"
        self.run_well("-mode", 100, "-extract_seq", 10, "-d", database, stdin=empty)
        self.assertEqual((self.work / "zelvan_extract.seq").read_text(), "")
        for wanted, list_text, message in ((0, text, "EXTRACT_SEQ is 0"), (5, "", "No # Start_Scores in file\n")):
            run = self.zelvan("-mode", 100, "-extract_seq", wanted, "-d", database, stdin=list_text)
            self.assertEqual((run.status, run.stdout), (255, ""))
            self.assertIn(message, run.stderr)

    def test_a_full_disk_is_told(self):
        database = self.file("d.fa", ">a\nAC\n>b\nAD\n")
        text = "# Start_Scores: \n   1 9 a t\n   2 8 b t\n# End_Scores: \n"
        run = self.zelvan("-mode", 100, "-extract_seq", 9, "-d", database, "-extract_file", "/dev/full", stdin=text)
        self.assertEqual(run.status, 1)
        self.assertIn("Error writing File: No space left on device\nFile: /dev/full is incomplete", run.stderr)

    def test_subset(self):
        run = self.run_well("-mode", 667, "-nsubset", 40, "-d", SAMPLE)
        lines = run.stdout.splitlines()
        lengths = [len(line) for line in lines[1::2]]
        self.assertEqual(len(lengths), 40)
        self.assertEqual(lengths, sorted(lengths, reverse=True))
        self.assertEqual(identifiers(run.stdout), [line[1:].split()[0] for line in lines[0::2]])
        run = self.zelvan("-mode", 667, "-nsubset", 4001, "-d", SAMPLE)
        self.assertEqual((run.status, run.stdout), (255, ""))


if __name__ == "__main__":
    unittest.main()
