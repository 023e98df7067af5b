"""Sequence and matrix files as they come: odd ones are read as they stand, faulty ones end in a sentence."""

import os
import random
import unittest

import zelvan_cli

EXAMPLES = zelvan_cli.EXAMPLES
LONG = "x" * 1_000_000


class InputFiles(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure("MATRIX_FILE BLOSUM62\nMATRIX_FORMAT 1\nDO_STATS 2\nQSEQ_FORMAT 1\nMAX_SEQ_LEN 2000000\n")

    def search(self, *args):
        return self.zelvan("-s", EXAMPLES / "engb.fasta", "-d", EXAMPLES / "uniprot_sample.fasta", "-mode", 202, *args)

    def assert_refused(self, run, sentence):
        self.assertEqual((run.status, run.stdout), (255, ""), run.stderr)
        self.assertRegex(run.stderr, f"^{sentence}$")


class Databases(InputFiles):
    def stored(self, content, db_format=1):
        """What the program reads of a database: the sequence file that it builds, letters unencoded."""
        database = self.file("db", content)
        run = self.zelvan("-d", database, "-db_format", db_format, "-bdb", "built", "-mode", 99,
                          "-apply_index", 0, "-do_sort", 0)
        self.assertEqual(run.status, 0, run.stderr)
        return (self.work / "built.bsq").read_bytes(), run.stderr

    def test_odd_files_are_read_as_they_stand(self):
        star = "End of file found before sequence terminating star: "
        for content, db_format, stored, report in (
            (b">a b\r\nMk-1\r\n\r\n>c\r\n", 1, b"a\0b\0 MK\0c\0-\0 \0", ""),
            (b"\xff\0\n>a \xff\0t\nM\0\xffK>b  t\nLL", 1, b"a\0\xff\x1at\0 MK\0b\0 t\0 LL\0", ""),
            (b">a\nMK\n>\nLL\n>b\nV\n", 1, b"a\0-\0 MK\0", "Something strange with sequence identifier"),
            (b">P1;a\nt\nMK\n*\n>P1;b\nu\nLL\n", 0, b"P1;a\0t\0 MK\0", star),
            (f">{LONG} {LONG}\nMK\n{LONG}\n".encode(), 1,
             f"{LONG}\0{LONG}\0 MK{LONG.upper()}\0".encode(), ""),
            (b"", 1, b"", ""),
            (b"no sequences here\n" * 9, 1, b"", ""),
        ):
            with self.subTest(content[:40]):
                found, stderr = self.stored(content, db_format)
                self.assertTrue(found == stored, found[:80])
                self.assertIn(report, stderr)

    def test_faulty_files_are_refused(self):
        database = self.file("db", ">a\nMKV\n>b\nMK\n")
        for args, sentence in (
            (("-d", self.work / "none"), f"Error opening File: No such file or directory\n{self.work}/none\n"),
            (("-d", self.work), f"Error opening File: Is a directory\n{self.work}\n"),
            (("-max_nseq", 1), f"Too many sequences in {database} \\(> 1\\):  Increase MAX_NSEQ\n"),
            (("-max_nseq", -1), f"Too many sequences in {database} \\(> -1\\):  Increase MAX_NSEQ\n"),
            (("-max_seq_len", 6), r"Sequence too long: a \(> 3 residues\):  Increase MAX_SEQ_LEN" "\n"),
            (("-db_format", 2), "Format:1 is not supported\n"),
        ):
            # 202 reads the query first, 99 tells of the matrix, 667 samples the database.
            for mode, before in ((202, ""), (99, "Getting matrix\n"), (667, "")):
                with self.subTest(args=args, mode=mode):
                    query = self.file("q", ">q\nM\n")
                    run = self.zelvan("-s", query, "-d", database, "-nsubset", 1, "-mode", mode, *args)
                    self.assert_refused(run, before + sentence)

    @unittest.skipIf(os.geteuid() == 0, "root may read every file")
    def test_unreadable_file(self):
        database = self.file("db", ">a\nMKV\n")
        database.chmod(0)
        self.assert_refused(self.search("-d", database), f"Error opening File: Permission denied\n{database}\n")


class Queries(InputFiles):
    def test_faulty_files_are_refused(self):
        long = ("Error:  Sequence length \\(16001\\) is > MP_LEN \\(16000\\)\nYou must recompile ZELVAN with MP_LEN set "
                "> 16001\nAlternatively, use ZELVAN compiled for a single processor\ni.e. with MP_LEN undefined in the "
                "makefile\n")
        for content, args, sentence in (
            ("", (), "No Query\n"),
            (b"\0\xff\n\0>\n" * 99, (), "No Query\n"),
            (">\nMKV\n", (), "Something strange with sequence identifier in fasta file: .*\nLine:>\nNo Query\n"),
            (">q\nt\nMKV\n", ("-qseq_format", 0),
             "End of file found before sequence terminating star: .*\nIDENT:q\nNo Query\n"),
            (">q\nMKV\n", ("-max_seq_len", 0), r"Sequence too long: q \(> -3 residues\):  Increase MAX_SEQ_LEN" "\n"),
            (">q\n" + "A" * 15_999, (), long),
            (">q\n" + LONG * 3, (), r"Sequence too long: q \(> 1999997 residues\):  Increase MAX_SEQ_LEN" "\n"),
        ):
            with self.subTest(content[:20], args=args):
                self.assert_refused(self.search("-s", self.file("q", content), *args), sentence)
        for path, reason in ((self.work / "none", "No such file or directory"), (self.work, "Is a directory")):
            self.assert_refused(self.search("-s", path), f"Error opening File: {reason}\n{path}\n")


class Matrices(InputFiles):
    def test_faulty_files_are_refused(self):
        for content, matrix_format, sentence in (
            ("", 0, "Missing Title line in matrix file: .*\nFile:~\n"),
            ("# no header line\nA 1\n", 1, "Matrix file: ~\nNo line of residue letters found: .*\n"),
            ("# c\n  A X\nA 1\nX 1 1\n", 1, "Too few scores in matrix file: ~\nRow 1 has 1 of 2\n"),
            ("# c\n  A X \xe9\n", 1, "Matrix file: ~\nUnusable character \\(byte 233\\) .*\n.*\n"),
            ("t\n" + "X" * 125 + "\n", 0, "Matrix file: ~\nToo many residue letters: 125 \\(at most 124\\)\n"),
            ("t\nX\n1\n", 5, "ERROR: Unrecognised MATRIX_FORMAT:5\n"),
        ):
            with self.subTest(content[:20]):
                path = self.file("matrix", content)
                run = self.search("-matrix_dir", self.work, "-m", "matrix", "-matrix_format", matrix_format)
                self.assert_refused(run, sentence.replace("~", str(path)))
        self.assert_refused(self.search("-m", "none"), f"Error opening File: No such .*\n{zelvan_cli.MATRICES}/none\n")
        self.assert_refused(self.search("-m", "."), f"Error opening File: Is a directory\n{zelvan_cli.MATRICES}/.\n")


class Garbage(InputFiles):
    def test_nothing_crashes(self):
        chance = random.Random(5)
        pieces = [b">", b">a b\n", b"\n", b"\r\n", b"*", b"MKVLA", b"\0", b"\xff\xfe", b"# c\n", b"  A X\n", b" 12 -3\n"]
        for round_number in range(40):
            content = b"".join(chance.choice(pieces) for _ in range(chance.randrange(60)))
            if round_number % 4 == 0:
                content = chance.randbytes(5000)
            garbage = self.file("garbage", content)
            layout = round_number % 2
            matrix = ("-matrix_dir", self.work, "-m", "garbage", "-matrix_format", layout)
            for args in (("-s", garbage, "-qseq_format", layout), ("-d", garbage, "-db_format", layout), matrix):
                run = self.zelvan("-s", EXAMPLES / "engb.fasta", "-d", EXAMPLES / "engb.fasta", "-mode", 202, *args)
                self.assertIn(run.status, (0, 255), (content, args, run.stderr))
                self.assertTrue(run.status == 0 or run.stderr, (content, args))


if __name__ == "__main__":
    unittest.main()
