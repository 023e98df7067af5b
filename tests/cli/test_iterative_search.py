"""Searches with a planted family whose members are known: profiles, convergence, modes, side files."""

import random
import re
import unittest

import zelvan_cli

RESIDUES = "ACDEFGHIKLMNPQRSTVWY"
FREQUENCIES = (83, 14, 55, 67, 39, 71, 23, 59, 58, 97, 24, 41, 47, 39, 55, 66, 53, 69, 11, 29)
LOOSE_FIT = ("-LPFIT_MINBUCK", 60, "-LPFIT_MINRANGE", 3)
N_BACKGROUND = 1200


def draw(rng, length):
    return "".join(rng.choices(RESIDUES, FREQUENCIES, k=length))


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
    lists = re.findall(r"# Start_Scores: -+\n(.*?)# End_Scores", report, re.S)
    return [[(line.split()[4], float(line.split()[3])) for line in part.splitlines()] for part in lists]


def significant(hits, cutoff=1e-3):
    return {name for name, e in hits if e <= cutoff}


class IterativeSearch(zelvan_cli.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.query_text, cls.database_text = planted_database(random.Random(4))

    def setUp(self):
        super().setUp()
        self.configure(
            "DO_STATS 2\nQSEQ_FORMAT 1\nMATRIX_FILE BLOSUM62\nMAX_NSEQ 100000\nPROBCUT 10\nPROBCUT2 0.001\n"
            "SHOW_TITLES 1\nPRINT_PROFILES 0\nPRINT_FRQ_TABS 0\nPRINT_BLOCK_FILE 0\nPRINT_FRAG_FILE 0\n"
            "PROFILE_WEIGHT_METHOD 2\n"
        )
        self.query = self.file("query.fa", f">query the query\n{self.query_text}\n")
        self.database = self.file("db.fa", self.database_text)

    def search(self, *args):
        run = self.zelvan("-s", self.query, "-d", self.database, *LOOSE_FIT, "-MAX_AOUT", 0,
                          "-APRINT_TO_THRESHOLD", 0, *args)
        self.assertEqual(run.status, 0, run.stderr)
        return run

    def test_profiles_reach_further_and_take_in_no_stranger(self):
        for mode in (200, 202, 210, 212):
            # Method 0 makes gaps free in the modes with variable penalties: nothing to expect there.
            for method in (0, 1, 2) if mode in (200, 202) else (1, 2):
                with self.subTest(mode=mode, method=method):
                    run = self.search("-MODE", mode, "-NITER", 4, "-PROFILE_WEIGHT_METHOD", method)
                    hits = [significant(h) for h in iterations(run.stdout)]
                    self.assertGreaterEqual(len(hits), 2)
                    self.assertFalse({h for h in hits[-1] if h.startswith("bg")})
                    self.assertGreaterEqual(len([h for h in hits[0] if h.startswith("near")]), 11)
                    self.assertLess(len(hits[0]), 40)
                    self.assertGreater(len(hits[-1]), len(hits[0]))

    def test_another_method_repeats_the_same_scan(self):
        run = self.search("-MODE", 202, "-NITER", 5, "-PROFILE_WEIGHT_METHOD", 3)
        lists = iterations(run.stdout)
        self.assertEqual(len(lists), 2)
        self.assertEqual(lists[0], lists[1])
        self.assertIn("#\n# Have converged - skipping any remaining iterations.\n#\n", run.stdout)
        self.assertIn("# Reported in this iteration (1) but not in the previous iteration (0)\n#\n", run.stdout)

    def test_iteration_limit(self):
        none = self.search("-MODE", 202, "-NITER", 0, "-EXTRACT_SEQ", 5)
        self.assertNotIn("# Start_Scores", none.stdout)
        self.assertIn("# Scan database:                   ", none.stdout)
        self.assertEqual((self.work / "zelvan_extract.seq").read_text(), "")
        one = self.search("-MODE", 202, "-NITER", 1, "-EXTRACT_SEQ", 5, "-EXTRACT_SEQ_FORMAT", 1)
        self.assertEqual(len(iterations(one.stdout)), 1)
        self.assertNotIn("Have converged", one.stdout)
        self.assertNotIn("# Reported in", one.stdout)
        extracted = re.findall(r"^>(\S+)", (self.work / "zelvan_extract.seq").read_text(), re.M)
        self.assertEqual(extracted, [name for name, _ in iterations(one.stdout)[0][:3]])

    def test_mixed_mode_goes_on_with_simple_gaps(self):
        run = self.search("-MODE", 202, "-MIXED_MODE", 1, "-MM_LD_PEN", 7.5, "-NITER", 2)
        self.assertEqual(re.findall(r"# ZELVAN MODE:    (\d+)", run.stdout), ["202", "200"])
        self.assertEqual(re.findall(r"# LD penalty: +(\S+)", run.stdout)[1], "7.50")
        self.assertEqual(len(re.findall(r"# LI penalty", run.stdout)), 1)
        plain = self.search("-MODE", 200, "-MIXED_MODE", 1, "-NITER", 2)
        unmixed = self.search("-MODE", 200, "-NITER", 2)
        self.assertEqual(iterations(plain.stdout), iterations(unmixed.stdout))

    def test_side_files(self):
        files = ("-PRINT_BLOCK_FILE", 1, "-BLOCK_FILE_OUT", "b.blc", "-FRAG_FILE_OUT", "f.seq")
        run = self.search("-MODE", 202, "-NITER", 2, *files, "-PRINT_FRAG_FILE", 1)
        rows = run.stdout.split("# Multiple alignment Start for iteration: 0")[1].split("\n#\n")[1]
        names = re.findall(r"^(\w+) ", rows, re.M)
        block = (self.work / "b.blc").read_text()
        self.assertEqual(re.findall(r"^>(\w+)", block.split("*Iteration: 0")[0], re.M), names)
        self.assertEqual(block.count("*Iteration:"), 2)
        columns = block.split("*Iteration: 0\n")[1].split("*\n")[0].splitlines()
        self.assertEqual("".join(c[0] for c in columns), self.query_text)
        self.assertEqual({len(c) for c in columns}, {len(names)})
        fragments = (self.work / "f.seq").read_text()
        self.assertIn(f">query(1-{len(self.query_text)}:{len(self.query_text)}) the query\n", fragments)
        self.assertGreaterEqual(fragments.count(">"), 2 * 10)

        for name in ("b.blc", "f.seq"):
            (self.work / name).unlink()
        self.search("-MODE", 202, "-NITER", 1, *files[:1], 0, *files[2:], "-PRINT_FRAG_FILE", 1)
        self.assertFalse((self.work / "b.blc").exists() or (self.work / "f.seq").exists())

    def test_a_full_disk_is_noticed(self):
        for key in ("-BLOCK_FILE_OUT", "-FRAG_FILE_OUT"):
            run = self.zelvan("-s", self.query, "-d", self.database, *LOOSE_FIT, "-MODE", 202, "-NITER", 1,
                              "-PRINT_BLOCK_FILE", 1, "-PRINT_FRAG_FILE", 1, key, "/dev/full")
            self.assertEqual(run.status, 1, key)
            self.assertIn("Error writing File", run.stderr)
            self.assertIn("/dev/full", run.stderr)

    def test_binary_databases_give_the_same_lists(self):
        def lists(run):  # a binary database has an order of its own, which shows among equal hits
            return [sorted(part) for part in iterations(run.stdout)]

        expected = lists(self.search("-MODE", 202, "-NITER", 3))
        for flag in (0, 1):
            made = self.zelvan("-MODE", 99, "-d", self.database, "-DB_DIR", self.work, "-BDB_ROOT", f"db{flag}",
                               "-APPLY_INDEX", flag)
            self.assertEqual(made.status, 0, made.stderr)
            for time in (0, 6):
                run = self.search("-MODE", 202, "-NITER", 3, "-DB_DIR", self.work, "-BDB_ROOT", f"db{flag}",
                                  "-TIME", time)
                self.assertEqual(lists(run), expected)
                self.assertEqual("Load database" in run.stderr, time > 5)

    def test_empty_sequences_disturb_nothing(self):
        expected = iterations(self.search("-MODE", 202, "-NITER", 3).stdout)
        records = self.database_text.split(">")[1:]
        text = "".join(f">{r}" if k % 100 else f">none{k} empty\n>{r}" for k, r in enumerate(records))
        self.database = self.file("odd.fa", text + ">last empty\n")
        found = iterations(self.search("-MODE", 202, "-NITER", 3).stdout)
        self.assertEqual([significant(h) for h in found], [significant(h) for h in expected])
        first = dict(found[0])
        for name, e in expected[0]:  # all scores enter the mean that bounds the fit: a last digit may move
            self.assertLess(abs(first[name] / e - 1), 0.01, name)

    def test_trouble(self):
        empty = self.zelvan("-s", self.query, "-d", self.file("empty.fa", ""), "-MODE", 202)
        self.assertEqual(empty.status, 255)
        self.assertRegex(empty.stderr, r"Failure in fitting routines - exiting with Error: \d+\n")
        warned = self.search("-MODE", 202, "-NITER", 1, "-DO_STATS", 1)
        self.assertIn("Error:  for iterative searching you must set do_stats = 2\n", warned.stderr)
        self.assertEqual(len(iterations(warned.stdout)), 1)
        refused = self.zelvan("-s", self.query, "-d", self.database, *LOOSE_FIT, "-MODE", 202, "-NITER", 2,
                              "-PIDTHRESH", 0.01)
        self.assertEqual(refused.status, 1)
        self.assertIn("Error in pidfilter: *nactive = 0\n", refused.stderr)

    def test_progress_is_told_in_order(self):
        run = self.search("-MODE", 202, "-NITER", 1, "-VERBOSE", 1, "-TIME", 6)
        expected = [
            "Getting matrix\n", "Getting query\n", f"Query:\nquery\nthe query\n{self.query_text}\n",
            "Building lookup table (pen = ", "Read matrix, query and build lookup table CPU(",
            "Opening database\n", "Loading database\n", "Load database CPU(", "Converting database sequences\n",
            "Convert database CPU(", "# Frequency Table for database\n", "Scanning database of 1244 sequences\nCPU(",
            "Scan databaseCPU(", "About to call setup_lpfit\n", "About to call do_lpfit\n",
            "About to call apply_lpfit\n", "About to call print_score_list3\n", "totn: ",
            "About to call iter_hist\n", "About to print_changes\n", "PROBCUT: 10.000000 MAX_AOUT: 0\n",
            "About to call print_alignments_pp\ntotn: ", "p->MAX_AOUT: 0\n",
            "About to call initialise_aldat: Iteration 0\n", "About to call build_profile: Iteration 0\n",
            "About to call calc_profile\n", "About to call dmlook\n", "About to call FreeDLookup\n",
            "About to return from calc_profile2\n", "About to call print_multiple_alignment Iteration 0\n",
            "About to call print_frag_file Iteration 0\n", "About to call destroy_aldat: Iteration 0\n",
            "Done with  build_profile: Iteration 0\n", "Write results CPU(",
        ]
        at = 0
        for text in expected:
            found = run.stderr.find(text, at)
            self.assertGreaterEqual(found, 0, f"{text!r} after {run.stderr[max(0, at - 200):at]!r}")
            at = found + len(text)

    def test_ranking_trace(self):
        run = self.search("-MODE", 202, "-NITER", 1, "-VERBOSE", 1002)
        ranks = re.findall(r"^After cpv: (\S+) (\d+) \d+ -?\d+ \S+ \S+$", run.stdout, re.M)
        self.assertEqual([int(k) for _, k in ranks], list(range(N_BACKGROUND + 44)))
        listed = [name for name, _ in iterations(run.stdout)[0]]
        self.assertEqual([name for name, _ in ranks[: len(listed)]], listed)


if __name__ == "__main__":
    unittest.main()
