"""The rules of the source tree that a compiler does not check."""
import os
import pathlib
import re
import unittest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"]) / "src"


def sources():
    """(path below src/, text) of every source file."""
    for path in SOURCE.rglob("*.*"):
        if path.suffix in (".h", ".cpp"):
            yield path.relative_to(SOURCE).as_posix(), path.read_text(encoding="utf-8")


class Layout(unittest.TestCase):
    def test_only_the_failure_routines_end_the_process(self):
        ends = re.compile(r"\b(_?_?[eE]xit|abort|quick_exit|terminate)\s*\(")
        found = {path for path, text in sources() if ends.search(re.sub(r"//.*", "", text))}
        self.assertEqual(found, {"util/process_end.cpp"})

    def test_storage_comes_from_the_checked_allocator(self):
        owners = {"util/memory.cpp", "util/memory.h"}
        raw = re.compile(r"\bnew\s+[A-Za-z_]|\b(malloc|calloc|realloc|free)\s*\(|std::vector<|std::string\b")
        for path, text in sources():
            if path in owners or path.startswith("stats/numerics"):
                continue
            code = re.sub(r"//.*", "", text)
            self.assertIsNone(raw.search(code), f"{path}: {raw.search(code)}")


if __name__ == "__main__":
    unittest.main()
