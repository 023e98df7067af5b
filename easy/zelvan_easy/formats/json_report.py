"""A report as JSON, as doc/zelvan_report.schema.json describes it. Written while the report is read."""

from __future__ import annotations

import json
import math
import re

from zelvan_easy.formats import printable
from zelvan_easy.formats.table import COLUMNS, rows_of
from zelvan_easy.report import GAP

FORMAT, FORMAT_VERSION = "zelvan-report", 1
_GAPS = re.compile(GAP + "+")
_NUMBER = re.compile(r"-?\d+(\.\d+)?(e[-+]?\d+)?")


_encode = json.JSONEncoder(ensure_ascii=False, separators=(",", ":"), allow_nan=False).encode


def _finite(value):
    return value if value is not None and math.isfinite(value) else None


def _present(**fields):
    return {name: value for name, value in fields.items() if value is not None}


def path_of(alignment):
    """The path as numbers and letters: M residues of both, I of the query only, D of the target only, F frame shifts."""
    query, target = alignment.query_row, alignment.target_row
    if not (GAP in query or GAP in target):
        return f"{len(query)}M"
    if alignment.frame_shifts:
        moves = "".join(["MIDF"[(t == GAP) + 2 * (q == GAP)] for q, t in zip(query, target)])
        return "".join(f"{len(run[0])}{run[1]}" for run in re.finditer(r"(.)\1*", moves))
    runs = [(*run.span(), "D") for run in _GAPS.finditer(query)] + [(*run.span(), "I") for run in _GAPS.finditer(target)]
    parts, at = [], 0
    for start, end, move in sorted(runs):
        if start > at:
            parts.append(f"{start - at}M")
        parts.append(f"{end - start}{move}")
        at = end
    return "".join(parts) + (f"{len(query) - at}M" if len(query) > at else "")


# ---- The run


def _number(text):
    """The number that a text of the header is, or None."""
    if text is None or not _NUMBER.fullmatch(text):
        return None
    return int(text) if re.fullmatch(r"-?\d+", text) else float(text)


def run_record(report):
    """What was searched with what, from the header of the first iteration and the times at the end."""
    first = report.iterations[0]
    header = first.header

    def number(name):
        return _number(header.get(name))

    return {
        "program": f"ZELVAN {header.get('ZELVAN Version', '')}".strip(),
        "started": header.get("ZELVAN Scan"),
        "completed": report.times.get("Scan Completed at"),
        "mode": first.mode,
        "query": _present(
            id=header.get("Query ID"),
            title=header.get("Query Title"),
            length=first.query_length,
            file=header.get("Query file"),
            molecule="DNA" if first.mode in (20, 22) else "protein",
        ),
        "database": _present(
            name=header.get("Database name"),
            created=header.get("Created on"),
            sequences=number("Number of sequences"),
            residues=first.residues,
            molecule="DNA" if first.mode in (10, 12) else "protein",
        ),
        "matrix": _present(file=header.get("Matrix file"), title=header.get("Matrix title")),
        "penalties": _present(
            gap_extension=number("LD penalty"),
            gap_creation=number("LI penalty"),
            frame_shift=number("FS  penalty"),
            later_passes=number("MM_LD_PEN"),
        ),
        "profile_settings": _present(
            iterations=number("Number of iterations"),
            weight_method=number("Profile Weight Method"),
            position_weight_factor=number("Pos Weight Factor"),
            identity_threshold=number("Pid Threshold"),
            penalty_factor=number("Penalty Factor"),
        ),
        "header": header,
        "times": report.times,
    }


def _fit(iteration):
    if iteration.location and iteration.scale:
        return {"kind": "extreme value by length", "location": iteration.location, "scale": iteration.scale}
    line = re.fullmatch(r"m: (\S+) c: (\S+) var: (\S+) nval: (\d+)", iteration.header.get("FIT", ""))
    if not line:
        return None
    names = ("slope", "intercept", "variance", "bins")
    return {"kind": "z-score by length", **{name: _number(text) for name, text in zip(names, line.groups())}}


# ---- Hits


def _changed(hit):
    return {
        "rank": hit.rank,
        "target": printable(hit.target),
        "score": hit.score,
        "standardised": _finite(hit.standardised),
        "significance": _finite(hit.significance),
    }


def alignment_record(row):
    alignment = row.alignment
    record = {
        "number": alignment.number,
        "score": alignment.score,
        "significance": _finite(alignment.significance),
        "bits": row.bits and round(row.bits, 2),
        "query_start": alignment.query_start,
        "query_end": alignment.query_end,
        "target_start": alignment.target_start,
        "target_end": alignment.target_end,
        "length": row.length,
        "identical": row.identical,
        "positive": row.positive,
        "gaps": row.gaps,
        "path": path_of(alignment),
        "query_row": alignment.query_row,
        "target_row": alignment.target_row,
        "markers": alignment.markers,
    }
    if row.found.translated:
        record["frame_shifts"] = alignment.frame_shifts
        record["codons"] = alignment.codons
    return record


def _hit_record(rows):
    """The record of a hit from its rows: of its alignments, or one without."""
    first = rows[0]
    hit, found = first.hit, first.found
    aligned = [row for row in rows if row.alignment]
    return {
        "rank": hit.rank if hit else found.rank,
        "target": printable(found.target if found else hit.target),
        "title": printable(COLUMNS["stitle"].value(first)),
        **_present(length=COLUMNS["slen"].value(first)),
        "score": hit.score if hit else aligned[0].alignment.score,
        "standardised": _finite(hit.standardised) if hit else None,
        "significance": _finite(hit.significance if hit else aligned[0].alignment.significance),
        "bits": first.bits and round(first.bits, 2),
        "alignments": [alignment_record(row) for row in aligned],
    }


def _hits(report, iteration, alignments):
    """The records of all hits."""
    if not alignments:
        yield from (_hit_record([row]) for row in rows_of(report, iteration.number, hits=True))
        return
    gathered = []
    for row in rows_of(report, iteration.number, unaligned=True):
        if gathered and (row.found is None or gathered[0].found is not row.found):
            yield _hit_record(gathered)
            gathered = []
        gathered.append(row)
    if gathered:
        yield _hit_record(gathered)


def _write_list(out, name, records):
    """A member of an object that is not the first, one element on a line."""
    out.write(f',\n"{name}":[')
    for number, record in enumerate(records):
        out.write((",\n" if number else "\n") + _encode(record))
    out.write("]")


def _write_iteration(report, iteration, out, alignments):
    profile, counts = iteration.profile, iteration.counts
    head = {
        "number": iteration.number,
        "significance": iteration.significance_name,
        "cutoff": iteration.cutoff,
        "profile_cutoff": iteration.profile_cutoff,
        "fit": _fit(iteration),
        **_present(profile=profile and profile._asdict(), counts=counts and counts._asdict()),
    }
    out.write(_encode(head)[:-1])
    _write_list(out, "appeared", map(_changed, iteration.appeared))
    _write_list(out, "dropped", map(_changed, iteration.dropped))
    _write_list(out, "hits", _hits(report, iteration, alignments))
    scores = iteration.scores
    first = next(scores, None)
    if first is not None:
        _write_list(out, "scores", [first, *scores])
    out.write("}")


def write_json(report, out, iteration=None, alignments=True):
    """Writes the report, or only the iteration of that number, to a text stream; hits without alignments if so asked."""
    chosen = report.iterations if iteration is None else [report.iteration(iteration)]
    out.write(f'{{"format":"{FORMAT}","format_version":{FORMAT_VERSION},\n"run":')
    out.write(printable(_encode(run_record(report))))
    out.write(',\n"iterations":[')
    for number, one in enumerate(chosen):
        out.write(",\n" if number else "\n")
        _write_iteration(report, one, out, alignments)
    out.write("]}\n")
