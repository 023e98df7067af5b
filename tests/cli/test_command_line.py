"""The command line, the configuration files and the choice of the mode, as a user meets them."""

import re
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
ODD_COUNT = (
    "You have supplied {} commands and arguments\n"
    "I am expecting equal numbers of commands and arguments\n"
    "Every command should have a value: e.g. TIME 1 not TIME\n"
    "Type zelvan for brief help\n"
)
HELP = "Help: zelvan without arguments shows the version and an overview, man zelvan_manual explains everything\n"
UNKNOWN_KEY = "Unrecognised Parameter Command\nArgument:{} Type: {} \nEverything from here on is ignored{}\n"
NO_NUMBER = "Warning: {}: the value is not a {}number, {} is taken\n"
NO_MODE = "Sorry but MODE:{} is not available\n"
CUTS = "Error:  PROBCUT (0.001) must be >= PROBCUT2 (0.01)\n"
QUIET = ("-mode", 9999)  # a mode that is accepted and does nothing


class CommandLine(zelvan_cli.TestCase):
    def test_status_and_words(self):
        for args, status, words in (
            *(((word,), 255, ODD_COUNT.format(1) + HELP) for word in ("TIME", "--help")),
            (("-nonsense", 1, "-precision", 15, "x"), 255, ODD_COUNT.format(5)),  # counted before anything is applied
            # An unknown key ends the reading but not the run: what came before it holds.
            (("-mode", 31, "-nonsense", 1, "-mode", 11), 255, UNKNOWN_KEY.format(3, "-nonsense", "") + NO_MODE.format(31)),
            *(((*QUIET, typed, 31), 0, UNKNOWN_KEY.format(3, typed, f": did you mean -{meant}?"))
              for typed, meant in (("--mode", "mode"), ("-Nitre", "niter"), ("MATRX_FILE", "matrix_file"), ("-S", "s"),
                                   ("-tme", "time"))),
            *(((*QUIET, typed, 31), 0, UNKNOWN_KEY.format(3, typed, "")) for typed in ("-h", "", "-", "-nxtxr", "x" * 10**5)),
            ((*QUIET, "-evalue", 1, "-inclusion_ethresh", 1, "-num_iterations", 1), 0, ""),
            *((("MODE", mode), 255, NO_MODE.format(mode)) for mode in (1, 3, 31, -1, 201, 98)),
            *((("MODE", mode), 0, "") for mode in (11, 29, 9999)),
            # A value is a number as far as it is one; none at all is 0.
            (("-niter", "three", "-e", "0.5", *QUIET), 0, NO_NUMBER.format("NITER three", "whole ", 0)),
            (("-max_nseq", "1e6", *QUIET), 0, NO_NUMBER.format("MAX_NSEQ 1e6", "whole ", 1)),
            (("-ld_pen", "1,5", *QUIET), 0, NO_NUMBER.format("LD_PEN 1,5", "", 1)),
            (("-mode", "9999x", "-e", ""), 0, NO_NUMBER.format("MODE 9999x", "whole ", 9999) + NO_NUMBER.format("PROBCUT ", "", 0)),
            # PROBCUT2 is held against the PROBCUT in force when it arrives.
            (("-probcut2", 0.01, *QUIET), 255, CUTS),
            (("-probcut2", 0.01, "-probcut", 1, *QUIET), 255, CUTS),
            (("-probcut", 0.1, "-probcut2", 0.1, "-probcut", 1e-9, *QUIET), 0, ""),
            *((("-precision", precision, *QUIET), 0, "") for precision in (1, 0, 1000, -20)),
            *((("-precision", precision, "MODE", 31), 0, "Invalid Precision multiplier in getcmd: Invalid argument\n")
              for precision in (15, 2, -1, 99)),
            (("-stdout", "/missing/x"), 1, "Cannot Open File: /missing/x: No such file or directory\n"),
        ):
            with self.subTest(args):
                self.refuse(re.escape(words), *args, status=status)
        self.configure("PROBCUT2 0.5\n")
        self.refuse("", *QUIET, status=0)

    def test_which_reports_follow_the_error_stream(self):
        """Those about the arguments themselves do; those about values, files and the count of arguments do not."""
        log = self.work / "log"
        for args, status, told, logged in (
            (("PROBCUT2", 0.5), 255, "Error:  PROBCUT .*", ""),
            (("PRECISION", 7), 0, "Invalid Precision .*", ""),
            (("STDOUT", "/missing/report"), 1, "Cannot Open File: .*", ""),
            (("MODE", 31, "nonsense", 1), 255, "", UNKNOWN_KEY.format(5, "nonsense", "") + NO_MODE.format(31)),
        ):
            self.refuse(told, "STDERR", log, *args, status=status)
            self.assertEqual(log.read_text(), logged)

    def test_no_arguments_show_the_help_between_two_titles(self):
        title = RULE + "ZELVAN Version: 2.3.9 (Wed Jul 17 14:02:27 BST 2002)\n"
        self.refuse(f"{re.escape(title)}[^\n]+\n{RULE}See zelvan_manual .*\n\n{re.escape(title)}[^\n]+\n{RULE}")
        text = self.zelvan().stderr
        self.assertEqual(len(text.splitlines()), 4 + 25 + 4)
        self.assertIn("\nzelvan -s query.seq -qseq_format 1 -bdb swissprot > logfile\n", text)
        self.assertLessEqual(max(map(len, text.splitlines())), 80)


class Configuration(zelvan_cli.TestCase):
    def test_without_directory_the_current_one_is_used(self):
        self.refuse(WARNING, *QUIET, cwd=self.config, env={"ZELVANDIR": None}, status=0)
        report = "Error opening Parameter file: No such file or directory\nFile: .//zelvan_defaults.dat\n"
        self.refuse(f"{WARNING}{report}Error decoding parameter file\n", *QUIET, env={"ZELVANDIR": None})

    def test_each_file_is_needed(self):
        for name, report, last in (("defaults", "Parameter file", "parameter"), ("alias", "ALIAS file", "parameter"),
                                   ("gapdefs", "gapdefs file", "gap defaults")):  # fmt: skip
            self.configure()
            path = self.config / f"zelvan_{name}.dat"
            path.unlink()
            for reason in ("No such file or directory", "Is a directory"):
                self.refuse(f"Error opening {report}: {reason}\nFile: {path}\n.*Error decoding {last} file\n", *QUIET)
                path.mkdir(exist_ok=True)
            path.rmdir()

    def test_damaged_files_are_refused(self):
        for files, report in (
            ({"defaults": "MODE 11\nNOKEY 1\n"}, "Unrecognised Parameter Command\nNOKEY \nFile: "),
            ({"defaults": "MODE 11\nNITER\n"}, "No value for NITER in line 4 of "),
            ({"defaults": "PRECISION 15\nNOKEY 1\n"}, "Invalid Precision multiplier in getpars: "),
            ({"aliases": "MODE mode\n"}, "Should have text or newline after # symbol in alias file: "),
            ({"gapdefs": "2:BLOSUM62:1\n"}, "Error decoding gap penalties: "),
            ({"gapdefs": 501 * "2:md.mat:1.5:2:3:4\n"}, "Error decoding gap penalties: .*  Line: 501"),
        ):
            self.configure(**files)
            if "Precision" in report:
                self.refuse(f"{report}[^\n]+\n", *QUIET, status=0)
            else:
                self.refuse(rf"{report}.*\nError decoding (parameter|gap defaults) file\n", *QUIET)

    def test_windows_line_ends_do_not_matter(self):
        self.configure(defaults=None)
        for path in self.config.iterdir():
            path.write_bytes(path.read_bytes().replace(b"\n", b"\r\n"))
        self.refuse("", *QUIET, status=0)


if __name__ == "__main__":
    unittest.main()
