#!/usr/bin/env python3
"""Runs the examples of the manual and compares, or replaces, what it shows of their output.

    run_examples.py PROGRAM CONFIGURATION [--update]

Examples are the blocks fenced as "console" in doc/manual/*.md: a line that begins with "$ " is a command of bash, the
lines below it are everything that it writes. All run one after the other, in the order of the chapters, in one
directory that holds the files of examples/. Dates and times are not compared, and the directory of the data is shown
as /usr/local/share/zelvan. The exit status is 1 when an output differs.
"""

import difflib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

DOC = pathlib.Path(__file__).resolve().parent
SOURCE = DOC.parent
SHOWN_DATA = "/usr/local/share/zelvan"

MASKS = [
    (re.compile(r"[A-Z][a-z]{2} [A-Z][a-z]{2} [ \d]\d \d\d:\d\d:\d\d \d{4}"), "DATE"),
    (re.compile(r"^(# (?:Load|Scan|Output|Generate)[^:]*:) [ \d.]+$", re.M), r"\1 TIMES"),
    (re.compile(r"^(# Millions of cell updates/sec in scan) .*$", re.M), r"\1 RATES"),
]


def masked(text):
    for pattern, name in MASKS:
        text = pattern.sub(name, text)
    return text


def run(command, directory, environment):
    done = subprocess.run(["bash", "-c", command], cwd=directory, env=environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="latin-1", check=False)  # fmt: skip
    text = done.stdout.replace(str(SOURCE / "data"), SHOWN_DATA)
    return [line.rstrip() for line in text.splitlines()]


def refresh(block, directory, environment):
    """The block with what its commands write now."""
    lines = []
    for line in block:
        if line.startswith("$ "):
            lines += [line, *run(line[2:], directory, environment)]
    return lines


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    program, configuration = (pathlib.Path(name).resolve() for name in sys.argv[1:3])
    path = f"{program.parent}:{SOURCE / 'filters'}:{os.environ['PATH']}"
    environment = dict(os.environ, PATH=path, ZELVANDIR=str(configuration), TZ="UTC", LC_ALL="C", PYTHONDONTWRITEBYTECODE="1")
    differences = 0
    with tempfile.TemporaryDirectory(prefix="zelvan_manual_") as directory:
        for example in (SOURCE / "examples").iterdir():
            if example.is_file():
                shutil.copy(example, directory)
        for chapter in sorted((DOC / "manual").glob("*.md")):
            text = chapter.read_text()

            def replace(match, name=chapter.name):
                nonlocal differences
                old = match[1].splitlines()
                new = refresh(old, directory, environment)
                if masked("\n".join(old)) == masked("\n".join(new)):
                    return match[0]
                differences += 1
                sys.stdout.writelines(f"{d}\n" for d in difflib.unified_diff(old, new, f"doc/manual/{name}", "the program", lineterm=""))
                return "```console\n" + "\n".join(new) + "\n```"

            updated = re.sub(r"```console\n(.*?)\n```", replace, text, flags=re.S)
            if "--update" in sys.argv:
                chapter.write_text(updated)
    if differences and "--update" not in sys.argv:
        sys.exit(f"{differences} examples of the manual are out of date: read what changed, then run "
                 "doc/run_examples.py with --update and adapt the text")  # fmt: skip


if __name__ == "__main__":
    main()
