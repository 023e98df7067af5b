"""Sequences out of databases: by score list, by rank at the end of a search, as a sample by length."""

import unittest

import zelvan_cli
from zelvan_cli import QUERY, SAMPLE

GENE = "ERZ1234567.1234567-NODE-1234567-length-123456-cov-1234.567890_1_1234_-"  # as metagenomes name them
SEARCH = ("-s", QUERY, "-mode", 202, "-niter", 1, "-max_aout", 0, "-apt", 0)


class ExtractionTest(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)

    def test_from_search_to_search(self):
        """A score list names sequences, which become a text and then a binary database to search again."""
        database = self.file("long.fa", SAMPLE.read_text().replace("sp|A5IMB8|ENGB_THEP1", GENE))
        first = self.succeed(*SEARCH, "-d", database)
        self.assertEqual(list(self.work.iterdir()), [database], "files that nobody asked for")
        names = [line[4] for line in zelvan_cli.score_lists(first.stdout)[0]][:-1]  # the last of the list is dropped
        self.assertGreater(len(names), 5)
        self.assertIn(GENE, names)
        self.succeed("-mode", 99, "-bdb", "all", "-d", database, "-apply_index", 1)
        for source in (("-d", database), ("-bdb", "all")):
            self.succeed("-mode", 100, "-extract_seq", 1000, "-extract_seq_format", 1, *source, stdin=first.stdout)
            extracted = zelvan_cli.fasta(self.work / "zelvan_extract.seq")
            self.assertEqual(list(extracted), names)
            sample = zelvan_cli.fasta(database)
            self.assertEqual(extracted, {name: sample[name] for name in names})
        self.succeed("-mode", 99, "-bdb", "hits", "-d", "zelvan_extract.seq", "-do_sort", 0)
        again = self.zelvan(*SEARCH, "-bdb", "hits")
        # So few sequences may be too few for the statistics, but they are all read.
        self.assertTrue(again.status == 0 or "Failure in fitting routines" in again.stderr, again.stderr)

    def test_the_list_decides_what_is_written(self):
        database = self.file("d.fa", "".join(f">s{k} title {k}\n{'ACDEFGHIKL' * k}\n" for k in range(10)))
        text = "# Start_Scores: \n   1 9 s7 t\n   2 8 s0 t\n   3 7 absent t\n   4 6 s2 t\n   5 5 s3 t\n# End_Scores: \n"
        extract = ("-mode", 100, "-extract_seq_format", 0, "-d", database, "-extract_seq")
        run = self.succeed(*extract, 10, stdin=text)
        self.assertIn("Warning: absent is not in the database", run.stderr)
        written = self.work / "zelvan_extract.seq"
        self.assertEqual(list(zelvan_cli.fasta(written)), ["s7", "s0", "s2"])
        self.refuse("EXTRACT_SEQ is 0: .*", *extract, 0, stdin=text)
        self.refuse("No # Start_Scores in file\n", *extract, 5)

    def test_the_last_of_the_list_is_dropped(self):
        database = self.file("d.fa", "".join(f">{name}\nMK\n" for name in ("a", "b", "c", "d", "12.30")))
        begin, end = "# header\n# Start_Scores: ----\n", "# End_Scores: ----\n"
        lines = "   1 90 a    title\n   2 80 b    title\n   3 70 c\n   4 60 d    title\n"
        fitted = "   1   90 12.30  1e-10    a t\n   2   80 -1.2   0.5      b t\n"
        extract = ("-mode", 100, "-d", database, "-extract_seq")
        for text, wanted, ids in (
            (begin + lines + end, 5, ["a", "b", "c"]),
            (begin + lines, 4, ["a", "b", "c"]),  # the end is not looked for
            (begin + lines + end, 1, []),
            (begin + "   1 90 a\n" + end, 2**31 - 1, []),
            (begin + end, 10, []),
            (2 * (begin + lines + end), 100, ["a", "b", "c"]),  # the first list counts
            ("# FIT_A: 1 2 3\n" + begin + fitted + end, 9, ["a"]),  # moves the column
            (begin + fitted + "# FIT\n" + end, 2, ["12.30"]),  # but not within the list
        ):
            self.succeed(*extract, wanted, stdin=text)
            self.assertEqual(list(zelvan_cli.fasta(self.work / "zelvan_extract.seq")), ids, (text, wanted))
        self.refuse("No # End_Scores in file\n", *extract, 5, stdin=begin + lines)
        self.refuse("A line of the score list has no word 5, the identifier:\n90 1.0 0.5 a\n.*SHOW_TITLES 1\n",
                    *extract, 5, stdin="# FIT\n" + begin + "90 1.0 0.5 a\n" + end)  # fmt: skip

    def test_lines_of_70_residues(self):
        lengths = (0, 1, 69, 70, 71, 140, 141)
        database = self.file("d.fa", "".join(f">s{n} t\n{'W' * n}\n" for n in lengths))
        text = "# Start_Scores: \n" + "".join(f"1 9 s{n}\n" for n in (*lengths, "last")) + "# End_Scores: \n"
        rows = {n: ("W" * n).replace("W" * 70, "W" * 70 + "\n") for n in lengths}
        for layout, expected in (
            (0, "".join(f">s{n}\nt\n{rows[n]}*\n" for n in lengths)),
            (1, "".join(f">s{n} t\n{rows[n]}\n" for n in lengths)),
            (2, ""),
        ):
            self.succeed("-mode", 100, "-extract_seq", 99, "-extract_seq_format", layout, "-d", database, stdin=text)
            self.assertEqual((self.work / "zelvan_extract.seq").read_text(), expected)

    def test_the_best_of_a_search_but_two(self):
        # Without statistics the list is the database backwards.
        database = self.file("d.fa", ">a\nMKW\n>b\nMKV\n>c\nMKL\n")
        search = ("-mode", 22, "-do_stats", 0, "-s", self.file("q", ">q\nATGAAATGG\n"), "-d", database)
        for number, best in ((5, "cba"), (4, "cb"), (3, "c"), (2, ""), (1, ""), (2**31 - 1, "cba")):
            self.succeed(*search, "-extract_seq", number, "-extract_file", "best")
            self.assertEqual("".join(zelvan_cli.fasta(self.work / "best")), best)

    def test_subset(self):
        lines = self.succeed("-mode", 667, "-nsubset", 40, "-d", SAMPLE).stdout.splitlines()
        sample = zelvan_cli.fasta(SAMPLE)
        self.assertEqual(lines[1::2], [sample[header[1:].split()[0]] for header in lines[0::2]])
        lengths = [len(line) for line in lines[1::2]]
        self.assertEqual(lengths, sorted(lengths, reverse=True))
        self.assertEqual(len(lengths), 40)
        ladder = self.file("d.fa", "".join(f">s{k}\n{'A' * (k * 7 % 10 + 1)}\n" for k in range(10)))
        found = self.succeed("-mode", 667, "-nsubset", 3, "-d", ladder).stdout.splitlines()[1::2]
        self.assertEqual([len(line) for line in found], [10, 7, 4])
        for number in (-1, 0, 4001, 2**31 - 1):
            self.refuse(f"NSUBSET is {number}.*", "-mode", 667, "-nsubset", number, "-d", SAMPLE)
        self.refuse(".* has no sequence to choose from\n", "-mode", 667, "-nsubset", 1, "-d", self.file("none", ""))


if __name__ == "__main__":
    unittest.main()
