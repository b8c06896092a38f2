"""Another user, who may write the directory of a file that root edits, swaps names at every call of the command.

What he gets is a refusal or his own file edited, and never anything of somebody else's: outside of his directory
nothing is written, made, or changed in owner or mode; what he may not read comes into no file that he may read;
no file runs with another's rights; and what he held open from before is no file of root's afterwards.

A swap before a call that looks up no name there is the same as one before the next call that does. So without
--long he acts only before every third of the calls that name something there, or something relative to a directory.
"""

import os
import shutil
import stat

import verdict
from attacks import ATTACKS, as_attacker
from host import OTHER_OWNER as ATTACKER
from host import TEMPLATE, write
from run import Fault, NotPossible, looks_up
from scenarios import ROLLBACK
from statefiles import RESERVE
from watch import bytes_of, entries_of

SECRET = b"outside-secret"
EVIL = b"EVIL=1\n"
STEP = 3  # of the calls, without --long
LONGEST_RUN = 10  # s: a command that waits for him for ever is his too
FILE = "f.conf"

# --- where ---

class Place:
    """A directory in which the attacker has rights, and the file in it that root is asked to edit."""

    def __init__(self, name, directory, owner, group, mode, commands, mode_of_his=None):
        """The commands are those that work there without --long. His own file has the given mode; without one,
        the file is root's."""
        self.name = name
        self.directory = directory
        self.file = f"{directory}/{FILE}"
        self.commands = commands
        self._rights = (owner, group, mode)
        self._mode_of_his = mode_of_his

    def furnish(self, host):
        top = self.directory.split("/")[0]
        for directory in dict.fromkeys((top, self.directory)):
            owner, group, mode = self._rights
            os.makedirs(host.path(directory))
            os.chown(host.path(directory), owner, group)
            os.chmod(host.path(directory), mode)
        if self._mode_of_his is None:
            write(host.path(self.file), "size=3\n")
        else:
            write(host.path(self.file), "size=3\n", self._mode_of_his, ATTACKER)


ALL = ("param-set", "param-unset", "commit", "listed-edits", "template-process", "file-reserve", "rollback", "undo")
PLACES = (
    Place("own", "home/sub", ATTACKER, ATTACKER, 0o755, ALL, 0o644),
    Place("own-set-user", "home/sub", ATTACKER, ATTACKER, 0o755, ("param-set", "commit"), 0o4755),
    Place("sticky-own-file", "sticky", 0, 0, 0o1777, ("param-set", "listed-edits", "template-process"), 0o644),
    Place("sticky-file-of-root", "sticky", 0, 0, 0o1777, ("param-set", "rollback", "undo")),
    Place("of-his-group", "group/sub", 0, ATTACKER, 0o775, ("param-set", "commit", "file-reserve")),
)


LISTED_EDIT = '[[edits]]\nfile = "{0}"\nparam = "size"\nvalue = "4"\n'


def furnish(host, place, is_listed_edit):
    host.make()
    os.chmod(host.base, 0o755)
    shutil.rmtree(host.path("files"))
    place.furnish(host)
    write(host.path("templates/" + FILE), TEMPLATE.format(FILE))
    write(host.path("templates/targets.toml"), LISTED_EDIT.format(host.path(place.file)) if is_listed_edit else
          f'[templates."{FILE}"]\ntarget = "{host.path(place.file)}"\nroles = "both"\n')
    os.makedirs(host.path("outside"))
    for name in ("secret.conf", FILE):
        write(host.path("outside/" + name), b"size=3\n" + SECRET + b"\n", 0o600)


class Raid:
    """The hook of one run: the attack before one call, or from it on before each."""

    is_watching = True

    def __init__(self, host, place, attack):
        self._place = place
        self._attack = attack
        self._path = host.path(place.file) + attack.suffix
        self._outside = host.path("outside")
        self._directory = host.path(place.directory.split("/")[0])
        self._held = []
        self._has_acted = False
        self.was_let = False
        self.found = {}

    def __call__(self, _turn, is_done):
        if is_done:
            self.look(self._directory)
        elif self._attack.is_repeated or not self._has_acted:
            self._has_acted = True
            if as_attacker(self._attack.act, self._path, self._outside, self._held):
                self.was_let = True

    def end(self):
        """He writes into what he holds open, and reads what he may."""
        for descriptor in self._held:
            os.pwrite(descriptor, EVIL, 0)
            os.close(descriptor)
        self.look(self._directory)

    def look(self, directory):
        for each in entries_of(directory):
            try:
                status = each.stat(follow_symlinks=False)
            except FileNotFoundError:
                continue
            if stat.S_ISDIR(status.st_mode):
                self.look(each.path)
            elif stat.S_ISREG(status.st_mode):
                self._judge(each, status)

    def _judge(self, each, status):
        owner = f"{stat.S_IMODE(status.st_mode):04o} of {status.st_uid}:{status.st_gid}"
        if status.st_mode & stat.S_ISUID and status.st_uid != ATTACKER:
            self.found[f"{each.name} runs with the rights of another: {owner}"] = True
        text = bytes_of(each.path)
        if SECRET in text and may_read(status):
            self.found[f"{each.name} shows him what he may not read: {owner}"] = True
        if EVIL in text and status.st_uid != ATTACKER:
            self.found[f"{each.name} has what he wrote into it as another's file: {owner}"] = True


def may_read(status):
    if status.st_uid == ATTACKER:
        return True
    return status.st_mode & (0o044 if status.st_gid == ATTACKER else 0o004) != 0


# --- what root does ---

COMMANDS = (
    ("param-set", ("param", "set", "--no-markers", "PLACE", "size", "4")),
    ("param-unset", ("param", "unset", "--no-markers", "PLACE", "size")),
    ("commit", ("commit-config",)),
    ("listed-edits", ("commit-config",)),
    ("template-process", ("template", "process", FILE, "PLACE", "--value", "realm=OTHER")),
    ("file-reserve", ("file", "reserve", "PLACE")),
    ("rollback", ROLLBACK),
    ("undo", ("undo",)),
)


class Siege:
    """One command at one place, under every attack."""

    def __init__(self, options, host, runner, place, name, arguments):
        self._options = options
        self._host = host
        self._runner = runner
        self._place = place
        self._arguments = [each.replace("PLACE", host.path(place.file)) for each in arguments]
        self.name = f"{place.name}/{name}"
        self._told = set()
        self.tried = self.let = self.bad = 0

    def _run(self, arguments, fault=None, hook=None):
        words = ["--config", self._host.path("zet.conf")] + list(arguments)
        return self._runner.run("zet-init", words, fault, hook)

    def prepare(self):
        furnish(self._host, self._place, self.name.endswith("/listed-edits"))
        goes_back = self._arguments[0] in ("rollback-config", "undo")
        if goes_back and self._run(["commit-config"]).status != 0:
            # Where a commit is refused, an earlier one may have been done.
            file = self._host.path(self._place.file)
            shutil.copy2(file, file + RESERVE)
            os.chown(file + RESERVE, os.stat(file).st_uid, os.stat(file).st_gid)
        self._old = self._host.look()
        undisturbed = self._run(self._arguments, Fault("none"))
        self._calls = self._runner.counted()[0]
        now = self._host.look()
        for found in self._of_undisturbed(undisturbed, now):
            self._tell("undisturbed", 0, found)
        self._host.put_back(self._old, now)
        self.is_refused = undisturbed.status != 0

    def _of_undisturbed(self, result, now):
        """In his own directory root works as ever, and the file stays his."""
        if not self._place.name.startswith("own"):
            return []
        found = [] if result.status == 0 else [f"exit status {result.status}: {result.errors}"]
        file = now.get(self._place.file)
        return found if file and file.owner == ATTACKER else found + [f"his file is {verdict.shown(file)}"]

    def turns(self):
        if self._options.long:
            return range(1, len(self._calls) + 1)
        there = self._host.path(self._place.directory.split("/")[0])
        turns = [turn for turn, call in enumerate(self._calls, 1)
                 if looks_up(call) and (call.path.startswith(there) or not call.path.startswith("/"))]
        # Once at the beginning, too: what is there before all.
        return [1] + turns[::STEP]

    def check(self, attack):
        # One that goes on until the end begins at few calls only: from each on, it is much the same.
        turns = list(self.turns())
        for turn in turns if self._options.long or not attack.is_repeated else turns[::4]:
            raid = Raid(self._host, self._place, attack)
            result = self._run(self._arguments, Fault("stop", turn), raid)
            raid.end()
            now = self._host.look()
            self.tried += 1
            self.let += raid.was_let
            for found in list(raid.found) + self._of_outside(now) + self._of_file(now) + self._of_exit(result):
                self._tell(attack.name, turn, found)
            self._host.put_back(self._old, now)

    def _of_outside(self, now):
        paths = [path for path in self._old.keys() | now.keys() if path.startswith("outside")]
        return [f"{path} is {verdict.shown(now.get(path))}" for path in sorted(paths)
                if verdict.shown(now.get(path)) != verdict.shown(self._old.get(path))]

    def _of_file(self, now):
        """What is root's in a sticky directory, he cannot replace himself."""
        if self._place.name != "sticky-file-of-root":
            return []
        file = now.get(self._place.file)
        return [] if file and file.owner == 0 else [f"the file of root is {verdict.shown(file)}"]

    def _of_exit(self, result):
        return [] if result.status in (0, 1) else [f"exit status {result.status}: {result.errors}"]

    def _tell(self, attack, turn, found):
        self.bad += 1
        if (attack, found) not in self._told:
            self._told.add((attack, found))
            call = self._calls[turn - 1] if 0 < turn <= len(self._calls) else None
            print(f"{self.name}: {attack} before call {turn}"
                  f"{f' ({call.name} {call.path})' if call else ''}: {found}")


def check(options, host, runner):
    if os.geteuid() != 0:
        raise NotPossible("only root can be attacked by another user")
    runner.longest_run = LONGEST_RUN
    if not options.long:
        print("a part of the commands, before every third call that names something of the attacker's; "
              "all commands, before all calls, with --long")
    tried = bad = 0
    for place in PLACES:
        for name, arguments in COMMANDS:
            siege = Siege(options, host, runner, place, name, arguments)
            if options.only not in (None, siege.name) or not (options.long or name in place.commands):
                continue
            siege.prepare()
            for attack in ATTACKS:
                siege.check(attack)
            print(f"{siege.name}{' (refused)' if siege.is_refused else ''}: tried {siege.tried}, "
                  f"he was let {siege.let} times, bad {siege.bad}", flush=True)
            tried += siege.tried
            bad += siege.bad
    print(f"tried {tried}, bad {bad}")
    if tried == 0:
        raise SystemExit(f"there is no siege {options.only}")
    return bad
