"""Kernel objects are compiled for processors that the rest of the program must not need: whatever they share with
other objects, a linker may pick for all."""
import os
import re
import subprocess
import unittest

ENTRIES = {
    "local": "(zelvan::KernelCall const&)",
    "flag": "(zelvan::FlagBlock const&)",
    "frame": "(zelvan::Translated, zelvan::KernelCall const&)",
    "frame_flag": "(zelvan::FrameFlagBlock const&)",
}
SETS = os.environ["ZELVAN_KERNEL_SETS"].split(",")
OF_LOCAL_ONLY = {"avx512vbmi"}


def symbols_by_object():
    archives = os.environ["ZELVAN_KERNEL_ARCHIVES"].split(os.pathsep)
    listing = subprocess.run(["nm", "--demangle", *archives], check=True, capture_output=True, text=True).stdout
    objects = {}
    for line in listing.splitlines():
        if line.endswith(":"):
            current = objects.setdefault(line.split(".")[0], [])
        symbol = re.match(r"[0-9a-f ]{16} (\S) (.+)", line)
        if symbol:
            current.append(symbol.groups())
    return objects


class KernelObjects(unittest.TestCase):
    def test_they_share_their_entry_and_call_the_memory_routines_of_c(self):
        objects = symbols_by_object()
        for family, arguments in ENTRIES.items():
            sets = [one for one in SETS if family == "local" or one not in OF_LOCAL_ONLY]
            for name in (f"{family}_kernel_{one}" for one in sets):
                shared = [text for kind, text in objects[name] if kind.isupper() and kind != "U" or kind in "vwu"]
                self.assertEqual(shared, [f"zelvan::run_{name}{arguments}"])
                called = {text for kind, text in objects[name] if kind == "U"} - {"_GLOBAL_OFFSET_TABLE_"}
                self.assertLessEqual(called, {"memcpy", "memset", "memmove", "__stack_chk_fail"}, name)


if __name__ == "__main__":
    unittest.main()
