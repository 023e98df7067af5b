"""The report of a real search: what follows what, and whether its sections agree with each other."""

import re
import unittest

import zelvan_cli

SETTINGS = """
PRECISION 100
DO_STATS 2
MAX_NSEQ 10000
MAX_SEQ_LEN 50000
QSEQ_FORMAT 1
PROBCUT 10
SHOW_TITLES 1
SHOW_IDENT_WIDTH 30
PRINT_PROFILES 0
PRINT_FRQ_TABS 0
"""
PROBCUT2 = 0.00005

DATE = r"[A-Z][a-z]{2} [A-Z][a-z]{2} [ \d]\d \d\d:\d\d:\d\d \d{4}"
NUMBER = r"-?\d[\d.e+-]*"
HEADER = [
    rf"# ZELVAN Scan:    {DATE}",
    r"# ZELVAN Version: 2\.3\.9 \(Wed Jul 17 14:02:27 BST 2002\)",
    r"# \S.*",
    r"# \S.*",
    r"# Query file:     .*engb\.fasta",
    r"# Query ID:       sp\|Q600K7\|ENGB_MYCH2",
    r"# Query Title:    (?=Probable GTP-binding protein EngB ).{61}",
    r"# Query Length:   \d+",
    r"# ZELVAN MODE:    202",
    r"# Matrix file:    .*md\.mat",
    r"# Matrix title:   .*",
    r"# LD penalty:   2\.00",
    r"# LI penalty:  13\.00",
    r"# Number of residues/bases in database: \d+",
    r"# Eval Cutoff:                     10",
    rf"# FIT_A: {NUMBER} {NUMBER} {NUMBER}",
    rf"# FIT_B: {NUMBER} {NUMBER} ",
    r"# Eval Cutoff for profile:       5e-05",
    r"# Number of iterations:            2",
    r"# Profile Weight Method:           1",
    r"# Pos Weight Factor:               1\.000000",
    r"# Pid Threshold:                   1\.000000",
    r"# Iteration: \d",
    r"# Start_Scores: -{52}",
]
TIME = r"(?: {1,6}\d{1,6}\.\d){4}"
TIMES_BLOCK = [
    r"# -{54}",
    rf"# Scan Completed at: {DATE}",
    r"# ",
    r"# Times:                              \(Seconds\)",
    rf"# Load matrix, query and index:    {TIME}",
    rf"# Load database:                   {TIME}",
    rf"# Scan database:                   {TIME}",
    rf"# Output scores:                   {TIME}",
    rf"# Generate and write alignments:   {TIME}",
    r"# Millions of cell updates/sec in scan \(CPU\): +(\d+\.\d\d|inf) \(Elapsed\): +(\d+\.\d\d|inf)",
]
HIT = re.compile(rf"( *\d+) ( *-?\d+) ({NUMBER}) +({NUMBER}) +(\S+) .*")
ROW = re.compile(rf"(\S+) +({NUMBER}) +(\d+) +(\d+) +(\d+): (.*)")


def read_fasta(path):
    """Identifier to residues."""
    records = path.read_text().split(">")[1:]
    return {r.split()[0]: "".join(r.split("\n")[1:]) for r in records}


class ReportTest(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(SETTINGS)
        self.query = zelvan_cli.EXAMPLES / "engb.fasta"
        self.database = zelvan_cli.EXAMPLES / "uniprot_sample.fasta"

    def search(self, *more):
        return self.zelvan("-s", self.query, "-d", self.database, "MODE", 202, *more)

    def match_lines(self, lines, patterns):
        self.assertGreaterEqual(len(lines), len(patterns))
        for line, pattern in zip(lines, patterns):
            self.assertIsNotNone(re.fullmatch(pattern, line), f"{pattern}\n{line}")

    def hits_of(self, lines):
        """Identifiers at or below PROBCUT2 of one score list, after checking its lines and their order."""
        hits, last = set(), 0.0
        for rank, line in enumerate(lines, 1):
            found = HIT.fullmatch(line)
            self.assertIsNotNone(found, line)
            value = float(found[4])
            self.assertEqual(int(found[1]), rank)
            self.assertLessEqual(value, 10)
            self.assertGreaterEqual(value, last)
            last = value
            if value <= PROBCUT2:
                hits.add(found[5])
        return hits

    def check_changes(self, section, before, now):
        """The two reports against the two sets of hits; exactly the difference is told."""
        left, entered = section.split("# Reported in this iteration (1) but not in the previous iteration (0)\n#\n")
        title = "#\n# Reported in iteration 0 but below the threshold in this iteration (1)\n#\n"
        self.assertTrue(left.startswith(title), left)
        for text, expected in ((left[len(title) :], before - now), (entered, now - before)):
            self.assertEqual([HIT.fullmatch(line)[5] in expected for line in text.splitlines()], [True] * len(expected))

    def check_alignment(self, section, columns):
        """The blocks against the block file's columns; returns (name, start, end) of each row."""
        blocks = re.split(r"#\n# ID +Evalue   Start   End   Len\n#  +(\d+) +\n", section)[1:]
        for start, block in zip(map(int, blocks[0::2]), blocks[1::2]):
            rows = [ROW.fullmatch(line) for line in block.splitlines() if not line.startswith("#")]
            shown = columns[start - 1 : start - 1 + 39]  # of 40: the last column of a full block is left out
            self.assertEqual([row[6] for row in rows], ["".join(letters) for letters in zip(*shown)])
        self.assertEqual([int(b) for b in blocks[0::2]], list(range(1, len(columns) + 1, 40)))
        return [(row[1], int(row[3]), int(row[4])) for row in rows]

    def test_sections_follow_and_agree(self):
        run = self.search("NITER", 2)
        self.assertEqual(run.status, 0, run.stderr)
        lines = run.stdout.splitlines()
        starts = [k for k, line in enumerate(lines) if line.startswith("# ZELVAN Scan:")]
        self.assertEqual(len(starts), 2)
        self.assertEqual(starts[0], 0)
        self.match_lines(lines[-len(TIMES_BLOCK) :], TIMES_BLOCK)

        query = "".join(self.query.read_text().split("\n")[1:])
        database = read_fasta(self.database)
        block_file = (self.work / "block_file_out.blc").read_text().split("# Alignment from izelvan iteration:")[1:]
        fragments = (self.work / "frag_file_out.seq").read_text().splitlines()
        found, expected_fragments = [], []
        for i, start in enumerate(starts):
            part = lines[start : starts[1] if i == 0 else None]
            self.match_lines(part, HEADER)
            self.assertIn(f"# Iteration: {i}", part)
            end = part.index("# End_Scores: " + "-" * 54)
            found.append(self.hits_of(part[len(HEADER) : end]))
            self.assertGreater(len(found[i]), 3)
            text = "".join(line + "\n" for line in part[end + 1 :])
            before, alignment = text.split(f"# \n# Multiple alignment Start for iteration: {i}\n")
            alignment, _ = alignment.split(f"#\n# Multiple alignment End for iteration: {i}\n#\n")
            if i == 1:
                self.check_changes(before[: before.index("\n# Start_Alignments")], *found)
            columns = block_file[i].split(f"*Iteration: {i}\n")[1].split("\n*\n")[0].split("\n")
            self.assertEqual("".join(column[0] for column in columns), query)
            rows = self.check_alignment(alignment, columns)
            for name, first, last in rows[1:]:
                expected_fragments.append(database[name][first - 1 : last])
        shown = [residues for head, residues in zip(fragments, fragments[1:]) if head.startswith(">")]
        self.assertEqual(shown.count(query), 2)
        self.assertEqual([residues for residues in shown if residues != query], expected_fragments)

    def test_without_iterations_only_the_times_are_written(self):
        run = self.search("NITER", 0)
        self.assertEqual(run.status, 0, run.stderr)
        lines = run.stdout.splitlines()
        self.assertEqual(len(lines), len(TIMES_BLOCK))
        self.match_lines(lines, TIMES_BLOCK)
        self.assertEqual(lines[6], "# Scan database:                       0.0     0.0     0.0     0.0")

    def test_without_blurb_there_is_neither_header_nor_times(self):
        run = self.search("NITER", 1, "SHOW_BLURB", 0, "MAX_AOUT", 0, "APRINT_TO_THRESHOLD", 0)
        self.assertEqual(run.status, 0, run.stderr)
        self.assertRegex(run.stdout, r"\A   1 ")
        for absent in ("# ZELVAN", "_Scores", "# Times", "# Scan"):
            self.assertNotIn(absent, run.stdout)


if __name__ == "__main__":
    unittest.main()
