"""The drawings of a page, as SVG text: what the statistics of a search expected and what it found.

lengths: target length and score of each aligned hit by its rank.
"""

from __future__ import annotations

import math
from dataclasses import dataclass

from markupsafe import Markup, escape

WIDTH, HEIGHT = 640, 300
LEFT, RIGHT, TOP, BOTTOM = 56, 16, 14, 46
CERTAIN_TO_COME = 5  # so many expected hits do not all stay away by chance (1 % of the time they would)


@dataclass
class Axis:
    """Maps values to positions between two ends; a logarithmic one by their logarithms."""

    low: float
    high: float
    start: float
    end: float
    logarithmic: bool = False

    def __call__(self, value):
        low, high = self.low, self.high
        if self.logarithmic:
            value, low, high = math.log(max(value, 1e-300)), math.log(low), math.log(high)
        return self.start + (value - low) / (high - low or 1) * (self.end - self.start)

    def ticks(self):
        if self.logarithmic:
            steps = [m * 10.0**e for e in range(-4, 9) for m in (1, 2, 5)]
            return [s for s in steps if self.low <= s <= self.high]
        span = self.high - self.low or 1
        step = 10 ** math.floor(math.log10(span / 4))
        step *= next(m for m in (1, 2, 5, 10) if span / (m * step) <= 7)
        first = math.ceil(self.low / step)
        return [(first + i) * step for i in range(int((self.high - first * step) / step + 1e-9) + 1)]


def horizontal(low, high, logarithmic=False):
    return Axis(low, high, LEFT, WIDTH - RIGHT, logarithmic)


def vertical(low, high):
    return Axis(low, high, HEIGHT - BOTTOM, TOP)


def text(x, y, words, anchor="middle", turn=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}"{turn}>{escape(words)}</text>'


def frame(x, y, x_title, y_title, description, content, x_ticks=None):
    """A drawing with axes around its content."""
    bottom = HEIGHT - BOTTOM
    parts = [f'<svg viewBox="0 0 {WIDTH} {HEIGHT}" role="img" aria-label="{escape(description)}">']
    for value in y.ticks():
        parts.append(f'<line class="grid" x1="{LEFT}" x2="{WIDTH - RIGHT}" y1="{y(value):.1f}" y2="{y(value):.1f}"/>')
        parts.append(text(LEFT - 6, y(value) + 4, f"{value:g}", "end"))
    for value, words in x_ticks or [(value, f"{value:g}") for value in x.ticks()]:
        parts.append(f'<line class="axis" x1="{x(value):.1f}" x2="{x(value):.1f}" y1="{bottom}" y2="{bottom + 4}"/>')
        parts.append(text(x(value), bottom + 17, words))
    parts += content
    parts.append(f'<path class="axis" d="M{LEFT} {TOP}V{bottom}H{WIDTH - RIGHT}"/>')
    parts.append(text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 6, x_title))
    middle = (TOP + bottom) / 2
    parts.append(text(14, middle, y_title, turn=f' transform="rotate(-90 14 {middle:.0f})"'))
    return "\n".join(parts) + "</svg>"


def curve(css, points, name):
    path = "L".join(f"{x:.1f} {y:.1f}" for x, y in points)
    return f'<path class="curve {css}" d="M{path}"><title>{escape(name)}</title></path>'


def bar(css, x0, x1, y0, y1, name):
    return (
        f'<rect class="{css}" x="{x0:.1f}" y="{y1:.1f}" width="{max(x1 - x0, 0.5):.1f}" height="{y0 - y1:.1f}">'
        f"<title>{escape(name)}</title></rect>"
    )


# ---- The statistics, as far as the report tells them


def location(fit, lpl):
    """A(lpl). The report does not say whether it is the exponential or the straight line that was fitted in its
    place, but only the line goes through the origin."""
    a1, a2, a3 = fit
    return a1 + a2 * math.exp(-lpl / a3) if a1 != 0 else a2 * lpl


def standardised(iteration, query_length, target_length, score):
    """x of a score; without the limits of the scale, which a report does not tell."""
    lpl = math.log(query_length * target_length)
    return (int(score) - location(iteration.location, lpl)) / (iteration.scale[1] * lpl)


# ---- Drawings


def significance_histogram(iteration):
    """Hits in classes of significance, half a power of ten each, with the number that chance brings to each. Not
    drawn for a list that MAX_NOUT cut short: it ends where chance alone would have brought more."""
    values = sorted(hit.significance for hit in iteration.hits if hit.significance is not None)
    top = iteration.cutoff
    if not values or not top or iteration.significance_name != "E-value" or top - values[-1] > CERTAIN_TO_COME:
        return ""
    classes = min(21, max(4, math.ceil(2 * math.log10(top / max(values[0], 1e-300))) + 1))
    edges = [top * 10 ** (-i / 2) for i in range(classes)] + [0]
    counts = [sum(low < v <= high or (low == 0 and v == 0) for v in values) for high, low in zip(edges, edges[1:])]
    x, y = horizontal(0, classes), vertical(0, max(counts + [top - edges[1]]) * 1.08)
    content, marks = [], []
    for i, count in enumerate(counts):
        at = classes - 1 - i
        expected = edges[i] - edges[i + 1]
        name = f"E-value {edges[i + 1]:.2g} to {edges[i]:.2g}: {count} hits, {expected:.2g} expected by chance"
        content.append(bar("bar", x(at + 0.1), x(at + 0.9), y(0), y(count), name))
        content.append(curve("chance", [(x(at + 0.05), y(expected)), (x(at + 0.95), y(expected))], name))
        if i % 2 == 0 and i < classes - 1:
            marks.append((at + 1, f"{edges[i]:.0e}" if edges[i] < 0.01 else f"{edges[i]:g}"))
    description = "Number of hits by E-value, with the number expected by chance"
    return frame(x, y, "E-value", "hits", description, content, marks)


def score_by_length(iteration, everything, lengths, query_length):
    """Scores of the aligned hits (or of all sequences) over their lengths, with the fitted location."""
    hits = sorted(set(lengths.values()))
    if not iteration.location or not (hits or everything):
        return ""
    points = hits + everything
    shown = everything[:: max(1, len(everything) // 3000)]
    x = horizontal(min(n for n, _ in points) * 0.9, max(n for n, _ in points) * 1.1, True)
    y = vertical(0, max(s for _, s in points) * 1.05)
    content = [f'<circle class="chance-dot" cx="{x(n):.1f}" cy="{y(s):.1f}" r="1.3"/>' for n, s in shown]
    content += [f'<circle class="dot" cx="{x(n):.1f}" cy="{y(s):.1f}" r="3"/>' for n, s in hits[:: max(1, len(hits) // 3000)]]
    grid = [math.exp(math.log(x.low) + i / 80 * math.log(x.high / x.low)) for i in range(81)]

    def line(score):
        return [(x(n), y(max(0, score(n)))) for n in grid]

    def expected(n):
        return location(iteration.location, math.log(query_length * n))

    content.append(curve("chance", line(expected), "fitted score of unrelated sequences"))
    reach = score_reaching(iteration, lengths, query_length)
    for css, cutoff in (("listed", iteration.cutoff), ("profile", iteration.profile_cutoff)):
        if reach and cutoff:
            name = f"score that reaches {iteration.significance_name} {cutoff:g}"
            content.append(curve(css, line(lambda n, e=cutoff: reach(n, e)), name))
    description = "Scores of hits against their lengths, with the fitted score of unrelated sequences"
    return frame(x, y, "target length, residues", "score", description, content)


def score_reaching(iteration, lengths, query_length):
    """A function of target length and significance: the score needed. The report does not name PROB_TYPE; what
    its hits were multiplied with (a constant, or one that falls with length) tells it."""
    factors = [
        (h.significance * math.exp(h.standardised), lengths[h.rank][0])
        for h in iteration.hits
        if h.rank in lengths and h.significance and h.standardised < 500
    ]
    if not factors:
        return None
    by_length = [factor * n for factor, n in factors]
    constant = [factor for factor, _ in factors]
    per_residue = max(by_length) / min(by_length) < max(constant) / min(constant)
    level = sorted(by_length if per_residue else constant)[len(factors) // 2]

    def score(n, significance):
        lpl = math.log(query_length * n)
        factor = level / n if per_residue else level
        return location(iteration.location, lpl) + iteration.scale[1] * lpl * math.log(factor / significance)

    return score


def score_distribution(iteration, everything, query_length):
    """Standardised scores of all sequences beside the extreme-value density; only if the report dumped them."""
    if not everything or not iteration.location:
        return ""
    values = [standardised(iteration, query_length, n, s) for n, s in everything]
    width, low, high = 0.5, -4, 12
    bins = [0] * int((high - low) / width)
    for value in values:
        bins[min(len(bins) - 1, max(0, int((value - low) / width)))] += 1

    def below(value):
        return math.exp(-math.exp(-value))

    edges = [low + i * width for i in range(len(bins) + 1)]
    expected = [len(values) * (below(e + width) - below(e)) for e in edges[:-1]]
    x, y = horizontal(low, high), vertical(0, max(bins + expected) * 1.05)
    content = [
        bar("bar", x(e) + 0.5, x(e + width) - 0.5, y(0), y(count), f"x {e:g} to {e + width:g}: {count} sequences")
        for e, count in zip(edges, bins)
    ]
    middle = [(x(e + width / 2), y(count)) for e, count in zip(edges, expected)]
    content.append(curve("chance", middle, "extreme-value distribution"))
    description = "Standardised scores of all sequences beside the fitted distribution"
    return frame(x, y, "standardised score (first and last class: all beyond)", "sequences", description, content)


def figures(iteration, lengths, query_length):
    """(drawing, caption) of everything that the report allows to draw."""
    everything = [(n, s) for n, s in iteration.scores if n > 0]
    drawings = [
        (score_distribution(iteration, everything, query_length),
         "All sequences searched by standardised score x (bars), and the extreme-value distribution that unrelated "
         "sequences follow (line). Relatives stand beyond its right end. The limits of the scale at very short and very "
         "long sequences are not in the report and not taken into account."),
        (significance_histogram(iteration),
         "Hits by E-value, the most significant at the left (bars), and the number that chance brings to each class "
         "(red lines). Bars above the lines are relatives, or sequences that resemble the query by composition."),
        (score_by_length(iteration, everything, lengths, query_length),
         "Score and length of the aligned hits (dots), the score that the fit expects of an unrelated sequence (red "
         "line), and the scores that reach the cut-off for the list (dashed) and for the profile (dotted)."),
    ]  # fmt: skip
    return [(Markup(drawing), caption) for drawing, caption in drawings if drawing]
