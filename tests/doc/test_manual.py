"""The manual: its examples are what the program writes, its tables know every key, its pages can be read."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
CONFIGURATION = pathlib.Path(os.environ["ZELVAN_BUILD"]) / "config"
DOC = SOURCE / "doc"
sys.path.insert(0, str(DOC))

import make_manual  # noqa: E402


class ManualTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        holder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(holder.cleanup)
        cls.pages = pathlib.Path(holder.name)
        subprocess.run([sys.executable, DOC / "make_manual.py", cls.pages], check=True)
        cls.manual = (cls.pages / "zelvan_manual.7").read_text()
        cls.html = (cls.pages / "zelvan_manual.html").read_text()

    @unittest.skipIf(os.environ.get("ZELVAN_SANITIZE") == "ON", "the sanitizers make it slow and change no output")
    def test_examples_show_what_the_program_writes(self):
        done = subprocess.run([sys.executable, DOC / "run_examples.py", os.environ["ZELVAN"], CONFIGURATION],
                              capture_output=True, text=True, check=False)  # fmt: skip
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    def test_every_key_and_alias_is_explained(self):
        keys = make_manual.read_keys()
        self.assertGreater(len(keys), 100)
        for name, aliases, description, *_ in keys:
            self.assertIn(f"\\fB{name}\\fR", self.manual)
            self.assertIn(f"<code>{name}</code>", self.html)
            if make_manual.NO_EFFECT not in description:
                for alias in aliases:
                    self.assertIn(f"<code>-{alias}</code>", self.html)

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

    @unittest.skipUnless(shutil.which("groff"), "groff is not installed")
    def test_pages_can_be_typeset(self):
        for page in ("zelvan_manual.7", "zelvan.1"):
            done = subprocess.run(["groff", "-t", "-man", "-Tutf8", "-ww", "-rLL=100n", self.pages / page],
                                  capture_output=True, text=True, check=True)  # fmt: skip
            self.assertEqual(done.stderr, "")


if __name__ == "__main__":
    unittest.main()
