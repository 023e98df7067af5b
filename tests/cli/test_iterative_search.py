"""Searches with a planted family whose members are known: profiles, convergence, modes, side files."""

import random
import re
import unittest

import zelvan_cli
from zelvan_cli import draw

N_BACKGROUND = 1200


def mutate(rng, sequence, identity, gap=None):
    """A relative: residues replaced at random, `gap` = (first, length) left out."""
    text = "".join(c if rng.random() < identity else draw(rng, 1) for c in sequence)
    return text if gap is None else text[: gap[0]] + text[gap[0] + gap[1] :]


def planted_database(rng):
    """(query, FASTA text): an unrelated background and a family in rings around the query, the outer ones out of
    the query's own reach; every member between flanks of its own."""
    ancestor = draw(rng, 150)
    records = [(f"bg{k:04d}", draw(rng, int(rng.lognormvariate(5.3, 0.5)) + 20)) for k in range(N_BACKGROUND)]
    for ring, identity, members in (("near", 0.6, 12), ("mid", 0.36, 16), ("far", 0.31, 16)):
        for k in range(members):
            body = mutate(rng, ancestor, identity, gap=(70, 5) if k % 2 else None)
            records.append((f"{ring}{k:02d}", draw(rng, 30) + body + draw(rng, 30)))
    rng.shuffle(records)
    text = "".join(f">{name} member {name}\n{residues}\n" for name, residues in records)
    return mutate(rng, ancestor, 0.7), text


def iterations(report):
    """One list of (identifier, E value) per score list."""
    return [[(line[4], float(line[3])) for line in lines] for lines in zelvan_cli.score_lists(report)]


def significant(hits):
    return {name for name, e in hits if e <= 1e-3}


class IterativeSearch(zelvan_cli.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.query_text, cls.database_text = planted_database(random.Random(4))

    def setUp(self):
        super().setUp()
        self.configure(
            "DO_STATS 2\nQSEQ_FORMAT 1\nMATRIX_FILE BLOSUM62\nMAX_NSEQ 100000\nPROBCUT 10\nPROBCUT2 0.001\n"
            "SHOW_TITLES 1\nPRINT_PROFILES 0\nPRINT_FRQ_TABS 0\nPRINT_BLOCK_FILE 0\nPRINT_FRAG_FILE 0\n"
            "PROFILE_WEIGHT_METHOD 2\nMODE 202\nLPFIT_MINBUCK 60\nLPFIT_MINRANGE 3\n"
        )
        self.query = self.file("query.fa", f">query the query\n{self.query_text}\n")
        self.search = ("-s", self.query, "-d", self.file("db.fa", self.database_text))

    def lists(self, *args):
        return iterations(self.succeed(*self.search, "-APRINT_TO_THRESHOLD", 0, "-MAX_AOUT", 0, *args).stdout)

    def test_profiles_reach_further_and_take_in_no_stranger(self):
        for mode in (200, 202, 210, 212):
            # Method 0 makes gaps free in the modes with variable penalties: nothing to expect there.
            for method in (0, 1, 2) if mode in (200, 202) else (1, 2):
                with self.subTest(mode=mode, method=method):
                    lists = self.lists("-MODE", mode, "-NITER", 4, "-PROFILE_WEIGHT_METHOD", method)
                    first, *_, last = [significant(hits) for hits in lists]
                    self.assertFalse({h for h in last if h.startswith("bg")})
                    self.assertGreaterEqual(len([h for h in first if h.startswith("near")]), 11)
                    self.assertLess(len(first), 40)
                    self.assertGreater(len(last), len(first))

    def test_another_method_repeats_the_same_scan(self):
        run = self.succeed(*self.search, "-NITER", 5, "-PROFILE_WEIGHT_METHOD", 3)
        first, second = iterations(run.stdout)
        self.assertEqual(first, second)
        self.assertIn("#\n# Have converged - skipping any remaining iterations.\n#\n", run.stdout)
        self.assertIn("# Reported in this iteration (1) but not in the previous iteration (0)\n#\n", run.stdout)

    def test_the_kind_of_significance_is_named(self):
        for kind, name in ((0, "Pval"), (1, "Eval")):
            run = self.succeed(*self.search, "-NITER", 1, "-PROB_TYPE", kind)
            self.assertRegex(run.stdout, rf"\n# {name} Cutoff: .*\n(?:# FIT.*\n)+# {name} Cutoff for profile: ")
            self.assertIn(f" {name}ue: ", run.stdout)

    def test_iteration_limit(self):
        extracted = self.work / "zelvan_extract.seq"
        extract = ("-EXTRACT_SEQ", 5, "-EXTRACT_SEQ_FORMAT", 0)
        none = self.succeed(*self.search, "-NITER", 0, *extract)
        self.assertNotIn("# Start_Scores", none.stdout)
        self.assertEqual(extracted.read_text(), "")
        one = self.succeed(*self.search, "-NITER", 1, *extract)
        (hits,) = iterations(one.stdout)
        self.assertNotRegex(one.stdout, "Have converged|# Reported in")
        records = extracted.read_text().split("*\n")
        self.assertEqual([record.partition("\n")[0] for record in records], [*(f">{name}" for name, _ in hits[:3]), ""])

    def test_mixed_mode_goes_on_with_simple_gaps(self):
        run = self.succeed(*self.search, "-MIXED_MODE", 1, "-MM_LD_PEN", 7.5, "-NITER", 2)
        self.assertEqual(re.findall(r"# LD penalty: +(\S+)", run.stdout)[1], "7.50")
        self.assertEqual(len(re.findall(r"# LI penalty", run.stdout)), 1)
        simple = ("-MODE", 200, "-NITER", 2)
        self.assertEqual(self.lists(*simple), self.lists(*simple, "-MIXED_MODE", 1))

    def test_a_list_that_is_cut_leaves_the_search_as_it_was(self):
        whole = self.lists("-NITER", 2)
        for most, shown in ((-1, None), (0, 0), (1, 1), (2**31 - 1, None), (-(2**31), 0)):
            cut = self.lists("-NITER", 2, "-NPRINT_TO_THRESHOLD", 0, "-MAX_NOUT", most)
            self.assertEqual(cut, [hits[:shown] for hits in whole], most)

    def test_alignments_that_are_printed_leave_the_profile_as_it_was(self):
        """Also where they are kept by another threshold."""

        def profiles(*args):
            report = self.succeed(*self.search, "-NITER", 2, "-PRINT_PROFILES", 1, *args).stdout
            return re.findall(r"# Lookup table [^#]*", report)

        expected = profiles("-APRINT_TO_THRESHOLD", 0, "-MAX_AOUT", 0)
        self.assertEqual(len(set(expected)), 2)
        for args in ((), ("-LOG_SCORES", 1), ("-APRINT_TO_THRESHOLD", 0, "-MAX_AOUT", 3)):
            self.assertEqual(profiles(*args), expected, args)

    def test_side_files_need_the_block_file_to_be_asked_for(self):
        files = ("-BLOCK_FILE_OUT", "b.blc", "-FRAG_FILE_OUT", "f.seq")
        self.succeed(*self.search, "-NITER", 1, "-PRINT_FRAG_FILE", 1, *files)
        self.assertFalse((self.work / "b.blc").exists() or (self.work / "f.seq").exists())

    def test_empty_sequences_disturb_nothing(self):
        expected = self.lists("-NITER", 3)
        records = self.database_text.split(">")[1:]
        text = "".join(f">{r}" if k % 100 else f">none{k} empty\n>{r}" for k, r in enumerate(records))
        found = self.lists("-NITER", 3, "-d", self.file("odd.fa", text + ">last empty\n"))
        self.assertEqual([significant(h) for h in found], [significant(h) for h in expected])
        first = dict(found[0])
        for name, e in expected[0]:  # all scores enter the mean that bounds the fit: a last digit may move
            self.assertLess(abs(first[name] / e - 1), 0.01, name)

    def test_trouble(self):
        warned = self.succeed(*self.search, "-NITER", 1, "-DO_STATS", 1)
        self.assertEqual(warned.stderr, "Error:  for iterative searching you must set do_stats = 2\n")
        self.assertEqual(len(iterations(warned.stdout)), 1)
        refused = self.zelvan(*self.search, "-NITER", 2, "-PIDTHRESH", 0.01)
        self.assertEqual((refused.status, refused.stderr), (1, "Error in pidfilter: *nactive = 0\n"))

    def test_progress_is_told_in_order(self):
        run = self.succeed(*self.search, "-NITER", 1, "-VERBOSE", 1, "-TIME", 6)
        steps = ("Getting matrix", "Getting query", "Building lookup table (pen = 100, pen1 = 1000)",
                 "Loading database", f"Scanning database of {N_BACKGROUND + 44} sequences", "About to call do_lpfit",
                 "totn: 44", "About to call build_profile: Iteration 0", "Write results CPU")  # fmt: skip
        self.assertRegex(run.stderr, "(?s)" + ".*\n".join(map(re.escape, steps)))
        self.assertIn("# FULL parameter dump\nMODE : 202\nSUCCESS : 1\nVERBOSE : 1\nTIME : 6\n", run.stdout)

    def test_the_course_of_the_fit_is_told_on_request(self):
        run = self.succeed(*self.search, "-NITER", 1, "-LPFIT_PRINT", 1)
        told = (self.work / "PROCESSING").read_text()
        ranges = int(re.search(r"\nfinalj = (\d+)\n", told)[1])
        fitted = re.search(r"ParameterA - (\S+) \+ (\S+) \* \(exp\(-\(lpl\)/(\S+)\)\) .*\n"
                           r"ParameterB - 0.000000 \+ (\S+) \* \(lpl\)\n\Z", told).groups()  # fmt: skip
        printed = re.search(r"# FIT_A: (\S+) (\S+) (\S+)\n# FIT_B: 0 (\S+) \n", run.stdout).groups()
        for parameter, expected in zip(fitted, printed, strict=True):
            self.assertAlmostEqual(float(parameter), float(expected), places=3)
        bins = (self.work / "STAT_DATA").read_text().splitlines()
        self.assertEqual(len({line.split()[-1] for line in bins} - {"0"}), ranges)
        for name in ("FREQTAB_HISTS", "FREQTAB_OUT"):
            self.assertEqual((self.work / name).read_text().count("\n\n\n"), ranges)


if __name__ == "__main__":
    unittest.main()
