"""What "cmake --install" and the Debian package leave: commands that work from any shell, wherever they are put."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
BUILD = os.environ["ZELVAN_BUILD"]
EXAMPLES = f"-s {SOURCE}/examples/engb.fasta -d {SOURCE}/examples/uniprot_sample.fasta"
SEARCH = f"zelvan {EXAMPLES} -niter 1"


def run(*command, **more):
    done = subprocess.run(command, capture_output=True, text=True, check=False, **more)
    return done.returncode, done.stdout, done.stderr


class InstallationTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        holder = tempfile.TemporaryDirectory(prefix="zelvan_install_")
        cls.addClassCleanup(holder.cleanup)
        cls.prefix = pathlib.Path(holder.name) / "opt"
        status, cls.told, errors = run("cmake", "--install", BUILD, "--prefix", str(cls.prefix))
        assert status == 0, cls.told + errors

    def user(self, commands, shell="bash"):
        """Commands in a shell that knows nothing but the system's programs, after the line that was told."""
        line = self.told.strip().splitlines()[-1].removeprefix("-- ").strip()
        environment = {"PATH": "/usr/local/bin:/usr/bin:/bin", "HOME": str(self.prefix), "LC_ALL": "C"}
        return run(shell, "-c", f"{line}\n{commands}", cwd=self.prefix, env=environment)

    def test_search_after_the_line_that_the_installation_told(self):
        for shell in ("bash", "sh"):
            status, out, errors = self.user(f"{SEARCH} | zelvan2tsv --hits | cut -f 2,3", shell)
            self.assertEqual((status, errors), (0, ""))
            self.assertEqual(out.splitlines()[0], "1\tsp|A5IMB8|ENGB_THEP1")
        status, out, _ = self.user(f"{SEARCH} | zelvan2html | tail -n 1")
        self.assertEqual((status, out.endswith("</body></html>")), (0, True))
        status, out, _ = self.user(f"{SEARCH} > report; for filter in zelvan2json zelvan2msa zelvan2a3m; do "
                                   "$filter report | head -c 12; done; python3 -m json.tool < share/zelvan/*.schema.json")
        self.assertEqual((status, out.split('{\n')[0]), (0, '{"format":"z# STOCKHOLM >sp|Q600K7|E'))
        _, out, errors = self.user(f"zelvan -mode 12 -do_stats 1 -m PAM100 -s {SOURCE}/examples/engb.fasta "
                                   f"-d {SOURCE}/examples/dna_sample.fasta")  # fmt: skip
        self.assertEqual(errors, "")
        self.assertIn("ENGB_THEP1", out)
        self.assertIn(f"# Matrix file:    {self.prefix}/share/zelvan/matrices/PAM100\n", out)

    def test_command_finds_its_configuration_wherever_it_is(self):
        """Moved, with a blank in the path, through links; what the user sets counts more."""
        moved = self.prefix.parent / "moved here"
        shutil.copytree(self.prefix, moved, symlinks=True)
        defaults = self.prefix / "share/zelvan/config/zelvan_defaults.dat"
        defaults.rename(defaults.with_suffix(".hidden"))  # as if the first installation were gone
        self.addCleanup(defaults.with_suffix(".hidden").rename, defaults)
        (moved / "second").symlink_to("bin/zelvan")
        (moved / "first").symlink_to(moved / "second")
        matrices, own = moved / "share/zelvan/matrices", moved / "own"
        shutil.copytree(moved / "share/zelvan/config", own)
        for command, settings, expected in (
            (f"./second {EXAMPLES}", {}, matrices / "VTML160"),
            (f"'{moved}/first' {EXAMPLES} -matrix_dir {SOURCE}/data/matrices", {}, SOURCE / "data/matrices/VTML160"),
            (f"PATH=bin:$PATH; zelvan -mode 22 -do_stats 1 {EXAMPLES.replace('engb', 'engb_dna')}", {}, matrices / "VTML160"),
            (f"bin/zelvan {EXAMPLES}", {"ZELVANDIR": str(own)}, self.prefix / "share/zelvan/matrices/VTML160"),
        ):
            status, out, errors = run("sh", "-c", f"{command} -niter 1", cwd=moved, env={"PATH": "/usr/bin:/bin", **settings})
            self.assertEqual((status, errors), (0, ""), command)
            self.assertIn(f"# Matrix file:    {expected}\n", out)
        self.assertRegex(run("bin/zelvan", cwd=moved)[2], "^-+\nZELVAN Version: 2")
        self.assertIn("You have supplied 1 commands", run("bin/zelvan", "-s", cwd=moved)[2])

    @unittest.skipUnless((pathlib.Path(BUILD) / "manual/zelvan_manual.7").exists(), "built without pandoc")
    def test_manual_is_there(self):
        share = self.prefix / "share"
        commands = {path.name for path in (self.prefix / "bin").iterdir()}
        self.assertEqual(commands, {path.stem for path in (share / "man/man1").iterdir()})
        self.assertIn("</html>", (share / "doc/zelvan/zelvan_manual.html").read_text())
        if shutil.which("man"):
            self.assertEqual(self.user("man -w zelvan_manual")[1], f"{share}/man/man7/zelvan_manual.7\n")

    @unittest.skipUnless(pathlib.Path("/usr/lib/python3/dist-packages/typer").exists(), "python3-typer is not installed")
    def test_zelvan_easy_needs_no_environment(self):
        """Neither ZELVANDIR nor PATH; and the tree may be moved."""
        moved = self.prefix.parent / "moved"
        shutil.copytree(self.prefix, moved, symlinks=True)
        environment = {"PATH": "/usr/bin:/bin", "HOME": str(moved), "LC_ALL": "C"}
        command = (moved / "bin/zelvan-easy", "search", f"{SOURCE}/examples/engb.fasta",
                   f"{SOURCE}/examples/uniprot_sample.fasta", "--cache", moved / "cache", "--out", moved / "out",
                   "--no-mask", "--iterations", "1")  # fmt: skip
        status, out, errors = run(*map(str, command), env=environment, cwd=moved)
        self.assertEqual(status, 0, errors)
        self.assertIn("sp|A5IMB8|ENGB_THEP1", out)
        report = next((moved / "out/reports").iterdir()).read_text()
        self.assertIn(f"# Matrix file:    {moved}/share/zelvan/matrices/VTML160\n", report)
        done = run("bash", "-c", f". {moved}/share/bash-completion/completions/zelvan-easy; "
                   f"COMP_WORDS=(zelvan-easy search --max); COMP_CWORD=2; _zelvan_easy {moved}/bin/zelvan-easy; "
                   'echo "${COMPREPLY[@]}"', env=environment)  # fmt: skip
        self.assertEqual(done, (0, "--max-target-seqs\n", ""))

    def test_completion(self):
        self.user("mkdir -p dbs; touch dbs/one.bix dbs/two.bix query.fasta")
        for words, expected in (
            ("-qseq_f", "-qseq_file -qseq_format"),
            ("-m BLOSUM6", "BLOSUM62"),
            ("-codon v", "vertebrate_mitochondrial.tst"),
            ("-e ''", ""),
            ("-dd dbs -bdb ''", "one two"),
            ("-s que", "query.fasta"),
            ("-show_titles ''", "0 1"),
        ):
            self.assertEqual(self.complete(words), expected.split(), words)
        self.assertIn("212", self.complete("-s x -mode 2"))

    def complete(self, words):
        status, out, errors = self.user(". share/bash-completion/completions/zelvan; "
                                        f"COMP_WORDS=(zelvan {words}); COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); "
                                        '_zelvan; printf "%s\n" "${COMPREPLY[@]}"')  # fmt: skip
        self.assertEqual((status, errors), (0, ""))
        return out.split()


@unittest.skipUnless(shutil.which("dpkg-shlibdeps"), "dpkg-dev is not installed")
class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        holder = tempfile.TemporaryDirectory(prefix="zelvan_package_")
        cls.addClassCleanup(holder.cleanup)
        cls.root = pathlib.Path(holder.name) / "root"
        made = run("cpack", "-G", "DEB", "-B", holder.name, "--config", f"{BUILD}/CPackConfig.cmake", cwd=BUILD,
                   umask=0o002)  # as many users have it: no permission may come of it
        assert made[0] == 0, made
        (cls.package,) = pathlib.Path(holder.name).glob("*.deb")
        assert run("dpkg", "-x", str(cls.package), str(cls.root))[0] == 0

    def test_commands_work_in_a_shell_that_knows_nothing(self):
        """Neither a login shell nor ZELVANDIR: a search, a build, the filters, many queries."""
        self.assertIn("/usr/share/zelvan/matrices",
                      (self.root / "usr/share/zelvan/config/zelvan_defaults.dat").read_text().split())  # fmt: skip
        data = f"-d {SOURCE}/examples/uniprot_sample.fasta"
        commands = [
            (f"{SEARCH} > report && zelvan2tsv report | head -n 1 | cut -f 2", "sp|A5IMB8|ENGB_THEP1\n"),
            (f"zelvan -mode 99 {data} -bdb sample -apply_index 1 2>&1 | tail -n 1 | cut -d : -f 2",
             " 4000 sequences, 1752443 residues\n"),
            (f"zelvan -s {SOURCE}/examples/engb.fasta -bdb sample -niter 1 | zelvan2json | head -c 9", '{"format"'),
            ("for filter in zelvan2msa zelvan2a3m zelvan2html; do $filter report | head -c 9; done", "# STOCKHO>sp|Q600K<!DOCTYPE"),
        ]
        if pathlib.Path("/usr/lib/python3/dist-packages/typer").exists():
            commands.append((f"zelvan-easy search {SOURCE}/examples/engb.fasta sample --no-mask -n 1 -q -o out >told && "
                             "head -n 1 out/hits.tsv | cut -f 2", "sp|A5IMB8|ENGB_THEP1\n"))  # fmt: skip
            commands.append(("zelvan-easy --version", f"zelvan-easy {self.version()}\n"))
        for command, expected in commands:
            done = run("sh", "-c", command, cwd=self.root, env={"PATH": f"{self.root}/usr/bin:/usr/bin:/bin"})
            self.assertEqual(done, (0, expected, ""), command)

    def version(self):
        """That of the newest release that the changes tell of."""
        return next(line.split()[1] for line in (SOURCE / "CHANGELOG.md").read_text().splitlines() if line.startswith("## "))

    def test_package_declares_what_it_is_and_needs(self):
        fields = run("dpkg", "-f", str(self.package))[1]
        for expected in (f"Version: {self.version()}\n", "Depends: .*python3-typer.*libstdc", "Recommends: .*tantan"):
            self.assertRegex(fields, expected)
        if shutil.which("lintian") and (pathlib.Path(BUILD) / "manual/zelvan_manual.7").exists():
            self.assertEqual(run("lintian", "--fail-on", "warning", str(self.package))[:2], (0, ""))


if __name__ == "__main__":
    unittest.main()
