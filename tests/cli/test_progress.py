"""A long scan tells on a terminal how far it is, and nowhere else.

$ZELVAN_FORCED, told to use the scalar kernels, takes seconds for a scan that is short otherwise.
"""

import contextlib
import os
import pty
import re
import subprocess
import unittest

import zelvan_cli

COPIES = 1 if zelvan_cli.SANITIZED else 3  # slow by itself


def read_to_the_end(terminal):
    shown = b""
    with contextlib.suppress(OSError):  # the other end is closed
        while piece := os.read(terminal, 4096):
            shown += piece
    return shown


class Progress(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)
        self.database = self.file("db.fasta", zelvan_cli.SAMPLE.read_bytes() * COPIES)

    def search(self, stderr):
        """The running search; its report goes to a file, so that it never waits for a reader."""
        with open(self.work / "report", "wb") as report:
            return self.start("-s", zelvan_cli.EXAMPLES / "mvk.fasta", "-d", self.database, "-niter", 1, "-verbose", 1,
                              program=os.environ["ZELVAN_FORCED"], env={"ZELVAN_TEST_SET": "reference"},
                              stdout=report, stderr=stderr)  # fmt: skip

    def test_line_on_a_terminal(self):
        try:
            ours, theirs = pty.openpty()
        except OSError as fault:
            self.skipTest(f"no pseudo-terminal here: {fault}")
        run = self.search(theirs)
        os.close(theirs)
        shown = read_to_the_end(ours).decode()
        os.close(ours)
        self.assertEqual(run.wait(), 0)
        self.assertRegex(shown, r"\rScanning: +\d+ %  \d+\.\d GCUPS  \d+ s left")
        self.assertRegex(shown, r"\r *\rAbout to call setup_lpfit")  # wiped before what follows
        parts = [int(part) for part in re.findall(r"Scanning: +(\d+) %", shown)]
        self.assertEqual(parts, sorted(parts))
        self.assertNotIn("GCUPS", (self.work / "report").read_text())

    def test_nothing_in_a_pipe(self):
        told = self.search(subprocess.PIPE).communicate()[1]
        self.assertIn(b"About to call setup_lpfit", told)
        self.assertNotIn(b"GCUPS", told)


if __name__ == "__main__":
    unittest.main()
