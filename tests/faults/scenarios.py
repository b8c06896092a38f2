"""The commands that meet the faults, each with what comes before it."""

from host import write

ALL = []


class Scenario:
    def __init__(self, name, program, arguments, prepare, undo=(), options=("--config", "HOST/zet.conf"),
                 furnish=None, expect=None):
        self.name = name
        self.program = program
        self.arguments = arguments
        self.prepare = prepare
        self.undo = undo
        self.options = options
        self.needs_root = furnish is not None
        self.furnish = furnish or (lambda host: None)
        self.expect = expect or (lambda old, new: [])


def scenario(name, program, *arguments, **more):
    """The decorated function prepares the host; it is given the host and a way to run a command on it. "undo"
    are the arguments by which the files are put back as they were before the preparation; "options" are
    those of each command; "furnish" puts something on the host before any command runs, and "expect"
    tells from the states before and after the command what is wrong when no fault comes."""
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
