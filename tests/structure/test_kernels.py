"""Kernel objects are compiled for processors that the rest of the program must not need: whatever they share with
other objects, a linker may pick for all."""
import os
import re
import subprocess
import unittest


def symbols_by_object():
    listing = subprocess.run(["nm", "--demangle", os.environ["ZELVAN_KERNEL_ARCHIVE"]], check=True,
                             capture_output=True, text=True).stdout
    objects = {}
    for line in listing.splitlines():
        member = re.fullmatch(r"((?:\w+_)?kernel_\w+)\.cpp\.o(bj)?:", line)
        if line.endswith(":"):
            current = objects.setdefault(member.group(1), []) if member else None
        symbol = re.match(r"[0-9a-f ]{16} (\S) (.+)", line)
        if symbol and current is not None:
            current.append(symbol.groups())
    return objects


class KernelObjects(unittest.TestCase):
    def test_they_share_their_entry_and_call_the_memory_routines_of_c(self):
        objects = symbols_by_object()
        self.assertIn("kernel_portable", objects)
        for name, symbols in objects.items():
            shared = [text for kind, text in symbols if kind.isupper() and kind != "U" or kind in "vwu"]
            if shared or os.environ["ZELVAN_X86_64"] == "1":
                entry = f"zelvan::run_{name}(zelvan::{'FlagBlock' if name.startswith('flag') else 'KernelCall'} const&)"
                self.assertEqual(shared, [entry], name)
            called = {text for kind, text in symbols if kind == "U"} - {"_GLOBAL_OFFSET_TABLE_"}
            self.assertLessEqual(called, {"memcpy", "memset", "memmove", "__stack_chk_fail"}, name)


if __name__ == "__main__":
    unittest.main()
