"""Turns results into tables and into JSON."""

import math
import statistics

from tools import COMMAND, ENGINE, FLOOR, PEER

MEMORY_EXTRA = 8 * 1000 * 1000

# A work counts as linear if four times the text takes at most 4 to the power of this.
LINEAR_EXPONENT = 1.1


def _time(seconds):
    if seconds < 100e-6:
        return f"{seconds * 1e6:.1f} us"
    return f"{seconds * 1e3:.2f} ms" if seconds < 0.01 else f"{seconds * 1e3:.1f} ms"


def _verdict(met):
    return "met" if met else "MISSED"


def judge(work, result, results):
    """What was to be reached, what was, and whether; for the product's rows only."""
    if result.tool.kind not in (COMMAND, ENGINE):
        return []
    by_name = {other.tool.name: other for other in results}
    judged = []
    own = [goal for goal in work.goals if goal.of == result.tool.name]
    for goal in own or [goal for goal in work.goals if goal.of is None]:
        if goal.against == "seconds":
            judged.append({"goal": f"{goal.factor:g} s", "limit": goal.factor, "reached": result.median,
                           "met": result.median <= goal.factor})
            continue
        if goal.against not in by_name or goal.against == result.tool.name:
            continue
        ratio = result.median / by_name[goal.against].median
        judged.append({"goal": f"{goal.factor:g} of {goal.against}", "limit": goal.factor, "reached": ratio,
                       "met": ratio <= goal.factor})
    if work.memory_factor is None:
        return judged
    limit = work.memory_factor * work.text_size + MEMORY_EXTRA
    judged.append({"goal": f"memory {limit / 1e6:.1f} MB", "limit": limit, "reached": result.memory,
                   "met": result.memory <= limit})
    return judged


def entry(work, results, judging):
    """A work as JSON."""
    peers = [result for result in results if result.tool.kind == PEER and result.tool.safe]
    best = min(peers, key=lambda result: result.median) if peers else None
    floor = next((result for result in results if result.tool.kind == FLOOR), None)
    rows = []
    for result in results:
        rows.append({
            "tool": result.tool.name,
            "kind": result.tool.kind,
            "safe": result.tool.safe,
            "command": result.tool.command,
            "median_s": result.median / work.units,
            "cpu_s": statistics.median(result.cpu) / work.units,
            "to_best_peer": result.median / best.median if best else None,
            "to_floor": result.median / floor.median if floor else None,
            "memory_bytes": result.memory,
            "calls": result.calls / work.units if result.calls else None,
            "goals": judge(work, result, results) if judging else [],
            "times_s": result.times,
        })
    return {"work": work.name, "title": work.title, "text_bytes": work.text_size, "units": work.units,
            "best_peer": best.tool.name if best else None, "tools": rows}


def _goals(row):
    def one(judged):
        if judged["goal"].startswith("memory"):
            return f"{judged['goal']}: {_verdict(judged['met'])}"
        return f"{judged['goal']}: {judged['reached']:.2f} {_verdict(judged['met'])}"

    return "; ".join(one(judged) for judged in row["goals"])


def _table(head, rows):
    cells = [head, *rows]
    widths = [max(len(row[column]) for row in cells) for column in range(len(head))]

    def line(row):
        return "| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |"

    return "\n".join([line(head), "|" + "|".join("-" * (width + 2) for width in widths) + "|", *map(line, rows)])


def works_table(entries):
    rows = []
    for each in entries:
        for number, row in enumerate(each["tools"]):
            ratio = row["to_best_peer"]
            rows.append([
                each["title"] if number == 0 else "",
                row["tool"],
                _time(row["median_s"]),
                _time(row["cpu_s"]),
                f"{ratio:.2f}" if ratio else "",
                f"{row['to_floor']:.2f}" if row["to_floor"] else "",
                f"{row['memory_bytes'] / 1e6:.1f} MB",
                _goals(row),
            ])
    return _table(["work", "tool", "median", "CPU", "to best peer", "to floor", "peak memory", "goal"], rows)


def growth_entry(name, medians):
    """`medians` of the engine for one, two and four times the text."""
    exponent = math.log(medians[-1] / medians[0], 4)
    return {"work": name, "medians_s": medians, "exponent": exponent, "linear": exponent <= LINEAR_EXPONENT}


def growth_table(entries):
    rows = [[each["work"], *map(_time, each["medians_s"]), f"{each['exponent']:.2f}",
             "linear" if each["linear"] else "NOT LINEAR"] for each in entries]
    return _table(["the engine's work", "x1", "x2", "x4", "exponent", "growth"], rows)


def syncing_table(entries):
    rows = [[each["title"] if number == 0 else "", row["tool"], _time(row["median_s"]), f"{row['to_floor']:.2f}"]
            for each in entries for number, row in enumerate(each["tools"])]
    return _table(["work", "tool", "median", "to floor"], rows)


def missed(entries, growth):
    """The goals that were not reached, for the exit status."""
    names = [f"{each['work']}, {row['tool']}: {judged['goal']}" for each in entries for row in each["tools"]
             for judged in row["goals"] if not judged["met"]]
    return names + [f"{each['work']}: linear growth" for each in growth if not each["linear"]]
