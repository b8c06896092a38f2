"""Another program writes the file that a command works on, at every call of the command.

Its line is never lost without a word: it is in the file, or the whole text that it wrote is in the reserve. A
reserve is one of the texts that the file had, whole. A command that gives up says so with the file's name, and
leaves what the other program wrote.

Between the last look at the file and the call that gives its name to the new text, nobody can tell: how many calls
that is, is printed.

Without --long, it writes only before calls that concern the file or its companions.
"""

import os

import verdict
from host import write
from run import Fault
from scenarios import ALL, ROLLBACK
from statefiles import COMPANIONS, RESERVE, TEMPORARY

THEIRS = b"THEIRS=1\n"
SLOWNESS = 12  # calls from the beginning of a slow write to its end
TORN = 4  # bytes
WIDEST_GAP = 20  # calls between the last look and the renaming
LOOKS = ("stat", "lstat", "newfstatat", "statx")


def at_once(path, text):
    with open(path, "r+b") as file:
        file.write(text)
        file.truncate()


def by_name(path, text):
    status = os.stat(path)
    write(path + "~", text, status.st_mode & 0o7777)
    os.chown(path + "~", status.st_uid, status.st_gid)
    os.rename(path + "~", path)


class Writer:
    """The hook of one run."""

    is_watching = False

    def __init__(self, path, way):
        self._path = path
        self._way = way
        self._file = None
        self.began = self.ended = None
        self.text = b""

    def __call__(self, turn, _is_done):
        if self.began is None:
            self.began = turn
            self._begin(turn)
        elif self.ended is None and turn >= self.began + SLOWNESS:
            self._end(turn)

    def _begin(self, turn):
        if not os.path.exists(self._path):
            self.ended = turn
            return
        with open(self._path, "rb") as file:
            self.text = file.read() + THEIRS
        if self._way == "slowly":
            self._file = open(self._path, "r+b", buffering=0)
            self._file.truncate(TORN)
            return
        {"at-once": at_once, "by-name": by_name}[self._way](self._path, self.text)
        self.ended = turn

    def _end(self, turn):
        self._file.write(self.text)
        self._file.close()
        self.ended = turn

    def finish(self):
        """After the command has ended."""
        if self.ended is None and self._file:
            self._end(None)


class Case:
    def __init__(self, name, arguments, file, prepared_by=None, takes_back=False, prepare=None):
        self.name = name
        self.arguments = arguments
        self.prepare = prepare or (lambda host, run: None)
        self.file = file
        self.prepared_by = prepared_by
        self.takes_back = takes_back  # so that its reserve is not of the text before


def case_of(name, file, takes_back=False):
    """The command of a scenario, on a host that is prepared for that."""
    scenario = next(each for each in ALL if each.name == name)
    return Case(name, scenario.arguments, file, takes_back=takes_back, prepare=scenario.prepare)


CASES = (
    Case("param-set", ("param", "set", "HOST/files/plain.conf", "size", "4"), "files/plain.conf"),
    Case("line-set", ("line", "set", "HOST/files/plain.conf", "^color=", "color=blue"), "files/plain.conf"),
    Case("commit", ("commit-config", "old.conf"), "files/old.conf"),
    Case("template-process", ("template", "process", "new.conf", "HOST/files/plain.conf"), "files/plain.conf"),
    Case("file-reserve", ("file", "reserve", "HOST/files/plain.conf"), "files/plain.conf"),
    Case("file-strip", ("file", "strip", "HOST/files/plain.conf"), "files/plain.conf", takes_back=True,
         prepared_by=("param", "set", "HOST/files/plain.conf", "size", "4")),
    Case("rollback", ROLLBACK, "files/old.conf", prepared_by=("commit-config", "old.conf"), takes_back=True),
    Case("option-set", ("option", "set", "REALM", "ELSEWHERE"), "zet.conf"),
    case_of("param-unset", "files/plain.conf"),
    case_of("doctor-fix", "files/plain.conf", takes_back=True),
    case_of("commit-edits", "files/plain.conf"),
    case_of("commit-edits-anew", "files/plain.conf", takes_back=True),
    case_of("commit-takes-edits-back", "files/plain.conf", takes_back=True),
    case_of("rollback-edits", "files/plain.conf", takes_back=True),
    case_of("commit-merge", "files/old.conf", takes_back=True),
    case_of("undo", "files/old.conf", takes_back=True),
    case_of("undo-merge", "files/old.conf", takes_back=True),
    case_of("rollback-to", "files/old.conf", takes_back=True),
    case_of("adopt", "etc/old.conf", takes_back=True),
    case_of("template-upgrade", "etc/old.conf", takes_back=True),
)


class Encounter:
    def __init__(self, options, host, runner, case):
        self._options = options
        self._host = host
        self._runner = runner
        self._case = case
        self._name = os.path.basename(case.file)
        self.tried = self.bad = self.widest = 0
        self._told = set()

    def _run(self, arguments, fault=None, hook=None):
        words = ("--config", "HOST/zet.conf") + tuple(arguments)
        return self._runner.run("zet-init", [each.replace("HOST", self._host.root) for each in words], fault, hook)

    def prepare(self):
        self._host.make()
        if self._case.prepared_by:
            self._run(self._case.prepared_by)
        self._case.prepare(self._host, lambda _, *arguments: self._run(arguments))
        self._old = self._host.look()
        undisturbed = self._run(self._case.arguments, Fault("none"))
        if undisturbed.status != 0:
            raise SystemExit(f"{self._case.name}: without another writer: {undisturbed.errors}")
        self._calls = self._runner.counted()[0]
        self._host.put_back(self._old, self._host.look())

    def turns(self):
        return [turn for turn, call in enumerate(self._calls, 1)
                if self._options.long or os.path.basename(call.path).startswith(self._name)]

    def check(self, way):
        for turn in self.turns():
            writer = Writer(self._host.path(self._case.file), way)
            result = self._run(self._case.arguments, Fault("stop", turn), writer)
            calls = self._runner.counted()[0]
            writer.finish()
            now = self._host.look()
            self.tried += 1
            for found in self._judge(writer, result, calls, now):
                self._tell(way, turn, found)
            self._host.put_back(self._old, now)

    def _judge(self, writer, result, calls, now):
        file, reserve = (now[path].content if path in now else None
                         for path in (self._case.file, self._case.file + RESERVE))
        found = [] if result.status in (0, 1) else [f"exit status {result.status}"]
        found += verdict.of_left_overs(now)
        look, renaming = self._last_look(calls)
        if renaming is not None:
            self.widest = max(self.widest, renaming - look)
        # Who begins after the last look, or ends between that and the renaming, is met by nobody.
        if writer.ended is None or (renaming is not None and
                                    (look < writer.ended <= renaming or look < writer.began <= renaming)):
            return found
        if not writer.text:
            return found
        if THEIRS not in (file or b"") and reserve != writer.text:
            found.append("the line of the other program is lost; the file is "
                         f"{verdict.shown(now.get(self._case.file))}")
        before = self._old[self._case.file].content
        if not self._case.takes_back and reserve not in (None, before, writer.text):
            found.append(f"the reserve is none of the file's texts: {reserve[:80]!r}")
        if result.status == 1 and file != writer.text:
            found.append("the command gave up, and the file is not as the other program wrote it")
        if result.status == 1 and self._name not in result.errors:
            found.append(f"the command gave up without the name of the file: {result.errors!r}")
        return found

    def _last_look(self, calls):
        """The turns of the last call that looked at the file by name, and of that which replaces it."""
        sources = [self._name + suffix for suffix in (TEMPORARY,) + COMPANIONS]
        renamings = [turn for turn, call in enumerate(calls, 1)
                     if call.name.startswith("rename") and os.path.basename(call.path) in sources
                     and not call.path.endswith(RESERVE + TEMPORARY)]
        if not renamings:
            return None, None
        looks = [turn for turn, call in enumerate(calls[:renamings[-1] - 1], 1)
                 if call.name in LOOKS and os.path.basename(call.path) == self._name]
        return looks[-1] if looks else 0, renamings[-1]

    def _tell(self, way, turn, found):
        self.bad += 1
        if (way, found) in self._told:
            return
        self._told.add((way, found))
        call = self._calls[turn - 1]
        print(f"{self._case.name}: written {way} before call {turn} ({call.name} {call.path}): {found}")

    def end(self):
        if self.widest > WIDEST_GAP:
            self.bad += 1
            print(f"{self._case.name}: {self.widest} calls between the last look and the renaming")


def check(options, host, runner):
    if not options.long:
        print("before calls that concern the file, always the same ones; all calls with --long")
    tried = bad = 0
    for case in CASES:
        if options.only not in (None, case.name):
            continue
        encounter = Encounter(options, host, runner, case)
        encounter.prepare()
        for way in ("at-once", "by-name", "slowly"):
            encounter.check(way)
        encounter.end()
        print(f"{case.name}: tried {encounter.tried}, nobody can tell within {encounter.widest} calls, "
              f"bad {encounter.bad}", flush=True)
        tried += encounter.tried
        bad += encounter.bad
    print(f"tried {tried}, bad {bad}")
    if tried == 0:
        raise SystemExit(f"there is no case {options.only}")
    return bad
