"""A small host whose files are changed, and what is known of it from outside: every managed file with all that it
carries, and the entries of the history."""

import os
import sqlite3
import stat
import struct

ACL = "system.posix_acl_access"
KEPT = ("user.", ACL)
COMPANIONS = ("", ".before_zet", ".no_file_before_zet")
TEMPLATES = ("one.conf", "two.conf")
PLAIN = ("plain.conf", "other.conf")
TEXT = "# a comment\nsize=3\n#name=none\ncolor=red\n"
DONE = 1
TARGET = 0


def access_list(user):
    """The POSIX access list that lets one more user read."""
    undefined = 0xFFFFFFFF
    entries = ((1, 6, undefined), (2, 4, user), (4, 4, undefined), (16, 4, undefined), (32, 0, undefined))
    return struct.pack("<I", 2) + b"".join(struct.pack("<HHI", *entry) for entry in entries)


def write(path, text, mode=0o644):
    with open(path, "wb") as file:
        file.write(text.encode())
    os.chmod(path, mode)


def see(path):
    """(mode, owner, group, attributes, bytes); None where there is no file."""
    try:
        with open(path, "rb", buffering=0) as file:
            status = os.fstat(file.fileno())
            attributes = tuple(sorted((name, os.getxattr(file.fileno(), name))
                                      for name in os.listxattr(file.fileno()) if name.startswith(KEPT)))
            return (stat.S_IMODE(status.st_mode), status.st_uid, status.st_gid, attributes, file.read())
    except FileNotFoundError:
        return None


class World:
    def __init__(self, base):
        self.root = base + "/host"

    def path(self, name):
        return f"{self.root}/{name}"

    def make(self, chance, entries):
        for directory in ("etc", "templates", "state", "files", "tmp", "run"):
            os.makedirs(self.path(directory), 0o700)
        write(self.path("zet.conf"), f"DOMAIN=example.org\nSERVER=srv.example.org\nZET_CFG_DIR={self.root}/etc\n"
              f"ZET_CFG_TEMPL_DIR={self.root}/templates\nZET_VAR_LIB_DIR={self.root}/state\n"
              f"ZET_HISTORY_KEEP={entries}\nZET_SYNC=no\n")
        targets = ""
        for name in TEMPLATES:
            self.ship(name, "first")
            targets += f'[templates."{name}"]\ntarget = "{self.root}/files/{name}"\nroles = "both"\n'
        write(self.path("templates/targets.toml"), targets)
        for name in ("one.conf",) + PLAIN:
            write(self.path("files/" + name), TEXT, chance.choice((0o644, 0o640, 0o600, 0o755, 0o4755)))
            self.decorate("files/" + name, chance)

    def ship(self, name, word):
        write(self.path("templates/" + name), f"# {word}\nrealm = ${{realm}}\ndomain = ${{domain}}\nof = {name}\n")

    def decorate(self, name, chance):
        """Owner, attributes and mode, each or none."""
        path = self.path(name)
        mode = stat.S_IMODE(os.stat(path).st_mode)
        if os.geteuid() == 0 and chance.random() < 0.5:
            os.chown(path, *chance.choice(((0, 0), (12345, 12345), (0, 54321))))
        for attribute, value in (("user.note", chance.choice((b"kept", b"another"))), (ACL, access_list(4321))):
            if chance.random() < 0.5:
                continue
            try:
                os.setxattr(path, attribute, value)
            except OSError:
                pass
        os.chmod(path, mode)

    def managed(self):
        """The names of all files that the product may write, but its own."""
        names = ["zet.conf"]
        names += [f"etc/{name}{suffix}" for name in TEMPLATES for suffix in ("", ".old")]
        names += [f"files/{name}" for name in TEMPLATES + PLAIN]
        return [name + suffix for name in names for suffix in COMPANIONS]

    def look(self):
        return {name: see(self.path(name)) for name in self.managed()}

    def put(self, name, seen):
        """A file as it was seen, by other hands than the product's."""
        path = self.path(name)
        if os.path.lexists(path):
            os.unlink(path)
        if seen is None:
            return
        mode, owner, group, attributes, content = seen
        with open(path, "wb") as file:
            file.write(content)
        os.chown(path, owner, group)
        for attribute, value in attributes:
            os.setxattr(path, attribute, value)
        os.chmod(path, mode)

    def left_overs(self):
        return [os.path.join(directory, name) for directory, _, names in os.walk(self.root) for name in names
                if name.endswith(".tmp") or "staging" in directory]

    def query(self, statement):
        if not os.path.exists(self.path("state/state.db")):
            return []
        database = sqlite3.connect(self.path("state/state.db"))
        try:
            return database.execute(statement).fetchall()
        finally:
            database.close()

    def entries(self):
        return [number for number, in self.query("SELECT number FROM entries ORDER BY number")]

    def pruned(self):
        return max([0] + [number for number, in self.query("SELECT number FROM pruned")])

    def known(self):
        """What is known of each file but the status: path, what it is, by whom, which text and mode, and from which it
        was made."""
        return set(self.query("SELECT path, kind, roles, template, digest, mode,"
                              " (SELECT texts.digest FROM texts WHERE texts.id = base) FROM known, states WHERE state = id"
                              " AND kind <> 5 AND present"))

    def knows(self, path):
        return bool(self.query(f"SELECT 1 FROM known WHERE path = '{path}'"))

    def is_made_by(self, entry, name):
        """Whether the entry has left it as a target or an edited file."""
        return bool(self.query(f"SELECT 1 FROM files WHERE entry = {entry} AND path = '{self.path(name)}'"
                               " AND kind IN (0, 1)"))

    def made(self):
        """The targets and edited files that are known: name, last entry, mode and size, and whether that is what the
        entry left."""
        rows = self.query("SELECT known.path, known.entry, states.present, states.mode, states.size,"
                          " states.digest = (SELECT left.digest FROM files, states AS left WHERE left.id = after"
                          " AND files.entry = known.entry AND files.path = known.path)"
                          " FROM known, states WHERE state = states.id AND kind IN (0, 1)")
        return [(path.removeprefix(self.root + "/"), entry, (mode, size) if present else None, bool(is_as_left))
                for path, entry, present, mode, size, is_as_left in rows]

    def roles(self):
        """Those that have committed something."""
        words = b" ".join(roles for roles, in self.query("SELECT roles FROM known, states WHERE state = id"))
        return {role for role in ("server", "client") if role.encode() in words}

    def statuses(self):
        return {role for role in ("server", "client") if os.path.exists(self.path(f"state/zet-{role}.status"))}
