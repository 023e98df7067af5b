"""What zelvan is to be run with: the mode that suits query and database, and the settings, from the words that users
of other programs know. Everything that cannot be is refused here, before anything runs."""

from __future__ import annotations

import os
import re
from dataclasses import dataclass, field
from typing import NamedTuple, Optional

from zelvan_easy.codes import code_file, read_code
from zelvan_easy.database import volumes
from zelvan_easy.engine import PENALTIES
from zelvan_easy.failure import refused
from zelvan_easy.inputs import DNA, PROTEIN
from zelvan_easy.masking import dna_filling

STRANDS = ("both", "plus", "minus")
LONGEST = 15_998  # residues or nucleotides that zelvan takes in a query
STRETCH = 15_000  # of a longer one that are searched with at a time,
OVERLAP = 3_000  # of which so many belong to the next stretch as well
NAME_WIDTH, TITLE_WIDTH = 250, 500  # characters that score lists show at most; they are padded to the longest

# Keys that say what is searched with what, and where it is written: not for --set.
_OWN = {
    **dict.fromkeys(("QSEQ_FILE", "QSEQ_FORMAT"), "queries are the first argument"),
    **dict.fromkeys(("DB_FILE", "DB_FORMAT", "DB_DIR", "BDB_ROOT", "MAX_NSEQ", "MAX_SEQ_LEN", "APPLY_INDEX"),
                    "the database is the second argument"),
    **dict.fromkeys(("STDIN", "STDOUT", "STDERR", "BLOCK_FILE_OUT", "FRAG_FILE_OUT", "EXTRACT_FILE"),
                    "every query has files of its own in --out"),
    **dict.fromkeys(("SHOW_BLURB", "SHOW_TITLES", "SHOW_LEN", "DO_SORT", "SPECIAL", "VERBOSE"),
                    "the results are read from the report as it is by default"),
    **dict.fromkeys(("DO_STATS", "FIT_TYPE", "MIN_NSTATS"), "E-values are always computed"),
    **dict.fromkeys(("LPFIT_PRINT", "DUMP_STATS"), "its files have fixed names: use zelvan itself for it"),
    "SHOW_IDENT_WIDTH": "names are whole",
    "COMPLEMENT_QUERY": "use --strand",
    "NPRINT_TO_THRESHOLD": "use --max-target-seqs", "MAX_NOUT": "use --max-target-seqs",
    "GENERAL_DIR": "use --genetic-code", "CODON_FILE": "use --genetic-code",
    "MATRIX_DIR": "use --matrix with a path",
}  # fmt: skip
# Keys that an option sets.
_OPTION_OF = {"PROBCUT": "evalue", "PROBCUT2": "inclusion_evalue", "NITER": "iterations", "MATRIX_FILE": "matrix"}
# Keys that leave volumes free to be searched one by one: they are about single comparisons. What others have written may
# be of all hits together.
_OF_ONE_HIT = {
    *PENALTIES, "MODE", "PRECISION", "STOP_WEIGHT", "PROB_TYPE", "MIN_SCORE", "MIN_ASCORE", "MIN_LEN", "TOP_ONLY",
    "SHOW_TITLES_WIDTH", "OUTPUT_LENGTH", "LPFIT_MINBUCK", "LPFIT_MINRANGE",
}  # fmt: skip
_REAL = {*PENALTIES, "MM_LD_PEN"}  # numbers with decimals although their defaults have none
_FAMILY = {200: "0", 210: "0", 202: "2", 212: "2"}
_MODES = {(PROTEIN, PROTEIN): (202, 200), (DNA, PROTEIN): (22, 20), (PROTEIN, DNA): (12, None)}


@dataclass
class Options:
    """What the user asked for; None: nothing said."""

    evalue: Optional[float] = None
    inclusion_evalue: Optional[float] = None
    iterations: Optional[int] = None
    matrix: Optional[str] = None
    gap_open: Optional[float] = None
    gap_extend: Optional[float] = None
    linear: bool = False
    strand: Optional[str] = None
    genetic_code: Optional[int] = None
    max_target_seqs: Optional[int] = None
    mask: bool = True
    sets: dict = field(default_factory=dict)


class Volume(NamedTuple):
    """What a run searches: the database, or a volume that is a sample of it."""

    root: str
    parts: float  # that the whole has of it: so much more comes by chance in the whole


@dataclass
class Plan:
    """How queries of one kind are searched."""

    mode: int
    arguments: list  # of zelvan, without query, strand and E-values
    evalue: float
    inclusion: Optional[float]  # None where there are no iterations
    volumes: list  # that are searched, each with
    complements: list  # all these values of COMPLEMENT_QUERY
    filling: str  # what stands for masked residues
    limit: Optional[int]  # most targets
    fits: list  # arguments of the fit of the statistics, tried in turn until it succeeds
    notes: list

    def values(self, factor):
        """Arguments for the E-values up to which a run lists hits, when they are to be multiplied with a factor."""
        # as decimals without an exponent's rounding: what is listed is compared with it
        cuts = ["-e", repr(self.evalue / factor)]
        return cuts if self.inclusion is None else [*cuts, "-e2", repr(self.inclusion / factor)]


def parse_sets(texts, engine):
    """{key: value} from KEY=VALUE texts."""
    found = {}
    for text in texts:
        name, equals, value = text.partition("=")
        key = engine.key(name.strip())
        value = value.strip()
        if not equals:
            raise refused(f"--set wants KEY=VALUE, not {text}")
        if key is None:
            raise refused(f"there is no key {name.strip()}; man zelvan_manual lists them")
        if key in _OWN:
            raise refused(f"--set cannot change {key}: {_OWN[key]}")
        if not value or re.search(r"[\s,]", value):
            raise refused(f"the value of {key} must be a word")
        if engine.is_number(key):
            whole = "." not in engine.description(key).rpartition("default ")[2] and key not in _REAL
            if not re.fullmatch(r"[-+]?\d+" if whole else r"[-+]?(\d+\.?\d*|\.\d+)([eE][-+]?\d+)?", value):
                raise refused(f"the value of {key} must be a {'whole ' if whole else ''}number, not {value}")
        found[key] = value
    return found


def with_sets(options):
    """The options, those that were given as keys of --set among them."""
    for key, name in _OPTION_OF.items():
        if key in options.sets:
            if getattr(options, name) is not None:
                raise refused(f"--{name.replace('_', '-')} and --set {key} are the same: give one of them")
            value = options.sets.pop(key)
            setattr(options, name, value if name == "matrix" else int(value) if name == "iterations" else float(value))
    for name in ("evalue", "inclusion_evalue", "iterations", "max_target_seqs"):
        value = getattr(options, name)
        if value is not None and not value > 0:
            raise refused(f"--{name.replace('_', '-')} must be above 0, not {value:g}")
    for name in ("gap_open", "gap_extend"):
        value = getattr(options, name)
        if value is not None and not 0 <= value < 1e6:
            raise refused(f"--{name.replace('_', '-')} must be 0 or more, not {value:g}")
    if options.strand not in (None, *STRANDS):
        raise refused(f"--strand is {', '.join(STRANDS)}, not {options.strand}")
    if options.genetic_code is not None:
        code_file(options.genetic_code)
    return options


def _mode(kind, database_kind, options):
    if (kind, database_kind) == (DNA, DNA):
        raise refused(
            "both the query and the database are DNA; zelvan compares proteins with proteins, or one of them "
            "translated: search a protein database, or with a protein (--query-type says what a query is)"
        )
    affine, linear = _MODES[kind, database_kind]
    mode = linear if options.linear else affine
    if mode is None:
        raise refused("--linear has no mode for proteins against DNA: leave it out")
    if "MODE" in options.sets:
        asked = int(options.sets["MODE"])
        if asked not in (mode, affine, linear) and not (affine == 202 and asked in (210, 212)):
            raise refused(f"--set MODE={asked} does not suit {kind} queries and a {database_kind} database")
        if options.linear and asked not in (linear, 210):
            raise refused(f"--linear and --set MODE={asked} contradict each other")
        mode = asked
    return mode


def _matrix(options, engine):
    """(directory, name, scores of its alphabet) of the matrix."""
    name = options.matrix or engine.settings.get("MATRIX_FILE", "md.mat")
    if "/" in name:
        folder, name = os.path.split(os.path.abspath(name))
    else:
        folder = str(engine.matrices)
    if not os.path.isfile(os.path.join(folder, name)):
        raise refused(f"there is no matrix {name}; there are {', '.join(engine.matrix_names())}, or give the path of yours")
    return folder, name


def _penalties(mode, matrix, options, engine):
    """The arguments for gap penalties; the first residue of a gap costs opening and extension, as elsewhere."""
    given = {key: options.sets[key] for key in PENALTIES if key in options.sets}
    asked = options.gap_open is not None or options.gap_extend is not None
    if asked and ("LD_PEN" in given or "LI_PEN" in given):
        raise refused("--gap-open and --gap-extend set LD_PEN and LI_PEN: give one or the other")
    if options.linear and options.gap_open is not None:
        raise refused("--linear has no cost of opening a gap: give --gap-extend alone")
    if not asked and not given:
        return []
    usual = engine.penalties(_FAMILY.get(mode, str(mode)), matrix)
    if asked:
        affine = mode not in (200, 210, 20)
        extend, opening = options.gap_extend, options.gap_open
        if affine and usual is None and None in (extend, opening):
            raise refused(f"there are no usual penalties for {matrix}: give both --gap-open and --gap-extend")
        if extend is None:
            extend = float(usual["LD_PEN"])
        if opening is None and affine:
            opening = max(0.0, float(usual["LI_PEN"]) - float(usual["LD_PEN"]))
        given["LD_PEN"] = f"{extend:.9g}"
        given["LI_PEN"] = f"{extend + (opening or 0):.9g}"
    values = {**(usual or {}), **given}
    return ["-ugd", "0", *(word for key, value in values.items() for word in ("-" + key, value))]


def make_plan(kind, database, options, engine):
    """The plan for queries of one kind; options as `with_sets` leaves them."""
    mode = _mode(kind, database.kind, options)
    protein = kind == database.kind == PROTEIN
    folder, matrix = _matrix(options, engine)
    notes = []
    if not protein:
        for name in ("iterations", "inclusion_evalue"):
            if getattr(options, name) is not None:
                notes.append(f"--{name.replace('_', '-')} is for proteins against proteins, and has no effect here")
    if database.kind == DNA and database.indexed:
        raise refused("the database is DNA and holds codes, which cannot be translated: build it again from its text")
    arguments = ["-mode", str(mode), "-md", folder, "-m", matrix, *_penalties(mode, matrix, options, engine)]
    if protein:
        arguments += ["-do_stats", "2", "-niter", str(options.iterations or engine.settings.get("NITER", 3))]
    else:
        code = code_file(options.genetic_code or 1)
        arguments += ["-do_stats", "1", "-fit_type", "0", "-gd", str(engine.codons), "-codon", code]
        arguments += ["-mns", str(min(500, database.sequences))]
    if options.max_target_seqs is not None:
        arguments += ["-npt", "0", "-nout", str(options.max_target_seqs), "-apt", "1"]
    else:
        arguments += ["-npt", "1"]
    rest = {key: value for key, value in options.sets.items() if key not in (*PENALTIES, "MODE")}
    first = ["-PRECISION", rest.pop("PRECISION")] if "PRECISION" in rest else []
    arguments = [*first, *arguments, *(word for key, value in rest.items() for word in ("-" + key, value))]
    arguments += ["-show_blurb", "1", "-show_titles", "1", "-sort", "1", "-special", "0", "-v", "0", "-time", "0"]
    arguments += ["-iw", str(max(1, min(database.longest_name, NAME_WIDTH)))]
    if "SHOW_TITLES_WIDTH" not in options.sets:
        arguments += ["-tw", str(max(1, min(database.longest_title, TITLE_WIDTH)))]
    evalue = options.evalue or float(engine.settings.get("PROBCUT", 0.001))
    inclusion = None
    if protein:
        inclusion = options.inclusion_evalue or min(evalue, float(engine.settings.get("PROBCUT2", 0.00005)))
        if inclusion > evalue:
            raise refused(f"--inclusion-evalue ({inclusion:g}) must not be above --evalue ({evalue:g})")
    complements = [0]
    filling = "X"
    if not protein:
        complements = {"both": [0, 1], "plus": [0], "minus": [1]}[options.strand or "both"]
    elif options.strand is not None:
        notes.append("--strand is for DNA, and has no effect here")
    if kind == DNA:
        letters = read_code(engine.codons / code_file(options.genetic_code or 1))
        filling = dna_filling([codon for codon, letter in letters.items() if letter == "!"])
    searched = _volumes(protein, database, options, engine)
    smallest = min((sequences for sequences, _ in database.shares), default=0) if len(searched) > 1 else database.sequences
    fits = _fits(smallest) if protein and "LPFIT_MINBUCK" not in options.sets else [[]]
    return Plan(mode, arguments, evalue, inclusion, searched, complements, filling, options.max_target_seqs, fits, notes)


def _volumes(protein, database, options, engine):
    """What is searched one by one: the volumes, where each is a sample of the whole and no profile is made of all hits;
    else the database."""
    iterations = options.iterations or int(engine.settings.get("NITER", 3))
    counted = str(options.sets.get("PROB_TYPE", engine.settings.get("PROB_TYPE", 2))) if protein else "3"
    if (not database.shares or set(options.sets) - _OF_ONE_HIT or protein and iterations > 1
            or counted not in ("1", "2", "3")):  # fmt: skip
        return [Volume(database.root, 1)]
    # E-values count sequences, or residues
    of, whole = (0, database.sequences) if counted == "3" else (1, database.residues)
    names = volumes(database.folder, database.root)
    return [Volume(name, whole / share[of]) for name, share in zip(names, database.shares)]


def _fits(sequences):
    """The shipped fit wants some thousand sequences; fewer are fitted more coarsely."""
    coarser = [["-lpb", "30"], ["-lpb", "10"]]
    if sequences >= 20_000:
        return [[]]
    return coarser[1:] if sequences < 300 else coarser if sequences < 2_000 else [[], *coarser]


def stretches(length):
    """(start, end) of the parts that a query is searched in, from 0: itself, or overlapping parts of like lengths."""
    if length <= LONGEST:
        return [(0, length)]
    count = -(-(length - OVERLAP) // (STRETCH - OVERLAP))
    step = (length - OVERLAP) / count
    return [(round(k * step), min(length, round((k + 1) * step) + OVERLAP)) for k in range(count)]
