"""What the product keeps about a host: the names of its files, and what their texts mean. Only this file
knows them."""

import os
import re

DIRECTORY = "state"  # of the host of the tests, ZET_VAR_LIB_DIR

MANIFEST = re.compile(r"state/zet-(server|client)\.manifest$")
STATUS = re.compile(r"state/zet-(server|client|client-fs)\.status$")
LOCK = re.compile(r"(^|/)state/zet\.lock$")
# By what is broken in them: a record may be lost without losing an original; nobody may write without the lock.
RECORDS = ("zet-server.manifest", "zet.pending")
STATUSES = ("zet-server.status",)
LOCKS = ("zet.lock",)

RESERVE = ".before_zet"
ABSENCE = ".no_file_before_zet"
TEMPORARY = ".tmp"
COMPANIONS = (RESERVE, ABSENCE)

STAGING = re.compile(r"zet-staging\.\w+")
# Whatever stays where only temporary files are made is one.
LEFT_OVER = re.compile(r"^(tmp|run)/|\.tmp$|(^|/)zet-staging\.|\.pending$")


def is_left_over(path):
    return LEFT_OVER.search(path) is not None


def pending_record(path):
    """What tells that a run was about to write the file."""
    return path + "\n"


def _recorded(path):
    try:
        status = os.stat(path)
    except (OSError, ValueError):  # a damaged name may be none at all
        return 0, 0, 0
    return status.st_ino, status.st_size, status.st_mtime_ns


def parse_manifest(data, root):
    """(mode, path, whether the file is the recorded one) of each line; the bytes of what is no such line. Paths
    are names inside the root."""
    lines = []
    for line in data.splitlines(keepends=True):
        match = re.fullmatch(rb"(\d+) (\d+) (\d+) ([0-7]+) (/.*)\n", line)
        if match:
            path = os.fsdecode(match[5])
            is_recorded = _recorded(root + path) == tuple(int(match[i]) for i in (1, 2, 3))
            lines.append((match[4], path, is_recorded))
        else:
            lines.append(line)
    return tuple(lines)


def manifest_bytes(lines, root):
    data = b""
    for mode, path, is_recorded in lines:
        numbers = _recorded(root + path) if is_recorded else (0, 0, 0)
        data += b"%d %d %d " % numbers + mode + b" " + os.fsencode(path) + b"\n"
    return data
