"""The small host in a scratch directory: made, looked at, and put back as it was."""

import os
import re
import shutil
import stat

MANIFEST = re.compile(r"state/zet-(server|client)\.manifest$")
STATUS = re.compile(r"state/zet-(server|client|client-fs)\.status$")
LOCK = "state/zet.lock"
LEFT_OVER = re.compile(r"\.tmp$|(^|/)zet-staging\.|\.pending$")
STAGING = re.compile(r"zet-staging\.\w+")
PLAIN_TEXT = "# a comment\nsize=3\n#name=none\ncolor=red\n"
TEMPLATE = ("# --ZET_TEMPLATE_COMMENT--\n# of no interest\n# --ZET_COMMENT_END--\n"
            "[{0}]\nrealm = ${{realm}}\n" + "filler\n" * 700)
OTHER_OWNER = 12345


class Entry(tuple):
    """(kind, mode, owner, group, attributes, content); that of a manifest has its lines taken apart."""

    content = property(lambda self: self[5])


def key_of(state):
    """Equal for states that differ in the random names of temporary directories only."""
    return frozenset((STAGING.sub("zet-staging", path), entry) for path, entry in state.items())


def is_left_over(path):
    return LEFT_OVER.search(path) is not None


def write(path, text, mode=0o644):
    data = text if isinstance(text, bytes) else text.encode()
    with open(path, "wb") as file:
        file.write(data)
    os.chmod(path, mode)


class Host:
    def __init__(self, base):
        self.base = base
        self.root = base + "/host"

    def make(self):
        """As it is before any command ran."""
        shutil.rmtree(self.root, ignore_errors=True)
        for directory in ("etc", "templates", "state", "files", "tmp"):
            os.makedirs(f"{self.root}/{directory}")
        os.mkdir(f"{self.root}/run", 0o700)
        self.configure("example.org")
        targets = ""
        for name, roles in (("old.conf", "both"), ("new.conf", "server"), ("checked.conf", "client")):
            write(f"{self.root}/templates/{name}", TEMPLATE.format(name))
            targets += f"[{name}]\ntarget = {self.root}/files/{name}\nroles = {roles}\n"
        write(f"{self.root}/templates/targets.ini", targets + "check = /bin/true {}\n")
        write(f"{self.root}/files/old.conf", "the original\n" * 500, 0o640)
        write(f"{self.root}/files/plain.conf", PLAIN_TEXT, 0o600)
        for name in ("old.conf", "plain.conf"):
            self.give_attributes(f"{self.root}/files/{name}")

    def configure(self, domain):
        directories = f"ZET_CFG_DIR={self.root}/etc\nZET_CFG_TEMPL_DIR={self.root}/templates\n"
        write(f"{self.root}/zet.conf", f"DOMAIN={domain}\nSERVER=srv.{domain}\n{directories}"
              f"ZET_VAR_LIB_DIR={self.root}/state\n")

    def give_attributes(self, path):
        """What a file that is replaced must not lose, as far as this user and file system have it."""
        try:
            os.setxattr(path, "user.note", b"kept")
        except OSError:
            pass
        if os.geteuid() == 0:
            os.chown(path, OTHER_OWNER, OTHER_OWNER)

    def look(self):
        """Everything below the root by path, except the lock file."""
        found = {}
        self._look_into("", found)
        found.pop(LOCK, None)
        for path in [path for path in found if MANIFEST.search(path)]:
            entry = found[path]
            found[path] = Entry(entry[:5] + (self._manifest_lines(entry.content),))
        return found

    def _look_into(self, directory, found):
        with os.scandir(f"{self.root}/{directory}") as entries:
            for each in entries:
                path = directory + each.name
                status = each.stat(follow_symlinks=False)
                content = None
                attributes = ()
                if stat.S_ISREG(status.st_mode):
                    with open(each.path, "rb", buffering=0) as file:
                        content = file.read()
                        attributes = tuple(
                            (name, os.getxattr(file.fileno(), name))
                            for name in os.listxattr(file.fileno()) if name.startswith("user."))
                elif stat.S_ISLNK(status.st_mode):
                    content = os.readlink(each.path)
                found[path] = Entry((stat.S_IFMT(status.st_mode), stat.S_IMODE(status.st_mode),
                                     status.st_uid, status.st_gid, attributes, content))
                if stat.S_ISDIR(status.st_mode):
                    self._look_into(path + "/", found)

    def _manifest_lines(self, data):
        """(mode, path, whether the file is the recorded one); the bytes of what is no such line."""
        lines = []
        for line in data.splitlines(keepends=True):
            match = re.fullmatch(rb"(\d+) (\d+) (\d+) ([0-7]+) (/.*)\n", line)
            if not match:
                lines.append(line)
                continue
            path = match[5].decode()
            try:
                status = os.stat(path)
                actual = (status.st_ino, status.st_size, status.st_mtime_ns)
            except FileNotFoundError:
                actual = (0, 0, 0)
            lines.append((match[4], path, actual == tuple(int(match[i]) for i in (1, 2, 3))))
        return tuple(lines)

    def _manifest_bytes(self, lines):
        data = b""
        for mode, path, is_recorded in lines:
            status = os.stat(path) if is_recorded else None
            numbers = (status.st_ino, status.st_size, status.st_mtime_ns) if status else (0, 0, 0)
            data += b"%d %d %d " % numbers + mode + b" " + path.encode() + b"\n"
        return data

    def put_back(self, wanted, present):
        """From one state to another; both as looked at."""
        for path in sorted(present.keys() - wanted.keys(), reverse=True):
            full = f"{self.root}/{path}"
            os.rmdir(full) if present[path][0] == stat.S_IFDIR else os.unlink(full)
        changed = [path for path in sorted(wanted) if present.get(path) != wanted[path]]
        for path in changed:
            self._write_entry(path, wanted[path])
        # They name the inodes of the others.
        for path in wanted if changed else []:
            if MANIFEST.search(path):
                self._write_entry(path, wanted[path])

    def _write_entry(self, path, entry):
        full = f"{self.root}/{path}"
        kind, mode, owner, group, attributes, content = entry
        if kind == stat.S_IFDIR:
            os.makedirs(full, exist_ok=True)
        else:
            if os.path.lexists(full):
                os.unlink(full)
            write(full, self._manifest_bytes(content) if MANIFEST.search(path) else content)
            for name, value in attributes:
                os.setxattr(full, name, value)
        if os.geteuid() == 0:
            os.chown(full, owner, group)
        os.chmod(full, mode)
