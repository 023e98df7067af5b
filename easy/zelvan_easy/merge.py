"""Brings the searches of one query together again: both strands, and the stretches of a long sequence.

Each search has statistics of its own, and its E-value counts what chance brings in that search. In k searches chance
brings k times as much, so E-values are multiplied by k. What lies in the overlap of two stretches is told once.
"""

from __future__ import annotations

from typing import NamedTuple

from zelvan_easy.plan import NAME_WIDTH
from zelvan_easy.report import AlignedHit, Iteration, Report


class Part(NamedTuple):
    report: Report
    offset: int  # residues of the query before this stretch


class MergedIteration(Iteration):
    """The last iteration of several searches as one: hits and alignments are held, the rest is the first search's."""

    def __init__(self, parts, length, limit=None):
        first = parts[0].report.iteration()
        count = len(parts)
        header = dict(first.header)
        header["Query Length"] = str(length)
        for name in ("Eval Cutoff", "Pval Cutoff", "PROBCUT", "Eval Cutoff for profile", "Pval Cutoff for profile"):
            if name in header:
                header[name] = f"{float(header[name]) * count:g}"
        super().__init__(first.file, first.number, header, first.prelude, first.list_span, first.body)
        hits = _best_hits(parts, count, limit)
        ranks = {hit.target: hit.rank for hit in hits}
        self.__dict__["hits"] = hits  # takes the place of the cached property
        self._aligned = _aligned(parts, count, length, ranks)

    def aligned(self):
        return iter(self._aligned)


def merged_report(parts, length, limit=None):
    """One Report of the parts; its only iteration holds the hits of their last ones."""
    return Report([MergedIteration(parts, length, limit)], parts[0].report.times)


def _times(value, count):
    return None if value is None else value * count


def _order(hit):
    """Best first; E-values that have no digits left are told apart by the score."""
    significance = hit.significance if hit.significance is not None else float("inf")
    return significance, -(hit.standardised or 0), -hit.score, hit.target


def _best_hits(parts, count, limit):
    best = {}
    for part in parts:
        for hit in part.report.iteration().hits:
            hit = hit._replace(significance=_times(hit.significance, count))
            if hit.target not in best or _order(hit) < _order(best[hit.target]):
                best[hit.target] = hit
    ordered = sorted(best.values(), key=_order)[:limit]
    return [hit._replace(rank=rank) for rank, hit in enumerate(ordered, 1)]


def _aligned(parts, count, length, ranks):
    """The alignments of each hit, in the coordinates of the whole query."""
    found = {}  # by target: heading, [(number of the part, alignment)]
    for number, part in enumerate(parts):
        for hit in part.report.iteration().aligned():
            if hit.target[:NAME_WIDTH] not in ranks:
                continue
            _, alignments = found.setdefault(hit.target, (hit, []))
            if hit.alignments:
                found[hit.target] = hit, alignments
            for alignment in hit.alignments:
                alignments.append((number, alignment._replace(
                    query_start=alignment.query_start + part.offset, query_end=alignment.query_end + part.offset,
                    significance=_times(alignment.significance, count))))  # fmt: skip
    result = []
    for target, (heading, alignments) in found.items():
        kept = _without_repetitions(alignments)
        numbered = [alignment._replace(number=k) for k, alignment in enumerate(kept, 1)]
        result.append(AlignedHit(ranks[target[:NAME_WIDTH]], heading.query, target, heading.title, length, heading.target_length,
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
