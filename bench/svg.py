# SPDX-License-Identifier: MIT
"""Just enough of a plotter: bars and lines on a linear or logarithmic scale, as SVG that is readable on
light and on dark paper."""
import math
from html import escape

WIDTH, HEIGHT = 760, 400
LEFT, RIGHT, TOP, BOTTOM = 76, 170, 56, 74
PARTS = 4  # of a linear scale
COLOURS = ["#1f77d0", "#8a8f98", "#d9730d", "#2f9e5f", "#a05bd1"]

STYLE = """
  text { font: 13px sans-serif; fill: #24292f; }
  .title { font-size: 16px; font-weight: bold; }
  .note { font-size: 11px; fill: #6a737d; }
  .grid { stroke: #d0d7de; stroke-width: 1; }
  .axis { stroke: #6a737d; stroke-width: 1; }
  @media (prefers-color-scheme: dark) {
    text { fill: #e6edf3; } .note { fill: #9aa4af; } .grid { stroke: #373e47; }
  }
"""


def _label(value):
    return f"{value:,.0f}" if value >= 1000 else f"{value:g}"


class Scale:
    """From values to pixels; upwards from the axis."""

    def __init__(self, values, is_logarithmic):
        self.is_logarithmic = is_logarithmic
        positive = [value for value in values if value > 0] or [1]
        if is_logarithmic:
            self.low = 10 ** math.floor(math.log10(min(positive)))
            self.high = 10 ** math.ceil(math.log10(max(positive) * 1.0001))
        else:
            power = 10 ** math.floor(math.log10(max(positive) / PARTS))
            step = next(each * power for each in (1, 2, 2.5, 5, 10)
                        if each * power * PARTS >= max(positive))
            self.low, self.high = 0, step * PARTS

    def share(self, value):
        if self.is_logarithmic:
            clipped = max(value, self.low)
            return math.log(clipped / self.low) / math.log(self.high / self.low)
        return value / self.high

    def at(self, value):
        return HEIGHT - BOTTOM - self.share(value) * (HEIGHT - TOP - BOTTOM)

    def ticks(self):
        if self.is_logarithmic:
            exponents = range(round(math.log10(self.low)), round(math.log10(self.high)) + 1)
            return [10.0 ** exponent for exponent in exponents]
        return [self.high * part / PARTS for part in range(PARTS + 1)]


class Plot:
    def __init__(self, title, unit, note, scale):
        self.scale = scale
        self.body = [f'<text class="title" x="{LEFT}" y="24">{escape(title)}</text>',
                     f'<text class="note" x="{LEFT}" y="42">{escape(unit)}</text>',
                     f'<text class="note" x="{LEFT}" y="{HEIGHT - 10}">{escape(note)}</text>']
        for tick in scale.ticks():
            y = scale.at(tick)
            self.line("grid", LEFT, y, WIDTH - RIGHT, y)
            self.text(LEFT - 8, y + 4, _label(tick), "end")

    def line(self, kind, x1, y1, x2, y2):
        self.body.append(f'<line class="{kind}" x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}"/>')

    def text(self, x, y, text, anchor="middle", kind=""):
        self.body.append(f'<text class="{kind}" x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">'
                         f"{escape(text)}</text>")

    def legend(self, names):
        for i, name in enumerate(names):
            y = TOP + 16 + 22 * i
            self.body.append(f'<rect x="{WIDTH - RIGHT + 16}" y="{y - 10}" width="12" height="12" '
                             f'fill="{COLOURS[i % len(COLOURS)]}"/>')
            self.text(WIDTH - RIGHT + 34, y, name, "start")

    def svg(self):
        self.line("axis", LEFT, HEIGHT - BOTTOM, WIDTH - RIGHT, HEIGHT - BOTTOM)
        return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
                f'role="img"><style>{STYLE}</style>\n' + "\n".join(self.body) + "\n</svg>\n")


def bars(title, unit, note, groups, series, is_logarithmic=False):
    """series: {name: [a value or None for each group]}"""
    values = [value for row in series.values() for value in row if value is not None]
    plot = Plot(title, unit, note, Scale(values, is_logarithmic))
    room = (WIDTH - LEFT - RIGHT) / len(groups)
    width = room * 0.8 / len(series)
    for g, group in enumerate(groups):
        plot.text(LEFT + room * (g + 0.5), HEIGHT - BOTTOM + 20, group)
        for s, row in enumerate(series.values()):
            if row[g] is None:
                continue
            x, y = LEFT + room * (g + 0.1) + width * s, plot.scale.at(row[g])
            plot.body.append(f'<rect x="{x:.1f}" y="{y:.1f}" width="{width * 0.9:.1f}" '
                             f'height="{HEIGHT - BOTTOM - y:.1f}" fill="{COLOURS[s % len(COLOURS)]}"/>')
    plot.legend(series)
    return plot.svg()


def lines(title, unit, note, places, series, is_logarithmic=False):
    """As bars, with a point for each place and a line through them."""
    values = [value for row in series.values() for value in row if value is not None]
    plot = Plot(title, unit, note, Scale(values, is_logarithmic))
    room = (WIDTH - LEFT - RIGHT) / len(places)
    for p, place in enumerate(places):
        plot.text(LEFT + room * (p + 0.5), HEIGHT - BOTTOM + 20, place)
    for s, row in enumerate(series.values()):
        points = [(LEFT + room * (p + 0.5), plot.scale.at(value))
                  for p, value in enumerate(row) if value is not None]
        colour = COLOURS[s % len(COLOURS)]
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        plot.body.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2.5"/>')
        plot.body += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="4" fill="{colour}"/>' for x, y in points]
    plot.legend(series)
    return plot.svg()
