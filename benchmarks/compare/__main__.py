"""Compares the product with what a user would take instead. Called by script/bench."""

import argparse
import json
import os
import pathlib
import platform
import shutil
import subprocess
import sys
import tempfile

import charts
import measure
import report
import sets
import works
from tools import ENGINE


def arguments():
    parser = argparse.ArgumentParser(prog="script/bench")
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--built-in", type=pathlib.Path, help=argparse.SUPPRESS)
    parser.add_argument("--smoke", action="store_true", help="tiny texts, one round, only the bytes are judged")
    parser.add_argument("--rounds", type=int, default=15, help="how often each tool has its turn (%(default)s)")
    parser.add_argument("--work", action="append", choices=[*works.WORKS, "growth", "syncing", "commit-synced"],
                        help="only this work; may be repeated")
    parser.add_argument("--skip", action="append", default=[], metavar="TOOL",
                        help="leave this tool out; may be repeated")
    parser.add_argument("--core", type=int, default=max(os.sched_getaffinity(0)),
                        help="the processor core that everything runs on (%(default)s)")
    parser.add_argument("--realtime", action="store_true",
                        help="run the tools before everything else on their core, where a machine is shared (root)")
    parser.add_argument("--memory-dir", default="/dev/shm", help="where the texts are: a tmpfs (%(default)s)")
    parser.add_argument("--disk-dir", help="a real file system to measure syncing on (the build directory)")
    parser.add_argument("--charts", type=pathlib.Path, metavar="DIR",
                        help="draw the results of the last run, or of --json, into DIR, and measure nothing")
    parser.add_argument("--json", type=pathlib.Path, help="the results in full (BUILD/bench.json)")
    return parser.parse_args()


def as_installed(build):
    """The programs of a build, copied whole: what a linker wrote piece by piece faults more often than what a package
    puts on the disk, which is 3% of a command with a small file."""
    copy = build / "as-installed"
    shutil.rmtree(copy, ignore_errors=True)
    for directory in ("bin", "lib"):
        if (build / directory).is_dir():
            shutil.copytree(build / directory, copy / directory, symlinks=True)
    return copy


class Bench:
    def __init__(self, options):
        measure.run_on(options.core, options.realtime)
        self.options = options
        self.programs, self.built_in_programs = (
            build if build is None or options.smoke else as_installed(build)
            for build in (options.build, options.built_in))
        self.sizes = works.SMOKE_SIZES if options.smoke else works.Sizes()
        self.rounds = 1 if options.smoke else options.rounds

    def wanted(self, name):
        return self.options.work is None or name in self.options.work

    def in_place(self, make, use, directory=None, sync="no"):
        """Builds a work in a fresh directory and uses it there."""
        with tempfile.TemporaryDirectory(prefix="zet-bench.", dir=directory or self.options.memory_dir) as path:
            return use(make(works.Place(path, self.programs, sync, self.built_in_programs)))

    def compare(self, name):
        print(f"{name} ...", file=sys.stderr)

        def use(work):
            work.tools = [tool for tool in work.tools if tool.name not in self.options.skip]
            if self.options.smoke:
                work.runs = 1
            return report.entry(work, measure.compare(work, self.rounds), judging=not self.options.smoke)

        return self.in_place(lambda place: works.WORKS[name](place, self.sizes), use)

    def growth(self, name):
        print(f"growth of {name} ...", file=sys.stderr)

        def use(work):
            work.tools = [tool for tool in work.tools if tool.kind == ENGINE]
            return measure.compare(work, self.rounds)[0].median

        medians = [self.in_place(lambda place: works.WORKS[name](place, self.sizes.times(factor)), use)
                   for factor in (1, 2, 4)]
        return report.growth_entry(name, medians)

    def synced_commit(self):
        print("commit-synced ...", file=sys.stderr)

        def use(work):
            work.name = "commit-synced"
            return report.entry(work, measure.compare(work, self.rounds), judging=not self.options.smoke)

        return self.in_place(lambda place: sets.first_commit(place, self.sizes), use,
                             self.options.disk_dir or self.options.build, "yes")

    def syncing(self, synced):
        print("syncing ..." if synced else "not syncing ...", file=sys.stderr)
        return self.in_place(lambda place: works.synced_renders(place, self.sizes, synced),
                             lambda work: report.entry(work, measure.compare(work, self.rounds), judging=False),
                             self.options.disk_dir or self.options.build, "yes" if synced else "no")


def machine():
    info = pathlib.Path("/proc/cpuinfo").read_text()
    model = next((line.split(":")[1].strip() for line in info.splitlines() if line.startswith("model name")), "")
    versions = {}
    for tool, option in {"perl": "-v", "sed": "--version", "mawk": "-Wv", "grep": "--version",
                         "envsubst": "--version", "hyperfine": "--version"}.items():
        if shutil.which(tool):
            said = subprocess.run([tool, option], capture_output=True, text=True, check=False)
            versions[tool] = next(line for line in (said.stdout + said.stderr).splitlines() if line.strip())
    return {"processor": model, "kernel": platform.release(), "tools": versions}


def main():
    options = arguments()
    if options.charts:
        charts.draw(json.loads((options.json or options.build / "bench.json").read_text()), options.charts)
        return 0
    bench = Bench(options)
    if not options.smoke:
        measure.touch_memory(options.memory_dir)
    entries = [bench.compare(name) for name in works.WORKS if bench.wanted(name)]
    judged = not options.smoke
    growth = [bench.growth(name) for name in works.GROWING] if judged and bench.wanted("growth") else []
    syncing = [bench.syncing(synced) for synced in (False, True)] if bench.wanted("syncing") else []
    entries += [bench.synced_commit()] if bench.wanted("commit-synced") else []
    if options.smoke:
        print("every tool made the wanted bytes")
        return 0
    tables = [report.works_table(entries)] if entries else []
    tables += [report.growth_table(growth)] if growth else []
    tables += [report.syncing_table(syncing)] if syncing else []
    print("\n\n".join(tables))
    target = options.json or options.build / "bench.json"
    target.write_text(json.dumps({"machine": machine(), "works": entries, "growth": growth, "syncing": syncing},
                                 indent=1))
    print(f"\nall of it: {target}")
    missed = report.missed(entries, growth)
    for name in missed:
        print(f"missed: {name}")
    return 1 if missed else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except measure.Unwanted as problem:
        sys.exit(f"script/bench: {problem}")
