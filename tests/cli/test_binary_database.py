"""Builds binary databases and compares them, byte by byte, with what a writer of our own makes of the same text."""

import datetime
import struct
import unittest

import zelvan_cli
from zelvan_cli import MATRICES, QUERY, SAMPLE

UTC = datetime.timezone.utc


def alphabet(name):
    header = next(line for line in (MATRICES / name).read_text().splitlines() if line.startswith(" "))
    return header.replace(" ", "").replace("*", "") + " "


def fasta_records(path):
    for record in ("\n" + path.read_text()).split("\n>")[1:]:
        header, _, residues = record.partition("\n")
        name, _, title = header.partition(" ")
        yield name, title or "-", "".join(filter(str.isalpha, residues)).upper()


def heap_order(keys):
    """The indices of keys in ascending order, ties as an in-place heap sort of pairs leaves them."""
    heap = list(range(len(keys)))

    def sift(start, size):
        while 2 * start + 1 < size:
            child = 2 * start + 1
            if child + 1 < size and keys[heap[child]] < keys[heap[child + 1]]:
                child += 1
            if keys[heap[start]] >= keys[heap[child]]:
                return
            heap[start], heap[child] = heap[child], heap[start]
            start = child

    for start in reversed(range(len(heap) // 2)):
        sift(start, len(heap))
    for size in reversed(range(1, len(heap))):
        heap[0], heap[size] = heap[size], heap[0]
        sift(0, size)
    return heap


def expected_files(records, source, letters, date, codes, sort):
    records = list(records)
    order = heap_order([len(r[2]) for r in records]) if sort else range(len(records))
    table, sequences = b"", b""
    for name, title, residues in (records[k] for k in order):
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
        for matrix, codes, sort in (("BLOSUM62", 0, 0), ("BLOSUM62", 1, 1), ("PAM120", 1, 0), ("BLOSUM45", 0, 1)):
            self.check_build(SAMPLE, 1, fasta_records(SAMPLE), matrix, codes, sort)
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

    def test_damage_and_absence_are_told(self):
        self.succeed("-mode", 99, "-bdb", "db", "-d", self.file("t.fa", ">a\nAC\n>b\nACD\n"))
        sequences = (self.work / "db.bsq").read_bytes()
        size = len(self.file("db.bsq", sequences[:-1]).read_bytes())
        search = ("-s", QUERY, "-mode", 202, "-bdb")
        self.refuse(f".*fread not read all binfo->totchar characters {size} {size + 1}\n.*db.bix is damaged: "
                    "sequence 2: it lies past the end of the sequence file\n.*", *search, "db")  # fmt: skip
        self.refuse("Error opening File: No such file or directory\n.*none.bix\n", *search, "none")


if __name__ == "__main__":
    unittest.main()
