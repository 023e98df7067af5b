"""Finds the program zelvan and its configuration, without the help of the environment, and knows its keys.

    engine = find_engine()
    engine.program, engine.codons              # paths
    engine.key("e")                            # "PROBCUT": full name of a key from any of its names, or None
    engine.settings["PROBCUT"]                 # what holds where the command line does not say otherwise
    engine.penalties("2", "VTML160")           # from the gap-defaults file: {"LD_PEN": ..., ...}, or None
"""

from __future__ import annotations

import os
import re
import shutil
import sys
from functools import cached_property
from pathlib import Path
from typing import Optional

from zelvan_easy.failure import cause, refused

PENALTIES = ("LD_PEN", "LI_PEN", "FS_PEN", "FSE_PEN")
ENDED = b"# Millions of cell updates"  # the last line of a report that is whole


class Engine:
    def __init__(self, program, config, data):
        """data: the folder with matrices and codon tables; None: where the defaults file says."""
        self.program, self.config = Path(program), Path(config)
        self.matrices = data / "matrices" if data else Path(self.settings.get("MATRIX_DIR", "."))
        self.codons = data / "codons" if data else Path(self.settings.get("GENERAL_DIR", "."))

    @property
    def environment(self):
        return {**os.environ, "ZELVANDIR": str(self.config)}

    def _lines(self, name):
        try:
            return (self.config / name).read_text(encoding="latin-1").splitlines()
        except OSError as problem:
            raise refused(
                f"the configuration of zelvan cannot be read: {cause(problem)}. Set ZELVANDIR to its folder, or unset it"
            ) from problem

    @cached_property
    def _aliases(self):
        """{any name: (key, description)}"""
        found = {}
        for line in self._lines("zelvan_alias.dat"):
            names, _, description = line.partition("#")
            for name in names.split():
                found.setdefault(name, (names.split()[0], description.strip()))
        return found

    def key(self, name):
        return self._aliases.get(name[1:] if name.startswith("-") else name, (None, ""))[0]

    def description(self, key):
        return self._aliases[key][1]

    def is_number(self, key):
        """Whether the key takes a number; its description ends with the default that it has."""
        default = self.description(key).rpartition("default ")[2]
        return re.fullmatch(r"-?[\d.]+", default) is not None

    @cached_property
    def settings(self):
        found = {}
        for line in self._lines("zelvan_defaults.dat"):
            words = line.replace(",", " ").split()
            if len(words) > 1 and not line.startswith("#") and self.key(words[0]):
                found[self.key(words[0])] = words[1]
        return found

    def penalties(self, family, matrix):
        for line in self._lines("zelvan_gapdefs.dat"):
            if not line:
                return None
            fields = line.split(":")
            if not line.startswith("#") and len(fields) == 6 and fields[:2] == [family, matrix]:
                return dict(zip(PENALTIES, fields[2:]))
        return None

    def matrix_names(self):
        try:
            return sorted(path.name for path in self.matrices.iterdir() if path.is_file())
        except OSError:
            return []


def find_engine():
    """The zelvan beside this command: installed in the same tree, built in the same folder, or found in PATH; the
    environment variable ZELVAN names another. ZELVANDIR chooses a configuration, as it does for zelvan."""
    command = Path(sys.argv[0] or ".")
    package = Path(__file__).resolve()
    beside = [command.absolute().parent / "zelvan", command.resolve().parent / "zelvan"]  # it may be a link
    places = [*beside, *(folder / "bin" / "zelvan" for folder in package.parents[:6])]
    program = _first(places)
    if os.environ.get("ZELVAN"):
        program = Path(os.environ["ZELVAN"])
        if not os.access(program, os.X_OK):
            raise refused(f"there is no program {program}, which the environment variable ZELVAN names")
    if program is None and shutil.which("zelvan"):
        program = Path(shutil.which("zelvan"))
    if program is None:
        raise refused("the program zelvan was not found: install it, or set ZELVAN to its path")
    program = program.resolve()
    share = program.parent.parent / "share" / "zelvan"
    own: Optional[Path] = share if (share / "matrices").is_dir() else None
    if os.environ.get("ZELVANDIR"):
        return Engine(program, Path(os.environ["ZELVANDIR"]).resolve(), None)
    for config in (share / "config", program.parent / "config"):
        if (config / "zelvan_defaults.dat").is_file():
            return Engine(program, config, own if config.parent == share else None)
    raise refused(f"no configuration was found beside {program}: set ZELVANDIR to its folder")


def _first(paths):
    return next((path for path in paths if path.is_file() and os.access(path, os.X_OK)), None)


def reason(errors, status):
    """Why a run of zelvan failed, in a few words, from what it wrote on the error stream."""
    lines = [line.strip() for line in errors.decode("utf-8", "replace").splitlines() if line.strip()]
    if status < 0:
        return f"zelvan was ended by signal {-status}" + (f" after saying: {lines[-1]}" if lines else "")
    return " ".join(lines[:3])[:600] or f"zelvan ended with status {status} without a word"
