"""The report of a real search: what follows what, and whether its sections agree with each other.

What a header says is told, line by line, by the examples of the manual, which are compared with the program.
"""

import re
import unittest

import zelvan_cli
from zelvan_cli import QUERY, SAMPLE

SETTINGS = (
    "DO_STATS 2\nMAX_NSEQ 10000\nMAX_SEQ_LEN 50000\nQSEQ_FORMAT 1\nPROBCUT 10\nSHOW_TITLES 1\nSHOW_IDENT_WIDTH 30\n"
    "PRINT_PROFILES 0\nPRINT_FRQ_TABS 0\n"
)
PROBCUT2 = 0.00005

NUMBER = r"-?\d[\d.e+-]*"
HEADER = re.compile(r"# ZELVAN Scan:    .+\n(?:# .+\n)+# Iteration: (\d)\n# Start_Scores: -{52}\n")
TIMES = "# " + "-" * 54 + "\n# Scan Completed at: "
HIT = re.compile(rf"( *\d+) ( *-?\d+) ({NUMBER}) +({NUMBER}) +(\S+) .*")
ROW = re.compile(rf"(\S+) +({NUMBER}) +(\d+) +(\d+) +(\d+): (.*)")


class ReportTest(zelvan_cli.TestCase):
    def search(self, *more):
        self.configure(SETTINGS)
        return self.succeed("-s", QUERY, "-d", SAMPLE, "MODE", 202, *more).stdout

    def hits_of(self, text):
        """Identifiers at or below PROBCUT2 of one score list, after checking its lines and their order."""
        lines = [HIT.fullmatch(line) for line in text.splitlines()]
        values = [float(line[4]) for line in lines]
        self.assertEqual([int(line[1]) for line in lines], list(range(1, len(lines) + 1)))
        self.assertEqual(values, sorted(values))
        self.assertLessEqual(values[-1], 10)
        return {line[5] for line, value in zip(lines, values) if value <= PROBCUT2}

    def check_changes(self, section, i, before, now):
        """The two reports of iteration i against the two sets of hits; exactly the difference is told."""
        told = re.fullmatch(
            f"#\n# Reported in iteration {i - 1} but below the threshold in this iteration \\({i}\\)\n#\n([^#]*)"
            f"# Reported in this iteration \\({i}\\) but not in the previous iteration \\({i - 1}\\)\n#\n([^#]*)",
            section,
        )
        for text, expected in ((told[1], before - now), (told[2], now - before)):
            self.assertEqual(sorted(HIT.fullmatch(line)[5] for line in text.splitlines()), sorted(expected))

    def check_alignment(self, section, columns, width=40):
        """The blocks against the block file's columns; returns (name, start, end) of each row."""
        blocks = re.split(r"#\n# ID +Evalue   Start   End   Len\n#  +(\d+) +\n", section)[1:]
        for start, block in zip(map(int, blocks[0::2]), blocks[1::2]):
            rows = [ROW.fullmatch(line) for line in block.splitlines() if not line.startswith("#")]
            shown = columns[start - 1 : start + width - 2]  # the last column of a full block is left out
            self.assertEqual([row[6] for row in rows], ["".join(c[k] for c in shown) for k in range(len(columns[0]))])
        self.assertEqual([int(b) for b in blocks[0::2]], list(range(1, len(columns) + 1, width)))
        return [(row[1], int(row[3]), int(row[4])) for row in rows]

    def test_sections_follow_and_agree(self):
        report = self.search("NITER", 3)
        *parts, last = HEADER.split(report)
        self.assertEqual((parts[0], parts[1::2]), ("", ["0", "1", "2"]))
        parts = [*parts[2::2], last.split(TIMES)[0]]

        ((query_name, query),) = zelvan_cli.fasta(QUERY).items()
        sequences = zelvan_cli.fasta(SAMPLE) | {query_name: query}
        block_file = (self.work / "block_file_out.blc").read_text().split("# Alignment from izelvan iteration:")[1:]
        fragments = (self.work / "frag_file_out.seq").read_text()
        found, expected_fragments = [], []
        for i, part in enumerate(parts):
            scores, rest = part.split("# End_Scores: " + "-" * 54 + "\n")
            found.append(self.hits_of(scores))
            self.assertGreater(len(found[i]), 3)
            before, alignment = rest.split(f"# \n# Multiple alignment Start for iteration: {i}\n")
            alignment, _ = alignment.split(f"#\n# Multiple alignment End for iteration: {i}\n#\n")
            if i > 0:
                self.check_changes(before[: before.index("\n# Start_Alignments")], i, *found[-2:])
            columns = block_file[i].split(f"*Iteration: {i}\n")[1].split("\n*\n")[0].split("\n")
            self.assertEqual("".join(column[0] for column in columns), query)
            for name, start, end in self.check_alignment(alignment, columns):
                whole = sequences[name]
                expected_fragments += [(f"{name}({start}-{end}:{len(whole)})", whole[start - 1 : end])]
        self.assertEqual(re.findall(r"^>(\S+) .*\n(.*)$", fragments, re.M), expected_fragments)
        self.search("NITER", 3, "FRAG_FILE_FORMAT", 2)
        pir = re.sub(r"(?m)^>(\S+) (.*)\n(.*)\n", r">\1\n\2\n\3\n*\n", fragments)
        self.assertEqual((self.work / "frag_file_out.seq").read_text(), pir)

    def test_blocks_of_any_width(self):
        ((_, query),) = zelvan_cli.fasta(QUERY).items()
        for width in (1, 7, len(query), len(query) + 1, 2**31 - 1):
            text = self.search("NITER", 1, "MULTIPLE_OUTPUT_LENGTH", width)
            alignment = text.split("iteration: 0\n# Format")[1].split("#\n# Multiple alignment End")[0]
            block_file = (self.work / "block_file_out.blc").read_text()
            columns = block_file.split("*Iteration: 0\n")[1].split("\n*\n")[0].split("\n")
            self.assertEqual(len(columns), len(query))
            self.check_alignment(alignment, columns, width)
        refused = self.zelvan("-s", QUERY, "-d", SAMPLE, "-mode", 202, "-multiple_output_length", 0)
        self.assertEqual(refused.status, 255)
        self.assertRegex(refused.stderr, "^MULTIPLE_OUTPUT_LENGTH is 0: .*\n$")

    def test_parts_that_were_not_asked_for(self):
        times = self.search("NITER", 0)
        self.assertTrue(times.startswith(TIMES))
        self.assertIn("\n# Scan database:                       0.0     0.0     0.0     0.0\n", times)
        bare = self.search("NITER", 1, "SHOW_BLURB", 0, "MAX_AOUT", 0, "APRINT_TO_THRESHOLD", 0)
        self.assertRegex(bare, r"\A   1 ")
        self.assertNotRegex(bare, "# ZELVAN|_Scores|# Times|# Scan")


if __name__ == "__main__":
    unittest.main()
