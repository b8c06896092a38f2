"""The commands that meet the faults, each with what comes before it."""

import os
import random

from host import write
from watch import SECRET

ALL = []


class Scenario:
    def __init__(self, name, program, arguments, prepare, undo=(), options=("--config", "HOST/zet.conf"),
                 furnish=None, expect=None, done=None):
        self.name = name
        self.program = program
        self.arguments = arguments
        self.prepare = prepare
        self.undo = undo
        self.options = options
        self.needs_root = furnish is not None
        self.furnish = furnish or (lambda host: None)
        self.expect = expect or (lambda old, new: [])
        self.has_own_end = done is not None
        self.done = done or (lambda now: [])


def scenario(name, program, *arguments, **more):
    """The decorated function prepares the host; it is given the host and a way to run a command on it. "undo"
    are the arguments by which the files are put back as they were before the preparation; "options" are
    those of each command; "furnish" puts something on the host before any command runs, and "expect"
    tells from the states before and after the command what is wrong when no fault comes. "done" tells
    what is wrong with a state that the command calls done, besides what all commands have in common."""
    def add(prepare):
        ALL.append(Scenario(name, program, arguments, prepare, **more))
        return prepare
    return add


ROLLBACK = ("rollback-config",)
RESTORE = ("file", "restore", "HOST/files/plain.conf")


@scenario("commit-first", "zet-init", "commit-config", undo=ROLLBACK)
def nothing(host, run):
    pass


@scenario("commit-again", "zet-init", "commit-config", undo=ROLLBACK)
def commit_then_configure_anew(host, run):
    run("zet-init", "commit-config")
    host.configure("elsewhere.example")


@scenario("commit-client", "zet-client", "commit-config", undo=ROLLBACK)
def nothing_on_a_client(host, run):
    pass


@scenario("rollback", "zet-init", "rollback-config")
def commit(host, run):
    run("zet-init", "commit-config")


@scenario("rollback-client", "zet-client", "rollback-config")
def commit_on_a_client(host, run):
    run("zet-client", "commit-config")


@scenario("undo", "zet-init", "undo", "2", undo=ROLLBACK)
def commit_twice(host, run):
    run("zet-init", "commit-config")
    host.configure("elsewhere.example")
    run("zet-init", "commit-config")


@scenario("undo-first", "zet-init", "undo", "1")
def commit_once(host, run):
    run("zet-init", "commit-config")


@scenario("commit-merge", "zet-init", "commit-config", "--on-edit=merge", undo=("rollback-config", "--force"))
def commit_then_edit(host, run):
    run("zet-init", "commit-config")
    with open(host.path("files/old.conf"), "a", encoding="utf-8") as file:
        file.write("# one\n# two\n# edited\n")
    host.configure("elsewhere.example")


@scenario("param-set", "zet-init", "param", "set", "HOST/files/plain.conf", "size", "4", undo=RESTORE)
def nothing_to_set(host, run):
    pass


@scenario("param-set-no-backup", "zet-init", "param", "set", "--no-backup", "--no-markers",
          "HOST/files/plain.conf", "name", "some")
def nothing_to_set_bare(host, run):
    pass


LONG_JOURNAL = 256 * 4096


@scenario("param-set-long-journal", "zet-init", "param", "set", "HOST/files/plain.conf", "size", "4", undo=RESTORE)
def let_the_journal_grow(host, run):
    path = host.path("files/passing.conf")
    for seed, name in enumerate((path, path + ".before_zet")):
        write(name, random.Random(seed).randbytes(LONG_JOURNAL * 3 // 4).hex() + "\n")
    run("zet-init", "file", "restore", path)
    os.remove(path)
    if os.path.getsize(host.path("state/state.db-wal")) < LONG_JOURNAL:
        raise AssertionError("the journal is not long, so nothing is taken over")


@scenario("line-restore", "zet-init", "line", "restore", "HOST/files/plain.conf", "^color=")
def set_line(host, run):
    run("zet-init", "line", "set", "HOST/files/plain.conf", "^color=", "color=blue")


@scenario("option-set", "zet-init", "option", "set", "REALM", "ELSEWHERE")
def nothing_configured(host, run):
    pass


@scenario("file-strip", "zet-init", "file", "strip", "HOST/files/plain.conf")
def set_parameter(host, run):
    run("zet-init", "param", "set", "--no-backup", "HOST/files/plain.conf", "size", "4")


@scenario("file-reserve", "zet-init", "file", "reserve", "HOST/files/plain.conf")
def nothing_reserved(host, run):
    pass


@scenario("file-reserve-absent", "zet-init", "file", "reserve", "HOST/files/absent.conf")
def nothing_there(host, run):
    pass


@scenario("file-restore", "zet-init", "file", "restore", "HOST/files/plain.conf")
def set_parameter_with_reserve(host, run):
    run("zet-init", "param", "set", "HOST/files/plain.conf", "size", "4")


@scenario("file-forget", "zet-init", "file", "forget", "HOST/files/plain.conf")
def set_parameter_to_stay(host, run):
    run("zet-init", "param", "set", "HOST/files/plain.conf", "size", "4")


@scenario("template-install", "zet-init", "template", "install", "--force", "old.conf", "new.conf")
def differing_working_copy(host, run):
    write(f"{host.root}/etc/old.conf", "an edited template\n")


@scenario("template-process", "zet-init", "template", "process", "new.conf", "HOST/files/plain.conf",
          "--value", "realm=OTHER", undo=RESTORE)
def nothing_processed(host, run):
    pass


# --- what came later ---

EDITED = "HOST/files/plain.conf"
TAKEN_FROM_TEMPLATE = "filler\n"


def replace(host, name, former, new):
    with open(host.path(name), "r+", encoding="utf-8") as file:
        text = file.read()
        if former not in text:
            raise ValueError(f"{name} has no {former!r}")
        file.seek(0)
        file.write(text.replace(former, new, 1))
        file.truncate()


def list_edits(host, *entries):
    """One line of a parameter, and one by its pattern."""
    os.makedirs(host.path("etc/targets.d"), exist_ok=True)
    write(host.path("etc/targets.d/10.toml"), "".join(
        f'[[edits]]\nfile = "{host.path("files/plain.conf")}"\n{entry}\n' for entry in entries))


SIZE = 'param = "size"\nvalue = "4 of ${domain}"'
COLOR = 'pattern = "^color="\nline = "color=blue"'


@scenario("commit-edits", "zet-init", "commit-config", undo=ROLLBACK)
def list_two_edits(host, run):
    list_edits(host, SIZE, COLOR)


@scenario("commit-edits-anew", "zet-init", "commit-config", undo=ROLLBACK)
def commit_edits_then_list_others(host, run):
    list_edits(host, SIZE, COLOR)
    run("zet-init", "commit-config")
    list_edits(host, SIZE.replace("4", "5"))


@scenario("commit-takes-edits-back", "zet-init", "commit-config", undo=ROLLBACK)
def commit_edits_then_list_none(host, run):
    list_edits(host, SIZE, COLOR)
    run("zet-init", "commit-config")
    list_edits(host)


@scenario("rollback-edits", "zet-init", "rollback-config")
def commit_edits(host, run):
    list_edits(host, SIZE, COLOR)
    run("zet-init", "commit-config")


@scenario("rollback-to", "zet-init", "rollback-config", "--to", "1", undo=ROLLBACK)
def commit_twice_to_go_back(host, run):
    run("zet-init", "commit-config")
    host.configure("elsewhere.example")
    run("zet-init", "commit-config")


@scenario("undo-merge", "zet-init", "undo", "--merge", "2", undo=("rollback-config", "--force"))
def commit_twice_then_edit(host, run):
    commit_twice_to_go_back(host, run)
    with open(host.path("files/old.conf"), "a", encoding="utf-8") as file:
        file.write("# one\n# two\n# edited\n")


@scenario("undo-of-edit", "zet-init", "undo", "1")
def set_parameter_to_undo(host, run):
    run("zet-init", "param", "set", EDITED, "size", "4")


@scenario("param-unset", "zet-init", "param", "unset", EDITED, "size", undo=RESTORE)
def nothing_to_unset(host, run):
    pass


def add_section(host):
    with open(host.path("files/plain.conf"), "a", encoding="utf-8") as file:
        file.write("[part]\nsize=5\ncolor=red\n[other]\nsize=6\n")


@scenario("param-set-section", "zet-init", "param", "set", "--section", "part", EDITED, "size", "7", undo=RESTORE,
          furnish=add_section)
def nothing_to_set_in_section(host, run):
    pass


@scenario("param-unset-section", "zet-init", "param", "unset", "--section", "part", EDITED, "size", undo=RESTORE,
          furnish=add_section)
def nothing_to_unset_in_section(host, run):
    pass


@scenario("param-restore-section", "zet-init", "param", "restore", "--section", "part", EDITED, "size", undo=RESTORE,
          furnish=add_section)
def set_parameter_of_section(host, run):
    run("zet-init", "param", "set", "--section", "part", EDITED, "size", "7")


@scenario("doctor-fix", "zet-init", "doctor", "--fix", EDITED, undo=RESTORE)
def damage_block(host, run):
    run("zet-init", "param", "set", EDITED, "size", "4")
    replace(host, "files/plain.conf", "# ----ZET_END----\n", "# ----ZET_END---- \n")


@scenario("adopt", "zet-init", "adopt", "HOST/files/old.conf", undo=("rollback-config", "--force"))
def commit_then_edit_to_adopt(host, run):
    run("zet-init", "commit-config")
    replace(host, "files/old.conf", TAKEN_FROM_TEMPLATE, "mine\n" + TAKEN_FROM_TEMPLATE)


@scenario("template-upgrade", "zet-init", "template", "upgrade")
def edit_working_copies_and_ship_anew(host, run):
    run("zet-init", "commit-config")
    for name in ("old.conf", "new.conf"):
        replace(host, f"templates/{name}", "realm = ${realm}\n", "realm = ${realm}\nnewer = ${domain}\n")
        with open(host.path(f"etc/{name}"), "a", encoding="utf-8") as file:
            file.write("mine\n")


def nothing_is_kept(now):
    store = now["state/state.db"].content
    found = [f"the store keeps {store.texts} texts"] if store.texts else []
    return found + [f"the store's file{suffix} shows a text" for suffix, data in store.files.items() if SECRET in data]


@scenario("history-erase", "zet-init", "history", "erase", EDITED, done=nothing_is_kept)
def set_parameter_to_erase(host, run):
    run("zet-init", "param", "set", EDITED, "size", "4")
    run("zet-init", "param", "set", EDITED, "size", "5")
