"""The works on whole sets of targets, and those that are compared with nothing but themselves."""

import texts
from tools import COMMAND, PEER, PEERS, STATES, Goal, Tool, Work, assignments


def _set(place, count, history="no"):
    """A host with `count` templates and their targets, which are there already; the size of the largest."""
    entries, size = [], 0
    for name in ("targets", "originals", "wanted"):
        (place.directory / name).mkdir()
    for number in range(count):
        text, body = texts.small_template(number)
        template = place.write(f"templates/t{number}", text)
        wanted = texts.notice_of_rendered_file(template) + body
        place.write(f"wanted/t{number}", wanted)
        place.write(f"originals/t{number}", f"# an earlier version\nof number {number}\n")
        entries.append(f'[templates."t{number}"]\ntarget = "{place.directory}/targets/t{number}"\nroles = "both"\n')
        size = max(size, len(wanted))
    place.write("templates/targets.toml", "".join(entries))
    place.configure(history=history)
    return size


def _afresh(place, name, state="state"):
    """As before the first commit."""
    there = place.directory
    return ["sh", "-c", f"rm -rf {there}/{name} {there}/{state} && mkdir {there}/{state} && "
                        f"cp -r {there}/originals {there}/{name} && sync -f {there}"]


def _command(place, *words, prepare=None, name="zet-client"):
    return Tool(name, COMMAND, place.command(*words), place.directory / "targets", place.directory / "wanted",
                prepare=prepare)


def _loop(place, count, prepare=None):
    output = place.directory / "by-perl"
    command = ["perl", str(PEERS / "commit.pl"), str(count), str(place.directory / "templates"), str(output), place.sync,
               *assignments()]
    if prepare is None:
        output.mkdir()
    return Tool("perl", PEER, command, output, place.directory / "wanted", prepare=prepare)


def first_commit(place, sizes):
    size, count = _set(place, sizes.targets), sizes.targets
    title = f"commit {count} targets, {'synced' if place.sync == 'yes' else 'not synced'}"
    return Work("commit-first", title, size,
                [_command(place, "commit-config", prepare=_afresh(place, "targets")),
                 _loop(place, count, _afresh(place, "by-perl"))],
                [Goal(0.6 if place.sync == "yes" else 1.5, "perl")], units=count, counts_calls=True,
                memory_factor=None)


def second_commit(place, sizes):
    """What the first run of either wrote is not written again."""
    size, count = _set(place, sizes.targets), sizes.targets
    return Work("commit-again", f"commit {count} targets again, of which none changes", size,
                [_command(place, "commit-config"), _loop(place, count)], [Goal(1.5, "perl")], units=count, counts_calls=True,
                memory_factor=None)


def _status(place, name, count, seconds):
    size = _set(place, count)
    place.run("commit-config")
    return Work(name, f"status of {count} targets", size,
                [Tool("zet-client", COMMAND, place.command("status"), place.directory / "targets",
                      place.directory / "wanted")], [Goal(seconds, "seconds")], units=count, counts_calls=True,
                memory_factor=None)


def status(place, sizes):
    return _status(place, "status", sizes.targets, 0.1)


def status_of_many(place, sizes):
    return _status(place, "status-of-many", 10 * sizes.targets, 1.0)


def _store(place, name, title, goal, tools, text_size, **more):
    return Work(name, title, text_size, tools, [Goal(goal, "zet-client, no history")], **more)


def store_small(place, sizes):
    """What it costs to remember. Only what is rendered by force is not recorded without a history."""
    text, body = texts.small_template(0)
    template = place.write("templates/small.conf", text)
    wanted = place.write("wanted", texts.notice_of_rendered_file(template) + body)
    former = place.write("former", "# an earlier version\n")
    tools = []
    for history in ("yes", "no"):
        place.configure(history=history)
        out = place.out(f"render-{history}")
        tools.append(Tool(_name(history), COMMAND, place.command("template", "process", "--force", "small.conf", out), out, wanted,
                          prepare=["cp", str(former), str(out)]))
    return _store(place, "store-3k", "one 3 KB template, remembered", 2.0, tools, len(body), runs=10)


def store_lines(place, sizes):
    text, parameter, marked, _ = texts.parameter_to_set(sizes.few_lines)
    original, wanted = place.write("original", text), place.write("wanted", marked)
    tools = []
    for history in ("yes", "no"):
        place.configure(history=history)
        file = place.out(f"set-{history}")
        tools.append(Tool(_name(history), COMMAND,
                          place.command("param", "set", "--no-backup", file, parameter, "changed"), file, wanted,
                          prepare=["cp", str(original), str(file)]))
    return _store(place, "store-10k", f"set one parameter in {sizes.few_lines} lines, remembered", 1.5, tools, len(text),
                  runs=5)


def store_set(place, sizes):
    size = _set(place, sizes.targets)
    tools = []
    for history in ("yes", "no"):
        place.configure(history=history)
        tools.append(_command(place, "commit-config", prepare=_afresh(place, "targets", STATES[history]),
                              name=_name(history)))
    return _store(place, "store-set", f"commit {sizes.targets} targets, remembered", 1.1, tools, size,
                  units=sizes.targets, memory_factor=None)


def _name(history):
    return "zet-client" if history == "yes" else "zet-client, no history"


def look_at_blocks(place, sizes):
    """How much memory it takes to look at a block for every 75 bytes."""
    lines = []
    for number in range(sizes.blocks):
        lines.append(f"{texts.KEPT}p{number:07}=old\n{texts.BEGIN}p{number:07}=new\n{texts.END}")
    text = texts.NOTICE_OF_EDITED_FILE + "".join(lines)
    file = place.write("blocks", text)
    tools = [Tool(f"zet-client {words[0]}", COMMAND, place.command(*words), file, None)
             for words in (["doctor", file], ["explain", file])]
    return Work("blocks", f"look at {sizes.blocks} blocks", len(text), tools, [], memory_factor=4)


SETS = {
    "commit-first": first_commit,
    "commit-again": second_commit,
    "status": status,
    "status-of-many": status_of_many,
    "store-3k": store_small,
    "store-10k": store_lines,
    "store-set": store_set,
    "blocks": look_at_blocks,
}
