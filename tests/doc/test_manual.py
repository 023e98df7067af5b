"""The manual: its examples are what the program writes, its tables know every key, its pages can be read."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
BUILD = pathlib.Path(os.environ["ZELVAN_BUILD"])
DOC, PAGES = SOURCE / "doc", BUILD / "manual"
needs_pages = unittest.skipUnless((PAGES / "zelvan_manual.7").exists(), "built without pandoc")


class ManualTest(unittest.TestCase):
    @unittest.skipIf(os.environ.get("ZELVAN_SANITIZE") == "ON", "the sanitizers make it slow and change no output")
    def test_examples_show_what_the_program_writes(self):
        done = subprocess.run([sys.executable, DOC / "run_examples.py", os.environ["ZELVAN"], BUILD / "config"],
                              capture_output=True, text=True, check=False)  # fmt: skip
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    @needs_pages
    def test_every_key_and_alias_is_explained(self):
        man, html = (" ".join((PAGES / f"zelvan_manual.{kind}").read_text().split()) for kind in ("7", "html"))
        lines = (BUILD / "config" / "zelvan_alias.dat").read_text().splitlines()
        self.assertGreater(len(lines), 100)
        for line in lines:
            names, _, description = line.partition("#")
            name, *aliases = names.split()
            self.assertIn(f"\\f[B]{name}\\f[R]", man)
            self.assertIn(f"<code>{name}</code>", html)
            if "without effect" not in description:
                for alias in aliases:
                    self.assertIn(f"<code>-{alias}</code>", html)
        self.assertIn("number, in matrix units; built in: <code>6</code>; shipped: <code>9</code>", html)
        self.assertIn("path; built in: <code>./</code>; shipped: <code>DATA/matrices</code>", html)

    @needs_pages
    def test_options_of_the_filters_are_in_their_pages(self):
        for program in (SOURCE / "filters").iterdir():
            told = subprocess.run([sys.executable, program, "--help"], capture_output=True, text=True, check=True).stdout
            page = (PAGES / f"{program.name}.1").read_text()
            if page.startswith(".so man1/"):
                page = (PAGES / page.removeprefix(".so man1/").strip()).read_text()
            for option in set(re.findall(r"(?<![\w-])--?[a-z][a-z-]*\b(?!_)", told)):
                self.assertIn(f"\\f[B]{option}".replace("-", "\\-"), page, program.name)

    def test_every_message_of_the_program_is_explained(self):
        """Sentences that end a run, or warn, by their first words."""
        explained = re.sub(r"\s+", " ", (DOC / "manual" / "80_troubleshooting.md").read_text())
        ends = re.compile(r'(?:UTend_\w+\([^"]*|UTerror\(|error\()"((?:[^"\\]|\\.)*)"', re.S)
        seen = 0
        for path in (SOURCE / "src").rglob("*.cpp"):
            for text in ends.findall(path.read_text()):
                first = re.sub(r"\s+", " ", re.split(r"\\n|%", text)[0]).rstrip(":( ")
                if len(first.split()) < 2 and first not in ("malloc error", "realloc error"):
                    continue
                seen += 1
                self.assertIn(first, explained, f"{path}: {text}")
        self.assertGreater(seen, 50)

    @needs_pages
    @unittest.skipUnless(shutil.which("groff"), "groff is not installed")
    def test_pages_can_be_typeset(self):
        for page in PAGES.glob("*.[17]"):
            if page.read_text().startswith(".so"):
                continue
            for width in (78, 118):
                done = subprocess.run(["groff", "-t", "-man", "-Tutf8", "-ww", f"-rLL={width}n", page],
                                      capture_output=True, text=True, check=True)  # fmt: skip
                self.assertEqual(done.stderr, "", page.name)


if __name__ == "__main__":
    unittest.main()
