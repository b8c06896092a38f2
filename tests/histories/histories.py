#!/usr/bin/env python3
"""Random histories of a host, beside a model as plain as can be.

    histories.py --programs DIRECTORY [--injector FILE] [--steps N] [--seed N | --first N]

Commands, hands and kills change the files of a small host. The model only looks: it remembers every managed file,
to the byte, mode, owner and attribute, as it was before and after each entry of the history. What "undo" and
"rollback-config --to" do is foretold from that alone:

  * An entry is taken back where each file that it changed is as it left it, or as it was before already; the
    files are as they were before it then, and all others stay. Otherwise nothing at all changes, and the exit
    status is 1. With --force it is taken back all the same.
  * Going back to an entry is the same with all that came after it. A target or an edited file that none of these
    wrote goes back to what its last entry left, where somebody else wrote it since; one that they wrote, to what
    the last entry before them left, unless one behind that is no longer kept: it may have written the file, too.
    What somebody wrote between entries counts as what he wrote since. With
    --keep-edits, what somebody wrote stays as it is, and the rest goes back.
  * An undo with --merge leaves the lines that hands wrote since.
  * A rollback without --force leaves every line that a hand added to a file edited in place.
  * What is known of the files is as it was before, where nothing came in between.
  * What an entry changed of the roles of a target is taken back with it, and no more.
  * A role of which no target is left has no status.
  * An entry that is no longer kept is refused, and so is a way back over one.
  * Whatever a killed run has done is an entry, and can be taken back.

At the end of each history the host goes back to every entry that is kept, one after the other, and forward again.
Then some runs are killed, and hands write the same files before the next run: what was replaced is in the entry.
A failure prints the seed, by which the same history is played again.
"""

import argparse
import os
import random
import shutil
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "faults"))

from run import Fault, NotPossible, Runner  # noqa: E402
from world import COMPANIONS, PLAIN, TARGET, TEMPLATES, World, see, write  # noqa: E402

SKIPPED = 77
STEPS_OF_A_HISTORY = 40
LATEST_KILL = 700  # calls
FIRST_KILL = 20
PROGRAMS = ("zet-init", "zet-client")


class Wrong(Exception):
    """The product did something else than was foretold."""


def shape(seen):
    """Mode and size; None where there is no file."""
    return seen and (seen[0], len(seen[-1]))


def text(seen):
    return seen and seen[-1]


def is_edited(left, found):
    """Whether somebody wrote it in between; another owner or other attributes alone are no work of anybody's."""
    return (shape(left), text(left)) != (shape(found), text(found))


def roles_in(known):
    """By target: the roles that have committed it."""
    return {path: {role for role in (b"server", b"client") if role in roles}
            for path, kind, roles, *_ in known if kind == TARGET}


def hand_lines(seen):
    """What hands have added at the end of it."""
    return {line for line in (text(seen) or b"").splitlines() if line.startswith(b"# w")}


def without_suffix(name):
    """Of a companion, the file that it stands beside."""
    return next(name.removesuffix(suffix) for suffix in reversed(COMPANIONS) if name.endswith(suffix))


class History:
    """One host from its first step to its last."""

    def __init__(self, chance, world, runner, has_injector):
        self.chance = chance
        self.world = world
        self.runner = runner
        self.has_injector = has_injector
        self.before = {}  # by entry: the files that it changed, or of which something else is known since
        self.after = {}
        self.known = {}  # by entry: what was known before and after it
        self.rendered = set()  # lines of hands that came into files with the templates that hold them
        self.of_killed = set()  # roles whose commit was killed before its first target; a way back may lead there
        self.steps = []
        self.stamp = 0

    def run(self, *words, fault=None):
        program = self.chance.choice(PROGRAMS)
        self.steps.append(f"{program} {' '.join(words)}" + (f"  # killed at call {fault.turn}" if fault else ""))
        words = [word.replace("HOST", self.world.root) for word in words]
        return self.runner.run(program, ["--config", self.world.path("zet.conf")] + words, fault)

    def fail(self, what):
        raise Wrong(what)

    def require(self, is_true, what):
        if not is_true:
            self.fail(what)

    def change(self, *words):
        """A command that may change something, or be killed."""
        is_killed = self.has_injector and self.chance.random() < 0.15
        fault = Fault("kill", self.chance.randrange(FIRST_KILL, LATEST_KILL)) if is_killed else None
        seen, known, entries = self.world.look(), self.world.known(), self.world.entries()
        result = self.run(*words, fault=fault)
        if fault:
            self.settle()
        self.learn(seen, known, entries, result)
        return result

    def settle(self):
        """The next run that writes tells what a killed one did; this one changes nothing itself."""
        settled = self.run("file", "reserve", "HOST/zet.conf.never")
        self.run("file", "forget", "HOST/zet.conf.never")
        self.require(settled.status == 0, f"after a kill: {settled.errors}")
        left = self.world.left_overs()
        self.require(not left, f"left behind: {left}")
        self.of_killed |= self.orphans()

    def learn(self, seen, known, entries, result):
        """What a command did is what is otherwise, and it is in one entry."""
        now = self.world.look()
        new = [number for number in self.world.entries() if number not in entries
               and number > max(entries, default=0) and self.files_of(number)]
        changed = {name for name in now if now[name] != seen[name]}
        if not new:
            self.require(not changed, f"{sorted(changed)} changed without an entry: {result.errors}")
            return
        self.require(len(new) == 1, f"several entries: {new}")
        touched = changed | {path.removeprefix(self.world.root + "/") for path, in self.files_of(new[0])} & set(now)
        self.before[new[0]] = {name: seen[name] for name in touched}
        self.after[new[0]] = {name: now[name] for name in touched}
        self.known[new[0]] = known, self.world.known()

    def files_of(self, number):
        """Those that are no concern of this test alone make no entry of it."""
        return self.world.query(f"SELECT path FROM files WHERE entry = {number}"
                                " AND path NOT LIKE '%/zet.conf.never%'")

    def kept(self):
        return [number for number in self.world.entries() if number in self.before]

    def orphans(self):
        """The roles that have a status, but no target."""
        return self.world.statuses() - self.world.roles()

    # What is foretold.

    def changed_by(self, number):
        return {name for name, seen in self.before[number].items() if self.after[number][name] != seen}

    def of_undo(self, number):
        changed = self.changed_by(number)
        return {name: self.before[number][name] for name in changed}, self.after[number]

    def of_going_back(self, number):
        """None: nobody can foretell it."""
        wanted, left, changed = {}, {}, set()
        for later in sorted((each for each in self.before if each > number), reverse=True):
            changed |= self.changed_by(later)
            for name in self.before[later]:
                wanted[name] = self.before[later][name]
                left.setdefault(name, self.after[later][name])
        for name in self.edited_between(number, wanted):
            changed.add(name)
            left[name] = wanted[name]
        wanted = {name: seen for name, seen in wanted.items() if name in changed}
        written = self.written_since(number)
        if written is None:
            return None
        return {**wanted, **written}, {**left, **written}

    def edited_between(self, number, wanted):
        """What others wrote between entries of which the later came after that one; what comes back of it is set right
        in `wanted`."""
        found = set()
        for name in [name for name in wanted if not name.endswith(COMPANIONS[1:])]:
            entries = [entry for entry in sorted(self.before) if name in self.before[entry]]
            later = [entry for entry in entries if entry > number]
            found |= {name for older, newer in zip(later, later[1:])
                      if is_edited(self.after[older][name], self.before[newer][name])}
            former = [entry for entry in entries if self.world.pruned() <= entry <= number and
                      entry in self.world.entries()]
            if not former or not self.world.is_made_by(former[-1], name):
                continue
            if is_edited(self.after[former[-1]][name], wanted[name]):
                wanted[name] = self.after[former[-1]][name]
                found.add(name)
        return found

    def written_since(self, number):
        """What others wrote after that entry, and no later one: by what its last entry left; None where that is not
        known here. Another owner or other attributes alone are no work of anybody's, and a text that a commit found
        to be what it would have written is none."""
        later = {name for entry in self.before if entry > number for name in self.before[entry]}
        found = {}
        for name, entry, state, is_as_left in self.world.made():
            now = see(self.world.path(name))
            if name in later or state == shape(now) and not is_as_left:
                continue
            left = self.after.get(entry, {}).get(name) if entry in self.world.entries() else None
            if left is None and state != shape(now):
                return None
            if left is not None and is_edited(left, now):
                found[name] = left
        return found

    def go(self, words, wanted, left, is_forced, is_kept=False):
        """Plays a way back, and holds what came of it against what was foretold."""
        seen, known, entries = self.world.look(), self.world.known(), self.world.entries()
        others = [name for name in wanted if seen[name] not in (wanted[name], left[name])]
        result = self.run(*words, *(["--force"] if is_forced and "--force" not in words else []))
        now = self.world.look()
        refused = bool(others) and not is_forced and not is_kept
        if is_kept:
            kept = {without_suffix(name) for name in others}
            wanted = {name: seen for name, seen in wanted.items() if without_suffix(name) not in kept}
        self.require(result.status == (1 if refused else 0),
                     f"exit status {result.status}, {'refusal' if refused else 'success'} foretold ({others}): "
                     f"{result.output}{result.errors}")
        foretold = {**seen, **({} if refused else wanted)}
        for name in now:
            self.require(now[name] == foretold[name],
                         f"{name} is {now[name]!r}\n    and not {foretold[name]!r}\n    but was {seen[name]!r}")
        self.learn(seen, known, entries, result)
        self.require(not self.world.left_overs(), f"left behind: {self.world.left_overs()}")
        if not refused:
            orphans = self.orphans() - self.of_killed
            self.require(not orphans, f"a status without a target: {orphans}")
        return not refused

    def undo_last(self):
        if not self.kept() or self.kept()[-1] != max(self.world.entries(), default=0):
            return
        number = self.kept()[-1]
        is_forced = self.chance.random() < 0.5
        known, since = self.known[number]
        is_alone = self.world.known() == since  # a commit that changes no file knows more all the same
        is_done = self.go(["undo"], *self.of_undo(number), is_forced)
        if is_done and is_alone:
            self.require(self.world.known() == known, f"known is {self.world.known() - known} "
                         f"instead of {known - self.world.known()}")

    def undo_any(self):
        if not self.kept():
            return
        number = self.chance.choice(self.kept())
        roles = roles_in(self.world.known())
        roles.update({path: set() for path in roles_in(self.known[number][0]) if not self.world.knows(path)})
        seen = self.world.look()
        if self.go(["undo", str(number)], *self.of_undo(number), self.chance.random() < 0.5):
            self.require_roles(number, roles, seen)

    def require_roles(self, number, roles, seen):
        """The roles of a target that was one before and after the entry, and was until now or came to be unknown, its
        text apart."""
        before, after = map(roles_in, self.known[number])
        now, there = roles_in(self.world.known()), self.world.look()
        for path in roles.keys() & before.keys() & after.keys():
            name = path.removeprefix(self.world.root + "/")
            if not roles[path] and there[name] != seen[name]:
                continue
            wanted = roles[path] - (after[path] - before[path]) | (before[path] - after[path])
            self.require(now.get(path, set()) == wanted, f"{path} is of {now.get(path)} and not of {wanted}")

    def undo_merging(self):
        """Where others wrote a file since, a merge may be refused; else it leaves their lines, and all other files are
        as they are after any undo."""
        if not self.kept():
            return
        number = self.chance.choice(self.kept())
        wanted, left = self.of_undo(number)
        seen, known, entries = self.world.look(), self.world.known(), self.world.entries()
        others = {without_suffix(name) for name in wanted if seen[name] not in (wanted[name], left[name])}
        result = self.run("undo", str(number), "--merge")
        self.require(result.status in ((0, 1) if others else (0,)), f"exit status {result.status}: {result.errors}")
        now = self.world.look()
        foretold = {**seen, **(wanted if result.status == 0 else {})}
        for name in now:
            if result.status == 0 and without_suffix(name) in others:
                gone = hand_lines(seen[name]) - hand_lines(left.get(name, seen[name])) - hand_lines(now[name])
                self.require(not gone, f"{name}: the merge took {gone}")
                continue
            self.require(now[name] == foretold[name], f"{name} is {now[name]!r}\n    and not {foretold[name]!r}")
        self.learn(seen, known, entries, result)
        self.require(not self.world.left_overs(), f"left behind: {self.world.left_overs()}")

    def undo_killed(self):
        """Each file is old or new then, and the same undo, run again, comes to its end."""
        if not self.kept() or not self.has_injector:
            return
        number = self.chance.choice(self.kept())
        wanted, left = self.of_undo(number)
        seen, known, entries = self.world.look(), self.world.known(), self.world.entries()
        words = ("undo", str(number), "--force")
        result = self.run(*words, fault=Fault("kill", self.chance.randrange(FIRST_KILL, LATEST_KILL)))
        self.settle()
        now = self.world.look()
        for name in now:
            self.require(now[name] in (seen[name], wanted.get(name, seen[name])), f"{name} is {now[name]!r}")
        self.learn(seen, known, entries, result)
        if number in self.kept():
            self.go(words, wanted, left, True)

    def undo_what_is_gone(self):
        gone = [number for number in self.before if number not in self.world.entries()]
        if gone:
            result = self.run("undo", str(self.chance.choice(gone)))
            self.require(result.status == 2, f"an entry that is gone was undone: {result.output}")

    def go_back(self, number=None, is_forced=None):
        if not self.kept():
            return
        number = number or self.chance.choice(self.kept())
        if number not in self.kept():
            return
        if number < self.world.pruned():
            result = self.run("rollback-config", "--to", str(number))
            self.require(result.status == 1, f"went back over what is gone: {result.status} {result.errors}")
            return
        is_forced = self.chance.random() < 0.5 if is_forced is None else is_forced
        foretold = self.of_going_back(number)
        is_kept = not is_forced and self.chance.random() < 0.3
        if foretold:
            words = ["rollback-config", "--to", str(number)] + (["--keep-edits"] if is_kept else [])
            self.go(words, *foretold, is_forced, is_kept)

    # What happens on a host.

    def word(self):
        self.stamp += 1
        return f"w{self.stamp}"

    def commit(self):
        self.change("commit-config", *self.chance.choice(((), (), ("--on-edit=merge",))))

    def set_option(self):
        self.change("option", "set", "REALM", self.word().upper() + ".ORG")

    def edit(self):
        file = "HOST/files/" + self.chance.choice(PLAIN)
        flags = [flag for flag in ("--no-backup", "--no-markers") if self.chance.random() < 0.3]
        self.change(*self.chance.choice((
            ("param", "set", *flags, file, "size", self.word()),
            ("param", "set", *flags, file, "name", self.word()),
            ("param", "unset", *flags, file, "size"),
            ("param", "restore", *flags, file, "size"),
            ("line", "set", *flags, file, "^color=", "color=" + self.word()),
            ("line", "restore", "--all-blocks", *flags, file, "^color="),
            ("file", "strip", file))))

    def keep(self):
        file = "HOST/files/" + self.chance.choice(PLAIN + TEMPLATES)
        self.change("file", self.chance.choice(("reserve", "restore", "forget")), file)

    def install(self):
        self.change("template", "install", "--force", self.chance.choice(TEMPLATES))

    def upgrade(self):
        """A conflict with what a hand changed is a refusal, which changes nothing."""
        self.change("template", "upgrade", *self.chance.choice(((), self.chance.sample(TEMPLATES, 1))))

    def process(self):
        file = "files/" + self.chance.choice(PLAIN)
        self.change("template", "process", self.chance.choice(TEMPLATES), "HOST/" + file)
        self.rendered |= hand_lines(self.world.look()[file])

    def roll_back(self):
        words = self.chance.choice(((), ("--force",), ("--keep-edits",)))
        seen = self.world.look()
        self.change("rollback-config", *words)
        now = self.world.look()
        for name in [f"files/{each}" for each in PLAIN if "--force" not in words]:
            gone = hand_lines(seen[name]) - hand_lines(now[name]) - self.rendered
            self.require(not gone, f"{name}: the rollback took {gone}")

    def ship(self):
        self.steps.append("# a template is shipped anew")
        self.world.ship(self.chance.choice(TEMPLATES), self.word())

    def hand(self):
        """Somebody else changes a file."""
        name = self.chance.choice([f"files/{each}" for each in TEMPLATES + PLAIN] + ["etc/one.conf"])
        self.steps.append(f"# a hand changes {name}")
        path = self.world.path(name)
        if see(path) is None or self.chance.random() < 0.1:
            self.world.put(name, None if see(path) else (0o644, 0, 0, (), b"size=1\n"))
        elif self.chance.random() < 0.6:
            with open(path, "a", encoding="utf-8") as file:
                file.write(f"# {self.word()}\n")
        else:
            os.chmod(path, self.chance.choice((0o644, 0o600, 0o664, 0o4755)))
            self.world.decorate(name, self.chance)

    def step(self):
        ways = ((self.commit, 5), (self.set_option, 3), (self.edit, 6), (self.keep, 2), (self.install, 1),
                (self.upgrade, 2), (self.process, 1), (self.roll_back, 2), (self.ship, 2), (self.hand, 4),
                (self.undo_any, 4), (self.undo_merging, 2), (self.undo_killed, 3), (self.undo_what_is_gone, 1),
                (self.go_back, 2))
        way = self.chance.choices([way for way, _ in ways], [weight for _, weight in ways])[0]
        way()
        if way not in (self.hand, self.ship) and self.chance.random() < 0.3:
            self.undo_last()
            if self.chance.random() < 0.5:
                self.undo_last()

    def end(self):
        for number in reversed(self.kept()):
            self.go_back(number, True)
        for number in self.kept()[-3:]:
            self.go_back(number, True)
        for _ in range(3 if self.has_injector else 0):
            self.write_after_a_kill()

    def write_after_a_kill(self):
        """What the model foretells does not hold afterwards."""
        self.hand()
        seen = self.world.look()
        file = "HOST/files/" + self.chance.choice(PLAIN + TEMPLATES)
        words = self.chance.choice((("commit-config",), ("commit-config",), ("undo", "--force"),
                                    ("rollback-config", "--force"), ("file", "restore", "--force", file),
                                    ("param", "set", "--force", "--no-backup", file, "size", self.word())))
        self.run(*words, fault=Fault("kill", self.chance.randrange(FIRST_KILL, LATEST_KILL)))
        number = max(self.world.entries(), default=0)
        left = self.world.look()
        replaced = [name for name in seen if seen[name] and text(left[name]) != text(seen[name])]
        for name in replaced:
            # Without the main file, no command could tell what the killed one did.
            if name != "zet.conf" and self.chance.random() < 0.7:
                self.steps.append(f"# a hand changes {name}")
                self.world.put(name, self.chance.choice((None, (0o644, 0, 0, (), b"another's\n"))))
        self.settle()
        for name in replaced:
            shown = self.run("history", "show", "--show-secrets", str(number), "HOST/" + name)
            self.require(shown.output.encode() == text(seen[name]),
                         f"{name} held {text(seen[name])!r}, which entry {number} has not: {shown}")


def play(options, seed, base):
    chance = random.Random(seed)
    world = World(base)
    shutil.rmtree(world.root, ignore_errors=True)
    world.make(chance, chance.choice((100, 100, 100, 12)))
    history = History(chance, world, Runner(options.programs, options.injector, base), options.injector is not None)
    try:
        for _ in range(STEPS_OF_A_HISTORY):
            history.step()
        history.end()
    except Wrong as reason:
        print(f"seed {seed}, step {len(history.steps)}: {reason}\n  the last steps:")
        print("".join(f"    {step}\n" for step in history.steps[-12:]))
        if options.seed is not None:
            kept = tempfile.mkdtemp(prefix="zet-histories-kept.")
            shutil.copytree(world.root, kept, symlinks=True, dirs_exist_ok=True)
            print(f"    the host is kept as {kept}")
        print(f"    again: {sys.argv[0]} --programs {options.programs} --injector {options.injector} --seed {seed}")
        return len(history.steps), 1
    return len(history.steps), 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--programs", required=True, help="the directory of the commands")
    parser.add_argument("--injector", help="the library by which they are killed")
    parser.add_argument("--steps", type=int, default=400)
    parser.add_argument("--seed", type=int, help="this history alone")
    parser.add_argument("--first", type=int, help="the first of several, for a run that is the same each time")
    options = parser.parse_args()
    if os.geteuid() != 0:
        print("skipped: owners can be changed by root alone")
        return SKIPPED
    memory = "/dev/shm"
    base = tempfile.mkdtemp(prefix="zet-histories.", dir=memory if os.access(memory, os.W_OK) else None)
    try:
        if options.seed is not None:
            return play(options, options.seed, base)[1]
        first = seed = random.SystemRandom().randrange(1 << 30) if options.first is None else options.first
        steps = failures = 0
        while steps < options.steps:
            played, failed = play(options, seed, base)
            steps, failures, seed = steps + played, failures + failed, seed + 1
        print(f"{steps} steps, seeds {first} to {seed - 1}, {failures} failures")
        return 1 if failures else 0
    except NotPossible as reason:
        print(f"skipped: {reason}")
        return SKIPPED
    finally:
        shutil.rmtree(base)


if __name__ == "__main__":
    sys.exit(main())
