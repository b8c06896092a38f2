"""What a tool is, and the texts of the scripts of those that take one."""

import dataclasses
import pathlib
import shutil

import texts

PEERS = pathlib.Path(__file__).resolve().parent.parent / "peers"

# The first python3 in the path may be a wrapper that starts more slowly than Python itself.
PYTHON = "/usr/bin/python3"

# The state directory, with and without a history.
STATES = {"no": "state", "yes": "state-remembered"}

# The command of a build that includes the module.
BUILT_IN = "zet-client, module built in"

COMMAND, ENGINE, FLOOR, PEER = "command", "engine", "floor", "peer"


@dataclasses.dataclass
class Tool:
    name: str
    kind: str
    command: list
    output: pathlib.Path
    wanted: pathlib.Path | None = None  # the floor produces nothing to compare
    prepare: list | None = None  # run before each run, untimed
    stdout: bool = False  # the result is what is printed
    safe: bool = True  # always leaves either the old or the new file
    extra: bool = False  # takes part only if its program is installed

    def is_installed(self):
        return shutil.which(self.name) is not None


@dataclasses.dataclass
class Goal:
    """At most `factor` times what `against` takes; against "seconds", so many. A goal `of` one tool is its alone, and
    the others' are not its."""
    factor: float
    against: str
    of: str | None = None


@dataclasses.dataclass
class Work:
    name: str
    title: str
    text_size: int  # of the text read or written, whichever is larger
    tools: list
    goals: list
    units: int = 1  # number of files, if there are many
    runs: int = 1  # runs in each round
    counts_calls: bool = False
    memory_factor: float | None = 2.2  # how many times the text may be in memory; None if there are many texts


def in_shell(program, to, *arguments):
    """A program that prints the new text, and the rename that makes it safe."""
    quoted = " ".join(arguments)
    return ["sh", "-c", f"{program} {quoted} > {to}.tmp && mv {to}.tmp {to}"]


def assignments():
    return [f"{name}={value}" for name, value in texts.VALUES.items()]


def sed_to_render(notice):
    lines = ["1i\\\n" + notice.rstrip("\n").replace("\n", "\\\n")]
    lines += [r"s|\${%s}|%s|g" % pair for pair in texts.VALUES.items()]
    return "\n".join(lines) + "\n"


def _awk_text(text):
    return '"' + text.replace("\n", "\\n").replace('"', '\\"') + '"'


def awk_to_render(notice):
    values = "\n".join(f'    value["{name}"] = {_awk_text(value)}' for name, value in texts.VALUES.items())
    return f"""\
BEGIN {{
    printf "%s", {_awk_text(notice)}
{values}
}}
{{
    done = ""
    while (at = index($0, "${{")) {{
        end = index(substr($0, at), "}}")
        done = done substr($0, 1, at - 1) value[substr($0, at + 2, end - 3)]
        $0 = substr($0, at + end)
    }}
    print done $0
}}
"""


def awk_to_set(name):
    block = _awk_text(f"\n{texts.BEGIN}{name}=changed\n{texts.END}".rstrip("\n"))
    return f"""\
/^#*[ \\t]*{name}=/ {{ print {_awk_text(texts.KEPT)} $0 {block}; next }}
{{ print }}
"""


def sed_to_set(name):
    block = f"\\n{texts.BEGIN}{name}=changed\n{texts.END}".rstrip("\n").replace("\n", "\\n")
    return f"s/^#*[ \\t]*{name}=.*/{texts.KEPT}&{block}/\n"


def perl_to_set(name):
    block = f"\n{texts.BEGIN}{name}=changed\n{texts.END}".rstrip("\n").replace("\n", "\\n")
    return f"s/^(#*[ \\t]*{name}=.*)/{texts.KEPT}$1{block}/"


AWK_TO_STRIP = "/^# ---ZET_BEGIN---/,/^# ----ZET_END----/ { next }\n{ print }\n"
SED_TO_STRIP = "/^# ---ZET_BEGIN---/,/^# ----ZET_END----/d\n"
