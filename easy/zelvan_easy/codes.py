"""The genetic codes that are shipped, by the number that NCBI gives them."""

from __future__ import annotations

from zelvan_easy.failure import cause, refused

# Those that are not in this table are in ncbi_NUMBER.tst.
_NAMED = {1: "codo.tst", 2: "vertebrate_mitochondrial.tst", 11: "bacterial.tst"}
CODES = (1, 2, 3, 4, 5, 6, 9, 10, 11, 12, 13, 14, 16, 21, 22, 23, 24, 25)


def code_file(number):
    if number not in CODES:
        raise refused(f"there is no genetic code {number} here; there are {', '.join(map(str, CODES))}")
    return _NAMED.get(number, f"ncbi_{number}.tst")


def read_code(path):
    """{codon: letter}, "!" being a stop."""
    try:
        with open(path, encoding="latin-1") as source:
            pairs = [line.split() for line in source]
    except OSError as problem:
        raise refused(f"the genetic code cannot be read: {cause(problem)}") from problem
    return dict(pair for pair in pairs if len(pair) == 2)
