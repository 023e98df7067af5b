"""Builds binary databases and compares them, byte by byte, with what a writer of our own makes of the same text."""
import datetime
import struct
import unittest

import zelvan_cli
from zelvan_cli import EXAMPLES, MATRICES

SAMPLE = EXAMPLES / "uniprot_sample.fasta"


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
        if codes:
            body = bytes(letters.index(c if c in letters else "X") for c in " " + residues)
        else:
            body = (" " + residues).encode()
        at = len(sequences)
        sequences += name.encode() + b"\0" + title.encode() + b"\0" + body + b"\0"
        title_at = at + len(name) + 1
        table += struct.pack("=6i", at, len(name), title_at, len(title), title_at + len(title) + 1, len(body) + 1)
    source = str(source).encode() + b"\0"
    return (
        struct.pack(f"=ii{len(letters)}s", codes, len(letters), letters.encode())
        + struct.pack("=iii", len(records), sum(len(r[2]) for r in records), len(sequences))
        + struct.pack("=i26s", 26, date)
        + struct.pack("=i", len(source))
        + source
        + table
    ), sequences


class BuildTest(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)

    def build(self, *keys, root="db"):
        run = self.zelvan("-mode", 99, "-bdb", root, *keys)
        self.assertEqual(run.status, 0, run.stderr)
        self.assertEqual(run.stdout, "")
        return (self.work / f"{root}.bix").read_bytes(), (self.work / f"{root}.bsq").read_bytes()

    def check(self, files, records, source, matrix, codes, sort):
        date_at = 8 + len(alphabet(matrix)) + 16
        date = files[0][date_at : date_at + 26]
        made = datetime.datetime.strptime(date.decode(), "%a %b %d %H:%M:%S %Y\n\0").replace(tzinfo=datetime.timezone.utc)
        self.assertLess(abs(datetime.datetime.now(datetime.timezone.utc) - made), datetime.timedelta(minutes=10))
        index, sequences = expected_files(records, source, alphabet(matrix), date, codes, sort)
        self.assertEqual(files[1], sequences)
        self.assertEqual(files[0], index)

    def test_every_setting_against_our_own_writer(self):
        for matrix, codes, sort in (("BLOSUM62", 0, 0), ("BLOSUM62", 1, 1), ("PAM120", 1, 0), ("BLOSUM45", 0, 1)):
            with self.subTest(matrix=matrix, codes=codes, sort=sort):
                files = self.build("-d", SAMPLE, "-m", matrix, "-apply_index", codes, "-do_sort", sort)
                self.check(files, fasta_records(SAMPLE), SAMPLE, matrix, codes, sort)

    def test_pir_text(self):
        text = self.file("t.pir", ">P1;one\na title\nacd-EF 12\nGH*\nrest\n>P1;two\n\n*\n>P1;cut\nno star\nAC")
        files = self.build("-d", text, "-db_format", 0, "-do_sort", 0)
        self.check(files, [("P1;one", "a title", "ACDEFGH"), ("P1;two", "", "")], text, "BLOSUM62", 0, 0)

    def test_without_a_root_the_default_names_are_written(self):
        run = self.zelvan("-mode", 99, "-d", self.file("t.fa", ">a\nAC\n"))
        self.assertEqual(run.status, 0, run.stderr)
        self.assertEqual((self.work / "bdbs.bsq").read_bytes(), b"a\0-\0 AC\0")
        self.assertTrue((self.work / "bdbi.bix").exists())

    def test_searches_find_the_same_in_text_and_binary(self):
        def hits(*database):
            run = self.zelvan("-s", EXAMPLES / "engb.fasta", "-mode", 202, "-niter", 2, *database)
            self.assertEqual(run.status, 0, run.stderr)
            return [line for line in run.stdout.splitlines() if line[:1] not in ("", "#")]

        text = hits("-d", SAMPLE)
        self.assertGreater(len(text), 20)
        for codes in (0, 1):
            self.build("-d", SAMPLE, "-apply_index", codes, "-do_sort", 0)
            self.assertEqual(hits("-bdb", "db", "-apply_index", 1 - codes), text)

    def test_damage_and_absence_are_told(self):
        self.build("-d", self.file("t.fa", ">a\nAC\n>b\nACD\n"))
        search = ("-s", EXAMPLES / "engb.fasta", "-mode", 202, "-bdb")
        sequences = (self.work / "db.bsq").read_bytes()
        self.file("db.bsq", sequences[:-1])
        run = self.zelvan(*search, "db")
        self.assertEqual(run.status, 255)
        self.assertIn(f"fread not read all binfo->totchar characters {len(sequences) - 1} {len(sequences)}\n", run.stderr)
        self.assertIn("db.bix is damaged: sequence 2: it lies past the end of the sequence file\n", run.stderr)
        run = self.zelvan(*search, "none")
        self.assertEqual((run.status, run.stdout), (255, ""))
        self.assertIn("Error opening File: No such file or directory\n", run.stderr)
        self.assertIn("none.bix\n", run.stderr)


if __name__ == "__main__":
    unittest.main()
