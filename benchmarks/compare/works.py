"""The works: which text, which tools, which commands, which goals."""

import dataclasses
import json
import pathlib
import re
import subprocess

import texts
from sets import SETS
from tools import (AWK_TO_STRIP, BUILT_IN, COMMAND, ENGINE, FLOOR, PEER, PEERS, PYTHON, SED_TO_STRIP, STATES, Goal, Tool,
                   Work, assignments, awk_to_render, awk_to_set, in_shell, perl_to_set, sed_to_render, sed_to_set)


@dataclasses.dataclass
class Sizes:
    render: int = 10_000_000
    large_render: int = 100_000_000
    files: int = 1000
    places: int = 250_000
    lines: int = 1_000_000
    few_lines: int = 10_000
    synced_files: int = 200
    targets: int = 1000
    blocks: int = 1_000_000

    def times(self, factor):
        return Sizes(**{name: value * factor for name, value in dataclasses.asdict(self).items()})


SMOKE_SIZES = Sizes(30_000, 60_000, 10, 500, 2000, 200, 3, 5, 20)


class Place:
    """A directory of one work, with a configuration of its own."""

    def __init__(self, directory, programs, sync="no", built_in_programs=None):
        self.directory = pathlib.Path(directory).resolve()
        self.programs = pathlib.Path(programs).resolve()
        self.built_in_programs = built_in_programs and pathlib.Path(built_in_programs).resolve()
        self.sync = sync
        for name in ("templates", *STATES.values(), "out"):
            (self.directory / name).mkdir(parents=True)
        self.configure()

    def configure(self, history="no"):
        """The commands from now on remember what they do, or do not: the others keep no history. Who remembers
        nothing has a directory of his own: a store that is there would be opened."""
        text = texts.CONFIG.format(sync=self.sync, history=history, directory=self.directory, state=STATES[history])
        self.config = self.write(f"zet-{history}.conf", text)

    def run(self, *words):
        subprocess.run(self.command(*words), check=True, stdout=subprocess.DEVNULL)

    def write(self, name, text):
        path = self.directory / name
        path.write_text(text, encoding="ascii", newline="")
        return path

    def out(self, tool):
        return self.directory / "out" / re.sub(r"\W+", "-", tool)

    def command(self, *words):
        return [str(self.programs / "bin/zet-client"), "-q", "-c", str(self.config), *map(str, words)]

    def built_in(self, *words):
        """Of the build whose commands have the module in them."""
        return [str(self.built_in_programs / "bin/zet-client"), *self.command(*words)[1:]]

    def engine(self, *words):
        return [str(self.programs / "bin/zet-bench-engine"), str(self.config),
                str(self.programs / "lib/zet/libzet-config.so"), *map(str, words)]

    def floor(self, *words):
        return [str(self.programs / "bin/zet-bench-floor"), *map(str, words)]


def _size(*paths):
    return max(path.stat().st_size for path in paths)


def _jinja(text):
    return text.replace("${", "{{ ").replace("}", " }}")


def _render_tools(place, template, body, names):
    """The tools that render one template."""
    notice = texts.notice_of_rendered_file(template)
    wanted = place.write("wanted", notice + body)
    plain = place.write("wanted.plain", body)
    former = place.write("former", "# an earlier version\n")
    sed = place.write("render.sed", sed_to_render(notice))
    awk = place.write("render.awk", awk_to_render(notice))
    tools = {}

    def add(name, kind, command, expected=wanted, **more):
        out = place.out(name)
        # A tool that checks would not write again what exists already.
        tools[name] = Tool(name, kind, command(str(out)), out, expected, prepare=["cp", str(former), str(out)], **more)

    # As the others do: whatever the file holds is replaced.
    words = ["template", "process", "--force", template.name]
    add("zet-client", COMMAND, lambda out: place.command(*words, out))
    if place.built_in_programs:
        add(BUILT_IN, COMMAND, lambda out: place.built_in(*words, out))
    add("engine", ENGINE, lambda out: place.engine("render", template.name, out))
    add("floor", FLOOR, lambda out: place.floor("replace", template, out), None)
    add("perl", PEER, lambda out: ["perl", str(PEERS / "render.pl"), "-", str(template), out, *assignments()])
    add("python3", PEER, lambda out: [PYTHON, "-IS", str(PEERS / "render.py"), str(template), out, *assignments()])
    add("sed", PEER, lambda out: in_shell("sed", out, "-f", str(sed), str(template)))
    add("mawk", PEER, lambda out: in_shell("mawk", out, "-f", str(awk), str(template)))
    add("envsubst", PEER, lambda out: in_shell("envsubst", out, "<", str(template)), plain)
    add("envsubst, unsafe", PEER, lambda out: ["sh", "-c", f"envsubst < {template} > {out}"], plain, safe=False)
    return [tools[name] for name in names if name in tools]


def _ansible(module, arguments, *options):
    # It refuses to start in a locale other than UTF-8.
    environment = ["env", "LC_ALL=C.UTF-8"]
    return [*environment, "ansible", "-i", "localhost,", "-c", "local", "localhost", "-m", module, "-a", arguments,
            *options]


def _ansible_render(place, text):
    source = place.write("template.j2", _jinja(text))
    values = place.write("values.json", json.dumps(texts.VALUES))
    output = place.out("ansible")
    return Tool("ansible", PEER, _ansible("template", f"src={source} dest={output}", "-e", f"@{values}"), output,
                place.directory / "wanted.plain", prepare=["rm", "-f", str(output)], extra=True)


def small_render(place, sizes):
    text, body = texts.small_template(0)
    template = place.write("templates/small.conf", text)
    names = ["zet-client", BUILT_IN, "engine", "floor", "perl", "envsubst, unsafe", "sed", "mawk", "python3"]
    tools = _render_tools(place, template, body, names) + [_ansible_render(place, text)]
    return Work("render-3k", "one 3 KB template with 15 placeholders, fresh process", len(body),
                tools, [Goal(1.15, "perl"), Goal(0.85, "perl", of=BUILT_IN)], runs=10)


def _many(place, count):
    """The templates "0", "1", ... and what they become; the largest size."""
    (place.directory / "wanted").mkdir()
    size = 0
    for number in range(count):
        text, body = texts.small_template(number)
        template = place.write(f"templates/{number}", text)
        size = max(size, _size(place.write(f"wanted/{number}", texts.notice_of_rendered_file(template) + body)))
    return size


def many_renders(place, sizes):
    size = _many(place, sizes.files)
    source, wanted = place.directory / "templates", place.directory / "wanted"
    for name in ("engine", "floor", "perl"):
        place.out(name).mkdir()
    count = str(sizes.files)
    return Work("render-many", f"{sizes.files} such files in one process, each", size, [
        Tool("engine", ENGINE, place.engine("render-many", count, place.out("engine")), place.out("engine"), wanted),
        Tool("floor", FLOOR, place.floor("replace-many", count, source, place.out("floor")), place.out("floor")),
        Tool("perl", PEER, ["perl", str(PEERS / "render.pl"), count, str(source), str(place.out("perl")),
                            *assignments()], place.out("perl"), wanted),
    ], [Goal(0.95, "perl")], units=sizes.files)


def _large_render(place, name, size, factor, names):
    text, body = texts.template(size)
    template = place.write("templates/large.conf", text)
    tools = _render_tools(place, template, body, names)
    return Work(name, f"{size / 1e6:g} MB template, a placeholder on every 4th line",
                len(body), tools, [Goal(factor, "perl")])


def render(place, sizes):
    return _large_render(place, "render-10m", sizes.render, 0.45,
                         ["zet-client", "engine", "floor", "perl", "mawk", "envsubst", "sed", "python3"])


def large_render(place, sizes):
    return _large_render(place, "render-100m", sizes.large_render, 0.42,
                         ["zet-client", "engine", "floor", "perl", "mawk", "envsubst"])


def long_line(place, sizes):
    text, body = texts.long_line(sizes.places)
    template = place.write("templates/line.conf", text)
    names = ["zet-client", "engine", "floor", "envsubst", "perl", "sed", "python3"]
    return Work("long-line", f"one {len(text) / 1e6:.2g} MB line with {sizes.places} placeholders",
                len(body), _render_tools(place, template, body, names), [Goal(0.4, "envsubst")])


def _edited(place, name, kind, original, wanted, command, **more):
    """A tool that edits a fresh copy of the original in place."""
    file = place.out(name)
    return Tool(name, kind, command(str(file)), file, wanted, prepare=["cp", str(original), str(file)], **more)


def _set(place, name, lines, goal):
    text, parameter, marked, bare = texts.parameter_to_set(lines)
    original, wanted = place.write("original", text), place.write("wanted", marked)
    plain = place.write("wanted.plain", bare)
    awk, sed = place.write("set.awk", awk_to_set(parameter)), place.write("set.sed", sed_to_set(parameter))

    def edited(tool, kind, command, expected=wanted, **more):
        return _edited(place, tool, kind, original, expected, command, **more)

    words = ["param", "set", "--no-backup"]
    tools = [
        edited("zet-client", COMMAND, lambda file: place.command(*words, file, parameter, "changed")),
        edited("engine", ENGINE, lambda file: place.engine("set", file, parameter, "changed")),
        edited("floor", FLOOR, lambda file: place.floor("replace", file, file), None),
        edited("mawk", PEER, lambda file: in_shell("mawk", file, "-f", str(awk), file)),
        edited("sed -i", PEER, lambda file: ["sed", "-i", "-f", str(sed), file]),
        edited("perl -pi", PEER, lambda file: ["perl", "-pi", "-e", perl_to_set(parameter), file]),
    ]
    if place.built_in_programs and lines == Sizes().few_lines:
        tools.insert(1, edited(BUILT_IN, COMMAND, lambda file: place.built_in(*words, file, parameter, "changed")))
    if lines == Sizes().few_lines:
        tools += [
            edited("augtool", PEER, lambda file: [
                "augtool", "--noautoload", "--autosave", "--transform", f"Simplevars.lns incl {file}", "set",
                f"/files{file}/{parameter}", "changed"], plain, extra=True),
            edited("ansible", PEER, lambda file: _ansible(
                "lineinfile", f"path={file} regexp=^#*\\s*{parameter}= line={parameter}=changed"), plain, extra=True),
        ]
    return Work(name, f"set one parameter in {lines} lines", _size(original, wanted), tools, [goal])


def set_in_many(place, sizes):
    return _set(place, "set-1m", sizes.lines, Goal(0.45, "mawk"))


def set_in_few(place, sizes):
    work = _set(place, "set-10k", sizes.few_lines, Goal(0.75, "sed -i"))
    work.runs = 5
    return work


def strip(place, sizes):
    text, body = texts.blocks(sizes.lines)
    original, wanted = place.write("original", text), place.write("wanted", body)
    awk, sed = place.write("strip.awk", AWK_TO_STRIP), place.write("strip.sed", SED_TO_STRIP)

    def edited(tool, kind, command, expected=wanted):
        return _edited(place, tool, kind, original, expected, command)

    return Work("strip-1m", f"take the blocks out of {sizes.lines} lines, one every 10", len(text), [
        edited("zet-client", COMMAND, lambda file: place.command("file", "strip", "--no-backup", file)),
        edited("engine", ENGINE, lambda file: place.engine("strip", file)),
        edited("floor", FLOOR, lambda file: place.floor("replace", file, file), None),
        edited("mawk", PEER, lambda file: in_shell("mawk", file, "-f", str(awk), file)),
        edited("sed -i", PEER, lambda file: ["sed", "-i", "-f", str(sed), file]),
        edited("perl", PEER, lambda file: ["perl", str(PEERS / "strip.pl"), file]),
    ], [Goal(0.4, "mawk")])


def get(place, sizes):
    text, parameter, value = texts.parameter_to_get(sizes.lines)
    file, wanted = str(place.write("file", text)), place.write("wanted", value)

    def printing(name, kind, command, expected=wanted):
        return Tool(name, kind, command, place.out(name), expected, stdout=True)

    shell = f'line=$(grep -m1 "^[[:space:]]*{parameter}=" {file}); printf "%s\\n" "${{line#*=}}"'
    return Work("get-1m", f"get the parameter in the last of {sizes.lines} lines", len(text), [
        printing("zet-client", COMMAND, place.command("param", "get", file, parameter)),
        printing("engine", ENGINE, place.engine("get", file, parameter)),
        printing("floor", FLOOR, place.floor("read", file), None),
        printing("grep -oPm1", PEER, ["grep", "-oPm1", f"^\\s*{parameter}=\\K.*", file]),
        printing("grep -m1, cut in sh", PEER, ["sh", "-c", shell]),
        printing("mawk", PEER, ["mawk", f"/^[ \\t]*{parameter}=/ {{ sub(/^[^=]*=/, \"\"); print; exit }}", file]),
        printing("sed -n", PEER, ["sed", "-n", f"/^[ \\t]*{parameter}=/{{s///p;q}}", file]),
        printing("perl", PEER, ["perl", "-ne", f"if (/^\\s*{parameter}=(.*)/) {{ print qq($1\\n); last }}", file]),
    ], [Goal(0.6, "grep -oPm1")])


def synced_renders(place, sizes, synced):
    """On a real file system, with and without syncing."""
    count = sizes.synced_files
    _many(place, count)
    source, wanted = place.directory / "templates", place.directory / "wanted"
    floor = "replace-many-synced" if synced else "replace-many"
    name = "synced" if synced else "not synced"
    for tool in ("engine", "floor"):
        place.out(tool).mkdir()
    return Work(name, f"{count} files of 3 KB in one process on a real file system, {name}, each", 0, [
        Tool("engine", ENGINE, place.engine("render-many", count, place.out("engine")), place.out("engine"), wanted),
        Tool("floor", FLOOR, place.floor(floor, count, source, place.out("floor")), place.out("floor")),
    ], [], units=count)


WORKS = {
    "render-3k": small_render,
    "render-many": many_renders,
    "render-10m": render,
    "render-100m": large_render,
    "long-line": long_line,
    "set-1m": set_in_many,
    "set-10k": set_in_few,
    "strip-1m": strip,
    "get-1m": get,
    **SETS,
}

GROWING = ("render-many", "render-10m", "long-line", "set-1m", "strip-1m", "get-1m")
