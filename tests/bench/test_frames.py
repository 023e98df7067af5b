"""bench/frames.py: its reads by hand, and a measurement that finds its own genes."""

import os
import pathlib
import random
import subprocess
import sys
import unittest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
SCRIPT = SOURCE / "bench" / "frames.py"
sys.path[:0] = [str(SCRIPT.parent), str(SOURCE / "tests" / "cli")]

import frames  # noqa: E402
import zelvan_cli  # noqa: E402


class ReadsTest(unittest.TestCase):
    def test_a_read_is_its_stretch_with_so_many_substitutions_and_errors(self):
        rng = random.Random(1)
        protein = zelvan_cli.draw(rng, 300)
        stretch = protein[50:250]
        changed = frames.substituted(stretch, rng)
        self.assertEqual(sum(a != b for a, b in zip(stretch, changed, strict=True)), 120)
        self.assertGreater(frames.SUBSTITUTES["I"][frames.RESIDUES.index("V")],
                           10 * frames.SUBSTITUTES["I"][frames.RESIDUES.index("G")])  # fmt: skip
        codon = {codon: residue for residue, codons in frames.CODONS.items() for codon in codons}
        bases = frames.gene("MX" + stretch, rng)
        self.assertEqual("".join(codon[bases[k : k + 3]] for k in range(0, len(bases), 3)), "M" + stretch)
        for seed in range(20):
            spoilt = frames.with_errors("ACGT", [1], random.Random(seed))
            self.assertTrue(spoilt == "AGT" or (spoilt[:2] + spoilt[3:], len(spoilt)) == ("ACGT", 5), spoilt)
        read = frames.Read("P", protein, rng)
        self.assertEqual((read.bases(6), read.bases(0)), (read.bases(6), read.error_free))
        read.begin = 50
        for first, last, share in ((51, 250, 1), (1, 300, 1), (41, 60, 0.05), (250, 260, 0.005), (251, 300, 0)):
            self.assertAlmostEqual(read.coverage(first, last), share, msg=(first, last))


class MeasurementTest(zelvan_cli.TestCase):
    def measure(self, *arguments):
        command = [sys.executable, SCRIPT, arguments[0], "proteins.fa", zelvan_cli.PROGRAM, "work", *arguments[1:]]
        environment = dict(os.environ, ZELVANDIR=str(self.config))
        run = subprocess.run([str(word) for word in command], cwd=self.work, env=environment, capture_output=True,
                             text=True, check=False)  # fmt: skip
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        return [[cell.strip() for cell in line.split("|")[1:-1]] for line in run.stdout.splitlines()][2:]

    def test_genes_are_found_and_chance_is_told(self):
        self.configure(defaults=None)
        rng = random.Random(3)
        proteins = [(f"p{i}", zelvan_cli.draw(rng, rng.randint(60, 400))) for i in range(600)]
        frames.homology.write_fasta(self.work / "proteins.fa", proteins)
        for mode in (12, 20, 22):
            with self.subTest(mode=mode):
                rows = self.measure("reads", "--mode", mode, "--errors", 0, 1, "--seeds", 1)
                self.assertEqual([row[:2] for row in rows[:2]], [["0", "40"], ["1", "40"]])
                for row in rows[:2]:
                    self.assertGreater(int(row[2]), 37)
                    self.assertTrue(mode == 12 or 0.9 < float(row[3]) <= 1, row)
        by_chance = self.measure("chance", "--seeds", 1)[0]
        self.assertTrue(0.5 < float(by_chance[3]) < 2, by_chance)


if __name__ == "__main__":
    unittest.main()
