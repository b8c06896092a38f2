"""Runs the tools: once to see that each makes the wanted bytes and how much memory it takes, then in interleaved
rounds, timed by hyperfine."""

import dataclasses
import filecmp
import json
import os
import pathlib
import shlex
import shutil
import statistics
import subprocess
import tempfile
import time

import texts
from tools import Tool

# A tool that takes longer than this is not run in every round.
SLOW_SECONDS = 1.0
ROUNDS_OF_SLOW = 3

ENVIRONMENT = {"PATH": os.environ["PATH"], "HOME": os.environ.get("HOME", "/"), "LC_ALL": "C", **texts.VALUES}


class Unwanted(Exception):
    """A tool did not make what it was to make."""


@dataclasses.dataclass
class Result:
    tool: Tool
    memory: int  # peak size in bytes
    first: float  # duration of the first run in seconds
    calls: int | None = None  # system calls in one run
    times: list = dataclasses.field(default_factory=list)
    cpu: list = dataclasses.field(default_factory=list)

    @property
    def median(self):
        return statistics.median(self.times)

    def comes_in(self, round_number):
        return self.first < SLOW_SECONDS or round_number < ROUNDS_OF_SLOW


def _names(directory):
    return {path.name for path in directory.iterdir() if not path.name.endswith("_zet")}


def check(tool):
    """Compares what stands there with what is wanted."""
    if tool.wanted is None:
        return
    if tool.wanted.is_dir():
        pairs = [(tool.output / name, tool.wanted / name) for name in _names(tool.wanted)]
        same = _names(tool.output) == _names(tool.wanted)
    else:
        pairs, same = [(tool.output, tool.wanted)], True
    for made, wanted in pairs:
        same = same and made.exists() and filecmp.cmp(made, wanted, shallow=False)
    if not same:
        raise Unwanted(f"{tool.name} made something else than {tool.wanted}: {tool.output}")


_placement = []


def run_on(core, realtime):
    """From now on everything runs on this core."""
    _placement[:] = ["taskset", "-c", str(core), *(["chrt", "--fifo", "1"] if realtime else [])]


def touch_memory(directory, size=3 << 30):
    """A virtual machine's memory is slow when it is used for the first time ever: better now than in a run."""
    with tempfile.TemporaryFile(dir=directory) as file:
        piece = bytes(1 << 20)
        for _ in range(size // len(piece)):
            file.write(piece)


def _run(command, stdout=subprocess.DEVNULL):
    try:
        subprocess.run([*_placement, *command], env=ENVIRONMENT, check=True, stdin=subprocess.DEVNULL,
                       stdout=stdout, stderr=subprocess.PIPE)
    except subprocess.CalledProcessError as error:
        said = error.stderr.decode(errors="replace")
        raise Unwanted(f"{shlex.join(command)}: exit status {error.returncode}\n{said}") from error


def first_run(tool):
    """One run that counts the memory. GNU time is small itself, so that what it was before it became the tool does
    not show."""
    if tool.prepare:
        _run(tool.prepare)
    with tempfile.NamedTemporaryFile() as memory:
        command = ["/usr/bin/time", "-f", "%M", "-o", memory.name, *tool.command]
        start = time.monotonic()
        with open(tool.output if tool.stdout else os.devnull, "wb") as stdout:
            _run(command, stdout)
        seconds = time.monotonic() - start
        result = Result(tool, int(memory.read()) * 1024, seconds)
    check(tool)
    return result


def count_calls(tool):
    """How many system calls a run makes; none where nobody can count them."""
    if shutil.which("strace") is None:
        return None
    if tool.prepare:
        _run(tool.prepare)
    with tempfile.NamedTemporaryFile() as report:
        _run(["strace", "-f", "-c", "-U", "calls,name", "-o", report.name, *tool.command])
        total = next(line for line in pathlib.Path(report.name).read_text().splitlines() if line.endswith("total"))
    return int(total.split()[0])


def sample(result, runs):
    """Some timed runs, one after the other."""
    tool = result.tool
    with tempfile.NamedTemporaryFile(suffix=".json") as report:
        command = ["hyperfine", "--shell=none", "--style=none", "--runs", str(runs), "--export-json", report.name]
        if tool.prepare:
            command += ["--prepare", shlex.join(tool.prepare)]
        if tool.stdout:
            command += ["--output", str(tool.output)]
        _run([*command, shlex.join(tool.command)])
        measured = json.loads(pathlib.Path(report.name).read_text())["results"][0]
    result.times += measured["times"]
    result.cpu.append(measured["user"] + measured["system"])


def compare(work, rounds):
    """Runs all tools of a work in turn, round after round."""
    tools = [tool for tool in work.tools if not tool.extra or tool.is_installed()]
    results = [first_run(tool) for tool in tools]
    for number in range(rounds):
        for result in results:
            if result.comes_in(number):
                sample(result, work.runs)
    for result in results:
        check(result.tool)
        if work.counts_calls:
            result.calls = count_calls(result.tool)
    return results
