"""The translated searches, modes 10, 12, 20 and 22, from the command line to the report."""

import random
import re
import shutil
import subprocess
import sys
import unittest

import zelvan_cli

SETTINGS = """
PRECISION 100
QSEQ_FORMAT 1
MATRIX_FILE BLOSUM62
MATRIX_FORMAT 1
MAX_NSEQ 10000
MAX_SEQ_LEN 50000
MIN_NSTATS 1
PROBCUT 1
SHOW_TITLES 1
SHOW_IDENT_WIDTH 12
TIME 0
"""
RESIDUES = "ARNDCQEGHILKMFPSTWYV"
FREQUENCIES = (8, 5, 4, 6, 1, 4, 7, 7, 2, 6, 10, 6, 2, 4, 5, 7, 5, 1, 3, 7)
COMPLEMENT = str.maketrans("ACGT", "TGCA")


def codons():
    table = {}
    for line in (zelvan_cli.CODONS / "codo.tst").read_text().splitlines():
        codon, residue = line.split()
        table.setdefault(residue, []).append(codon)
    return table


CODONS = codons()


def fasta(records):
    return "".join(f">{name} {name} title\n{letters}\n" for name, letters in records)


def reverse_complement(dna):
    return dna.translate(COMPLEMENT)[::-1]


class TranslatedSearch(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(SETTINGS)
        self.random = random.Random(7)

    def protein(self, residues):
        return "".join(self.random.choices(RESIDUES, FREQUENCIES, k=residues))

    def proteins(self, count):
        return [(f"P{k}", self.protein(int(self.random.lognormvariate(5.3, 0.6)) + 20)) for k in range(count)]

    def gene(self, protein):
        return "".join(self.random.choice(CODONS[residue]) for residue in protein)

    def bases(self, count):
        return "".join(self.random.choices("ACGT", k=count))

    def search(self, mode, query, database, *more):
        return self.zelvan(
            "-s", self.file("query.fasta", fasta(query)),
            "-d", self.file("database.fasta", fasta(database)),
            "-mode", mode, *more,
        )  # fmt: skip

    def listed(self, run):
        """The lines of the score list, split at blanks: rank, numbers, identifier, title."""
        self.assertEqual(run.status, 0, run.stderr)
        lines = run.stdout.split("# Start_Scores: " + 52 * "-" + "\n")[1].split("# End_Scores: ")[0]
        return [line.split() for line in lines.splitlines()]

    def sections(self, run):
        return re.findall(r"\n# Start_Alignments_Rank: (\d+)\n(.*?)# End_Alignments_Rank: \1\n", run.stdout, re.S)


class Ranking(TranslatedSearch):
    """Statistics: planted genes come first, chance gives what it is expected to give."""

    def test_planted_genes_come_first_and_chance_is_told_by_the_e_value(self):
        protein = self.protein(120)
        gene = self.gene(protein)
        shifted = gene[:150] + "G" + gene[150:]
        relatives = ["".join(r if self.random.random() < q else self.protein(1) for r in protein) for q in (0.9, 0.6)]
        for mode in (12, 20, 22):
            below_one = below_ten = 0
            for _ in range(3):
                unrelated = self.proteins(700)
                if mode == 12:
                    query = [("Q", protein)]
                    planted = [(f"G{k}", self.bases(50) + self.gene(r) + self.bases(50)) for k, r in enumerate(relatives)]
                    planted[0] = ("G0", planted[0][1][:200] + "T" + planted[0][1][200:])
                    database = [(name, self.gene(p)) for name, p in unrelated] + planted
                else:
                    query = [("Q", self.bases(60) + shifted + self.bases(61))]
                    database = unrelated + [(f"G{k}", r) for k, r in enumerate(relatives)]
                lines = self.listed(self.search(mode, query, database, "-probcut", 10, "-aprint_to_threshold", 0))
                self.assertEqual([line[4] for line in lines[:2]], ["G0", "G1"], mode)
                self.assertLess(float(lines[1][3]), 1e-4)
                below_one += sum(float(line[3]) < 1 for line in lines[2:])
                below_ten += len(lines) - 2
            with self.subTest(mode=mode):
                self.assertLessEqual(below_one, 9)  # about 1 in each of the 3 searches
                self.assertGreater(below_ten, 12)  # about 10
                self.assertLess(below_ten, 54)

    def test_probabilities_instead_of_expectations(self):
        database = self.proteins(600)
        query = [("Q", self.gene(database[3][1]))]
        e = self.listed(self.search(22, query, database, "-probcut", 1e6))
        p = self.listed(self.search(22, query, database, "-probcut", 1e6, "-fit_type", 1))
        self.assertEqual(len(e), 600)
        self.assertEqual([line[4] for line in e], [line[4] for line in p])
        for expectation, probability in zip(e, p):
            self.assertAlmostEqual(float(expectation[3]) / 600, float(probability[3]), delta=0.01 * float(probability[3]))

    def test_header_and_log_of_the_statistics(self):
        database = self.proteins(300)
        run = self.search(22, [("Q", self.gene(database[3][1]))], database, "-dump_stats", 1)
        header = run.stdout.split("# Start_Scores")[0]
        self.assertRegex(header, r"\n# FIT: m: -?\d+\.\d{6} c: -?\d+\.\d{6} var: \d+\.\d{6} nval: [1-9]\d*\n# PROBCUT: +1\.0")
        self.assertIn("# LI penalty:  12.00\n# FS  penalty:  15.00\n", header)
        self.assertRegex(header, r"# Matrix file:    /.*/BLOSUM62\n")
        self.assertIn("# Sequences: 300,", (self.work / "zelvan_dump_stats.log").read_text())


class PlainList(TranslatedSearch):
    """Without statistics: the database backwards, whatever the scores."""

    def setUp(self):
        super().setUp()
        self.database = [("A", "MKWVTFISLLFLFSSAYSRG"), ("B", "MSWVTFISLLFLFSGAYSRG"), ("C", "GGGGG"), ("D", "MKWVTFISLLFLFSSAYSRGVF")]
        self.query = [("Q", self.gene("MKWVTFISLLFLFSSAYSRGVF"))]

    def plain(self, *more):
        return self.listed(self.search(22, self.query, self.database, "-do_stats", 0, *more))

    def test_walks_the_database_backwards(self):
        lines = self.plain()
        self.assertEqual([line[2] for line in lines], ["D", "C", "B", "A"])
        self.assertGreater(int(lines[3][1]), int(lines[2][1]))
        self.assertEqual([line[0] for line in lines], ["1", "2", "3", "4"])

    def test_filters_by_score_and_number(self):
        self.assertEqual([line[2] for line in self.plain("-min_score", 50)], ["D", "B", "A"])
        self.assertEqual([line[2] for line in self.plain("-nprint_to_threshold", 0, "-max_nout", 2)], ["D", "C"])
        self.assertEqual(len(self.plain("-max_nout", 1)), 4)  # NPRINT_TO_THRESHOLD 1 overrides it

    def test_few_sequences_switch_the_statistics_off(self):
        for least, plain in ((4, False), (5, True)):
            run = self.search(22, self.query, self.database, "-do_stats", 1, "-min_nstats", least)
            self.assertEqual("# FIT" not in run.stdout, plain)

    def test_special_lists_all_in_database_order(self):
        run = self.search(22, self.query, self.database, "-do_stats", 0, "-special", 1, "-min_score", 50, "-max_aout", 0)
        self.assertEqual([line.split()[2] for line in run.stdout.split(52 * "-" + "\n")[1].splitlines()[:4]], ["A", "B", "C", "D"])
        self.assertNotIn("# End_Scores", run.stdout)

    def test_alignments_are_of_the_best_scores(self):
        run = self.search(22, self.query, self.database, "-do_stats", 0, "-max_aout", 2)
        self.assertEqual([re.search(r"Target: (\S+)", body)[1] for _, body in self.sections(run)], ["D", "A"])

    def test_two_unlimited_settings_are_refused(self):
        for mode in (12, 20, 22):
            run = self.search(mode, self.query, self.database, "-max_nout", -1, "-min_score", -1)
            self.assertEqual((run.status, run.stderr), (255, "Error:  Both min_score and max_nout are set to -1\n"))
        # Compared with PRECISION as it stands: -100 stored before PRECISION changed is -10 of the new units.
        run = self.search(22, self.query, self.database, "-max_nout", -1, "-min_score", -1, "-precision", 10)
        self.assertEqual(run.status, 0)
        self.assertEqual(self.search(10, [("Q", "MKWV")], [("A", "ATGAAATGG")], "-max_nout", -1, "-min_score", -1).status, 0)

    def test_the_protein_setting_of_statistics_brings_a_note(self):
        run = self.search(22, self.query, self.database, "-do_stats", 2)
        self.assertEqual(run.stderr, "Note:  for a list ranked by significance in this mode you must set do_stats = 1\n")
        self.assertEqual([line[2] for line in self.listed(run)], ["D", "C", "B", "A"])
        self.assertNotIn("FIT", run.stdout)


class Strands(TranslatedSearch):
    """COMPLEMENT_QUERY in each mode."""

    def scores(self, mode, query, database, *more):
        run = self.search(mode, query, database, "-do_stats", 0, "-max_aout", 0, *more)
        if mode == 10:
            self.assertEqual(run.status, 0, run.stderr)
            return {line.split()[1]: int(line.split()[0]) for line in run.stdout.splitlines()}
        return {line[2]: int(line[1]) for line in self.listed(run)}

    def test_dna_query(self):
        protein = self.protein(60)
        dna = self.gene(protein)
        for mode in (20, 22):
            forward = self.scores(mode, [("Q", dna)], [("A", protein)])["A"]
            self.assertGreater(forward, 200)
            back = [("Q", reverse_complement(dna))]
            self.assertLess(self.scores(mode, back, [("A", protein)])["A"], 100)
            self.assertEqual(self.scores(mode, back, [("A", protein)], "-complement_query", 1)["A"], forward)

    def test_dna_database(self):
        protein = self.protein(60)
        dna = self.gene(protein)
        database = [("F", dna), ("R", reverse_complement(dna))]
        straight = self.scores(12, [("Q", protein)], database)
        turned = self.scores(12, [("Q", protein)], database, "-complement_query", 1)
        self.assertEqual((straight["F"], straight["R"]), (turned["R"], turned["F"]))
        self.assertGreater(straight["F"], straight["R"])
        plain = self.scores(10, [("Q", protein)], database)
        self.assertEqual(plain, self.scores(10, [("Q", protein)], database, "-complement_query", 1))


class SimpleScan(TranslatedSearch):
    """Mode 10: a line a sequence, penalties as configured, and nothing else."""

    def test_lines_and_the_divisor_of_100(self):
        database = [("short", "AC"), ("one", "TGG"), ("three", "TGGTGGTGG"), ("N", "TGNTGGTGG")]
        run = self.search(10, [("Q", "WWW")], database, "-max_nseq", 1)  # no bound on the number
        self.assertEqual((run.status, run.stdout, run.stderr), (0, "0 short\n11 one\n33 three\n22 N\n", ""))
        run = self.search(10, [("Q", "WWW")], database[1:3], "-precision", 10)
        self.assertEqual(run.stdout, "1 one\n3 three\n")

    def test_the_last_two_bases_are_no_rows(self):
        # Mode 12 scores the letters of the last two positions as residues, mode 10 does not.
        query, database = [("Q", "AW")], [("A", "TGGGA"), ("B", "A")]
        self.assertEqual(self.search(10, query, database).stdout, "11 A\n0 B\n")
        lines = self.listed(self.search(12, query, database, "-do_stats", 0))
        self.assertEqual([line[:3] for line in lines], [["1", "4", "B"], ["2", "11", "A"]])

    def test_takes_penalties_from_the_configuration_only(self):
        gene = self.gene("MKWVTFISLLFLFSSAYSRG")
        query, database = [("Q", "MKWVTFISLLFLFSSAYSRG")], [("A", gene[:30] + "C" + gene[30:])]
        whole = int(self.search(10, query, [("A", gene)]).stdout.split()[0])
        for shift in (8, 3):
            run = self.search(10, query, database, "-fs_pen", shift)
            self.assertEqual(run.stdout, f"{whole - shift} A\n")
        run = self.search(12, query, database, "-fs_pen", 3, "-do_stats", 0)
        self.assertEqual(self.listed(run)[0][1], str(whole - 15))
        run = self.search(12, query, database, "-fs_pen", 3, "-do_stats", 0, "-use_gapdefs", 0)
        self.assertEqual(self.listed(run)[0][1], str(whole - 3))

    def test_many_batches(self):
        database = [(f"S{k}", "TGG" * (1 + k % 3) + self.bases(9000).replace("TGG", "AAA")) for k in range(1100)]
        lines = self.search(10, [("Q", "WWW")], database).stdout.splitlines()
        self.assertEqual([line.split()[1] for line in lines], [name for name, _ in database])
        self.assertTrue(all(int(line.split()[0]) >= 11 * (1 + k % 3) for k, line in enumerate(lines)))

    def test_progress_and_time(self):
        run = self.search(10, [("Q", "WW")], [("A", "TGG")], "-verbose", 1, "-time", 1)
        for text in (
            "Getting codon table\nGetting pairscore matrix\n",
            "Query:\nQ\nQ title\nWW\nBuilding lookup table\nOpening database\nScanning\n"
            "Penalties: ld_pen: 800 li_pen: 800 fs_pen 800\n",
        ):
            self.assertIn(text, run.stderr)
        self.assertRegex(run.stderr, r"\nCPU\(P.*\)\n$")


class Databases(TranslatedSearch):
    """Binary databases and extraction."""

    def build(self, database, index):
        run = self.zelvan(
            "-d", self.file("source.fasta", fasta(database)), "-mode", 99, "-db_dir", self.work, "-bdb_root", f"db{index}",
            "-apply_index", index,
        )  # fmt: skip
        self.assertEqual(run.status, 0, run.stderr)
        return ["-db_dir", self.work, "-bdb_root", f"db{index}"]

    def test_binary_and_text_protein_databases_agree(self):
        database = self.proteins(40)
        query = [("Q", self.gene(database[5][1]))]
        for mode in (20, 22):
            expected = self.listed(self.search(mode, query, database, "-probcut", 1e6))
            for index in (0, 1):
                run = self.search(mode, query, database, "-probcut", 1e6, *self.build(database, index))
                self.assertEqual(self.listed(run), expected)
                self.assertIn("# Number of sequences:             40\n", run.stdout)
                self.assertEqual(self.sections(run)[0][1].count("# End_N: 1"), 1)

    def test_binary_dna_databases_hold_letters(self):
        database = [(name, self.gene(p)) for name, p in self.proteins(20)]
        query = [("Q", self.protein(80))]
        expected = self.listed(self.search(12, query, database, "-do_stats", 0))
        run = self.search(12, query, database, "-do_stats", 0, *self.build(database, 0))
        # The order of a binary database is its own.
        self.assertEqual(sorted(line[1:] for line in self.listed(run)), sorted(line[1:] for line in expected))
        run = self.search(12, query, database, *self.build(database, 1))
        self.assertEqual(run.status, 255)
        self.assertEqual(run.stdout, "")
        refusal = "For DNA, the binary database must not be built with APPLY_INDEX\nSorry...\n"
        self.assertEqual(run.stderr, refusal)

    def test_extraction_writes_the_best_as_they_were_searched(self):
        database = [("A", "TGGTGG"), ("B", "ATGATGC"), ("C", "TGGTGGTGG")]
        run = self.search(12, [("Q", "WWW")], database, "-do_stats", 0, "-extract_seq", 4, "-extract_seq_format", 1)
        self.assertEqual(run.status, 0, run.stderr)
        # Backwards through the database, two fewer than asked for; translated letters, the last two as they were.
        written = (self.work / "zelvan_extract.seq").read_text()
        self.assertEqual(written, ">C C title\nWGVWGVWGG\n>B B title\nM!DMCGC\n")

    def test_limits_and_missing_files(self):
        run = self.search(22, [("Q", "ATG")], [("A", "M"), ("B", "M")], "-max_nseq", 1)
        self.assertEqual(run.status, 255)
        self.assertIn("Too many sequences", run.stderr)
        run = self.zelvan("-s", self.work / "none.fasta", "-d", self.work / "none.fasta", "-mode", 22)
        self.assertEqual(run.status, 255)
        self.assertIn("none.fasta", run.stderr)
        for mode in (10, 12, 20, 22):
            run = self.zelvan(
                "-s", self.file("q.fasta", ">q\nATG\n"), "-d", self.work / "none.fasta", "-mode", mode, "-do_stats", 0
            )
            self.assertEqual((run.status, run.stdout), (255, ""))
            self.assertIn("none.fasta", run.stderr)

    def test_empty_database(self):
        for mode in (12, 20, 22):
            run = self.zelvan(
                "-s", self.file("q.fasta", ">q\nATGATG\n"), "-d", self.file("empty.fasta", ""), "-mode", mode, "-min_nstats", 0
            )
            self.assertEqual(self.listed(run), [])
            self.assertEqual(self.sections(run), [])
        self.assertEqual(self.search(10, [("q", "ATG")], []).stdout, "")


class GeneticCode(TranslatedSearch):
    """Codon tables, odd letters and the messages for them."""

    def code(self, change):
        lines = (zelvan_cli.CODONS / "codo.tst").read_text().splitlines()
        return self.file("code.tst", "\n".join(change(lines)) + "\n")

    def run_with(self, change, dna="TGGTGGTGG"):
        path = self.code(change)
        return self.search(10, [("Q", "WWW")], [("A", dna)], "-general_dir", self.work, "-codon_file", path.name)

    def test_other_codes(self):
        args = ("-codon_file", "vertebrate_mitochondrial.tst")
        self.assertEqual(self.search(10, [("Q", "WWW")], [("A", "TGATGATGA")], *args).stdout, "33 A\n")
        self.assertEqual(self.search(10, [("Q", "WWW")], [("A", "TGATGATGA")]).stdout, "0 A\n")

    def test_faulty_tables(self):
        for change in (lambda lines: lines[:-1], lambda lines: [*lines, "AAA K"], lambda lines: [*lines, ""]):
            run = self.run_with(change)
            self.assertEqual(run.status, 255)
            self.assertIn("Codon table does not have 64 codons", run.stderr)
            self.assertTrue(run.stderr.endswith(f"Check file: {self.work}/code.tst\n"), run.stderr)
        run = self.search(22, [("Q", "ATG")], [("A", "M")], "-codon_file", "none.tst")
        self.assertEqual(run.status, 255)
        self.assertIn("Cannot open file", run.stderr)
        self.assertTrue(run.stderr.endswith(f"File: {zelvan_cli.CODONS}/none.tst\n"), run.stderr)

    def test_a_scrambled_table_misses_codons(self):
        run = self.run_with(lambda lines: lines[::-1])
        self.assertEqual(run.status, 0)
        self.assertIn("Something weird happened when translating (swipd)", run.stderr)
        path = self.code(lambda lines: lines[::-1])
        run = self.search(22, [("Q", "TGGTGG")], [("A", "WW")], "-general_dir", self.work, "-codon_file", path.name)
        self.assertEqual((run.status, run.stdout), (0, ""))
        self.assertIn("Something weird happened when translating: ", run.stderr)

    def test_letters_that_are_no_bases(self):
        for mode, query, database in ((22, "MKLW", "MKLW"), (12, "MKLW", "MKLW"), (10, "MKLW", "ATGUUUATG")):
            run = self.search(mode, [("Q", query)], [("A", database)])
            self.assertEqual((run.status, run.stdout), (0, ""))
            letter = "U" if mode == 10 else "L"
            self.assertIn(f"Error - character unrecognised: {letter}\nUnrecognised ambiguity base code: ", run.stderr)
        # The last two letters of a strand that is read as it stands begin no codon: nothing asks what they are.
        self.assertEqual(self.search(10, [("Q", "WWW")], [("A", "TGGEE")]).status, 0)


class Examples(TranslatedSearch):
    """The DNA examples do what their description says."""

    def test_files_are_what_their_script_makes(self):
        (self.work / "data").symlink_to(zelvan_cli.SOURCE / "data")
        made = self.work / "examples"
        made.mkdir()
        for name in ("make_dna_examples.py", "engb.fasta", "uniprot_sample.fasta"):
            shutil.copy(zelvan_cli.EXAMPLES / name, made)
        subprocess.run([sys.executable, made / "make_dna_examples.py"], check=True)
        for name in ("engb_dna.fasta", "dna_sample.fasta"):
            self.assertEqual((made / name).read_bytes(), (zelvan_cli.EXAMPLES / name).read_bytes(), name)

    def test_the_query_with_a_planted_shift(self):
        run = self.zelvan(
            "-s", zelvan_cli.EXAMPLES / "engb_dna.fasta", "-d", zelvan_cli.EXAMPLES / "uniprot_sample.fasta", "-mode", 22,
            "-do_stats", 1, "-show_titles_width", 50,
        )  # fmt: skip
        lines = self.listed(run)
        self.assertGreater(len(lines), 10)
        self.assertEqual(len(self.sections(run)), len(lines))
        for line, (rank, body) in zip(lines, self.sections(run)):
            figures = re.search(r"# N: 1 Raw_Score: (\d+) .* Evalue: (\S+)\n", body)
            self.assertEqual((rank, figures[1]), (line[0], line[1]))
            self.assertEqual(f"{float(figures[2]):.2e}", f"{float(line[3]):.2e}")
        best = self.sections(run)[0][1]
        self.assertIn("Frame_Shifts: 1\n", best)
        self.assertIn("TKPG^RTQLLNFYKN", best)
        self.assertTrue(all("EngB" in body for _, body in self.sections(run)[:10]))

    def test_the_dna_database(self):
        def found(*more):
            run = self.zelvan(
                "-s", zelvan_cli.EXAMPLES / "engb.fasta", "-d", zelvan_cli.EXAMPLES / "dna_sample.fasta", "-mode", 12,
                "-do_stats", 1, "-min_nstats", 500, "-probcut", 1e-6, "-show_titles_width", 100, *more,
            )  # fmt: skip
            return [" ".join(line[4:]) for line in self.listed(run)]

        forward, backward = found(), found("-complement_query", 1)
        self.assertTrue(any("a base inserted" in line for line in forward))
        self.assertGreater(len(forward), 8)
        self.assertFalse(any("complemented" in line for line in forward))
        self.assertGreater(len(backward), 2)
        self.assertTrue(all("complemented" in line for line in backward))


if __name__ == "__main__":
    unittest.main()
