"""What must be true after a run that met a fault. Each function gives the list of what is not."""

import re
import stat

from statefiles import ABSENCE, COMPANIONS, RESERVE, STATUS, is_left_over
from store import Store

# What an undoing leaves as it is: working copies, and what the preparation configured.
NOT_UNDONE = re.compile(r"(^|/)(etc(/|$)|zet\.conf$)")


def of_exit(result, is_killed):
    if is_killed:
        return [] if result.status == -9 else [f"was not killed: status {result.status}"]
    if result.status < 0:
        return [f"ended by signal {-result.status}"]
    if result.status not in (0, 1):
        return [f"exit status {result.status}"]
    if result.status != 0 and not result.errors.strip():
        return ["failed without a word on standard error"]
    return []


def of_files(old, new, now, is_warned):
    """Every file is as before or as it was to become."""
    found = []
    for path in sorted(old.keys() | new.keys() | now.keys()):
        entry = now.get(path)
        if is_left_over(path) or same(path, entry, old.get(path)):
            continue
        if same(path, entry, new.get(path)) or (is_warned and is_nearly(entry, new.get(path))):
            continue
        if STATUS.search(path) and is_cut_short(entry, new.get(path)):
            continue
        if is_store(entry) and (is_warned and not entry.content.damage or entry.content.is_between(old[path].content, new[path].content)):
            continue
        found.append(f"{path} is neither old nor new: {shown(entry)}")
    return found


def has_warned(result):
    """Of something that an ordinary user may not do to a file: it is not lost without a word."""
    return "warning: Failed to keep" in result.errors or "warning: Failed to open file" in result.errors


def is_nearly(entry, wanted):
    """The same bytes, and open to nobody else."""
    if is_store(entry) and is_store(wanted):
        return entry.content.tells_same_texts(wanted.content)
    return (entry is not None and wanted is not None and entry.content == wanted.content
            and entry[1] & wanted[1] == entry[1])


def same(path, one, other):
    if one is None or other is None or not STATUS.search(path):
        return one == other
    return one[:5] == other[:5] and without_time(one.content) == without_time(other.content)


def without_time(status):
    return re.sub(rb"COMMIT_TIME=[^\n]*", b"COMMIT_TIME=", status)


def is_cut_short(entry, new):
    """The module writes a status file in its place: it may be empty or cut, and is recorded anew by the next
    run. It tells when the host was configured, and configures nothing."""
    if entry is None or new is None:
        return False
    return without_time(new.content).startswith(without_time(entry.content))


def is_unrecorded(result):
    """What was done is not in the history, or its entry could not be closed, and the reader was told."""
    return "is not recorded: " in result.errors or "/state/state.db: " in result.errors


def is_store(entry):
    return entry is not None and isinstance(entry.content, Store)


def of_originals(old, new, now):
    """What was there before the product came can be put back at every instant."""
    found = []
    for companion in [path for path in old.keys() | new.keys() if path.endswith(COMPANIONS)]:
        target = companion.removesuffix(RESERVE).removesuffix(ABSENCE)
        if companion in now:
            continue
        if companion in new and now.get(target) != old.get(target):
            found.append(f"{target} has changed before {companion} was there")
        if companion in old and now.get(target) != new.get(target):
            found.append(f"{companion} is gone before {target} was put back")
    return found


def of_success(result, output, new, now, may_leave, is_denied):
    """Exit status 0 says that all was done."""
    if result.status != 0:
        return []
    is_warned = has_warned(result)
    # What is denied in trial, an owner or a mode, is reported so even if it is permitted later.
    # After the work is done, an undo looks for the change before, which it names last.
    is_cut = "the history cannot be used: " in result.errors and output.startswith(result.output.rstrip())
    is_same_report = result.output == output or is_warned or is_denied or is_cut
    found = [] if is_same_report else [f"exit status 0, but the report is {result.output!r}"]
    for path in sorted(new.keys() | now.keys()):
        one, other = now.get(path), new.get(path)
        if same(path, one, other) or (is_left_over(path) and may_leave):
            continue
        if is_warned and is_nearly(one, other):
            continue
        if is_store(one) and not one.content.damage and is_unrecorded(result):
            continue
        found.append(f"exit status 0, but {path} is {shown(one)}")
    return found


def of_left_overs(now):
    return [f"{path} was left behind" for path in sorted(now) if is_left_over(path)]


def of_end(result, new, now, is_warned=False, was_unrecorded=False):
    """The command, run again without faults, ends as if there had never been any."""
    if result.status != 0:
        return [f"run again: exit status {result.status}: {result.errors}"]
    return [f"run again: {path} is {shown(now.get(path))}"
            for path in sorted(new.keys() | now.keys())
            if not same(path, now.get(path), new.get(path))
            and not (was_unrecorded and is_store(now.get(path)))
            and not (is_warned and is_nearly(now.get(path), new.get(path)))]


def of_undoing(result, origin, now, is_warned):
    """The files are what they were before the product came, and nothing tells of it any more."""
    if result.status != 0:
        return [f"undone: exit status {result.status}: {result.errors}"]
    return [f"undone: {path} is {shown(now.get(path))}"
            for path in sorted(origin.keys() | now.keys())
            if not NOT_UNDONE.search(path) and now.get(path) != origin.get(path)
            and not (is_warned and is_nearly(now.get(path), origin.get(path)))]


def shown(entry):
    if entry is None:
        return "absent"
    kind, mode, owner, group, attributes, content = entry
    if not isinstance(content, bytes):
        return repr(content)
    text = content if kind != stat.S_IFREG or len(content) < 160 else content[:160] + b"..."
    return f"{mode:04o} {owner}:{group} {dict(attributes)} {text!r}"
