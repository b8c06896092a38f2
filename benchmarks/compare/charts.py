"""Draws a run's results as SVG that can be read on a light ground and on a dark one."""

import math
from xml.sax.saxutils import escape

WIDTH, LEFT, RIGHT, TOP, ROW, BAR = 860, 330, 110, 64, 30, 14

STYLE = """
  text { font: 13px system-ui, sans-serif; fill: #0b0b0b; paint-order: stroke; stroke: #fcfcfb; stroke-width: 4px }
  .title { font-size: 16px; font-weight: 600 }
  .soft { fill: #52514e; stroke: #fcfcfb; stroke-width: 4px; paint-order: stroke }
  .grid { stroke: #e4e3df; stroke-width: 1 }
  .unit { stroke: #898781; stroke-width: 1 }
  .bar { fill: #2a78d6 }
  .goal { stroke: #0b0b0b; stroke-width: 2 }
  .line { fill: none; stroke: #2a78d6; stroke-width: 2 }
  .ground { fill: #fcfcfb }
  @media (prefers-color-scheme: dark) {
    text { fill: #ffffff; stroke: #1a1a19 }
    .soft { fill: #c3c2b7; stroke: #1a1a19 }
    .grid { stroke: #353532 }
    .unit { stroke: #898781 }
    .bar { fill: #3987e5 }
    .goal { stroke: #ffffff }
    .line { stroke: #3987e5 }
    .ground { fill: #1a1a19 }
  }
"""


class Drawing:
    def __init__(self, title, note, height):
        self.height = height
        self.parts = [f'<rect class="ground" width="{WIDTH}" height="{height}"/>']
        self.text(20, 28, title, "title")
        self.text(20, 48, note, "soft")

    def text(self, x, y, words, kind="", anchor="start"):
        self.parts.append(f'<text x="{x:.1f}" y="{y:.1f}" class="{kind}" text-anchor="{anchor}">{escape(words)}</text>')

    def line(self, x1, y1, x2, y2, kind):
        self.parts.append(f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" class="{kind}"/>')

    def bar(self, x, y, width):
        """The end that tells the value is round, the one at the axis is not."""
        width = max(width, 2)
        bend = min(4, width / 2)
        self.parts.append(f'<path class="bar" d="M{x:.1f},{y:.1f} h{width - bend:.1f} q{bend:.1f},0 {bend:.1f},{bend:.1f} '
                          f'v{BAR - 2 * bend:.1f} q0,{bend:.1f} -{bend:.1f},{bend:.1f} h-{width - bend:.1f} z"/>')

    def polyline(self, points):
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(f'<polyline class="line" points="{path}"/>')

    def svg(self):
        return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{self.height}" '
                f'viewBox="0 0 {WIDTH} {self.height}"><style>{STYLE}</style>\n' + "\n".join(self.parts) + "\n</svg>\n")


def _bars(title, note, rows, unit=None):
    """`rows`: what, value, its words, the goal or none."""
    drawing = Drawing(title, note, TOP + ROW * len(rows) + 24)
    largest = max(max(value, goal or 0) for _, value, _, goal in rows)

    def place(value):
        return LEFT + (WIDTH - LEFT - RIGHT) * value / largest

    bottom = TOP + ROW * len(rows)
    drawing.line(LEFT, TOP, LEFT, bottom, "grid")
    if unit is not None and unit <= largest:
        drawing.line(place(unit), TOP, place(unit), bottom, "unit")
    for number, (what, value, words, goal) in enumerate(rows):
        y = TOP + ROW * number + (ROW - BAR) / 2
        drawing.text(LEFT - 10, y + 12, what, anchor="end")
        drawing.bar(LEFT, y, place(value) - LEFT)
        if goal is not None:
            drawing.line(place(goal), y - 4, place(goal), y + BAR + 4, "goal")
        drawing.text(max(place(value), place(goal or 0)) + 8, y + 12, words, "soft")
    return drawing.svg()


def _ratio_rows(results):
    for work in results["works"]:
        for row in work["tools"]:
            goal = next((judged for judged in row["goals"] if " of " in judged["goal"]), None)
            if row["kind"] == "command" and goal:
                way = row["tool"].removeprefix("zet-client")
                name = f"{work['work']}{way}, to {goal['goal'].split(' of ')[1]}"
                yield name, goal["reached"], f"{goal['reached']:.2f}, goal {goal['limit']:g}", goal["limit"]


def ratios(results):
    return _bars("Time of the command beside what a user would take instead",
                 "1 (the thin line): as long as the other tool; the thick mark: the goal; less is better",
                 list(_ratio_rows(results)), unit=1)


def _calls(results):
    for work in results["works"]:
        for row in work["tools"]:
            if row.get("calls"):
                yield f"{work['work']}, {row['tool']}", row["calls"], f"{row['calls']:.0f}", None


def calls(results):
    return _bars("System calls a target", "of a whole run, divided by its targets; less is better", list(_calls(results)))


def growth(results):
    """Both axes are logarithmic, so that what grows with the text is a straight line of one slope."""
    works = results["growth"]
    drawing = Drawing("Time of the engine by size of the text", "one, two and four times the text; both axes are logarithmic",
                      420)
    times = [time for work in works for time in work["medians_s"]]
    low, high = math.log(min(times) / 1.5), math.log(max(times) * 1.5)

    def point(step, time):
        return 90 + step * 240, 380 - 310 * (math.log(time) - low) / (high - low)

    for step, label in enumerate(("x1", "x2", "x4")):
        drawing.line(point(step, times[0])[0], TOP, point(step, times[0])[0], 380, "grid")
        drawing.text(point(step, times[0])[0], 400, label, "soft", "middle")
    taken = []
    for work in sorted(works, key=lambda each: each["medians_s"][-1]):
        points = [point(step, time) for step, time in enumerate(work["medians_s"])]
        drawing.polyline(points)
        y = points[-1][1] + 4
        # Keep the names of lines apart that end close together.
        while any(abs(y - other) < 16 for other in taken):
            y -= 4
        taken.append(y)
        drawing.text(points[-1][0] + 10, y, f"{work['work']}, {work['medians_s'][-1] * 1e3:.0f} ms", "soft")
    return drawing.svg()


CHARTS = {"ratios": ("works", ratios), "growth": ("growth", growth), "calls": ("works", calls)}


def draw(results, directory):
    """What the run did not measure is not drawn."""
    directory.mkdir(parents=True, exist_ok=True)
    for name, (needed, chart) in CHARTS.items():
        if name == "calls" and not list(_calls(results)):
            continue
        if results[needed]:
            (directory / f"{name}.svg").write_text(chart(results))
