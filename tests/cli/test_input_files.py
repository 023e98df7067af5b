"""Sequence and matrix files as they come: odd ones are read as they stand, faulty ones end in a sentence."""

import bz2
import gzip
import lzma
import unittest

import zelvan_cli
from zelvan_cli import MATRICES, QUERY, SAMPLE

LONG = "x" * 1_000_000
UNNAMED = ("Something strange with sequence identifier in fasta file: Invalid argument\nLine:{}\n"
           "File: .*{}  Line: {}  Record: {}\nThe file is read up to this record only: write a name behind its \">\"\n")  # fmt: skip
UNOPENED = "Error opening File: {}\n{}\n"


class InputFiles(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure("MATRIX_FILE BLOSUM62\nMATRIX_FORMAT 1\nDO_STATS 2\nQSEQ_FORMAT 1\nMAX_SEQ_LEN 2000000\n")

    def refuse_search(self, sentence, *args):
        self.refuse(sentence, "-s", QUERY, "-d", SAMPLE, "-mode", 202, *args)

    def test_odd_databases_are_read_as_they_stand(self):
        """As the sequence file of a binary database shows it, letters unencoded."""
        star = "End of file found before sequence terminating star: "
        for content, db_format, stored, report in (
            (b">a b\r\nMk-1\r\n\r\n>c\r\n", 1, b"a\0b\0 MK\0c\0-\0 \0", ""),
            (b"\xff\0\n>a \xff\0t\nM\0\xffK>b  t\nLL", 1, b"a\0\xff\x1at\0 MK\0b\0 t\0 LL\0", ""),
            (b">P1;a\nt\nMK\n*\n>P1;b\nu\nLL\n", 0, b"P1;a\0t\0 MK\0", star + "Success\nIDENT:P1;b\n"),
            (b">P1;ID x\nThe title \n MKV\nl-2a*\n>B\n\nA*\n", 0, b"P1;ID\0The title \0 MKVLA\0B\0\0 A\0", ""),
            (b">a\nt\nMK*LL>c\n>b\r\nu\r\n*\r\n", 0, b"a\0t\0 MK\0b\0u\0 \0", ""),
            (b">a\n>b\nM>K\n>L*", 0, b"a\0>b\0 MKL\0", ""),
            (b">a b\n", 0, b"", "End of file found before title line: Success\nIDENT:a\n"),
            (f">{LONG} {LONG}\nMK\n{LONG}\n".encode(), 1, f"{LONG}\0{LONG}\0 MK{LONG.upper()}\0".encode(), ""),
            (b"no sequences here\n" * 9, 1, b"", ""),
        ):
            with self.subTest(content[:40]):
                run = self.succeed("-mode", 99, "-d", self.file("db", content), "-db_format", db_format,
                                   "-bdb", "built", "-apply_index", 0, "-do_sort", 0)  # fmt: skip
                found = (self.work / "built.bsq").read_bytes()
                self.assertTrue(found == stored, found[:80])
                self.assertIn(report, run.stderr)

    def test_faulty_databases_are_refused(self):
        database = self.file("db", ">a\nMKV\n>b\nMK\n")
        for args, sentence in (
            (("-d", self.work / "none"), UNOPENED.format("No such file or directory", self.work / "none")),
            (("-d", self.work), UNOPENED.format("Is a directory", self.work)),
            (("-max_nseq", 1), f"Too many sequences in {database} \\(> 1\\):  Increase MAX_NSEQ\n"),
            (("-max_nseq", -1), f"Too many sequences in {database} \\(> -1\\):  Increase MAX_NSEQ\n"),
            (("-max_seq_len", 6), "Sequence too long: a \\(> 3 residues\\):  Increase MAX_SEQ_LEN\n"),
            (("-db_format", 2), "Format:1 is not supported\n"),
        ):
            # The searches read the query first, 99 tells of the matrix, 667 samples the database.
            for mode, before in ((202, ""), (22, ""), (99, "Getting matrix\n"), (667, "")):
                query = self.file("q", ">q\nA\n")
                self.refuse(before + sentence, "-s", query, "-d", database, "-nsubset", 1, "-mode", mode, "-do_stats",
                            1 if mode == 22 else 2, *args)  # fmt: skip

        self.succeed("-d", database, "-max_seq_len", 7, "-max_nseq", 2, "-mode", 99)

    def test_compressed_files_are_named(self):
        """Also through a pipe, and of every kind of text file."""
        packers = (("gzip", "zcat", gzip.compress), ("bzip2", "bzcat", bz2.compress), ("xz", "xzcat", lzma.compress),
                   ("zstd", "zstdcat", lambda text: b"\x28\xb5\x2f\xfd\0" + text))  # fmt: skip
        for kind, program, pack in packers:
            for text in (b">a\nMKV\n", b""):
                packed = self.file("packed", pack(text))
                said = "{0} is compressed \\(%s\\). Pass what is in it: %s {0} {1} ...\n" % (kind, program)
                for mode, before in ((202, ""), (22, "Note:[^\n]*\n"), (10, ""), (99, "Getting matrix\n"), (667, "")):
                    args = ("-mode", mode, "-s", self.file("q", ">q\nA\n"), "-nsubset", 1, "-d")
                    self.refuse(before + said.format(packed, r"\| zelvan -d /dev/stdin"), *args, packed)
                    self.refuse(before + said.format("/dev/stdin", r"\| zelvan -d /dev/stdin"), *args, "/dev/stdin",
                                stdin=packed.read_bytes().decode("latin-1"))  # fmt: skip
                self.refuse_search(said.format(packed, r"\| zelvan -s /dev/stdin"), "-s", packed)
        for args in (("-matrix_dir", self.work, "-m", "packed", "-matrix_format", 0),
                     ("-matrix_dir", self.work, "-m", "packed"), ("-gd", self.work, "-codon", "packed")):
            self.refuse_search(f"(Note:.*\n)?{packed} is compressed \\(zstd\\). Pass what is in it: .*", *args, "-mode", 22)

    def test_byte_order_marks_are_no_text(self):
        """A file that an editor put the mark on is read as before."""
        options = ("-mode", 22, "-codon", "codons", "-gd", self.work, "-md", self.work, "-m", "matrix")
        reports = []
        for mark in (b"", b"\xef\xbb\xbf"):
            sources = (zelvan_cli.CODONS / "codo.tst", MATRICES / "BLOSUM62", zelvan_cli.EXAMPLES / "engb_dna.fasta", SAMPLE)
            for name, source in zip(("codons", "matrix", "q", "d"), sources):
                self.file(name, mark + source.read_bytes()[:200_000])
            for path in self.config.iterdir():
                path.write_bytes(mark + path.read_bytes())
            reports.append(zelvan_cli.score_lists(self.succeed("-s", "q", "-d", "d", *options).stdout))
        self.assertGreater(len(reports[0][0]), 10)
        self.assertEqual(*reports)

    def test_a_missing_option_is_named_before_the_file_that_stands_in(self):
        """Not where the file was asked for by that name."""
        unopened = UNOPENED.format("No such file or directory", "data.seq")
        for args, said in (
            (("-s", QUERY), "No database was given: add -d FILE, or -bdb NAME for a binary one\n" + unopened),
            (("-s", QUERY, "-mode", 10), "No database was given: add -d FILE\n" + unopened),
            (("-bdb", "x", "-mode", 99), "Getting matrix\nNo database was given: add -d FILE\n" + unopened),
            (("-s", QUERY, "-d", "data.seq"), unopened),
            ((), "No query was given: add -s FILE\n" + unopened.replace("data", "test")),
        ):
            self.refuse(said, *("-mode", 202), *args)

    def test_a_record_without_a_name_ends_the_reading(self):
        """A search goes on with what came before it; nothing that copies sequences does."""
        whole = zelvan_cli.first_records(SAMPLE, 1200)
        records = zelvan_cli.fasta(self.file("whole", whole))
        residues = "# Number of residues/bases in database: %d\n" % sum(map(len, records.values()))
        copies = ("-mode", 99, "-bdb", "db"), ("-mode", 667, "-nsubset", 1), ("-mode", 100, "-extract_seq", 1)
        for fault, line in ((">\nMKV\n>rest\nMK\n", ">"), (">  ", ">  ")):
            database = self.file("db", whole + fault)
            told = UNNAMED.format(line, "db", whole.count("\n") + 1, len(records) + 1)
            run = self.succeed("-s", QUERY, "-d", database, "-mode", 202, "-niter", 1, "-lpfit_minbuck", 50,
                               "-max_nseq", 2000)  # fmt: skip
            self.assertRegex(run.stderr, rf"\A{told}\Z")
            self.assertTrue(residues in run.stdout)
            for args in copies:
                self.refuse(f"(Getting matrix\n)?{told}Nothing was written: .*db could not be read to its end\n",
                            "-d", database, "-max_nseq", 2000, *args)  # fmt: skip
        self.assertFalse(list(self.work.glob("db.*")))

    def test_faulty_queries_are_refused(self):
        long = (
            "Error:  Sequence length \\(16001\\) is > MP_LEN \\(16000\\)\n"
            "You must recompile ZELVAN with MP_LEN set > 16001\n"
            "Alternatively, use ZELVAN compiled for a single processor\n"
            "i.e. with MP_LEN undefined in the makefile\n"
        )
        for content, args, sentence in (
            ("", (), "No Query\n"),
            (b"\0\xff\n\0>\n" * 99, (), "No Query\n"),
            (">\nMKV\n", (), UNNAMED.format(">", "q", 1, 1) + "No Query\n"),
            (">q\nt\nMKV\n", ("-qseq_format", 0),
             "End of file found before sequence terminating star: .*\nIDENT:q\nNo Query\n"),
            (">q\nMKV\n", ("-qseq_format", 2), "Format:2 is not supported\n"),
            (">q\nMKV\n", ("-max_seq_len", 0), "Sequence too long: q \\(> -3 residues\\):  Increase MAX_SEQ_LEN\n"),
            (">q\n" + "A" * 15_999, (), long),
            (">q\n" + LONG * 3, (), "Sequence too long: q \\(> 1999997 residues\\):  Increase MAX_SEQ_LEN\n"),
        ):  # fmt: skip
            with self.subTest(content[:20], args=args):
                self.refuse_search(sentence, "-s", self.file("q", content), *args)
        for path, reason in ((self.work / "none", "No such file or directory"), (self.work, "Is a directory")):
            self.refuse_search(UNOPENED.format(reason, path), "-s", path)

    def test_faulty_matrices_are_refused(self):
        """One of each layout; the others are tried on the routines that read them."""
        path = self.file("matrix", "# c\n  A X\nA 1\nX 1 1\n")
        own = ("-matrix_dir", self.work, "-m", "matrix", "-matrix_format")
        self.refuse_search(f"Too few scores in matrix file: {path}\nRow 1 has 1 of 2\n", *own, 1)
        self.refuse_search(f"Matrix file: {path}\nThis does not look like a PIR .*", *own, 0)
        self.refuse_search("ERROR: Unrecognised MATRIX_FORMAT:5\n", *own, 5)
        for name, reason in (("none", "No such file or directory"), (".", "Is a directory")):
            self.refuse_search(UNOPENED.format(reason, f"{MATRICES}/{name}"), "-m", name)


if __name__ == "__main__":
    unittest.main()
