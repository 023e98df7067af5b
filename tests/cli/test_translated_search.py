"""The translated searches, modes 10, 12, 20 and 22, from the command line to the report."""

import random
import re
import unittest

import zelvan_cli

SETTINGS = (
    "QSEQ_FORMAT 1\nMATRIX_FILE BLOSUM62\nMAX_NSEQ 10000\nMAX_SEQ_LEN 50000\nMIN_NSTATS 1\nPROBCUT 1\n"
    "SHOW_TITLES 1\nSHOW_IDENT_WIDTH 12\nTIME 0\n"
)
SIGNAL = "MKWVTFISLLFLFSSAYSRG"


def codons():
    table = {}
    for line in (zelvan_cli.CODONS / "codo.tst").read_text().splitlines():
        codon, residue = line.split()
        table.setdefault(residue, []).append(codon)
    return table


CODONS = codons()


class TranslatedSearch(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(SETTINGS)
        self.random = random.Random(7)

    def protein(self, residues):
        return zelvan_cli.draw(self.random, residues)

    def proteins(self, count):
        return {f"P{k}": self.protein(int(self.random.lognormvariate(5.3, 0.6)) + 20) for k in range(count)}

    def gene(self, protein):
        return "".join(self.random.choice(CODONS[residue]) for residue in protein)

    def inputs(self, mode, query, database):
        """Arguments of a search for one sequence; the database is a record of identifiers and letters."""
        text = "".join(f">{name} {name} title\n{letters}\n" for name, letters in database.items())
        return ("-mode", mode, "-s", self.file("query.fa", f">Q Q title\n{query}\n"), "-d", self.file("db.fa", text))

    def search(self, mode, query, database, *more):
        return self.succeed(*self.inputs(mode, query, database), *more)

    def listed(self, *search):
        return zelvan_cli.score_lists(self.search(*search).stdout)[0]

    def sections(self, run):
        return re.findall(r"\n# Start_Alignments_Rank: (\d+)\n(.*?)# End_Alignments_Rank: \1\n", run.stdout, re.S)


class Ranking(TranslatedSearch):
    """Statistics: planted genes come first, chance gives what it is expected to give."""

    def test_planted_genes_come_first_and_chance_is_told_by_the_e_value(self):
        protein = self.protein(120)
        relatives = {f"G{k}": "".join(r if self.random.random() < share else self.protein(1) for r in protein)
                     for k, share in enumerate((0.9, 0.6))}  # fmt: skip

        def shifted_gene(residues):
            gene = self.gene(residues)
            flanks = ["".join(self.random.choices("ACGT", k=60)) for _ in range(2)]
            return flanks[0] + gene[:150] + "G" + gene[150:] + flanks[1]

        for mode in (12, 20, 22):
            below_one = below_ten = 0
            for _ in range(3):
                query, database = protein, self.proteins(700)
                if mode == 12:
                    database = {name: self.gene(p) for name, p in database.items()}
                    database |= {name: shifted_gene(p) for name, p in relatives.items()}
                else:
                    query, database = shifted_gene(protein), database | relatives
                lines = self.listed(mode, query, database, "-probcut", 10, "-aprint_to_threshold", 0)
                self.assertEqual([line[4] for line in lines[:2]], ["G0", "G1"], mode)
                self.assertLess(float(lines[1][3]), 1e-4)
                below_one += sum(float(line[3]) < 1 for line in lines[2:])
                below_ten += len(lines) - 2
            with self.subTest(mode=mode):
                self.assertLessEqual(below_one, 9)  # about 1 in each of the 3 searches
                self.assertTrue(12 < below_ten < 54, below_ten)  # about 10

    def test_probabilities_instead_of_expectations(self):
        database = self.proteins(600)
        search = (22, self.gene(database["P3"]), database, "-probcut", 1e6)
        expected = self.search(*search, "-dump_stats", 1)
        found = self.search(*search, "-fit_type", 1)
        self.assertIn("# Sequences: 600,", (self.work / "zelvan_dump_stats.log").read_text())
        for run, name in ((expected, "Evalue"), (found, "Pvalue")):
            self.assertEqual((len(self.sections(run)), run.stdout.count(f"{name}: ")), (600, 600))
        lists = (zelvan_cli.score_lists(run.stdout)[0] for run in (expected, found))
        for expectation, probability in zip(*lists, strict=True):
            self.assertEqual(expectation[4], probability[4])
            chance = float(probability[3])
            self.assertAlmostEqual(float(expectation[3]) / 600, chance, delta=0.01 * chance)


class PlainList(TranslatedSearch):
    """Without statistics: the database backwards, whatever the scores."""

    def setUp(self):
        super().setUp()
        database = {"A": SIGNAL, "B": "MSWVTFISLLFLFSGAYSRG", "C": "GGGGG", "D": SIGNAL + "VF"}
        self.input = (22, self.gene(database["D"]), database)

    def test_settings_of_the_list(self):
        for settings, expected in (
            ((), "DCBA"),
            (("-min_score", 50), "DBA"),
            (("-max_nout", 1), "DCBA"),  # NPRINT_TO_THRESHOLD 1 overrides it
            (("-nprint_to_threshold", 0, "-max_nout", 2), "DC"),
            (("-do_stats", 2), "DCBA"),
            (("-do_stats", 1, "-min_nstats", 5), "DCBA"),
        ):
            with self.subTest(settings):
                run = self.search(*self.input, "-do_stats", 0, *settings)
                (lines,) = zelvan_cli.score_lists(run.stdout)
                self.assertEqual("".join(line[2] for line in lines), expected)
                self.assertNotIn("# FIT", run.stdout)
                note = "Note:  for a list ranked by significance in this mode you must set do_stats = 1\n"
                self.assertEqual(run.stderr, note if settings == ("-do_stats", 2) else "")

    def test_alignments_are_of_the_best_scores(self):
        run = self.search(*self.input, "-do_stats", 0, "-max_aout", 2)
        self.assertEqual([re.search(r"Target: (\S+)", body)[1] for _, body in self.sections(run)], ["D", "A"])

    def test_two_unlimited_settings_are_refused(self):
        for mode in (12, 20, 22):
            self.refuse("Error:  Both min_score and max_nout are set to -1\n",
                        *self.inputs(mode, *self.input[1:]), "-max_nout", -1, "-min_score", -1)  # fmt: skip


class Alignments(TranslatedSearch):
    """What is special in an alignment; an ordinary one stands in the manual."""

    GENE = "CCATGAARTGGGTNACCTTCCATCTCTCTTCTGTGGTGTCATC"  # M K W V T F, one base too many, I S L L W C H

    def test_what_is_special(self):
        turned = "GATGACACCACAGAAGAGAGATGGAAGGTAACCCATTTCATGG"
        odd = "ATGAAATGGGTTACCTTCTTCATCTCTCTTCTGTGGTGTCATTGGTGG"
        for query, protein, settings, shown in (
            # Nucleotides are numbered as in the file, downwards on the other strand.
            (turned, "MKWVTFISLLWCH", ("-complement_query", 1, "-output_length", 8),
             "# Residues: 1-13 Nucleotides: 41-2 Identical: 13 Frame_Shifts: 1\n"
             "      1 MKWVTF I       7\n        ******^*\n     41 MKWVTF^I      20\n        AATGATCA\n"),
            # Two bases too many are one shift.
            (self.GENE.replace("TTCCATC", "TTCTTATC"), "MKWVTFISLLWCH", (), " Frame_Shifts: 1\n"),
            # A residue without a codon (D) and a codon without a residue (the first L); W and F only score above 0.
            (odd, "MKWVTWDFISLWCHWW", ("-mode", 20, "-use_gapdefs", 0, "-ld_pen", 3, "-fs_pen", 15),
             "      1 MKWVTWDFIS LWCHWW      16\n        *****. *** ******\n"
             "      1 MKWVTF FISLLWCHWW      48\n"),
        ):  # fmt: skip
            run = self.search(22, query, {"P": protein}, "-do_stats", 0, *settings)
            ((_, body),) = self.sections(run)
            self.assertIn(f" Raw_Score: {zelvan_cli.score_lists(run.stdout)[0][0][1]} ", body)
            self.assertIn(shown, body)

    def test_what_is_left_out(self):
        proteins = {"three": "MKWV", "two": "MKWVTF", "one": "MKWVTFISLLWCH"}
        for settings, found, shown in (((), 3, 3), (("-min_len", 6), 3, 2), (("-min_score", 36), 2, 2)):
            run = self.search(22, self.GENE, proteins, "-do_stats", 0, *settings)
            counts = (run.stdout.count(mark) for mark in ("Number_of_Alignments: 1", "# End_N: 1"))
            self.assertEqual((*counts,), (found, shown), settings)
        nothing_alike = (*self.inputs(22, "TGGTGG", {"A": "CCC"}), "-do_stats", 0)
        self.assertIn("Number_of_Alignments: 0\n", self.succeed(*nothing_alike).stdout)


class SimpleScan(TranslatedSearch):
    """Mode 10: a line a sequence, penalties as configured, and nothing else."""

    def test_lines_and_the_divisor_of_100(self):
        database = {"short": "AC", "one": "TGG", "three": "TGGTGGTGG", "N": "TGNTGGTGG"}
        run = self.search(10, "WWW\n>a second query\nM", database, "-max_nseq", 1)  # no bound on the number
        self.assertEqual(run[1:], ("0 short\n11 one\n33 three\n22 N\n", ""))
        self.assertEqual(self.search(10, "WWW", database, "-precision", 10).stdout, "0 short\n1 one\n3 three\n2 N\n")
        self.assertEqual(self.search(10, "G", {"A": "TGG"}).stdout, "0 A\n")  # the last two bases are no residues

    def test_takes_penalties_from_the_configuration_only(self):
        gene = self.gene(SIGNAL)
        shifted = {"A": gene[:30] + "C" + gene[30:]}
        whole = int(self.search(10, SIGNAL, {"A": gene}).stdout.split()[0])
        for mode, settings, penalty in ((10, ("-fs_pen", 8), 8), (10, ("-fs_pen", 3), 3), (12, ("-fs_pen", 3), 8),
                                        (12, ("-fs_pen", 3, "-use_gapdefs", 0), 3)):  # fmt: skip
            run = self.search(mode, SIGNAL, shifted, "-do_stats", 0, "-show_titles", 0, *settings)
            self.assertIn(f"\n{whole - penalty} A", "\n" + run.stdout)

    def test_many_batches(self):
        database = {f"S{k}": "TGG" * (1 + k % 3) + "AAA" * 3000 for k in range(1100)}
        run = self.search(10, "WWW", database)
        self.assertEqual(run.stdout, "".join(f"{11 * (1 + k % 3)} {name}\n" for k, name in enumerate(database)))


class Inputs(TranslatedSearch):
    """Databases, strands, codon tables and letters of all kinds."""

    def test_databases(self):
        binary = ("-db_dir", self.work, "-bdb_root", "db")
        search = self.inputs(12, "WWW", {"A": "TGGTGG", "B": "ATGATGC", "C": "TGGTGGTGG"})
        self.succeed(*search, "-mode", 99, "-apply_index", 1, *binary)
        self.refuse("For DNA, the binary database must not be built with APPLY_INDEX\nSorry...\n", *search, *binary)
        self.succeed(*search, "-do_stats", 0, "-extract_seq", 4, "-extract_seq_format", 1)
        # Backwards through the database, two fewer than asked for; translated letters, the last two as they were.
        self.assertEqual((self.work / "zelvan_extract.seq").read_text(), ">C C title\nWGVWGVWGG\n>B B title\nM!DMCGC\n")
        for mode in (10, 12, 20, 22):
            missing = ("-mode", mode, "-d", "none.fasta", "-s", self.file("q", ">q\nATG\n"))
            self.refuse(r".*none\.fasta\n", *search, *missing)
            run = self.search(mode, "ATGATG", {}, "-min_nstats", 0)
            self.assertEqual(zelvan_cli.score_lists(run.stdout), [] if mode == 10 else [[]])
            self.assertEqual(self.sections(run), [])

    def test_either_strand_is_searched(self):
        protein = self.protein(60)
        dna = self.gene(protein)
        back = dna.translate(str.maketrans("ACGT", "TGCA"))[::-1]
        for mode in (12, 20, 22):
            scores = []
            for letters, turn in ((dna, 0), (back, 1), (back, 0), (dna, 1)):
                query, target = (protein, letters) if mode == 12 else (letters, protein)
                settings = ("-do_stats", 0, "-complement_query", turn)
                scores.append(int(self.listed(mode, query, {"A": target}, *settings)[0][1]))
            self.assertEqual(scores[0::2], scores[1::2])
            self.assertTrue(scores[0] > 200 and scores[2] < 100, (mode, scores))
        plain = (10, protein, {"A": dna, "B": back})
        self.assertEqual(self.search(*plain).stdout, self.search(*plain, "-complement_query", 1).stdout)

    def test_codon_tables(self):
        lines = (zelvan_cli.CODONS / "codo.tst").read_text().splitlines()
        own_table = ("-general_dir", self.work, "-codon_file", "code.tst")
        mitochondrial = ("-codon_file", "vertebrate_mitochondrial.tst")
        self.assertEqual(self.search(10, "WWW", {"A": "TGATGATGA"}, *mitochondrial).stdout, "33 A\n")
        self.refuse(f"Cannot open file: .*File: {zelvan_cli.CODONS}/none.tst\n",
                    *self.inputs(22, "ATG", {"A": "M"}), "-codon_file", "none.tst")  # fmt: skip
        self.file("code.tst", "\n".join(lines[::-1]))  # its order makes codons hard to find
        for mode, name in ((10, r" \(swipd\)"), (12, "")):
            self.refuse(f"Something weird happened when translating{name}: .*",
                        *self.inputs(mode, "WWW", {"A": "TGGTGG"}), *own_table, status=0)  # fmt: skip

    def test_sequences_of_the_other_kind_are_told(self):
        """Once each, before the search, with the modes to use; the rest of the run stays as it was."""
        protein, dna = self.protein(200), self.gene(self.protein(100))
        reads = r"Warning: (\w+) \S+ looks like (\w+), but mode (\d+) reads (?!\2)\w+ there: search .*? in modes (\d+)"
        self.configure(SETTINGS.replace("PROBCUT", "DO_STATS 2\nPROBCUT"))
        for query, target, mode, told in (
            (dna, protein, 202, [("query", "DNA", "202", "20")]),
            (dna, protein, 200, [("query", "DNA", "200", "20")]),
            (dna, protein, 22, []),
            (protein, dna, 202, [("database", "DNA", "202", "10")]),
            (protein, dna, 12, []),
            (protein, protein, 202, []),
            (protein, protein, 20, [("query", "protein", "20", "200")]),
            (protein, protein, 12, [("database", "protein", "12", "200")]),
            (protein, protein, 10, [("database", "protein", "10", "200")]),
            (dna, dna, 22, [("database", "DNA", "22", "10")]),
        ):
            with self.subTest(mode=mode, told=told):
                run = self.zelvan(*self.inputs(mode, query, {"A": target, "B": target}))
                self.assertEqual(re.findall(reads, run.stderr), told)
                self.assertEqual(run.stderr.count("Warning"), len(told))
                self.assertEqual(run.status, 255 if mode in (200, 202) else 0)

    def test_letters_that_are_no_bases(self):
        warned = "Warning: .* looks like protein, but .*\n"
        for mode, letters, named, before in (
            (22, "MKLW", "L", warned), (12, "MKLW", "L", warned), (10, "ATGUUUATG", "U", "")):  # fmt: skip
            self.refuse(f"{before}Error - character unrecognised: {named}\nUnrecognised ambiguity base code: .*",
                        *self.inputs(mode, "MKLW", {"A": letters}), status=0)  # fmt: skip

    def test_mode_10_writes_what_it_read_before_a_fault(self):
        long = ">C\n" + "TGG" * 8
        for record, settings, status, sentence in (
            (">C\nTGGTGGEE", (), 0, "Error - character unrecognised: E\n"),
            (">\nTGG", (), 0, "Something strange with sequence identifier in fasta file: "),
            (long, ("-max_seq_len", 20), 255, r"Sequence too long: C \(> 17 residues\): "),
            (long, ("-ugd", 0, "-ld_pen", -1_000_000), 255, "Scores of this query .* could reach "),
        ):
            database = self.file("faulty.fa", f">B\nTGG\n{record}\n>D\nTGG\n")
            run = self.zelvan(*self.inputs(10, "WWW", {}), "-d", database, *settings)
            self.assertEqual((run.status, run.stdout), (status, "11 B\n"))
            self.assertRegex(run.stderr, f"^{sentence}")


if __name__ == "__main__":
    unittest.main()
