#!/usr/bin/env python3
"""Runs the built commands on a small host with faults, and checks that nothing is ever lost.

    faults.py KIND --programs DIRECTORY --injector FILE [--long] [--only SCENARIO] [--fault 'KIND TURN ERROR']

KIND is what the commands meet:

    fail      system calls that have to do with files fail, each in turn, with an error that fits it; reads
              and writes do a part only; a disk is full, or broken, from one call on
    kill      SIGKILL before each of these calls
    memory    allocations fail, each in turn; or all from one on
    disk      a file system that is really full, at every size, and one without room for new names (needs
              root)
    writer    another program, which writes the target between two calls, at every call (writer.py)
    attacker  another user, who swaps names in a directory where he may, at every call (attacker.py; needs root)
    inputs    files that are something else than what the commands expect to read (inputs.py; needs root)

What must be true after each run of the first four:

  * Every file is old or new, byte for byte, with its mode, owner and attributes: never torn, and never
    missing unless it was not there before. The commands reserve a file before they write it, so they never
    need the module's own way of moving the original aside, which leaves an instant without a target.
  * A reserve is not there, or it is the first original; what was there before can be put back at every
    instant.
  * The record of what was written has whole lines. Only a status file may be cut short: the module writes it
    in its place.
  * Exit status 0 means that all is new, with the same report as ever; any other comes with a word on
    standard error. No failing call ends a command by a signal.
  * A command that failed has cleared away its temporary files, unless just that failed.
  * The same command, run again without faults, ends as if there had been none, and leaves nothing behind.
  * What undoes the command (a rollback, a restore), run instead of that, puts the files back as they were
    before the product came, and leaves nothing behind.

And after every call of a run without faults, and of one in which a call about owners and modes fails (with
--long, any call):

  * No name is ever set-user-ID or set-group-ID with an owner or group other than that of the file before.
  * No text of a file that only its owner may read is ever in one that others may read.

Where the system denies something to a file that an ordinary user may not do (EPERM, EACCES), the core warns
and goes on: then the owner and the attributes may be lost, and the mode may be closer.

The host is on the memory's file system where there is one: what counts is the order of the calls, and
syncing, which stays on, costs nothing there. Without --long, every call is killed at and fails once, with the
error that fits best; other errors, broken disks and allocations are sampled, the same ones each time.

A failure prints the command that repeats it; with --fault, the host is kept to be looked at.
"""

import argparse
import errno
import os
import shutil
import sys
import tempfile
import time

import attacker
import disk
import inputs
import plans
import furnished  # noqa: F401  # adds its scenarios
import scenarios
import statefiles
import verdict
import writer
from host import Host, key_of
from run import Fault, NotPossible, Runner, describe
from watch import Watcher

SKIPPED = 77
MOST_SHOWN = 20
MOST_TRIES = 3
LEAST_PART = 0.99  # of what the run that counted did; a fault behind the end of such a run does not exist in it


class Unsound(Exception):
    """Without any fault, the command does not do what it has to: then its faults show nothing."""


class Checker:
    """One command on its host."""

    def __init__(self, scenario, host, runner):
        self._scenario = scenario
        self._host = host
        self._runner = runner
        self._known_ends = set()  # hashes of states, which are large, from which going on is known to end well
        self.runs = self.met = self.missed = 0

    def prepare(self):
        self._host.make()
        self._scenario.furnish(self._host)
        self._origin = self._host.look()
        self._scenario.prepare(self._host, self._run_sound)
        if self.runs > 0:
            time.sleep(1 - time.time() % 1)  # a status file tells the second: none of the runs is in that of the last
        self.old = self._host.look()
        watcher = Watcher(self._host.root, self.old)
        self._host.forget_holders()
        undisturbed = self.run(Fault("none"), watcher)
        self.calls, self.allocations = self._runner.counted()
        self.output = undisturbed.output
        self.new = self._host.look()
        self._require(self._of_end(undisturbed, self.new) + verdict.of_left_overs(self.new))
        if self.new == self.old and not self._scenario.done(self.old):
            raise Unsound("it changes nothing, so it shows nothing")
        self.found = watcher.found + self._scenario.expect(self.old, self.new)
        if watcher.looks == 0:
            raise Unsound("nobody has looked at it")
        again = self.run()
        self._require(self._of_end(again, self._host.look()))
        self._host.put_back(self.old, self._host.look())
        self._require([] if self._host.look() == self.old else ["the host cannot be put back"])

    def _run_sound(self, program, *arguments):
        result = self._run(program, arguments)
        self._require([] if result.status == 0 else [result.errors])

    def _require(self, problems):
        if problems:
            raise Unsound("; ".join(problems))

    def run(self, fault=None, hook=None):
        return self._run(self._scenario.program, self._scenario.arguments, fault, hook)

    def _run(self, program, arguments, fault=None, hook=None):
        self.runs += 1
        words = self._scenario.options + tuple(arguments)
        return self._runner.run(program, [each.replace("HOST", self._host.root) for each in words], fault, hook)

    def check(self, fault, is_watched=False):
        """What is wrong after a run with the fault, and the run. The host is as before afterwards."""
        watcher = Watcher(self._host.root, self.old) if is_watched else None
        result = self._run_to(fault, watcher)
        now = self._host.look()
        self.met += result.is_met
        found = list(watcher.found) if watcher else []
        if not result.is_met and self._is_behind_end(fault):
            self.missed += 1
            found += self._of_end(result, now)
        else:
            found += [] if result.is_met or fault.kind == "full" else ["the run did not get to the fault"]
            found += verdict.of_exit(result, fault.kind == "kill")
        may_leave = plans.may_leave_temporaries(fault, self.calls)
        if not may_leave:
            found += verdict.of_left_overs(now)
        found += self.judge(result, now, may_leave, fault.error == errno.EPERM)
        return found, result

    def _run_to(self, fault, watcher):
        """Another call may come in its turn, as how often a pipe is read depends on when its writer comes to write."""
        result = self.run(fault, watcher)
        for _ in range(MOST_TRIES - 1):
            if result.is_met or fault.kind == "full":
                break
            self._host.put_back(self.old, self._host.look())
            result = self.run(fault, watcher)
        return result

    def _is_behind_end(self, fault):
        """Whether the run ended before the turn, having done hardly less than the one that counted."""
        which = 0 if plans.is_of_calls(fault) else 1
        counted, made = (len(self.calls), self.allocations)[which], self._runner.counts()[which]
        return counted * LEAST_PART <= made < fault.turn <= counted

    def judge(self, result, now, may_leave=False, is_denied=False):
        is_warned = verdict.has_warned(result)
        found = verdict.of_files(self.old, self.new, now, is_warned)
        found += verdict.of_originals(self.old, self.new, now)
        found += verdict.of_success(result, self.output, self.new, now, may_leave, is_denied)
        found += self._scenario.done(now) if result.status == 0 else []
        return found + self._go_on(now, is_warned, verdict.is_unrecorded(result))

    def _go_on(self, now, is_warned, was_unrecorded):
        """To the end and by the way back; the host is as before afterwards."""
        state = hash(key_of(now))
        # What has its own way to be done changes more than states tell.
        if not self._scenario.has_own_end and (now == self.old or state in self._known_ends):
            self._host.put_back(self.old, now)
            return []
        found = self._undo(now, is_warned, was_unrecorded) if self._scenario.undo else []
        result, end = self.run(), self._host.look()
        found += self._of_end(result, end, is_warned, was_unrecorded)
        self._host.put_back(self.old, end)
        if not found and not is_warned and not was_unrecorded:
            self._known_ends.add(state)
        return found

    def _of_end(self, result, now, is_warned=False, was_unrecorded=False):
        found = verdict.of_end(result, self.new, now, is_warned, was_unrecorded)
        return found + (self._scenario.done(now) if result.status == 0 else [])

    def _undo(self, now, is_warned, was_unrecorded):
        """What the command could not record, as it told, is somebody's edit to the next one."""
        force = ("--force",) if was_unrecorded and self._scenario.undo == scenarios.ROLLBACK else ()
        result = self._run(self._scenario.program, self._scenario.undo + force)
        undone = self._host.look()
        self._host.put_back(now, undone)
        return verdict.of_undoing(result, self._origin, undone, is_warned)


def repeat_command(options, scenario, fault):
    return (f"{sys.argv[0]} {options.kind} --programs {options.programs} --injector {options.injector} "
            f"--only {scenario.name} --fault '{fault.kind} {fault.turn} {fault.error}'")


def report(options, scenario, checker, fault, found, result):
    call = ""
    if plans.is_of_calls(fault) and 0 < fault.turn <= len(checker.calls):
        met = checker.calls[fault.turn - 1]
        call = f" ({met.name} {met.path})"
    print(f"{scenario.name}: {describe(fault)}{call}")
    for each in found:
        print(f"    {each}")
    print(f"    it ended with {result.status} and said {result.errors!r}")
    print(f"    again: {repeat_command(options, scenario, fault)}")


def repeat(options, scenario, checker, fault, host):
    """One fault; a copy of the host stays as the fault left it."""
    result = checker.run(fault)
    print(f"exit status {result.status}\n{result.output}{result.errors}")
    kept = tempfile.mkdtemp(prefix="zet-faults-kept.", dir="/var/tmp")
    shutil.copytree(host.root, kept, symlinks=True, dirs_exist_ok=True)
    print(f"the host is kept as {kept}")
    host.put_back(checker.old, host.look())
    found, result = checker.check(fault)
    if found:
        report(options, scenario, checker, fault, found, result)
    return len(found)


def check_scenario(options, scenario, host, runner):
    checker = Checker(scenario, host, runner)
    try:
        checker.prepare()
    except Unsound as reason:
        print(f"{scenario.name}: without any fault: {reason}")
        return 1
    if options.kind == "disk":
        failures = disk.check(scenario, checker, host)
    elif options.fault:
        kind, turn, *error = options.fault.split()
        fault = Fault(kind, int(turn), int(error[0]) if error else 0)
        failures = repeat(options, scenario, checker, fault, host)
    else:
        failures = len(checker.found)
        print("".join(f"{scenario.name}: without any fault: {each}\n" for each in checker.found), end="")
        for fault in plans.faults(options, checker.calls, checker.allocations, host.root):
            found, result = checker.check(fault, plans.is_watched(options, fault, checker.calls))
            if found:
                failures += 1
                if failures <= MOST_SHOWN:
                    report(options, scenario, checker, fault, found, result)
        if checker.met == 0:
            failures += 1
            print(f"{scenario.name}: no fault was met")
    print(f"{scenario.name}: {len(checker.calls)} calls, {checker.allocations} allocations, "
          f"{checker.runs} runs, {checker.missed} faults behind their end, {failures} failures", flush=True)
    return failures


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("kind", choices=["fail", "kill", "memory", "disk", "writer", "attacker", "inputs"])
    parser.add_argument("--programs", required=True, help="the directory of the commands")
    parser.add_argument("--injector", required=True, help="the library to preload")
    parser.add_argument("--long", action="store_true",
                        help="every call with every error, every allocation, every attack")
    parser.add_argument("--only", help="one scenario")
    parser.add_argument("--fault", help="one fault")
    return parser.parse_args()


def check_all(options, base):
    if options.kind == "inputs":
        return inputs.check(options, base, lambda: Runner(options.programs, options.injector, base))
    host = Host(base)
    runner = Runner(options.programs, options.injector, base)
    if options.kind in ("writer", "attacker"):
        return {"writer": writer, "attacker": attacker}[options.kind].check(options, host, runner)
    if options.kind == "disk":
        disk.mount(host.root)
    if not options.long:
        print("a part of the faults, always the same one; all of them with --long")
    try:
        chosen = [each for each in scenarios.ALL
                  if options.only in (None, each.name) and (os.geteuid() == 0 or not each.needs_root)]
        if not chosen:
            raise SystemExit(f"there is no scenario {options.only}")
        return sum(check_scenario(options, each, host, runner) for each in chosen)
    finally:
        if options.kind == "disk":
            disk.unmount(host.root)


def check_scratch(base):
    """Nothing stands beside the host but what the driver itself needs."""
    left = sorted(set(os.listdir(base)) - {"host", "log", "output", "errors"})
    print("".join(f"{each} was left behind\n" for each in left), end="")
    return len(left)


def main():
    options = parse_arguments()
    if disk.enter_own_mounts(is_needed=options.kind in ("disk", "inputs")):
        disk.hide_temporary_files([__file__, options.programs, options.injector, os.getcwd()])
    memory = "/dev/shm"
    base = tempfile.mkdtemp(prefix="zet-faults.", dir=memory if os.access(memory, os.W_OK) else None)
    try:
        failures = check_all(options, base) + check_scratch(base)
    except NotPossible as reason:
        print(f"skipped: {reason}")
        return SKIPPED
    finally:
        shutil.rmtree(base)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
