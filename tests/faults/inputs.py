"""Every file that the commands read, as something else than they expect: a pipe, a device, a socket, a directory,
a file of a gigabyte, bytes that are no text, cut short, or with one byte changed.

Each command answers at once: with success and the right files, or with an error that names the file. None crashes,
hangs, takes memory without bound, or loses an original; and without what the product recorded, everything can
still be taken back.

All of it happens in a tree of its own, whatever the damaged names lead to. Without --long, longer files are damaged
at every so manieth byte, always the same ones, and the gigabyte is met by a part of the commands.
"""

import multiprocessing
import os
import re
import shutil
import socket
import stat
from concurrent.futures import ProcessPoolExecutor

import disk
import verdict
from host import Host, write
from run import NotPossible
from statefiles import ABSENCE, DIRECTORY, JOURNALS, LOCKS, RECORDS, RESERVE, STATUSES, is_left_over

MOST_CPU = 2.0  # s
MOST_MEMORY = 256 << 10  # KiB
GIGABYTE = 1 << 30
SECONDS_OF_GIGABYTE = 30.0
LARGE = 1 << 24
ROOM = "size=8g,nr_inodes=100k"
LONGEST_RUN = 10  # s; by then it hangs
EVERY_BYTE = 100  # of a file up to this size is damaged; of a larger one, so many

NAME = "old.conf"
TARGET = "files/" + NAME
OTHER = "files/plain.conf"
TEMPLATE_TEXT = b"[old.conf]\nrealm = ${realm}\nlast=line\n"
ORIGINAL = b"the first original\n"
JUNK = bytes(range(127, 256)) + b"\n\xc3(\xff\n"
RENDERED = re.compile(rb"\[\w+\.conf\]\nrealm = [^\n$]+\nlast=line\n")

STATE = [f"{DIRECTORY}/{name}" for name in RECORDS + STATUSES + LOCKS + JOURNALS]
OWN = {"etc/targets.d/10.toml": f'[[edits]]\nfile = "/{OTHER}"\nparam = "color"\nvalue = "blue"\n',
       "etc/defaults.d/10.conf": "TICKET_MAX_LIFE=1h\n", "etc/values.d/motd": "one\ntwo\n",
       "templates/values.conf": "NTP_SERVER=ntp\n"}
INPUTS = ["zet.conf", "templates/targets.toml", "templates/" + NAME, "etc/" + NAME, TARGET, TARGET + RESERVE,
          "files/new.conf" + ABSENCE, *OWN] + STATE

LOOKING = (("status",), ("check-config",), ("values",), ("commit-config", "-n"), ("rollback-config", "-n"),
           ("param", "get", "/" + TARGET, "last"), ("explain", "/" + TARGET), ("doctor", "/" + TARGET),
           ("option", "get", "DOMAIN"), ("history",), ("template", "status"))
COMMIT = ("commit-config",)
TAKE_BACK = ("rollback-config", "--force")
SET = ("param", "set", "--no-markers", "/" + OTHER, "size", "4")
UNSET = ("param", "unset", "/" + OTHER, "size")
WRITING = (COMMIT, TAKE_BACK, SET, UNSET, ("undo", "--force"), ("history", "erase", "/" + TARGET), ("template", "process", NAME, "/files/out.conf"),
           ("template", "install", "--force", NAME), ("file", "reserve", "/" + TARGET),
           ("file", "restore", "/" + TARGET), ("option", "set", "REALM", "ELSEWHERE"))
WITH_GIGABYTE = (COMMIT, TAKE_BACK)
MAY_FIND_NOTHING = ("param", "get")  # and then says nothing


def make_pipe(path):
    os.mkfifo(path)


def make_device(number):
    return lambda path: os.mknod(path, stat.S_IFCHR | 0o666, os.makedev(1, number))


def make_socket(path):
    with socket.socket(socket.AF_UNIX) as made:
        made.bind(path)


KINDS = {"pipe": make_pipe, "zeros": make_device(5), "full": make_device(7), "socket": make_socket,
         "directory": os.mkdir, "loop": lambda path: os.symlink(os.path.basename(path), path),
        "junk": lambda path: write(path, JUNK)}


def is_of_store(name):
    return name in STATE and os.path.basename(name).startswith(RECORDS[0])


def told_as(name):
    """What is beside the store is damage of the store."""
    return RECORDS[0] if is_of_store(name) else os.path.basename(name)


def run_measured(runner, words):
    """In a copy of the checker from when it was small: what a program takes begins with what its starter takes."""
    result = runner.run("zet-init", words)
    return result, runner.usage, runner.elapsed


class Reader:
    """A committed host, whose domain has changed since, and what the commands make of it."""

    def __init__(self, options, host, runner, starter):
        self._options = options
        self._host = host
        self._runner = runner
        self._starter = starter
        self._ends = {}
        self._usage = self._elapsed = None  # of the last run
        self._large = set()  # files that a run made
        self._told = set()
        self.tried = self.bad = 0

    def prepare(self):
        for directory in os.listdir(self._host.root):
            shutil.rmtree(self._host.path(directory))
        self._host.make_tree("tree", "")
        os.makedirs(self._host.path("tmp"))
        os.makedirs(self._host.path("run"), 0o700)
        for name in (NAME, "new.conf"):
            write(self._path("templates/" + name), TEMPLATE_TEXT.replace(NAME.encode(), name.encode()))
        write(self._path("templates/targets.toml"), "".join(
            f'[templates."{name}"]\ntarget = "/files/{name}"\nroles = "both"\n' for name in (NAME, "new.conf")))
        write(self._path(TARGET), ORIGINAL)
        for name, text in OWN.items():
            os.makedirs(os.path.dirname(self._path(name)), exist_ok=True)
            write(self._path(name), text)
        self._require(COMMIT)
        self._host.configure("elsewhere.example", "tree", "")
        self._old = self._look()
        for command in LOOKING + WRITING:
            self._require(command)
            self._ends[command] = self._look()
            self._restore()

    def _require(self, command):
        result = self._run(command)
        if result.status not in (0, 3):
            raise SystemExit(f"inputs: {command}: with sound files: {result.errors}")

    def _path(self, name):
        return self._host.path("tree/" + name)

    def _look(self):
        return {path.removeprefix("tree/"): entry for path, entry in self._host.look().items()}

    def _restore(self):
        self._take_large_away()
        for name in LOCKS:  # which nobody looks at
            self._clear(self._path(f"{DIRECTORY}/{name}"))
        now = self._host.look()
        beside = ("tree", "tmp", "run")
        self._host.put_back({path if path in beside else "tree/" + path: entry
                             for path, entry in self._old.items()}, now)

    def _take_large_away(self):
        """Nobody wants to compare them."""
        self._large.clear()
        for directory, _, names in os.walk(self._host.root):
            for name in names:
                path = os.path.join(directory, name)
                if os.path.isfile(path) and os.path.getsize(path) > LARGE:
                    os.unlink(path)
                    self._large.add(os.path.relpath(path, self._path("")))

    def _run(self, command):
        words = ["--root", self._host.path("tree"), "--config", "/zet.conf"] + list(command)
        result, self._usage, self._elapsed = self._starter.submit(run_measured, self._runner, words).result()
        return result

    def check_kind(self, name, kind):
        self._runner.longest_run = LONGEST_RUN
        for command in LOOKING + WRITING:
            self._check_spoilt(name, f"a {kind}", KINDS[kind], command, MOST_CPU, MOST_MEMORY,
                               JUNK if kind == "junk" else None)

    def check_size(self, name):
        """The text, its new version, and room for growing."""
        size = GIGABYTE if self._options.long else GIGABYTE // 8
        seconds = SECONDS_OF_GIGABYTE * size / GIGABYTE
        self._runner.longest_run = int(LONGEST_RUN + 2 * seconds)

        def make(path):
            with open(path, "wb") as file:
                file.truncate(size)
        for command in LOOKING + WRITING if self._options.long else WITH_GIGABYTE:
            self._check_spoilt(name, f"{size >> 20} MiB", make, command, seconds,
                               MOST_MEMORY + 3 * (size >> 10), None)

    def _check_spoilt(self, name, what, make, command, seconds, memory, text):
        result = self._run_spoilt(name, make, command)
        if self._elapsed > seconds and result.status >= 0:
            # Others may have kept the machine busy; who waits for a file does so again.
            self._restore()
            result = self._run_spoilt(name, make, command)
        found = self._of_usage(seconds, memory) + self._of_kind(name, text, command, result)
        self._tell(f"{name} is {what}", command, result, found)
        self._restore()

    def _run_spoilt(self, name, make, command):
        self._clear(self._path(name))
        make(self._path(name))
        return self._run(command)

    def _clear(self, path):
        if os.path.isdir(path) and not os.path.islink(path):
            os.rmdir(path)
        elif os.path.lexists(path):
            os.unlink(path)

    def _of_usage(self, seconds, memory):
        cpu = self._usage.ru_utime + self._usage.ru_stime
        found = []
        if self._elapsed > 4 * seconds:
            found.append(f"takes {self._elapsed:.1f} s")
        if cpu > seconds:
            found.append(f"takes {cpu:.1f} s of the processor")
        if self._usage.ru_maxrss > memory:
            found.append(f"takes {self._usage.ru_maxrss >> 10} MiB of memory")
        return found

    def _of_kind(self, name, text, command, result):
        self._take_large_away()
        now = self._look()
        found = self._of_any(name, command, result, now)
        said = result.output + result.errors
        if result.status in (1, 2) and told_as(name) not in said and command[:2] != MAY_FIND_NOTHING:
            found.append("fails, and does not name the file")
        if result.status == 0 and command in WRITING:
            found += self._of_success(name, command, result, now, text)
        return found

    def _of_any(self, name, command, result, now):
        found = []
        if result.status < 0:
            found.append("hangs" if result.status == -6 else f"ended by signal {-result.status}")
        elif result.status not in (0, 1, 2, 3):
            found.append(f"exit status {result.status}")
        elif result.status in (1, 2) and not (result.errors + result.output).strip():
            found += [] if command[:2] == MAY_FIND_NOTHING else ["fails without a word"]
        kept = [now[path].content for path in (TARGET, TARGET + RESERVE) if path in now]
        if name != TARGET + RESERVE and ORIGINAL not in kept:
            found.append("the original is lost")
        found += [f"{path} was left behind" for path in now if is_left_over(path) and path not in self._old]
        if name in STATE[:2] and command == TAKE_BACK and now[TARGET].content != ORIGINAL:
            found.append("nothing was taken back")
        return found

    def _of_success(self, name, command, result, now, text):
        """All files but the spoilt one are what the command makes of sound ones; the text of a template decides."""
        wanted = self._ends[command]
        found = []
        for path in (TARGET, TARGET + RESERVE, OTHER, "files/out.conf", "files/new.conf"):
            entry, other = now.get(path), wanted.get(path)
            # A reserve is what it is, and what is put back.
            if path == name and (path != TARGET or command != COMMIT):
                continue
            if name == TARGET + RESERVE and path == TARGET:
                continue
            if path in self._large or (entry and entry.content) == (other and other.content):
                continue
            if entry and other and self._is_rendered(name, entry.content, other.content, text):
                continue
            # Which files were edited in place only the record tells.
            if is_of_store(name) and command == TAKE_BACK and path == OTHER and told_as(name) in result.errors:
                continue
            # What a list has no more goes back as it was.
            if name == "templates/targets.toml" and command == COMMIT and entry == self._ends[TAKE_BACK].get(path):
                continue
            found.append(f"exit status 0, but {path} is {verdict.shown(entry)}")
        return found

    def _is_rendered(self, name, content, wanted, text):
        """What another text of the input makes of it, and the same notice."""
        if name == "etc/" + NAME and text == b"":
            return content == b"\n"
        notice, begin, _ = wanted.partition(b"[")
        if not begin or not content.startswith(notice):
            return False
        body = content.removeprefix(notice)
        if name == "etc/" + NAME and text is not None:
            return body.rstrip(b"\n") == text.replace(b"${realm}", b"ELSEWHERE.EXAMPLE").rstrip(b"\n")
        return name in ("zet.conf", "templates/targets.toml") and RENDERED.fullmatch(body) is not None

    def check_bytes(self, name, commands):
        with open(self._path(name), "rb") as file:
            sound = file.read()
        step = 1 if self._options.long else max(1, -(-len(sound) // EVERY_BYTE))
        for place in range(0, len(sound), step):
            changed = bytes([sound[place] ^ 1 << place % 8])
            self._check_text(name, f"is cut at byte {place}", sound[:place], commands)
            self._check_text(name, f"has byte {place} changed", sound[:place] + changed + sound[place + 1:], commands)

    def _check_text(self, name, what, text, commands):
        for command in commands:
            write(self._path(name), text)
            result = self._run(command)
            now = self._look()
            found = self._of_usage(MOST_CPU, MOST_MEMORY) + self._of_any(name, command, result, now)
            if result.status == 0 and command in WRITING:
                found += self._of_success(name, command, result, now, text)
            self._tell(f"{name} {what}", command, result, found)
            self._restore()

    def _tell(self, what, command, result, found):
        self.tried += 1
        self.bad += 1 if found else 0
        for each in found:
            kind = (what.split()[0], command, re.sub(r"\d+", "", each)[:60])
            if kind in self._told:
                continue
            self._told.add(kind)
            print(f"{what}: zet-init {' '.join(command)}: {each}; it ended with {result.status} and said "
                  f"{(result.errors or result.output)[:160]!r}")


# With the commands that read them.
BYTES = (("zet.conf", (COMMIT,)), ("templates/targets.toml", (COMMIT,)), ("etc/" + NAME, (COMMIT,)),
         (TARGET, (COMMIT, TAKE_BACK)), *((name, (("status",), COMMIT)) for name in STATE if name.endswith(STATUSES)),
         *((name, (COMMIT, TAKE_BACK)) for name in STATE if name.endswith(RECORDS)))


def check_inputs(options, reader):
    for name in [each for each in INPUTS if options.only in (None, each)]:
        before = reader.tried, reader.bad
        for kind in KINDS:
            reader.check_kind(name, kind)
        reader.check_size(name)
        for commands in [commands for damaged, commands in BYTES if damaged == name]:
            reader.check_bytes(name, commands)
        print(f"{name}: tried {reader.tried - before[0]}, bad {reader.bad - before[1]}", flush=True)


def check(options, base, make_runner):
    if os.geteuid() != 0:
        raise NotPossible("only root makes devices")
    host = Host(base)
    disk.mount(host.root, options=ROOM)
    try:
        with ProcessPoolExecutor(1, multiprocessing.get_context("fork")) as starter:
            reader = Reader(options, host, make_runner(), starter)
            reader.prepare()
            check_inputs(options, reader)
    finally:
        disk.unmount(host.root)
    if not options.long:
        print("a part of the bytes and of the commands, always the same one; all of them with --long")
    print(f"tried {reader.tried}, bad {reader.bad}")
    if reader.tried == 0:
        raise SystemExit(f"there is no input {options.only}")
    return reader.bad
