"""Builds binary databases and compares them, byte by byte, with what a writer of our own makes of the same text."""

import datetime
import re
import struct
import unittest

import zelvan_cli
from zelvan_cli import MATRICES, SAMPLE

UTC = datetime.timezone.utc


def alphabet(name):
    header = next(line for line in (MATRICES / name).read_text().splitlines() if line.startswith(" "))
    return header.replace(" ", "").replace("*", "") + " "


def fasta_records(path):
    for record in ("\n" + path.read_text()).split("\n>")[1:]:
        header, _, residues = record.partition("\n")
        name, _, title = header.partition(" ")
        yield name, title or "-", "".join(filter(str.isalpha, residues)).upper()


def expected_files(records, source, letters, date, codes, sort):
    records = list(records)
    table, sequences = b"", b""
    for name, title, residues in sorted(records, key=lambda record: len(record[2])) if sort else records:
        body = " " + residues
        body = bytes(letters.index(c if c in letters else "X") for c in body) if codes else body.encode()
        at = len(sequences)
        title_at = at + len(name) + 1
        table += struct.pack("=6i", at, len(name), title_at, len(title), title_at + len(title) + 1, len(body) + 1)
        sequences += b"".join(part + b"\0" for part in (name.encode(), title.encode(), body))
    head = struct.pack(f"=ii{len(letters)}s", codes, len(letters), letters.encode())
    head += struct.pack("=iii", len(records), sum(len(r[2]) for r in records), len(sequences))
    source = str(source).encode() + b"\0"
    return head + struct.pack("=i26si", 26, date, len(source)) + source + table, sequences


class BuildTest(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)

    def check_build(self, source, db_format, records, matrix, codes, sort):
        run = self.succeed("-mode", 99, "-bdb", "db", "-d", source, "-db_format", db_format, "-m", matrix,
                           "-apply_index", codes, "-do_sort", sort)  # fmt: skip
        self.assertEqual(run.stdout, "")
        index, sequences = ((self.work / f"db.{suffix}").read_bytes() for suffix in ("bix", "bsq"))
        date_at = 8 + len(alphabet(matrix)) + 16
        date = index[date_at : date_at + 26]
        made = datetime.datetime.strptime(date.decode(), "%a %b %d %H:%M:%S %Y\n\0").replace(tzinfo=UTC)
        self.assertLess(abs(datetime.datetime.now(UTC) - made), datetime.timedelta(minutes=10))
        expected = expected_files(records, source, alphabet(matrix), date, codes, sort)
        self.assertTrue((index, sequences) == expected, (source, matrix, codes, sort))

    def test_files_against_our_own_writer(self):
        for matrix, codes in (("BLOSUM62", 0), ("PAM120", 1)):
            self.check_build(SAMPLE, 1, fasta_records(SAMPLE), matrix, codes, 0)
        by_length = {len(residues): (name, title, residues) for name, title, residues in fasta_records(SAMPLE)}
        distinct = self.file("t.fa", "".join(f">{r[0]} {r[1]}\n{r[2]}\n" for r in by_length.values()))
        for codes in (0, 1):
            self.check_build(distinct, 1, by_length.values(), "BLOSUM45", codes, 1)
        pir = self.file("t.pir", ">P1;one\na title\nacd-EF 12\nGH*\nrest\n>P1;two\n\n*\n>P1;cut\nno star\nAC")
        self.check_build(pir, 0, [("P1;one", "a title", "ACDEFGH"), ("P1;two", "", "")], "BLOSUM62", 0, 0)
        self.check_build(self.file("none", ""), 1, [], "BLOSUM62", 0, 1)

    def test_without_a_root_the_default_names_are_written(self):
        self.succeed("-mode", 99, "-d", self.file("t.fa", ">a\nAC\n"))
        self.assertEqual((self.work / "bdbs.bsq").read_bytes(), b"a\0-\0 AC\0")
        self.assertTrue((self.work / "bdbi.bix").exists())

    def test_the_builder_tells_where_the_files_are(self):
        """Also when the folder was named too late to count."""
        wrote = "Getting matrix\nWrote {0}.bix and {0}.bsq: 2 sequences, 3 residues\n"
        build = ("-mode", 99, "-d", self.file("t.fa", ">a\nAC\n>b\nA\n"))
        (self.work / "new").mkdir()
        for args, told in (
            (("-db_dir", "new", "-bdb", "db"), wrote.format("new/db")),
            (("-bdb", "db"), wrote.format(".//db")),
            (("-bdb", "db", "-db_dir", "new"),
             wrote.format(".//db") + "DB_DIR new did not count, as it stands behind BDB_ROOT: give it before\n"),
        ):  # fmt: skip
            self.assertEqual(self.succeed(*build, *args).stderr, told)

    def test_nothing_is_left_where_it_cannot_be_stored(self):
        build = ("-mode", 99, "-bdb", "db", "-d", self.file("t.fa", ">a\nAC\n"))
        self.refuse("Getting matrix\nError opening File: .*\nnowhere/db.bix\n", "-dd", "nowhere", *build)
        for suffix in ("bix", "bsq"):
            (self.work / f"db.{suffix}").mkdir()
            self.refuse(f"Getting matrix\nError opening File: Is a directory\n.*db.{suffix}\n", *build)
            (self.work / f"db.{suffix}").rmdir()
            self.assertEqual([path.name for path in self.work.iterdir()], ["t.fa"])


SWAPPED = """ERROR: Database and Matrix index strings do not match!!

Database index string:(ARNDCQEGHILKMFPSTWYVBZX )
Matrix index string  :(RANDCQEGHILKMFPSTWYVBZX )
If you wish to use this matrix file you can do one of the following:
1  modify the matrix so that the index coincides with the databse
2  rebuild the database with the APPLY_INDEX flag set to 0 (easiest)

"""


class DamageTest(zelvan_cli.TestCase):
    """Two files that are not as one build left them are refused, naming one of them, unless what was built is read."""

    TEXT = ">one first\nACDEF\n>second -\n\n>three third one\nMKVW\n"
    RECORDS = 3 * 24  # bytes, at the end of the index file
    COUNTS = 8 + 24  # where the numbers of sequences, residues and characters stand

    def setUp(self):
        super().setUp()
        self.configure(defaults=None)
        names = "".join(f"1 9 {name}\n" for name in ("one", "second", "three", "the last is dropped"))
        listed = self.file("list", f"# Start_Scores: \n{names}# End_Scores: \n")
        self.read = ("-mode", 100, "-extract_seq", 9, "-extract_seq_format", 1, "-stdin", listed, "-bdb", "db")

    def build(self, codes, text=TEXT):
        self.succeed("-mode", 99, "-bdb", "db", "-d", self.file("text", text), "-apply_index", codes, "-do_sort", 0)
        return [(self.work / f"db.{suffix}").read_bytes() for suffix in ("bix", "bsq")]

    def accepted(self, index, sequences, *args):
        self.file("db.bix", index)
        self.file("db.bsq", sequences)
        run = self.zelvan(*self.read, *args)
        if run.status == 0:
            self.assertEqual((self.work / "zelvan_extract.seq").read_text(), self.TEXT)
        else:
            self.assertEqual(run.status, 255)
            self.assertRegex(run.stderr, r"file .*db.b(ix|sq) is damaged: .*\nCopy both files of the database again")
        return run.status == 0

    def test_absence_is_told(self):
        self.refuse("Error opening File: No such file or directory\n.*db.bix\n", *self.read)

    def test_codes_belong_to_one_alphabet(self):
        text = (MATRICES / "BLOSUM62").read_text().replace("  A   R ", "  R   A ", 1)
        other = ("-matrix_dir", self.work, "-m", self.file("swapped", text).name)
        index, sequences = self.build(0)
        self.assertTrue(self.accepted(index, sequences, *other), "letters suit any matrix")
        self.assertFalse(self.accepted(struct.pack("=i", 1) + index[4:], sequences), "letters are no codes")
        index, sequences = self.build(1)
        self.refuse(re.escape(SWAPPED), *self.read, *other)
        longer = index[:4] + struct.pack("=i", 26) + index[8:32] + b"^:" + index[32:]
        self.assertTrue(self.accepted(longer, sequences), "the alphabets begin alike")

    def test_truncated_files(self):
        for codes in (0, 1):
            index, sequences = self.build(codes)
            self.assertTrue(self.accepted(index + b"more", sequences), "what follows is not read")
            self.assertFalse(self.accepted(index, sequences + b"more"), "of another build")
            for size in range(len(index) if codes else 0):
                self.assertFalse(self.accepted(index[:size], sequences), size)
            for size in range(len(sequences)):
                self.assertFalse(self.accepted(index, sequences[:size]), size)

    def test_extreme_fields(self):
        index, sequences = self.build(1)
        records = range(len(index) - self.RECORDS, len(index), 4)
        for at in (0, 4, *range(self.COUNTS, self.COUNTS + 16, 4), self.COUNTS + 16 + 26, *records):
            (value,) = struct.unpack_from("=i", index, at)
            for bad in {-(2**31), -1, 0, value - 1, value + 1, 2**31 - 1} - {value}:
                found = self.accepted(index[:at] + struct.pack("=i", bad) + index[at + 4 :], sequences)
                # Wrong residues, and a total above the size of the sequence file, are no reason to refuse.
                harmless = (at == self.COUNTS + 4 and bad >= 0) or (at == self.COUNTS + 8 and bad > value)
                self.assertEqual(found, harmless, (at, bad))

    def test_pieces_may_lie_in_any_order_but_share_no_letters(self):
        for codes in (0, 1):
            index, sequences = self.build(codes)
            fields = list(struct.unpack("=18i", index[-self.RECORDS :]))
            moved = b""
            for k in range(16, -1, -2):  # from the last residues to the first identifier
                at, size = fields[k : k + 2]
                fields[k] = len(moved)
                moved += sequences[at : at + size + (k % 6 < 4)]  # only of residues the zero byte is counted
            self.assertTrue(self.accepted(index[: -self.RECORDS] + struct.pack("=18i", *fields), moved))
        index, sequences = self.build(0)
        fields = struct.unpack("=18i", index[-self.RECORDS :])
        for first, place in (
            (16, fields[4:6]),  # the residues of the first once more
            (12, (fields[4] + 3, 3)),  # the name inside them
            (16, (fields[14] + 5, 5)),  # residues inside the title "third one"
        ):
            shared = (*fields[:first], *place, *fields[first + 2 :])
            self.assertFalse(self.accepted(index[: -self.RECORDS] + struct.pack("=18i", *shared), sequences), first)

    def test_files_of_two_builds(self):
        texts = (self.TEXT, ">one first\nACDEFACD\n>t\n\n>three third one\nMKVWAA\n",
                 ">one first\nACDE\n>second\nA\n>three third one\nMKVW\n",
                 ">a\nACDEFACDEFACDEFACDEFAAAAAAACDEFACDEFACDEFACD\n")  # fmt: skip
        built = [self.build(codes, text) for codes in (0, 1) for text in texts]
        self.assertEqual(len({len(sequences) for _, sequences in built}), 1, "else the size alone would tell")
        for index, own in built:
            for _, sequences in built:
                if sequences is not own:
                    self.assertFalse(self.accepted(index, sequences))


if __name__ == "__main__":
    unittest.main()
