"""What is looked at after every call of a command, not only at its end: who owns what, with which mode, and who
may read it."""

import os
import stat

# A text with this in it, in a file that nobody but its owner may read, may never be read by others.
SECRET = b"not-for-others"
ANYBODY_READS = 0o044
ANYBODY_ENTERS = 0o011


class Watcher:
    """Called by the driver of a run; `found` is what nobody may ever see."""

    is_watching = True

    def __init__(self, root, old):
        self._root = root
        self._users = {entry.owner for entry in old.values() if entry.mode & stat.S_ISUID}
        self._groups = {entry.group for entry in old.values() if entry.mode & stat.S_ISGID}
        self._readers = {entry.owner for entry in old.values() if is_secret(entry)} | {0, os.geteuid()}
        self._noted = set()
        self.found = []
        self.looks = 0

    def __call__(self, turn, is_done):
        if is_done:
            self.look(turn)

    def look(self, turn):
        self.looks += 1
        self._look_into(self._root, turn, True)

    def _look_into(self, directory, turn, is_open):
        for each in entries_of(directory):
            try:
                status = each.stat(follow_symlinks=False)
            except FileNotFoundError:
                continue
            if stat.S_ISDIR(status.st_mode):
                self._look_into(each.path, turn, is_open and status.st_mode & ANYBODY_ENTERS != 0)
            elif stat.S_ISREG(status.st_mode):
                self._judge(each.path, status, turn, is_open)

    def _judge(self, path, status, turn, is_open):
        owner = f"{stat.S_IMODE(status.st_mode):04o} of {status.st_uid}:{status.st_gid}"
        if status.st_mode & stat.S_ISUID and status.st_uid not in self._users:
            self._note(path, turn, f"runs as a user who never had such a file: {owner}")
        if status.st_mode & stat.S_ISGID and status.st_gid not in self._groups:
            self._note(path, turn, f"runs as a group that never had such a file: {owner}")
        is_read = status.st_mode & ANYBODY_READS or status.st_uid not in self._readers
        if is_open and is_read and SECRET in bytes_of(path):
            self._note(path, turn, f"shows what only its owner may read: {owner}")

    def _note(self, path, turn, text):
        what = f"{path.removeprefix(self._root + '/')} {text}"
        if what not in self._noted:
            self._noted.add(what)
            self.found.append(f"after call {turn}, {what}")


def is_secret(entry):
    return isinstance(entry.content, bytes) and SECRET in entry.content and not entry.mode & ANYBODY_READS


def entries_of(directory):
    try:
        with os.scandir(directory) as entries:
            return list(entries)
    except FileNotFoundError:
        return []


def bytes_of(path):
    try:
        descriptor = os.open(path, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK)
    except OSError:
        return b""
    try:
        return os.pread(descriptor, 1 << 20, 0)
    finally:
        os.close(descriptor)
