"""The command zelvan-easy."""

from __future__ import annotations

import os
import sys
from pathlib import Path
from typing import List, Optional

import click
import typer

from zelvan_easy import VERSION
from zelvan_easy.failure import INTERRUPTED, WRONG_USAGE, Failure, cause, refused, take_signals

app = typer.Typer(
    no_args_is_help=True,
    rich_markup_mode=None,
    pretty_exceptions_enable=False,
    context_settings={"help_option_names": ["-h", "--help"]},
    help="Searches sequence databases with ZELVAN: many queries, protein or DNA, plain or compressed.",
)


def _version(wanted):
    if wanted:
        typer.echo(f"zelvan-easy {VERSION}")
        raise typer.Exit()


@app.callback()
def main_options(
    version: bool = typer.Option(
        False, "--version", callback=_version, is_eager=True, help="Tell the version and end.",
    ),
):
    pass


def _matrices(incomplete: str):
    from zelvan_easy.engine import find_engine

    try:
        return [name for name in find_engine().matrix_names() if name.startswith(incomplete)]
    except Failure:
        return []


def _processors():
    return len(os.sched_getaffinity(0)) if hasattr(os, "sched_getaffinity") else os.cpu_count() or 1


@app.command()
def search(
    queries: str = typer.Argument(..., help='FASTA or FASTQ, also compressed (gz, bz2, xz, zst); "-": standard input.'),
    database: str = typer.Argument(..., help="FASTA, also compressed, or the name of a built database."),
    out: Optional[str] = typer.Option(
        None, "--out", "-o", metavar="DIR", help="Folder of the results. [default: QUERIES.results]",
    ),
    evalue: Optional[float] = typer.Option(None, "--evalue", "-e", help="Largest E-value of a hit. [default: 10]"),
    iterations: Optional[int] = typer.Option(
        None, "--iterations", "-n", min=1, help="Most rounds of a protein search. [default: 3]",
    ),
    inclusion_evalue: Optional[float] = typer.Option(
        None, "--inclusion-evalue", help="Largest E-value of hits that the next round learns from. [default: 0.02]",
    ),
    max_target_seqs: Optional[int] = typer.Option(None, "--max-target-seqs", min=1, help="Most hits of a query."),
    matrix: Optional[str] = typer.Option(
        None, "--matrix", autocompletion=_matrices,
        help="Scores of residue pairs: a name such as BLOSUM62, or a path. [default: VTML160]",
    ),
    gap_open: Optional[float] = typer.Option(
        None, "--gap-open", help="Cost of opening a gap, beside that of its residues.",
    ),
    gap_extend: Optional[float] = typer.Option(None, "--gap-extend", help="Cost of each residue of a gap."),
    linear: bool = typer.Option(False, "--linear", help="Gaps cost the same for each residue; faster."),
    mask: bool = typer.Option(True, "--mask/--no-mask", help="Mask low complexity in queries."),
    strand: Optional[str] = typer.Option(
        None, "--strand", help="Strand of DNA that is searched: both, plus, minus. [default: both]",
    ),
    genetic_code: Optional[int] = typer.Option(
        None, "--genetic-code", help="Genetic code, by its NCBI number. [default: 1]",
    ),
    query_type: Optional[str] = typer.Option(
        None, "--query-type", help="What all queries are: protein or dna. [default: each is looked at]",
    ),
    set_: Optional[List[str]] = typer.Option(
        None, "--set", metavar="KEY=VALUE", help="Any other key of zelvan; may be repeated.",
    ),
    outfmt: str = typer.Option(
        "6", "--outfmt", help='Table hits.tsv: "6", or "7" with comments; then names of columns: "6 std qlen slen".',
    ),
    html: bool = typer.Option(False, "--html", help="Leave a page for each query, too, and index.html, which leads to them."),
    json: bool = typer.Option(False, "--json", help="Leave everything the report says as JSON, too."),
    a3m: bool = typer.Option(False, "--a3m", help="Leave a multiple alignment for each query, too; likewise:"),
    stockholm: bool = typer.Option(False, "--stockholm", help="as Stockholm,"),
    fasta: bool = typer.Option(False, "--fasta", help="as aligned FASTA,"),
    clustal: bool = typer.Option(False, "--clustal", help="as Clustal."),
    pssm: bool = typer.Option(False, "--pssm", help="Leave the last profile as a matrix in text, too."),
    reports: bool = typer.Option(True, "--reports/--no-reports", help="Keep the report of each query."),
    threads: Optional[int] = typer.Option(
        None, "--threads", "-t", min=1, max=4096, help="Processes at a time. [default: all processors]",
    ),
    engine: str = typer.Option("local", "--engine", help="What runs the jobs: local or snakemake."),
    profile: Optional[str] = typer.Option(None, "--profile", help="Profile of Snakemake, for a cluster."),
    cache: Optional[str] = typer.Option(
        None, "--cache", metavar="DIR", help="Folder for built databases. [default: beside the text]",
    ),
    restart: bool = typer.Option(False, "--restart", help="Begin anew where --out has results of another search."),
    quiet: bool = typer.Option(False, "--quiet", "-q", help="Tell only what goes wrong."),
):
    """Search a database with queries.

    Leaves hits.tsv, summary.tsv and a report for each query. An interrupted search goes on when the same command is
    given again.
    """
    from zelvan_easy.plan import Options
    from zelvan_easy.search import Request
    from zelvan_easy.search import search as run

    options = Options(evalue, inclusion_evalue, iterations, matrix, gap_open, gap_extend, linear, strand, genetic_code,
                      max_target_seqs, mask)  # fmt: skip
    asked = {"html": html, "json": json, "a3m": a3m, "stockholm": stockholm, "fasta": fasta, "clustal": clustal, "pssm": pssm}
    forms = [name for name, wanted in asked.items() if wanted]
    raise typer.Exit(run(Request(queries, database, out, options, set_ or [], query_type, threads or _processors(), engine,
                                 profile, cache, restart, outfmt, forms, reports, quiet)))  # fmt: skip


@app.command()
def build(
    text: str = typer.Argument(..., help="FASTA, also compressed."),
    name: Optional[str] = typer.Argument(
        None, help="Path of the database, without ending. [default: that of the text]",
    ),
    count: int = typer.Option(
        1, "--volumes", min=1, max=500, metavar="N",
        help="Deal the sequences to N volumes, which N processes can search with one query.", show_default=False,
    ),
):
    """Build a database, where one is wanted outside of the cache that "search" keeps."""
    from zelvan_easy.building import build as run
    from zelvan_easy.building import default_root
    from zelvan_easy.database import LEAST_IN_SHARE
    from zelvan_easy.engine import find_engine

    if text != "-" and not os.path.isfile(text):
        raise refused(f"there is no file {text}")
    take_signals()
    path = Path(name or Path(text).with_name(default_root(text)))
    database = run(text, path.parent, path.name, find_engine(), count=count)
    _describe(database)
    if count > 1 and not database.shares:
        typer.echo(f"zelvan-easy: the volumes will be searched together, not one by one: they have fewer than {LEAST_IN_SHARE:,} "
                   "sequences each, or sequences of different lengths", err=True)  # fmt: skip


@app.command()
def extract(
    database: str = typer.Argument(..., help="FASTA, also compressed, or the name of a built database."),
    identifiers: List[str] = typer.Argument(
        ..., metavar="IDS...",
        help='Identifiers, or parts between their bars; "-": one a line on the standard input.',
    ),
    cache: Optional[str] = typer.Option(None, "--cache", metavar="DIR", help="Folder for built databases."),
):
    """Write sequences of a database as FASTA."""
    from zelvan_easy.cache import open_database
    from zelvan_easy.database import extract as run
    from zelvan_easy.engine import find_engine

    wanted = []
    for word in identifiers:
        wanted += [line.split()[0] for line in sys.stdin if line.strip()] if word == "-" else [word]
    with open_database(database, find_engine(), cache, lambda text: typer.echo(text, err=True)) as found:
        missing = run(found, wanted, sys.stdout)
    sys.stdout.flush()
    if missing:
        raise Failure(f"not in {database}: {', '.join(missing[:20])}{' ...' if len(missing) > 20 else ''}")


@app.command()
def convert(
    report: str = typer.Argument(..., help='Report of a search; "-": standard input.'),
    to: str = typer.Option(..., "--to", help="tsv, html, json, a3m, stockholm, fasta, clustal or pssm."),
    out: Optional[Path] = typer.Option(None, "--out", "-o", help="File to write. [default: standard output]"),
    query: Optional[Path] = typer.Option(
        None, "--query", help="FASTA file of the query, for what the report does not show of its residues and title.",
    ),
    outfmt: str = typer.Option("6", "--outfmt", help='Of tsv: "6", or "7" with comments; then names of columns.'),
):
    """Give a report another form.

    The commands zelvan2tsv, zelvan2msa and others do the same with more choices.
    """
    import shutil
    import tempfile

    from zelvan_easy.formats.alignment import query_of_file
    from zelvan_easy.formats.table import write_table
    from zelvan_easy.forms import find_form
    from zelvan_easy.report import ReportError, open_report
    from zelvan_easy.search import parse_outfmt

    form = None if to == "tsv" else find_form(to)
    columns, header = parse_outfmt(outfmt)
    try:
        residues = None
        with open_report(sys.stdin.buffer if report == "-" else report) as source:
            if query:
                title, residues = query_of_file(source.iterations[0], query)
                source.entitle(title)
            # nothing is left of a form that fails half-way
            with tempfile.TemporaryFile("w+", encoding="utf-8", errors="surrogateescape", newline="\n") as made:
                if form is None:
                    write_table(source, made, columns, header, unaligned=True)
                else:
                    form.write(source, made, residues)
                made.seek(0)
                if out is None:
                    shutil.copyfileobj(made, sys.stdout)
                else:
                    with open(out, "w", encoding="utf-8", errors="surrogateescape", newline="\n") as target:
                        shutil.copyfileobj(made, target)
    except ReportError as problem:
        raise Failure(str(problem)) from problem


@app.command()
def info(
    database: str = typer.Argument(..., help="FASTA, also compressed, or the name of a built database."),
    cache: Optional[str] = typer.Option(None, "--cache", metavar="DIR", help="Folder for built databases."),
):
    """Tell what a database holds."""
    from zelvan_easy.cache import open_database
    from zelvan_easy.engine import find_engine

    with open_database(database, find_engine(), cache, lambda text: typer.echo(text, err=True)) as found:
        _describe(found)


def _describe(database):
    typer.echo(f"sequences  {database.sequences}")
    typer.echo(f"residues   {database.residues}")
    typer.echo(f"longest    {database.longest}")
    typer.echo(f"type       {database.kind}")
    typer.echo(f"built      {database.built}")
    typer.echo(f"from       {database.source}")
    from zelvan_easy.database import volumes

    names = volumes(database.folder, database.root)
    several = "" if names == [database.root] else f" and {len(names) - 1} more volumes"
    typer.echo(f"files      {os.path.join(database.folder, names[0])}.bix, .bsq{several}")


@app.command(hidden=True)
def work(batch: str, done: str):
    """A job of --engine snakemake."""
    from zelvan_easy.snakemake import work as run

    run(batch, done)


def main():
    """Runs the command: whatever happens, the user sees a sentence and never a traceback."""
    for stream in (sys.stdout, sys.stderr):
        stream.reconfigure(errors="surrogateescape" if stream is sys.stdout else "backslashreplace")
    try:
        status = app(standalone_mode=False)
    except Failure as problem:
        status = _tell(problem, problem.status)
    except click.ClickException as problem:
        problem.show()
        status = problem.exit_code
    except (KeyboardInterrupt, click.Abort):
        status = _tell("interrupted", INTERRUPTED)
    except BrokenPipeError:
        status = 0
    except OSError as problem:
        status = _tell(cause(problem), 1)
    except MemoryError:
        status = _tell("no memory left", 1)
    except SystemExit as end:
        status = end.code
    except Exception as problem:  # a fault of this program is told as one
        if os.environ.get("ZELVAN_EASY_DEBUG"):
            raise
        status = _tell(f"an error in zelvan-easy itself, please report it: {problem!r}", 1)
    try:
        sys.stdout.flush()
    except OSError:
        pass
    os._exit(status if isinstance(status, int) else 0 if status is None else WRONG_USAGE) if _broken() else sys.exit(status)


def _broken():
    """Whether the standard output is gone, so that Python would complain about it at its end."""
    try:
        sys.stdout.flush()
    except OSError:
        return True
    return False


def _tell(text, status):
    print(f"zelvan-easy: {text}", file=sys.stderr)
    return status
