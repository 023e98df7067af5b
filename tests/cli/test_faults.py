"""What goes wrong around a run: full disks, failing and vanishing files, missing streams, little memory, kills."""

import os
import pathlib
import random
import resource
import shutil
import signal
import subprocess
import threading
import unittest

import zelvan_cli

EXAMPLES = zelvan_cli.EXAMPLES
SANITIZED = os.environ.get("ZELVAN_SANITIZED") == "1"
FAILS_TO_READ = "/proc/self/mem"  # opens like a file; reading it is an error


class Faults(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)
        records = (EXAMPLES / "uniprot_sample.fasta").read_text().split(">")[1:]
        self.database = self.file("db.fasta", "".join(">" + record for record in records[:1500]))
        self.search = ("-s", EXAMPLES / "engb.fasta", "-d", self.database, "-niter", 2, "-lpfit_minbuck", 50)

    def start(self, *args, **options):
        environment = dict(os.environ, ZELVANDIR=str(self.config), TZ="UTC", LC_ALL="C")
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE} | options
        return subprocess.Popen([zelvan_cli.PROGRAM, *map(str, args)], cwd=self.work, env=environment, **options)

    def run_in(self, prepare, *args, **options):
        """A run in a process that `prepare` has changed before."""
        process = self.start(*args, preexec_fn=prepare, **options)
        stdout, stderr = process.communicate(timeout=300)
        return zelvan_cli.Run(process.returncode, (stdout or b"").decode("latin-1"), (stderr or b"").decode("latin-1"))

    def leftovers(self):
        return sorted(path.name for path in self.work.glob("*.tmp"))

    def built(self, root="old"):
        return tuple((self.work / f"{root}.{suffix}").read_bytes() for suffix in ("bix", "bsq"))

    def build(self, source, root="old"):
        run = self.zelvan("-mode", 99, "-d", source, "-bdb", root)
        self.assertEqual(run.status, 0, run.stderr)
        return self.built(root)


class FullDisks(Faults):
    """A limit on the size of files has the effect of a disk that is full after so many bytes."""

    def written_up_to(self, size, *args, **options):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))

        return self.run_in(limit, *args, **options)

    def test_every_file_that_is_written(self):
        side_files = ("-print_block_file", 1, "-print_frag_file", 1, "-probcut2", 0.01)
        text = self.zelvan(*self.search).stdout
        self.assertIn("# End_Scores", text)
        dna = ("-mode", 22, "-s", EXAMPLES / "engb_dna.fasta", "-d", self.database, "-do_stats", 1)
        for name, args, message in (
            ("report", (*self.search, "-stdout", "report"), "Error writing the report"),
            ("translated", (*dna, "-stdout", "translated"), "Error writing the report"),
            ("zelvan_dump_stats.log", (*dna, "-dump_stats", 1), "File: zelvan_dump_stats.log"),
            ("block", (*self.search, *side_files, "-block_file_out", "block"), "File: block"),
            ("frag", (*self.search, *side_files, "-frag_file_out", "frag"), "File: frag"),
            ("best", (*self.search, "-extract_seq", 50, "-extract_file", "best"), "File: best"),
            ("listed", ("-mode", 100, "-d", self.database, "-extract_seq", 9, "-extract_file", "listed",
                        "-stdin", self.file("list", text)), "File: listed"),
            ("subset", ("-mode", 667, "-d", self.database, "-nsubset", 5, "-stdout", "subset"),
             "Error writing the report"),
        ):
            path = self.work / name
            # Other files of these runs are not to meet the limit first.
            whole = self.zelvan(*args)
            self.assertEqual(whole.status, 0, whole.stderr)
            size = path.stat().st_size
            with self.subTest(name):
                self.assertGreater(size, 0)
                for limit in {0, 1, size // 2, size - 1}:
                    others = dict(stdout=subprocess.DEVNULL)  # no file: knows no limit
                    run = self.written_up_to(limit, *args, **others)
                    self.assertEqual(run.status, 1, (limit, run.stderr))
                    self.assertIn("File too large", run.stderr)
                    if name not in ("block", "frag"):  # the two of them share a run
                        self.assertIn(message, run.stderr)
                self.assertEqual(self.written_up_to(max(size, 1 << 20), *args, stdout=subprocess.DEVNULL).status, 0)

    def test_a_build_leaves_the_old_database(self):
        old = self.build(EXAMPLES / "engb.fasta")
        sizes = [len(part) for part in self.build(self.database, "new")]
        for limit in (0, 10, sizes[0] - 1, sizes[0], sizes[1] - 1):
            with self.subTest(limit):
                run = self.written_up_to(limit, "-mode", 99, "-d", self.database, "-bdb", "old")
                self.assertEqual(run.status, 1, run.stderr)
                self.assertRegex(run.stderr, r"Error writing File: File too large\nFile: .*old\.b.. was not written")
                self.assertEqual((self.built(), self.leftovers()), (old, []))

    @unittest.skipUnless(pathlib.Path("/dev/full").exists(), "no /dev/full here")
    def test_the_full_device(self):
        for key in ("-stdout", "-block_file_out", "-frag_file_out", "-extract_file"):
            run = self.zelvan(*self.search, "-print_block_file", 1, "-print_frag_file", 1, "-extract_seq", 5, key, "/dev/full")
            self.assertEqual(run.status, 1, (key, run.stderr))
            self.assertIn("No space left on device", run.stderr)


class Files(Faults):
    def test_reading_that_fails(self):
        try:
            with open(FAILS_TO_READ, "rb") as file:
                file.read(1)
            self.skipTest("reading it works here")
        except FileNotFoundError:
            self.skipTest("no such file here")
        except OSError:
            pass
        for args in (("-s", FAILS_TO_READ), ("-d", FAILS_TO_READ), ("-md", "/", "-m", FAILS_TO_READ),
                     ("-md", "/", "-m", FAILS_TO_READ, "-mf", 0),
                     ("-mode", 22, "-do_stats", 1, "-gd", "/", "-codon", FAILS_TO_READ),
                     ("-mode", 100, "-extract_seq", 5, "-stdin", FAILS_TO_READ)):
            run = self.zelvan(*self.search, *args)
            self.assertEqual((run.status, run.stdout), (255, ""), (args, run.stderr))
            self.assertTrue(run.stderr, args)
        for name in ("defaults", "alias", "gapdefs"):
            path = self.config / f"zelvan_{name}.dat"
            path.unlink()
            path.symlink_to(FAILS_TO_READ)
            run = self.zelvan(*self.search)
            path.unlink()
            self.configure(defaults=None)
            self.assertEqual((run.status, run.stdout), (255, ""), (name, run.stderr))
            self.assertIn(path.name, run.stderr)

    def test_files_that_vanish_while_the_run_waits(self):
        def feed(fifo, text, first):
            def write():
                with open(fifo, "w", encoding="ascii") as pipe:
                    first()
                    pipe.write(text)

            writer = threading.Thread(target=write, daemon=True)
            writer.start()
            self.addCleanup(writer.join, 10)

        query = self.work / "query"
        os.mkfifo(query)
        feed(query, (EXAMPLES / "engb.fasta").read_text(), self.database.unlink)
        run = self.zelvan(*self.search, "-s", query)
        self.assertEqual((run.status, run.stdout), (255, ""))
        self.assertEqual(run.stderr, f"Error opening File: No such file or directory\n{self.database}\n")

        target = self.work / "target"
        target.mkdir()
        feed(query, ">a\nMKV\n", target.rmdir)
        run = self.zelvan("-mode", 99, "-d", query, "-dd", target, "-bdb", "gone")
        self.assertEqual(run.status, 255, run.stderr)
        self.assertIn(f"Error opening File: No such file or directory\n{target}/gone.bix\n", run.stderr)


class Streams(Faults):
    def without(self, *descriptors):
        def close():
            for descriptor in descriptors:
                os.close(descriptor)

        return close

    def test_a_missing_output_is_not_another_file(self):
        kept = self.database.read_bytes()
        side_files = ("-print_block_file", 1, "-print_frag_file", 1, "-block_file_out", "block", "-frag_file_out", "frag")
        whole = self.zelvan(*self.search, *side_files)
        self.assertEqual(whole.status, 0, whole.stderr)
        contents = [(self.work / name).read_bytes() for name in ("block", "frag")]
        for missing in ((0,), (1,), (2,), (0, 1), (0, 1, 2)):
            with self.subTest(missing=missing):
                run = self.run_in(self.without(*missing), *self.search, *side_files)
                self.assertEqual(run.status, 1 if 1 in missing else 0, run.stderr)
                if 1 in missing and 2 not in missing:
                    self.assertIn("Error writing the report: Bad file descriptor\n", run.stderr)
                self.assertEqual([(self.work / name).read_bytes() for name in ("block", "frag")], contents)
                self.assertEqual(self.database.read_bytes(), kept)
        run = self.run_in(self.without(0), "-mode", 100, "-extract_seq", 5, *self.search)
        self.assertEqual((run.status, run.stderr), (255, "No # Start_Scores in file\n"))
        run = self.run_in(self.without(1), "-mode", 99, "-d", self.database, "-bdb", "db")
        self.assertEqual(run.status, 0, run.stderr)  # a build has no report

    def test_a_reader_that_goes_away(self):
        for ignored, status, words in ((False, -signal.SIGPIPE, ""), (True, 1, "Error writing the report: Broken pipe\n")):
            prepare = (lambda: signal.signal(signal.SIGPIPE, signal.SIG_IGN)) if ignored else None
            process = self.start(*self.search, "-print_profiles", 1, preexec_fn=prepare)
            self.assertTrue(process.stdout.readline())
            process.stdout.close()
            stderr = process.stderr.read().decode()
            process.stderr.close()
            self.assertEqual(process.wait(), status, stderr)
            self.assertTrue(stderr.startswith(words) and bool(stderr) == ignored, stderr)


class Memory(Faults):
    @unittest.skipIf(SANITIZED, "sanitizers reserve more address space than there is memory")
    def test_every_limit_ends_in_a_report_or_a_sentence(self):
        whole = self.zelvan(*self.search, "-show_blurb", 0).stdout
        build = ("-mode", 99, "-d", self.database, "-bdb", "old")
        old = self.build(EXAMPLES / "engb.fasta")
        ends = set()
        for args in ((*self.search, "-show_blurb", 0), build):
            for megabytes in (*range(6, 24), 28, 36, 48, 64, 128):
                size = megabytes << 20
                run = self.run_in(lambda: resource.setrlimit(resource.RLIMIT_AS, (size, size)), *args)
                if run.status == 127 or "error while loading shared libraries" in run.stderr:
                    continue  # the program itself does not fit
                with self.subTest(args=args[1], megabytes=megabytes):
                    sentence = "alloc error: Cannot allocate memory\n" in run.stderr
                    if "Cannot allocate memory" in run.stderr and not sentence:
                        self.assertEqual(run.status, 255, run.stderr)  # a file that could not be opened for it
                    else:
                        self.assertEqual(run.status, 0, run.stderr)
                    if args is build:
                        self.assertEqual(self.leftovers(), [])
                        self.assertTrue(not run.stderr.endswith("memory\n") or self.built() == old)
                    else:
                        self.assertEqual(run.stdout == whole, not run.stderr, run.stderr)
                    ends.add("sentence" if sentence else run.status)
        self.assertLessEqual({0, "sentence"}, ends)


class Builds(Faults):
    def setUp(self):
        super().setUp()
        self.large = self.file("large.fasta", self.database.read_bytes() * 12)
        self.old = self.build(EXAMPLES / "engb.fasta")
        self.new = self.build(self.large, "new")

    def parts(self, root="old"):
        """The database without the date in its index file."""
        index, sequences = self.built(root)
        date = index.index(b"\n\0")
        return index[: date - 24], index[date:], sequences

    def refused(self, root):
        run = self.zelvan("-s", EXAMPLES / "engb.fasta", "-bdb", root, "-niter", 1)
        self.assertEqual(run.status, 255, run.stderr[:300])
        self.assertIn(root + ".b", run.stderr)

    def test_halves_of_two_databases(self):
        for index, sequences in (("old", "new"), ("new", "old")):
            shutil.copy(self.work / f"{index}.bix", self.work / "mixed.bix")
            shutil.copy(self.work / f"{sequences}.bsq", self.work / "mixed.bsq")
            self.refused("mixed")

    def test_kills_at_any_time(self):
        chance = random.Random(8)
        self.assertNotEqual(self.parts(), self.parts("new"))
        expected = self.parts(), self.parts("new")
        kills = 0
        for number in (signal.SIGKILL, signal.SIGTERM, signal.SIGINT):
            for _ in range(12):
                shutil.copy(self.work / "old.bsq", self.work / "target.bsq")
                shutil.copy(self.work / "old.bix", self.work / "target.bix")
                process = self.start("-mode", 99, "-d", self.large, "-bdb", "target", stdout=subprocess.DEVNULL)
                try:
                    process.wait(chance.uniform(0, 0.1))
                except subprocess.TimeoutExpired:
                    process.send_signal(number)
                process.communicate()
                kills += process.returncode == -number
                self.assertIn(process.returncode, (0, -number))
                if self.parts("target") not in expected:
                    self.refused("target")  # killed between the two renames: halves that nothing takes for a whole
                # A build that was killed may leave its own temporary files, and only those.
                for name in self.leftovers():
                    self.assertRegex(name, rf"^target\.b..\.{process.pid}\.tmp$")
                    (self.work / name).unlink()
        self.assertGreater(kills, 10)

    def test_two_builds_into_one_name(self):
        expected = self.parts(), self.parts("new")
        for _ in range(8):
            builds = [self.start("-mode", 99, "-d", source, "-bdb", "target") for source in
                      (EXAMPLES / "engb.fasta", self.large, EXAMPLES / "engb.fasta", self.large)]
            for process in builds:
                _, stderr = process.communicate()
                self.assertEqual(process.returncode, 0, stderr)
            self.assertIn(self.parts("target"), expected)
            self.assertEqual(self.leftovers(), [])


if __name__ == "__main__":
    unittest.main()
