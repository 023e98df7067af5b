"""The rules of the source tree that a compiler does not check."""
import os
import pathlib
import re
import unittest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"]) / "src"

# Which folders a folder may include. driver/main.cpp, the dispatch, is free; the parameter record's header is a
# leaf that everyone may include.
MAY_USE = {
    "util": set(),
    "driver": {"util"},
    "seq": {"util"},
    "bdb": {"util", "seq"},
    "stats": {"util", "seq"},
    "align": {"util", "seq", "stats"},
    "report": {"util", "seq", "align", "stats"},
    "iter": {"util", "seq", "bdb", "align", "stats", "report"},
    "dna": {"util", "seq", "bdb", "align", "stats", "report"},
}
CONFIGURATION = {"driver/params.h", "driver/gap_defaults.h", "driver/help.h", "driver/progress.h"}


def sources():
    """(path below src/, text) of every source file."""
    for path in SOURCE.rglob("*.*"):
        if path.suffix in (".h", ".cpp"):
            yield path.relative_to(SOURCE).as_posix(), path.read_text(encoding="utf-8")


class Layout(unittest.TestCase):
    def test_every_include_follows_the_folder_table(self):
        seen = 0
        for path, text in sources():
            folder = path.split("/")[0]
            for include in re.findall(r'^#include "([^"]+)"', text, re.M):
                seen += 1
                if path == "driver/main.cpp" or include in CONFIGURATION and folder != "util":
                    continue
                used = include.split("/")[0]
                self.assertTrue(used == folder or used in MAY_USE[folder], f"{path} includes {include}")
        self.assertGreater(seen, 50)

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
