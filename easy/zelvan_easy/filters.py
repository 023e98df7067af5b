"""The commands zelvan2*: a report on standard input or in a file, something else on standard output."""

from __future__ import annotations

import argparse
import contextlib
import importlib.util
import io
import os
import pathlib
import sys
import urllib.parse

from zelvan_easy.report import ReportError, open_report

_DEBIAN_PYTHON = "/usr/bin/python3"


def need(**packages):
    """Makes sure that these modules (module="Debian package") are there. A Python that a user installed beside the
    system's often lacks the system's libraries: then the command begins anew with the latter."""
    missing = [package for module, package in packages.items() if importlib.util.find_spec(module) is None]
    if not missing:
        return
    tried = os.environ.get("ZELVAN_PYTHON_TRIED")
    if not tried and os.access(_DEBIAN_PYTHON, os.X_OK) and not os.path.samefile(_DEBIAN_PYTHON, sys.executable):
        os.environ["ZELVAN_PYTHON_TRIED"] = "1"
        sys.stdout.flush()
        os.execv(_DEBIAN_PYTHON, [_DEBIAN_PYTHON, *sys.argv])
    raise ReportError(f"libraries of Python are missing: install the packages {', '.join(missing)}")


def command(name, description):
    parser = argparse.ArgumentParser(prog=name, description=description)
    parser.add_argument("report", nargs="?", metavar="REPORT", help="report of a search (default: standard input)")
    return parser


def iteration_option(parser, every=False):
    def number(text):
        return text if every and text == "all" else int(text)

    parser.add_argument("-i", "--iteration", type=number, metavar="N", help="iteration to take (default: the last)"
                        + ('; "all": every one' if every else ""))  # fmt: skip


def run(name, work):
    """Runs a command: errors become one sentence and status 1; a reader that stops early is no error."""
    sys.stdout.reconfigure(encoding="utf-8", errors="surrogateescape")  # titles may hold any bytes
    try:
        work()
        sys.stdout.flush()
    except ReportError as problem:
        sys.exit(f"{name}: {problem}")
    except BrokenPipeError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        sys.exit(0)
    except OSError as problem:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        sys.exit(f"{name}: cannot write: {problem.strerror}")


def warn(name, text):
    print(f"{name}: {text}", file=sys.stderr)


def binary_input(chosen):
    if not chosen.report or chosen.report == "-":
        return sys.stdin.buffer
    try:
        return open(chosen.report, "rb")  # until the command ends
    except OSError as problem:
        raise ReportError(f"cannot read {chosen.report}: {problem.strerror}") from problem


def chosen_report(chosen):
    return open_report(binary_input(chosen))


# ---- zelvan2tsv


def zelvan2tsv():
    run("zelvan2tsv", _zelvan2tsv)


def _zelvan2tsv():
    from zelvan_easy.formats import table

    parser = command(
        "zelvan2tsv", "Writes a tab-separated line for every local alignment of a ZELVAN report: "
        + ", ".join(table.DEFAULT) + ", or the columns asked for."
    )  # fmt: skip
    iteration_option(parser, every=True)
    parser.add_argument("-c", "--columns", metavar="NAMES", help="columns, with commas or blanks between them; std "
                        "stands for the twelve usual ones: " + ", ".join(table.COLUMNS))  # fmt: skip
    parser.add_argument("-H", "--header", action="store_true", help='begin with comments, the last of them "# Fields:"')
    parser.add_argument("--hits", action="store_true", help="a line for every hit of the score list instead: "
                        + ", ".join(table.HIT_COLUMNS))  # fmt: skip
    parser.add_argument("--unaligned", action="store_true", help="also a line for every hit that has no alignment in "
                        "the report")  # fmt: skip
    parser.add_argument("-e", "--max-evalue", type=float, metavar="E", help="largest E-value")
    parser.add_argument("--min-identity", type=float, metavar="PERCENT", help="least identity, per cent")
    parser.add_argument("--min-coverage", type=float, metavar="PERCENT", help="least part of the query that an "
                        "alignment covers, per cent")  # fmt: skip
    chosen = parser.parse_args()
    columns = None if chosen.columns is None else table.parse_columns(chosen.columns)
    with chosen_report(chosen) as report:
        limits = {name: getattr(chosen, name) for name in ("max_evalue", "min_identity", "min_coverage")}
        lines = table.write_table(report, sys.stdout, columns, chosen.header, iteration=chosen.iteration,
                                  unaligned=chosen.unaligned, hits=chosen.hits, **limits)  # fmt: skip
        one = None if chosen.iteration == "all" else report.iteration(chosen.iteration)
        if not lines and one and one.hits and next(one.aligned(), None) is None:
            warn("zelvan2tsv", "the report lists hits but no alignments: take the list with --hits, or search with "
                 "APRINT_TO_THRESHOLD 1 (modes 10 and 12 never print alignments)")  # fmt: skip


# ---- zelvan2json


def zelvan2json():
    run("zelvan2json", _zelvan2json)


def _zelvan2json():
    from zelvan_easy.formats import json_report

    parser = command("zelvan2json", "Writes a ZELVAN report as JSON: the run, and every iteration with its fit, hits and "
                     "alignments.")  # fmt: skip
    parser.add_argument("-i", "--iteration", type=int, metavar="N", help="iteration to take (default: all)")
    chosen = parser.parse_args()
    with chosen_report(chosen) as report:
        json_report.write_json(report, sys.stdout, chosen.iteration)


# ---- zelvan2msa, zelvan2a3m


def zelvan2msa():
    run("zelvan2msa", lambda: _zelvan2msa("zelvan2msa", None))


def zelvan2a3m():
    run("zelvan2a3m", lambda: _zelvan2msa("zelvan2a3m", "a3m"))


def _zelvan2msa(name, layout):
    from zelvan_easy.formats import alignment

    parser = command(name, "Writes the multiple alignment of an iteration from a ZELVAN report or block file: the query, "
                     "then every aligned hit, laid out along the query. A block file has no insertions.")  # fmt: skip
    iteration_option(parser)
    if layout is None:
        parser.add_argument("-f", "--format", choices=list(alignment.WRITERS), default="stockholm",
                            help="layout (default: stockholm)")  # fmt: skip
    parser.add_argument("-e", "--cutoff", type=float, metavar="E",
                        help="largest significance of a row (default: the one for the profile)")  # fmt: skip
    parser.add_argument("-q", "--query", metavar="FILE", help="FASTA file of the query, for residues that no "
                        "alignment of the report shows")  # fmt: skip
    parser.add_argument("--no-insertions", action="store_true", help="leave out residues that a hit has between two of "
                        "the query: what psiblast -in_msa wants")  # fmt: skip
    chosen = parser.parse_args()
    layout = layout or chosen.format
    source = binary_input(chosen)
    start = source.peek(32) if hasattr(source, "peek") else b""
    if start.startswith(b"# Alignment from "):
        with io.TextIOWrapper(source, encoding="utf-8", errors="surrogateescape") as lines:
            alignment.write_block_file(lines, sys.stdout, layout, chosen.iteration, chosen.cutoff)
        return
    with open_report(source) as report:
        alignment.write_alignment(report, sys.stdout, layout, chosen.iteration, chosen.cutoff,
                                  not chosen.no_insertions, chosen.query, lambda text: warn(name, text))  # fmt: skip


# ---- zelvan2pssm


def zelvan2pssm():
    run("zelvan2pssm", _zelvan2pssm)


def _zelvan2pssm():
    from zelvan_easy.formats import pssm

    parser = command("zelvan2pssm", "Writes the profile of an iteration, which the next would search with, as a "
                     "position-specific score matrix in text, in psiblast's layout. The search must have been made "
                     "with PRINT_PROFILES 1.")  # fmt: skip
    iteration_option(parser)
    parser.add_argument("-q", "--query", metavar="FILE", help="FASTA file of the query, for residues that no "
                        "alignment of the report shows")  # fmt: skip
    chosen = parser.parse_args()
    with chosen_report(chosen) as report:
        pssm.write_pssm(report, sys.stdout, chosen.iteration, chosen.query, lambda text: warn("zelvan2pssm", text))


# ---- zelvan2html


def zelvan2html():
    run("zelvan2html", _zelvan2html)


def _zelvan2html():
    parser = command("zelvan2html", "Writes a ZELVAN report as one self-contained page. With VERBOSE 1000 in the search, "
                     "it also shows how the scores of all sequences are distributed.")  # fmt: skip
    iteration_option(parser)
    parser.add_argument("-a", "--alignments", type=int, default=250, metavar="N",
                        help="most alignments shown one by one (default: 250)")  # fmt: skip
    parser.add_argument("more", nargs="*", metavar="REPORT", help=argparse.SUPPRESS)
    parser.add_argument("-d", "--directory", metavar="DIR", help="write a page for each of any number of reports into "
                        "this directory, and index.html, which leads to them")  # fmt: skip
    chosen = parser.parse_args()
    need(jinja2="python3-jinja2")
    from zelvan_easy import page

    if chosen.directory:
        write_pages(page, [chosen.report, *chosen.more] if chosen.report else [], chosen)
        return
    if chosen.more:
        raise ReportError("one report at a time, or -d DIR for a directory of pages")
    with chosen_report(chosen) as report:
        page.write_page(report, sys.stdout, chosen.iteration, max(0, chosen.alignments))


def write_pages(page, paths, chosen):
    """A page for each report, named as the report is, and the index. Reports that cannot be read are told at the end."""
    directory, entries, failed = pathlib.Path(chosen.directory), [], []
    if not paths:
        raise ReportError("no reports are named")
    directory.mkdir(parents=True, exist_ok=True)
    names = set()
    for path in paths:
        name = base = pathlib.Path(path).name.rsplit(".", 1)[0] or "report"
        while name in names or name == "index":
            name = f"{base}_{len(names)}"
        names.add(name)
        try:
            with open_report(path) as report, _replacing(directory / f"{name}.html") as out:
                entries.append((page.write_page(report, out, chosen.iteration, max(0, chosen.alignments)),
                                urllib.parse.quote(f"{name}.html")))  # fmt: skip
        except ReportError as problem:
            failed.append(f"{path}: {problem}")
    with _replacing(directory / "index.html") as out:
        page.write_index(entries, out)
    if failed:
        raise ReportError("; ".join(failed))


@contextlib.contextmanager
def _replacing(path):
    """A text stream to a file that gets its name only when it is complete."""
    part = path.with_name(path.name + ".part")
    try:
        with open(part, "w", encoding="utf-8", errors="replace") as out:
            yield out
        part.replace(path)
    finally:
        part.unlink(missing_ok=True)
