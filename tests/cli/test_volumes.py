"""Databases of several volumes: the same reports as from one database, and nothing but a sentence from volumes that do
not belong together. A test-only program sets the limit that cuts a database in volumes."""

import os
import random
import re
import resource
import shutil
import signal
import time
import unittest

import zelvan_cli
from zelvan_cli import EXAMPLES, QUERY, SAMPLE, SANITIZED, draw, first_records

FORCED = os.environ["ZELVAN_FORCED"]
TIMES = re.compile(r"^# (ZELVAN Scan|Scan Completed|Created on|Load|Scan data|Output|Generate|Millions).*\n", re.M)


class VolumesTest(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)

    def build(self, root, source, characters=None, *args):
        env = {"ZELVAN_TEST_CHARACTERS": characters and str(characters)}
        return self.succeed(*args, "-mode", 99, "-bdb", root, "-d", source, program=FORCED, env=env)

    def volumes(self, root):
        return sorted(path.name for path in self.work.glob(f"{root}.[0-9][0-9].bsq"))


class ReportTest(VolumesTest):
    def outcome(self, *args, written=()):
        run = self.zelvan(*args)
        files = [(self.work / name).read_bytes() for name in written]
        return run.status, TIMES.sub("", run.stdout), run.stderr, files

    def compare(self, *args, written=()):
        """The set and the single database under the name of the set."""
        outcomes = []
        for folder in ("set", "one"):
            outcomes.append(self.outcome("-dd", folder, "-bdb", "db", *args, written=written))
        self.assertEqual(outcomes[0], outcomes[1], args)
        self.assertEqual(outcomes[0][0], 0, outcomes[0][2])
        return outcomes[0]

    def build_both(self, source, characters, *args):
        for folder in ("set", "one"):
            (self.work / folder).mkdir(exist_ok=True)
            self.build("db", source, folder == "set" and characters or None, "-dd", folder, *args)
        sizes = [path.stat().st_size for path in (self.work / "set").glob("db.*.bsq")]
        self.assertGreater(len(sizes), 3)
        self.assertLessEqual(max(sizes), characters)
        self.assertFalse((self.work / "set" / "db.bix").exists())

    def test_proteins(self):
        files = ("-print_block_file", 1, "-print_frag_file", 1, "-extract_seq", 9, "-extract_file", "best")
        written = ("block_file_out.blc", "frag_file_out.seq", "best")
        source = SAMPLE if not SANITIZED else self.file("few.fasta", first_records(SAMPLE, 1500))
        for codes, sort in ((0, 1), (1, 0)):
            self.build_both(source, 250_000, "-ai", codes, "-do_sort", sort)
            for mode in (202,) if SANITIZED else (200, 202, 210, 212):
                report = self.compare("-s", QUERY, "-mode", mode, *files, written=written)[1]
            self.compare("-s", QUERY, "-niter", 1, "-prob_type", 2, "-npt", 0, "-max_nout", 40, "-apt", 0, "-aout", 5)
            self.compare("-s", QUERY, "-niter", 1, "-ugd", 0, "-ld_pen", "-0.01", "-li_pen", 12)  # by the scalar kernel
            dna = EXAMPLES / "engb_dna.fasta"
            for mode in (20, 22):
                self.compare("-s", dna, "-mode", mode, "-do_stats", 1, "-extract_seq", 9, "-extract_file", "best",
                             "-aout", 20, "-apt", 0, written=("best",))  # fmt: skip
        self.file("report", report)
        self.compare("-mode", 100, "-stdin", "report", "-extract_seq", 50, "-extract_file", "x", written=("x",))
        self.compare("-mode", 667, "-nsubset", 7)

    def test_dna(self):
        self.build_both(EXAMPLES / "dna_sample.fasta", 60_000)
        for complement in (0, 1):
            self.compare("-s", QUERY, "-mode", 12, "-do_stats", 1, "-complement_query", complement,
                         "-extract_seq", 5, "-extract_file", "best", written=("best",))  # fmt: skip

    def test_each_volume_is_a_database(self):
        self.build("db", SAMPLE, 400_000)
        found = 0
        for name in self.volumes("db"):
            run = self.succeed("-s", QUERY, "-bdb", name[:-4], "-niter", 1, "-lpfit_minbuck", 10)
            found += int(re.search(r"# Number of sequences: +(\d+)", run.stdout)[1])
        self.assertEqual(found, 4000)

    def test_the_order_is_that_of_the_whole_set(self):
        rng = random.Random(5)
        lengths = rng.sample(range(1, 400), 60)
        text = self.file("t.fa", "".join(f">s{n} {n}\n{draw(rng, n)}\n" for n in lengths))
        for sort, expected in ((0, lengths), (1, sorted(lengths))):
            self.build("db", text, 2000, "-do_sort", sort)
            stored = b"".join((self.work / name).read_bytes() for name in self.volumes("db"))
            self.assertEqual([int(n) for n in re.findall(rb"s(\d+)\0\1\0", stored)], expected)


class BuildTest(VolumesTest):
    def setUp(self):
        super().setUp()
        rng = random.Random(6)
        self.text = self.file("t.fa", "".join(f">s{n} t\n{draw(rng, 60)}\n" for n in range(40)))

    def names(self):
        return sorted(path.name for path in self.work.iterdir() if path != self.text)

    def test_what_is_there_afterwards_is_of_one_build(self):
        for characters, volumes in ((700, 4), (None, 0), (1600, 2), (700, 4), (1600, 2), (3000, 0)):
            told = self.build("db", self.text, characters, "-do_sort", 0).stderr
            self.assertIn(f"Wrote {volumes} volumes" if volumes else "Wrote .//db.bix and", told)
            left = [f"db.{volume:02}.{end}" for volume in range(volumes) for end in ("bix", "bsq")]
            self.assertEqual(self.names(), left + ["db.volumes"] if volumes else ["db.bix", "db.bsq"])

    def test_databases_that_merely_have_the_name_of_a_volume_stay(self):
        for characters, root in ((None, "db.00"), (None, "db.07"), (None, "db"), (700, "db")):
            self.build(root, self.text, characters)
            self.assertLessEqual({"db.07.bix", "db.07.bsq"} if root != "db.00" else {"db.00.bix"}, set(self.names()))

    def test_a_failed_build_leaves_what_was_there(self):
        self.build("db", self.text, 700)
        before = {name: (self.work / name).read_bytes() for name in self.names()}
        bad = self.file("t.fa", self.text.read_text() + ">\nAC\n")
        env = {"ZELVAN_TEST_CHARACTERS": "900"}
        self.refuse(".*Nothing was written: .*", "-mode", 99, "-bdb", "db", "-d", bad, program=FORCED, env=env)
        huge = self.file("t.fa", f">a\nAC\n>huge\n{'A' * 1000}\n")
        self.refuse(".*Sequence huge is too large for a binary database: 1009 .*", "-mode", 99, "-bdb", "db", "-d", huge,
                    program=FORCED, env=env)  # fmt: skip
        tiny = self.file("t.fa", "".join(f">s{n}\nA\n" for n in range(200)))  # an index larger than the sequences
        for most, file in ((1000, "A temporary file beside .*db.bsq could not be"), (2450, "File: .*db.00.bix was not")):

            def limit_files(most=most):
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (most, most))

            self.refuse(f".*Error writing File: File too large\n{file} written: .*", "-mode", 99, "-bdb", "db", "-d", tiny,
                        program=FORCED, env={"ZELVAN_TEST_CHARACTERS": "1100"}, preexec_fn=limit_files, status=1)  # fmt: skip
        self.assertEqual({name: (self.work / name).read_bytes() for name in self.names()}, before)

    def test_kills_leave_one_build_or_a_refusal(self):
        """Sequences of the two builds differ in their names, and no hit list may show both."""
        texts = {}
        for letter in "ab":
            records = first_records(SAMPLE, 300).replace(">", f">{letter}")
            texts[letter] = self.file(f"{letter}.fa", records)
        self.build("db", texts["a"], 20_000)
        rng = random.Random(7)
        outcomes = set()
        for kill in range(15):
            env = {"ZELVAN_TEST_CHARACTERS": str(rng.choice((20_000, 30_000)))}
            process = self.start("-mode", 99, "-bdb", "db", "-d", texts["ab"[kill % 2]], program=FORCED, env=env)
            time.sleep(rng.uniform(0.005, 0.05))
            process.send_signal(signal.SIGKILL)
            process.communicate()
            run = self.zelvan("-s", QUERY, "-bdb", "db", "-niter", 1, "-lpfit_minbuck", 5, "-e", 1000)
            if run.status == 0:
                letters = {line[4][0] for line in zelvan_cli.score_lists(run.stdout)[0] if len(line) > 4}
                self.assertIn(letters, ({"a"}, {"b"}))
            else:
                self.assertRegex(run.stderr, "a build did not come to its end|two databases of one name")
                self.build("db", texts["a"], 20_000)
            outcomes.add(run.status)
        self.assertIn(0, outcomes)

    def test_nothing_is_left_of_a_text_that_is_searched_beyond_the_limit(self):
        run = self.zelvan("-s", QUERY, "-d", self.text, program=FORCED, env={"ZELVAN_TEST_CHARACTERS": "700"})
        self.assertEqual((run.status, run.stdout), (255, ""))
        self.assertEqual(run.stderr.splitlines()[1:], [
            f"zelvan -mode 99 -d {self.text} -bdb NAME", f"zelvan -s {QUERY} -bdb NAME -mode 202"])  # fmt: skip


class DamageTest(VolumesTest):
    SEARCH = ("-s", QUERY, "-bdb", "db", "-niter", 1)

    def setUp(self):
        super().setUp()
        self.text = self.file("t.fa", first_records(SAMPLE, 1200))
        self.build("db", self.text, 150_000)

    def refused(self, sentence, damage):
        """The damage is done to a copy."""
        kept = self.work.with_name("kept")
        shutil.copytree(self.work, kept)
        damage()
        self.refuse(sentence, *self.SEARCH)
        shutil.rmtree(self.work)
        kept.rename(self.work)

    def test_sets_that_are_not_whole(self):
        volume = self.work / "db.01.bsq"
        data = volume.read_bytes()
        listed = (self.work / "db.volumes").read_text()

        def other_build():
            index = (self.work / "db.01.bix").read_bytes()
            self.build("db", self.text, 150_000, "-do_sort", 0)
            (self.work / "db.01.bix").write_bytes(index)

        for sentence, damage in (
            ("Error opening File: .*db.volumes\nThe database has volumes, but not this list .*",
             (self.work / "db.volumes").unlink),
            (".*db.volumes is damaged: its numbers do not add up\n.*",
             lambda: self.file("db.volumes", listed.replace("residues 5", "residues 4", 1))),
            (".*db.volumes is damaged: it is not as a build writes it\n.*",
             lambda: self.file("db.volumes", listed[:-4])),
            ("Error opening File: .*db.01.bix\n", (self.work / "db.01.bix").unlink),
            ("Error opening File: .*db.01.bsq\n", volume.unlink),
            (".*db.01.bix is of another build than the list .*", other_build),
            (".*db.01.bsq is damaged: it has .* bytes, but .*", lambda: volume.write_bytes(data[:-1])),
            (".*db.01.bsq is damaged: sequence .*: its .*", lambda: volume.write_bytes(data[1:] + b"\0")),
            ("There are two databases of one name: .*", lambda: self.file("db.bix", "")),
        ):  # fmt: skip
            self.refused(sentence, damage)

    def test_no_output_goes_over_a_volume(self):
        name = ".//db.01.bsq"
        self.refuse(f"STDOUT would overwrite the file of BDB_ROOT .*: both are {name}. Give STDOUT another name\n",
                    "-stdout", name, *self.SEARCH)  # fmt: skip

    def test_a_file_that_shrinks_or_changes_meanwhile(self):
        long = self.file("long", ">q\n" + draw(random.Random(8), 2500))
        volume = self.work / "db.02.bsq"
        data = volume.read_bytes()
        for damage, sentence in (
            (lambda: os.truncate(volume, 0), "A sequence file of the database db cannot be read any more"),
            (lambda: volume.write_bytes(data), "db.02.bsq was changed while it was being searched"),
        ):
            process = self.start("-s", long, "-bdb", "db", "-niter", 1, "-v", 1, program=FORCED,
                                 env={"ZELVAN_TEST_SET": "reference"}, bufsize=0)  # fmt: skip
            told = b""
            while b"Scanning database" not in told and (more := os.read(process.stderr.fileno(), 4096)):
                told += more
            damage()
            out, err = process.communicate()
            self.assertEqual((process.returncode, out), (255, b""), err)
            self.assertIn(sentence, (told + err).decode())
            volume.write_bytes(data)


if __name__ == "__main__":
    unittest.main()
