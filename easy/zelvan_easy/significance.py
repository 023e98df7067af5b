"""Bit scores: significance on a scale that does not depend on the size of the database.

    bits = log2(query length x residues of the database / E)

This is how E-values and bit scores of the usual tables belong together; it needs no constants of a scoring system,
which position-specific scores and length-dependent statistics do not have. Where E is so small that it has no digits
left, its logarithm comes from the standardised score.
"""

from __future__ import annotations

import math

_TINY = 1e-300  # below it a printed E-value has lost digits, or is 0
_EV_SD = math.pi / math.sqrt(6)  # of the standard extreme-value distribution
_EV_MEAN = 0.5772156649015329
_Z_MEAN, _Z_SD = 50, 10


class Scale:
    """How the search turned scores into significance, as far as its report tells."""

    def __init__(self, iteration):
        self.space = (iteration.query_length or 0) * (iteration.residues or 0)
        self.translated = "FIT" in iteration.header
        self.fit = iteration.location and iteration.scale
        self.exact_scale = iteration.scale[1] if self.fit else None
        # P-values are of one comparison: as many of them make an E-value as queries' lengths go into the database.
        is_p = iteration.significance_name == "P-value"
        self.log_of_p = math.log(iteration.residues / iteration.query_length) if is_p and self.space else 0
        self.iteration = iteration
        self._log_factor = None

    def log_significance(self, standardised):
        """ln E (or P) of a standardised score; exact only for scores far above chance, where it is needed."""
        if self._log_factor is None:
            self._log_factor = self._find_log_factor()
        return self._log_factor - self._depth(standardised)

    def _depth(self, standardised):
        """-ln of the probability in one comparison."""
        if self.translated:
            return _EV_SD * (standardised - _Z_MEAN) / _Z_SD + _EV_MEAN
        return standardised

    def _find_log_factor(self):
        """ln of what probabilities were multiplied with. The report does not name it: the listed hit with the most
        significant value that still has all its digits tells it, and without one it is that of PROB_TYPE 1."""
        for hit in self.iteration.hits:
            if hit.significance and hit.significance >= _TINY and self._depth(hit.standardised) > 5:
                return math.log(hit.significance) + self._depth(hit.standardised)
        if self.iteration.significance_name == "P-value" or not self.space:
            return 0
        return math.log(self.iteration.residues / self.iteration.query_length)

    def bits(self, significance, standardised=None):
        """The bit score, or None where the report has no statistics for it."""
        if significance is None or not self.space:
            return None
        if significance >= _TINY:
            log_value = math.log(significance)
        elif standardised is not None and math.isfinite(standardised):
            log_value = self.log_significance(standardised)
        else:
            return None
        return (math.log(self.space) - log_value - self.log_of_p) / math.log(2)


def standardised_scores(scale, found, hit):
    """The standardised score of each alignment of a hit: the hit's own for its best, the others below it by the
    slope of the fit. For alignments whose significance has no digits left."""
    best = max((alignment.score for alignment in found.alignments), default=0)
    slope = scale.exact_scale
    if hit is None or hit.standardised is None:
        return [None] * len(found.alignments)
    if scale.translated or not slope:
        return [hit.standardised if a.score == best else None for a in found.alignments]
    unit = slope * math.log(found.query_length * found.target_length)
    return [hit.standardised - (best - alignment.score) / unit for alignment in found.alignments]
