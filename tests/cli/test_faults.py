"""What goes wrong around a run: full disks, failing files, missing streams, little memory, kills."""

import contextlib
import fcntl
import os
import pathlib
import resource
import shutil
import signal
import stat
import sys
import unittest

import zelvan_cli
from zelvan_cli import EMULATED, EXAMPLES, QUERY, SAMPLE, SANITIZED

FAILS_TO_READ = "/proc/self/mem"  # opens like a file; reading it is an error
SIDE_FILES = ("-print_block_file", 1, "-print_frag_file", 1, "-block_file_out", "block", "-frag_file_out", "frag",
              "-probcut2", 0.01)  # fmt: skip


class Faults(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)
        self.database = self.file("db.fasta", zelvan_cli.first_records(SAMPLE, 1500))
        # No header and no times in the report: its size is known beforehand.
        self.search = ("-s", QUERY, "-d", self.database, "-niter", 2, "-lpfit_minbuck", 50, "-show_blurb", 0)

    def leftovers(self):
        return sorted(path.name for path in self.work.iterdir() if path.suffix in (".tmp", ".old"))

    def built(self, root="old"):
        return tuple((self.work / f"{root}.{suffix}").read_bytes() for suffix in ("bix", "bsq"))

    def build(self, source, root="old"):
        self.succeed("-mode", 99, "-d", source, "-bdb", root)
        return self.built(root)


class FullDisks(Faults):
    """A limit on the size of files has the effect of a disk that is full after so many bytes."""

    def written_up_to(self, size, *args):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))

        return self.zelvan(*args, preexec_fn=limit)

    def test_every_file_that_is_written(self):
        score_list = self.file("list", self.succeed(*self.search, "-show_blurb", 1).stdout)
        dna = (*self.search, "-mode", 22, "-s", EXAMPLES / "engb_dna.fasta", "-do_stats", 1)
        report = "Error writing the report: File too large"
        for name, args, message in (
            ("report", (*self.search, "-stdout", "report"), report),
            ("translated", (*dna, "-stdout", "translated"), report),
            ("subset", ("-mode", 667, "-d", self.database, "-nsubset", 5, "-stdout", "subset"), report),
            ("zelvan_dump_stats.log", (*dna, "-dump_stats", 1), "File: zelvan_dump_stats.log"),
            ("block", (*self.search, *SIDE_FILES), "File: "),  # the two of them share a run
            ("frag", (*self.search, *SIDE_FILES), "File: "),
            ("best", (*self.search, "-extract_seq", 50, "-extract_file", "best"), "File: best"),
            ("listed", ("-mode", 100, "-d", self.database, "-extract_seq", 9, "-extract_file", "listed",
                        "-stdin", score_list), "File: listed"),
        ):  # fmt: skip
            self.succeed(*args)
            size = (self.work / name).stat().st_size
            with self.subTest(name):
                self.assertGreater(size, 0)
                for limit in {0, 1, size // 2, size - 1}:
                    run = self.written_up_to(limit, *args)
                    self.assertEqual(run.status, 1, (limit, run.stderr))
                    self.assertIn("File too large", run.stderr)
                    self.assertIn(message, run.stderr)
                self.assertEqual(self.written_up_to(max(size, 1 << 20), *args).status, 0)

    def test_a_build_leaves_the_old_database(self):
        old = self.build(QUERY)
        sizes = [len(part) for part in self.build(self.database, "new")]
        limits = [(self.database, limit) for limit in (0, 10, sizes[0] - 1, sizes[0], sizes[1] - 1)]
        long = self.file("long.fasta", ">long\n" + "A" * 4_000_000)  # fails in the middle, not at the close
        for text, limit in (*limits, (long, 1000)):
            run = self.written_up_to(limit, "-mode", 99, "-d", text, "-bdb", "old", "-max_seq_len", 5_000_000)
            self.assertEqual(run.status, 1, run.stderr)
            self.assertRegex(run.stderr, r"Error writing File: File too large\nFile: .*old\.b.. was not written")
            self.assertEqual((self.built(), self.leftovers()), (old, []))


class Files(Faults):
    @unittest.skipUnless(os.path.exists(FAILS_TO_READ), "no such file here")
    def test_reading_that_fails(self):
        for args in (("-s", FAILS_TO_READ), ("-d", FAILS_TO_READ), ("-md", "/", "-m", FAILS_TO_READ),
                     ("-md", "/", "-m", FAILS_TO_READ, "-mf", 0),
                     ("-mode", 22, "-do_stats", 1, "-gd", "/", "-codon", FAILS_TO_READ),
                     ("-mode", 100, "-extract_seq", 5, "-stdin", FAILS_TO_READ)):  # fmt: skip
            self.refuse(".+", *self.search, *args)
        for name in ("defaults", "alias", "gapdefs"):
            path = self.config / f"zelvan_{name}.dat"
            path.unlink()
            path.symlink_to(FAILS_TO_READ)
            self.refuse(f"Error reading configuration file: Input/output error\nFile: {path}\n.*"
                        "Error decoding (parameter|gap defaults) file\n", *self.search)  # fmt: skip
            path.unlink()
            self.configure(defaults=None)


class Streams(Faults):
    def without(self, descriptors, *args):
        return self.zelvan(*args, preexec_fn=lambda: [os.close(descriptor) for descriptor in descriptors])

    def test_a_missing_output_is_not_another_file(self):
        paths = [self.work / name for name in ("block", "frag", self.database)]
        self.succeed(*self.search, *SIDE_FILES)
        contents = [path.read_bytes() for path in paths]
        for missing in ((0,), (1,), (2,), (0, 1), (0, 1, 2)):
            with self.subTest(missing=missing):
                run = self.without(missing, *self.search, *SIDE_FILES)
                self.assertEqual(run.status, 1 if 1 in missing else 0, run.stderr)
                if 1 in missing and 2 not in missing:
                    self.assertIn("Error writing the report: Bad file descriptor\n", run.stderr)
                self.assertEqual([path.read_bytes() for path in paths], contents)
        run = self.without((0,), "-mode", 100, "-extract_seq", 5, *self.search)
        self.assertEqual((run.status, run.stderr), (255, "No # Start_Scores in file\n"))
        run = self.without((1,), "-mode", 99, "-d", self.database, "-bdb", "db")
        self.assertEqual(run.status, 0, run.stderr)  # a build has no report

    def test_an_output_that_names_an_input_or_an_output(self):
        query = self.file("query", QUERY.read_bytes())
        link = self.work / "link"
        link.symlink_to("query")
        report = self.file("report", self.succeed(*self.search).stdout)
        self.build(self.database)
        before = {path: path.read_bytes() for path in (query, self.database, report, *self.work.glob("old.b*"))}
        search = (*self.search, "-s", query)
        matrix = ("-matrix_dir", self.work, "-m")
        side = ("-print_block_file", 1, "-print_frag_file", 1, "-block_file_out", "a", "-frag_file_out")
        extract = ("-mode", 100, "-extract_seq", 9, "-d", self.database)
        for args, writer, other in (
            (("-stdout", query, *search), "STDOUT", "QSEQ_FILE"),
            ((*search, "-stderr", "./link"), "STDERR", "QSEQ_FILE"),
            ((*search, "-stdout", "late", "-stdout", query, "-stdout", "log"), ".*STDOUT.*", "QSEQ_FILE"),
            (("-stdout", self.database, *search), "STDOUT", "DB_FILE"),
            (("-mode", 22, "-stdout", "old.bsq", *self.search[:2], "-bdb", "old"), "STDOUT", r"BDB_ROOT \(.bsq\)"),
            ((*search, *matrix, "link", "-stdout", query, "-s", QUERY), "STDOUT", "MATRIX_FILE"),
            (("-mode", 10, "-gd", self.work, "-codon", "query", "-stderr", query), "STDERR", "CODON_FILE"),
            ((*search, *side, "./a"), "BLOCK_FILE_OUT", "FRAG_FILE_OUT"),  # not there yet
            ((*search, "-stdout", "log", "-stderr", "log"), "STDOUT", "STDERR"),
            *(((*search, "-mode", mode, "-extract_seq", 9, "-extract_file", link), "EXTRACT_FILE", "QSEQ_FILE")
              for mode in (202, 22)),
            ((*extract, "-stdin", report, "-extract_file", self.database), "EXTRACT_FILE", "DB_FILE"),
            ((*extract, "-stdin", report, "-extract_file", report), "EXTRACT_FILE", "STDIN"),
            (("-mode", 667, "-nsubset", 9, "-d", self.database, "-stdout", self.database), "STDOUT", "DB_FILE"),
            (("-mode", 99, "-d", "old.bsq", "-bdb", "old"), r"BDB_ROOT \(.bsq\)", "DB_FILE"),
        ):
            with self.subTest(args):
                self.refuse(f"{writer} would overwrite the file of {other}: .*\n", *args)
                self.assertEqual({path: path.read_bytes() for path in before}, before)
        # What an unknown key made known before the refusal comes to the process's own stream, too.
        self.refuse(r"Unrecognised .*\nSTDERR would .*", "-stderr", query, *search, "-nonsense", 1)
        self.assertEqual(query.read_bytes(), before[query])
        for args in (("-stdout", "/dev/null", "-stderr", "/dev/null"), ("-stdout", "/dev/stdout", "-s", query),
                     ("-mode", 99, "-d", query, "-bdb", "new", "-stderr", "/dev/stderr"),
                     ("-block_file_out", query, "-print_block_file", 0)):  # fmt: skip
            self.succeed(*self.search, *args)

    def test_a_stream_replaces_what_its_file_held(self):
        for name in ("-stdout", "-stderr"):
            log = self.file("log", "old " * 9999)
            self.zelvan(name, log, "-mode", 31)
            self.assertEqual(log.read_text(), "" if name == "-stdout" else "Sorry but MODE:31 is not available\n")
        self.configure(f"STDERR {log}\nNONSENSE 1\n")
        self.file("log", "old " * 9999)
        self.zelvan("-mode", 11)
        self.assertRegex(log.read_text(), r"\AUnrecognised Parameter Command\nNONSENSE \nFile: .*\n\Z")

    @unittest.skipUnless(os.path.exists("/dev/full"), "no such device here")
    def test_lost_messages_are_a_failure(self):
        build = ("-mode", 99, "-d", QUERY, "-bdb", "db")
        self.refuse("Error writing the messages: No space left on device\n.*STDERR.*\n", *build, "-stderr", "/dev/full",
                    status=1)  # fmt: skip
        with open("/dev/full", "wb") as full:
            self.assertEqual(self.zelvan(*build, stderr=full).status, 1)

    def test_a_reader_that_goes_away(self):
        for handler, status, words in ((signal.SIG_DFL, -signal.SIGPIPE, ""),
                                       (signal.SIG_IGN, 1, "Error writing the report: Broken pipe\n")):  # fmt: skip
            process = self.start(*self.search, "-print_profiles", 1,
                                 preexec_fn=lambda action=handler: signal.signal(signal.SIGPIPE, action))  # fmt: skip
            self.assertTrue(process.stdout.readline())
            process.stdout.close()
            stderr = process.stderr.read().decode()
            self.assertEqual(process.wait(), status, stderr)
            self.assertTrue(stderr.startswith(words) and bool(stderr) == bool(words), stderr)


class Memory(Faults):
    @unittest.skipUnless(sys.platform == "linux", "other systems do not limit the address space")
    @unittest.skipIf(SANITIZED or EMULATED, "sanitizers and emulators reserve more address space than there is memory")
    def test_every_limit_ends_in_a_report_or_a_sentence(self):
        whole = self.succeed(*self.search).stdout
        build = ("-mode", 99, "-d", self.database, "-bdb", "old")
        old = self.build(QUERY)
        ends = set()
        for args in (self.search, build):
            for megabytes in (*range(6, 24), 28, 36, 48, 64, 128):
                size = megabytes << 20
                run = self.zelvan(*args, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (size, size)))
                if run.status == 127 or "error while loading shared libraries" in run.stderr:
                    continue  # the program itself does not fit
                with self.subTest(args=args[1], megabytes=megabytes):
                    sentence = "alloc error: Cannot allocate memory\n" in run.stderr
                    # A file that could not be opened for want of memory has its own status.
                    unopened = "Cannot allocate memory" in run.stderr and not sentence
                    self.assertEqual(run.status, 255 if unopened else 0, run.stderr)
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
        self.build(QUERY)
        self.build(self.large, "new")

    def parts(self, root):
        """The database without the date in its index file."""
        index, sequences = self.built(root)
        date = index.index(b"\n\0")
        return index[: date - 24], index[date:], sequences

    def copy(self, index, sequences, root):
        shutil.copy(self.work / f"{index}.bix", self.work / f"{root}.bix")
        shutil.copy(self.work / f"{sequences}.bsq", self.work / f"{root}.bsq")

    def refused(self, root):
        self.refuse(rf".*{root}\.b.*build it again.*", "-s", QUERY, "-bdb", root, "-niter", 1)

    @contextlib.contextmanager
    def waiting_build(self):
        """A build that has written both files and waits for this process, which seems to be storing others."""
        folder = os.open(self.work, os.O_RDONLY)
        fcntl.flock(folder, fcntl.LOCK_EX)
        process = self.start("-mode", 99, "-d", self.large, "-bdb", "target",
                             preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))  # off in the background
        told = iter(process.stderr.readline, b"")
        self.assertTrue(any(line.startswith(b"Waiting for another build") for line in told))
        yield process
        os.close(folder)
        process.wait()

    def test_half_a_database_is_refused(self):
        for halves in (("old", "new"), ("new", "old")):
            self.copy(*halves, "mixed")
            self.refused("mixed")
        (self.work / "mixed.bix").unlink()  # as a kill between the renames leaves it
        self.refused("mixed")

    def test_a_database_that_is_replaced_while_it_is_opened(self):
        self.copy("old", "old", "target")
        sequences = self.work / "target.bsq"
        sequences.unlink()
        os.mkfifo(sequences)  # opening it waits for a writer
        process = self.start("-s", QUERY, "-bdb", "target", "-verbose", 1)
        self.assertIn(b"Opening database file\n", iter(process.stderr.readline, b""))
        (self.work / "new.bix").rename(self.work / "target.bix")
        sequences.open("wb").close()
        stderr = process.communicate()[1].decode()
        self.assertEqual(process.returncode, 255)
        self.assertRegex(stderr, r"target\.bix was replaced while it was being opened: start the run again\n\Z")

    def test_kills(self):
        expected = self.parts("old"), self.parts("new")
        self.assertNotEqual(*expected)
        with self.waiting_build():
            pass
        self.assertEqual((self.parts("target"), self.leftovers()), (expected[1], []))
        for number in (signal.SIGKILL, signal.SIGTERM, signal.SIGINT):
            self.copy("old", "old", "target")
            with self.waiting_build() as process:
                process.send_signal(number)
                self.assertEqual(process.wait(), -number)
            # A build that was killed may leave its own temporary files, and only those.
            self.assertEqual([name[:11] for name in self.leftovers()], ["target.bix.", "target.bsq."])
            self.assertEqual(self.parts("target"), expected[0])
            for name in self.leftovers():
                (self.work / name).unlink()

    def test_a_target_is_opened_as_any_output(self):
        build = ("-mode", 99, "-d", QUERY, "-bdb", "target")
        wanted = self.parts("old")

        def prepare():
            """What another machine, on which a process has the same number, might have in the folder."""
            os.umask(0o027)
            pathlib.Path(f"target.bix.{os.getpid()}.tmp").touch()

        self.succeed(*build, preexec_fn=prepare)
        self.assertEqual(len(self.leftovers()), 1)
        index, sequences = self.work / "target.bix", self.work / "target.bsq"
        self.assertEqual(stat.S_IMODE(index.stat().st_mode), 0o640)
        index.chmod(0o604)
        self.succeed(*build)
        self.assertEqual(stat.S_IMODE(index.stat().st_mode), 0o604)
        far = self.work / "far"
        far.mkdir()
        index.rename(far / "index")
        sequences.unlink()
        index.symlink_to("far/index")
        sequences.symlink_to(far / "sequences")  # not there yet
        self.succeed(*build)
        self.assertTrue(index.is_symlink() and sequences.is_symlink())
        self.assertEqual((self.parts("target"), len(list(far.iterdir()))), (wanted, 2))
        (far / "sequences").unlink()
        if os.path.exists("/dev/full"):
            (far / "sequences").symlink_to("/dev/full")
            self.refuse(".*No space left on device\nFile: .*target.bsq was not written.*", *build, status=1)

    def test_a_protected_target_stays(self):
        def unprivileged():
            if os.geteuid() == 0:
                os.setgroups([])
                os.setuid(65534)

        for path in (self.work.parent, self.config, self.work):
            path.chmod(0o777)  # the folder may be written
        before = self.built("old")
        (self.work / "old.bix").chmod(0o666)
        (self.work / "old.bsq").chmod(0o444)
        try:
            run = self.zelvan("-mode", 99, "-d", QUERY, "-bdb", "old", preexec_fn=unprivileged)
        except PermissionError:
            self.skipTest("the program cannot be run by others")
        self.assertEqual(run.status, 255)
        self.assertRegex(run.stderr, r"Error opening File: Permission denied\n.*old\.bsq\n\Z")
        self.assertEqual((self.built("old"), self.leftovers()), (before, []))

    def test_two_builds_into_one_name(self):
        expected = self.parts("old"), self.parts("new")
        for _ in range(4):
            for build in [self.start("-mode", 99, "-d", text, "-bdb", "target") for text in 2 * (QUERY, self.large)]:
                _, stderr = build.communicate()
                self.assertEqual(build.returncode, 0, stderr)
            self.assertIn(self.parts("target"), expected)
            self.assertEqual(self.leftovers(), [])


if __name__ == "__main__":
    unittest.main()
