"""Brings the searches of one query together again: both strands, the stretches of a long sequence, the volumes of a database.

Each search has statistics of its own, and its E-value counts what chance brings in that search. In k searches chance
brings k times as much, and in the whole database as many times as in a volume as it is larger: E-values are multiplied
by both. What lies in the overlap of two stretches is told once.
"""

from __future__ import annotations

from collections import Counter
from typing import NamedTuple

from zelvan_easy.plan import NAME_WIDTH
from zelvan_easy.report import AlignedHit, Iteration, Report


class Part(NamedTuple):
    report: Report
    offset: int  # residues of the query before this stretch
    factor: float  # of its E-values
    volume: int  # of the database that it searched


class MergedIteration(Iteration):
    """The last iteration of several searches as one: hits and alignments are held, the rest is the first search's."""

    profile = counts = None  # they would be of a part of the hits

    def __init__(self, parts, length, database, plan):
        first = parts[0].report.iteration()
        header = dict(first.header)
        told = {"Query Length": length, "Number of sequences": database.sequences,
                "Number of residues/bases in database": database.residues}  # fmt: skip
        told.update(dict.fromkeys(("Eval Cutoff", "Pval Cutoff", "PROBCUT"), f"{plan.evalue:g}"))
        if plan.inclusion is not None:
            told.update(dict.fromkeys(("Eval Cutoff for profile", "Pval Cutoff for profile"), f"{plan.inclusion:g}"))
        header.update((name, str(value)) for name, value in told.items() if name in header)
        super().__init__(first.file, first.number, header, first.prelude, first.list_span, first.body)
        self._parts = parts
        hits = _best_hits(parts, plan.limit)
        self.__dict__["hits"] = list(hits.values())  # takes the place of the cached property
        self._aligned = _aligned(parts, length, {key: hit.rank for key, hit in hits.items()})

    def aligned(self):
        return iter(self._aligned)

    @property
    def query_letters(self):
        letters = {}
        for part in self._parts:
            letters.update(part.report.iteration().query_letters)
        return letters


def merged_report(parts, length, database, plan):
    """One Report of the parts; its only iteration holds the hits of their last ones."""
    return Report([MergedIteration(parts, length, database, plan)], parts[0].report.times)


def _times(value, factor):
    return None if value is None else value * factor


def _order(hit):
    """Best first; E-values that have no digits left are told apart by the score."""
    significance = hit.significance if hit.significance is not None else float("inf")
    return significance, -(hit.standardised or 0), -hit.score, hit.target


def _keys(parts):
    """A function of part and hit that tells which hits are of one sequence. In a volume that was searched once each hit is of
    its own, and may have the name of another; several searches of it can only be compared by names."""
    searches = Counter(part.volume for part in parts)

    def key(part, hit):
        return part.volume, hit.rank if searches[part.volume] == 1 else hit.target[:NAME_WIDTH]

    return key


def _best_hits(parts, limit):
    """{key: hit}, the best first."""
    best, key_of = {}, _keys(parts)
    for part in parts:
        for hit in part.report.iteration().hits:
            key = key_of(part, hit)
            hit = hit._replace(significance=_times(hit.significance, part.factor))
            if key not in best or _order(hit) < _order(best[key]):
                best[key] = hit
    ordered = sorted(best, key=lambda key: (*_order(best[key]), key))[:limit]
    return {key: best[key]._replace(rank=rank) for rank, key in enumerate(ordered, 1)}


def _aligned(parts, length, ranks):
    """The alignments of each hit, in the coordinates of the whole query."""
    found, key_of = {}, _keys(parts)  # by key: heading, [(number of the part, alignment)]
    for number, part in enumerate(parts):
        for hit in part.report.iteration().aligned():
            key = key_of(part, hit)
            if key not in ranks:
                continue
            _, alignments = found.setdefault(key, (hit, []))
            if hit.alignments:
                found[key] = hit, alignments
            for alignment in hit.alignments:
                alignments.append((number, alignment._replace(
                    query_start=alignment.query_start + part.offset, query_end=alignment.query_end + part.offset,
                    significance=_times(alignment.significance, part.factor))))  # fmt: skip
    result = []
    for key, (heading, alignments) in found.items():
        kept = _without_repetitions(alignments)
        numbered = [alignment._replace(number=k) for k, alignment in enumerate(kept, 1)]
        result.append(AlignedHit(ranks[key], heading.query, heading.target, heading.title, length, heading.target_length,
                                 heading.translated, numbered))  # fmt: skip
    return sorted(result, key=lambda hit: hit.rank)


def _alignment_order(numbered):
    number, alignment = numbered
    value = alignment.significance
    return float("inf") if value is None else value, -alignment.score, number, alignment.number


def _without_repetitions(alignments):
    """The alignments, best first, without those that another stretch has shown better: most of the shorter one is
    in the other, on the query as on the target. What runs through a whole overlap and beyond stays as two parts."""
    kept = []
    for number, alignment in sorted(alignments, key=_alignment_order):
        if not any(number != other and _same(alignment, better) for other, better in kept):
            kept.append((number, alignment))
    return [alignment for _, alignment in kept]


def _same(one, other):
    return _shared(one.query_start, one.query_end, other.query_start, other.query_end) and _shared(
        one.target_start, one.target_end, other.target_start, other.target_end
    )


def _shared(start, end, other_start, other_end):
    """Whether most of the shorter range is in the other; ranges that run in opposite directions share nothing."""
    if (start <= end) != (other_start <= other_end):
        return False
    start, end, other_start, other_end = *sorted((start, end)), *sorted((other_start, other_end))
    common = min(end, other_end) - max(start, other_start) + 1
    return common >= 0.8 * (min(end - start, other_end - other_start) + 1)
