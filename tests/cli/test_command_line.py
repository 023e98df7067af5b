"""The command line, the configuration files and the choice of the mode, as a user meets them."""

import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import zelvan_cli

RULE = "-" * 69 + "\n"
WARNING = (
    "WARNING: No ZELVANDIR environment variable set\n"
    "         I will assume you want to use zelvan_defaults.dat\n"
    "                                       zelvan_alias.dat\n"
    "                                   and zelvan_gapdefs.dat\n"
    "         from the current directory\n"
)
QUIET = ("-mode", "9999")  # a mode that is accepted and does nothing


class CommandLine(zelvan_cli.TestCase):
    def expect(self, run, status, stderr="", stdout=""):
        self.assertEqual((run.status, run.stderr, run.stdout), (status, stderr, stdout))

    def test_no_arguments_show_the_help(self):
        run = self.zelvan()
        self.assertEqual((run.status, run.stdout), (255, ""))
        title = RULE + "ZELVAN Version: 2.3.9 (Wed Jul 17 14:02:27 BST 2002)\n"
        self.assertTrue(run.stderr.startswith(title), run.stderr)
        self.assertEqual(run.stderr.count(title), 2)
        self.assertEqual(run.stderr.count(RULE), 4)
        self.assertTrue(run.stderr.endswith(RULE))
        self.assertIn("\nzelvan -s query.seq -qseq_format 1 -bdb swissprot > logfile\n", run.stderr)
        self.assertLessEqual(max(map(len, run.stderr.splitlines())), 80)

    def test_help_goes_to_the_configured_error_stream(self):
        log = self.work / "log"
        self.configure(f"STDERR {log}\n")
        self.expect(self.zelvan(), 255)
        self.assertIn("See zelvan_manual", log.read_text())

    def test_odd_count_is_checked_before_anything_is_applied(self):
        message = (
            "You have supplied 3 commands and arguments\n"
            "I am expecting equal numbers of commands and arguments\n"
            "Every command should have a value: e.g. TIME 1 not TIME\n"
            "Type zelvan for brief help\n"
        )
        log = self.work / "log"
        self.expect(self.zelvan("STDERR", log, "TIME"), 255, message)
        self.assertFalse(log.exists())
        self.expect(self.zelvan("TIME"), 255, message.replace("3", "1"))

    def test_unknown_key_ends_the_reading_but_not_the_run(self):
        run = self.zelvan("-mode", 31, "-nonsense", 1, "-mode", 11)
        report = "Unrecognised Parameter Command\nArgument:3 Type: -nonsense \n"
        self.expect(run, 255, report + "Sorry but MODE:31 is not available\n")
        self.expect(self.zelvan(*QUIET, "--mode", 31), 0, report.replace("-nonsense", "--mode"))

    def test_modes(self):
        for mode in (1, 3, 31, -1, 201, 98):
            self.expect(self.zelvan("MODE", mode), 255, f"Sorry but MODE:{mode} is not available\n")
        for mode in (11, 29, 9999):
            self.expect(self.zelvan("MODE", mode), 0)

    def test_profile_cut_must_not_exceed_the_cut_in_force(self):
        refusal = "Error:  PROBCUT (0.001) must be >= PROBCUT2 (0.01)\n"
        self.expect(self.zelvan("-probcut2", 0.01, *QUIET), 255, refusal)
        self.expect(self.zelvan("-probcut2", 0.01, "-probcut", 1, *QUIET), 255, refusal)
        self.expect(self.zelvan("-probcut", 0.1, "-probcut2", 0.01, "-probcut", 1e-9, *QUIET), 0)
        self.configure("PROBCUT2 0.5\n")
        self.expect(self.zelvan(*QUIET), 0)

    def test_refused_precision_ends_with_status_0(self):
        run = self.zelvan("-precision", 15, "MODE", 31)
        self.assertEqual(run.status, 0)
        self.assertRegex(run.stderr, r"^Invalid Precision multiplier in getcmd: [^\n]*\n$")
        self.configure("PRECISION 15\n")
        self.assertRegex(self.zelvan(*QUIET).stderr, r"^Invalid Precision multiplier in getpars: [^\n]*\n$")
        self.configure()
        for precision in (1, 0, 1000):
            self.expect(self.zelvan("-precision", precision, *QUIET), 0)

    def test_which_reports_follow_the_error_stream_argument(self):
        log = self.work / "log"
        for arguments, status, report in (
            (("PROBCUT2", 0.5), 255, "Error:  PROBCUT"),
            (("PRECISION", 7), 0, "Invalid Precision"),
            (("STDOUT", "/missing/report"), 1, "Cannot Open File: /missing/report: No such file or directory\n"),
        ):
            run = self.zelvan("STDERR", log, *arguments)
            self.assertEqual((run.status, log.read_text()), (status, ""))
            self.assertTrue(run.stderr.startswith(report), run.stderr)
        self.expect(self.zelvan("STDERR", log, "MODE", 31, "nonsense", 1), 255)
        self.assertEqual(
            log.read_text(),
            "Unrecognised Parameter Command\nArgument:5 Type: nonsense \nSorry but MODE:31 is not available\n",
        )

    def test_report_that_cannot_be_written_is_no_success(self):
        if not pathlib.Path("/dev/full").exists():
            self.skipTest("no /dev/full here")
        run = self.zelvan("-d", self.file("db", ">a\nMK\n>b\nMKV\n"), "-nsubset", 2, "-mode", 667, "-stdout", "/dev/full")
        self.assertEqual(run.status, 1)
        self.assertIn("No space left on device", run.stderr)


class Configuration(zelvan_cli.TestCase):
    def test_without_directory_the_current_one_is_used(self):
        run = self.zelvan(*QUIET, cwd=self.config, env={"ZELVANDIR": None})
        self.assertEqual((run.status, run.stderr), (0, WARNING))
        run = self.zelvan(*QUIET, env={"ZELVANDIR": None})
        self.assertEqual(run.status, 255)
        self.assertTrue(run.stderr.startswith(WARNING + "Error opening Parameter file: No such file or directory\n"))
        self.assertTrue(run.stderr.endswith("Error decoding parameter file\n"))
        self.assertIn(".//zelvan_defaults.dat", run.stderr)

    def test_each_file_is_needed(self):
        for name, report in (
            ("defaults", "Error opening Parameter file"),
            ("alias", "Error opening ALIAS file"),
            ("gapdefs", "Error opening gapdefs file"),
        ):
            self.configure()
            path = self.config / f"zelvan_{name}.dat"
            path.unlink()
            last = "Error decoding gap defaults file\n" if name == "gapdefs" else "Error decoding parameter file\n"
            for reason in ("No such file or directory", "Is a directory"):
                run = self.zelvan(*QUIET)
                self.assertEqual((run.status, run.stdout), (255, ""))
                self.assertTrue(run.stderr.startswith(f"{report}: {reason}\nFile: {path}\n"), run.stderr)
                self.assertTrue(run.stderr.endswith(last), run.stderr)
                path.mkdir(exist_ok=True)
            path.rmdir()

    def test_damaged_files_are_refused(self):
        for files, report in (
            ({"defaults": "MODE 11\nNOKEY 1\n"}, "Unrecognised Parameter Command\nNOKEY \nFile: "),
            ({"defaults": "MODE 11\nNITER\n"}, "No value for NITER in line 4 of "),
            ({"defaults": bytes(range(256)) * 900}, "Unrecognised Parameter Command\n"),
            ({"aliases": "MODE mode\n"}, "Should have text or newline after # symbol in alias file: "),
            ({"gapdefs": "2:BLOSUM62:1\n"}, "Error decoding gap penalties: "),
            ({"gapdefs": "2:BLOSUM62:1:12:15:15\n" * 501}, "Error decoding gap penalties: "),
        ):
            self.configure(**files)
            run = self.zelvan(*QUIET)
            self.assertEqual((run.status, run.stdout), (255, ""))
            self.assertTrue(run.stderr.startswith(report), run.stderr)
            self.assertRegex(run.stderr, r"\nError decoding (parameter|gap defaults) file\n$")

    def test_progress_follows_the_defaults_file_only(self):
        progress = "Getting Default Gaps\nDecoding Command line\n"
        self.assertEqual(self.zelvan("-verbose", 1, *QUIET).stderr, "")
        self.configure("VERBOSE 1\n")
        self.assertEqual(self.zelvan("-verbose", 0, *QUIET).stderr, progress)
        self.configure("VERBOSE 51\n")
        gaps = "###Now in GetGaps \nAllocating gaps array structure \n"
        self.assertEqual(self.zelvan(*QUIET).stderr, progress.replace("\n", "\n" + gaps, 1))

    def test_windows_line_ends_do_not_matter(self):
        self.configure(defaults=None)
        for path in self.config.iterdir():
            path.write_bytes(path.read_bytes().replace(b"\n", b"\r\n"))
        run = self.zelvan(*QUIET)
        self.assertEqual((run.status, run.stderr), (0, ""))


class Penalties(zelvan_cli.TestCase):
    """Whose penalties a search takes, read from the header of its report."""

    def header(self, *args):
        run = self.zelvan("-s", zelvan_cli.EXAMPLES / "engb.fasta", "-d", zelvan_cli.EXAMPLES / "uniprot_sample.fasta",
                          "-niter", 1, "-apt", 0, "-max_aout", 0, *args)
        self.assertEqual(run.status, 0, run.stderr)
        return dict(re.findall(r"^# (L[DI] penalty|Matrix file): +(\S+)", run.stdout, re.M))

    def test_table_wins_unless_it_is_switched_off(self):
        table = "2:BLOSUM62:1:11:9:9\n0:BLOSUM62:7:7:7:7\n"
        self.configure(defaults=None, gapdefs=table)
        self.assertEqual(
            self.header("-ld_pen", 2, "-li_pen", 14),
            {"Matrix file": f"{zelvan_cli.MATRICES}/BLOSUM62", "LD penalty": "1.00", "LI penalty": "11.00"},
        )
        switched_off = self.header("-ugd", 0, "-ld_pen", 1.29, "-li_pen", 14)
        self.assertEqual((switched_off["LD penalty"], switched_off["LI penalty"]), ("1.29", "14.00"))
        self.assertEqual(self.header("-mode", 200)["LD penalty"], "7.00")
        other = self.header("-m", "PAM100", "-ld_pen", 2, "-li_pen", 14)
        self.assertEqual((other["LD penalty"], other["LI penalty"]), ("2.00", "14.00"))


class Installation(zelvan_cli.TestCase):
    def test_installed_program_finds_its_data(self):
        build = pathlib.Path(zelvan_cli.PROGRAM).parent
        cmake = shutil.which("cmake")
        if cmake is None or not (build / "cmake_install.cmake").exists():
            self.skipTest("the program does not stand in a build directory")
        prefix = pathlib.Path(tempfile.mkdtemp(dir=self.work))
        subprocess.run([cmake, "--install", build, "--prefix", prefix], check=True, capture_output=True)
        for matrix in ("PAM100", "md.mat"):
            done = subprocess.run(
                [prefix / "bin" / "zelvan", "-s", zelvan_cli.EXAMPLES / "engb.fasta",
                 "-d", zelvan_cli.EXAMPLES / "uniprot_sample.fasta", "-m", matrix, "-niter", "1",
                 "-apt", "0", "-max_aout", "0"],
                env={"ZELVANDIR": str(prefix / "share" / "zelvan" / "config")},
                cwd=self.work, capture_output=True, text=True, check=False,
            )
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertIn(f"# Matrix file:    {prefix}/share/zelvan/matrices/{matrix}\n", done.stdout)


if __name__ == "__main__":
    unittest.main()
