"""The small host in a scratch directory: made, looked at, and put back as it was."""

import os
import shutil
import stat
import struct

import statefiles
import store
from statefiles import LOCK, STAGING, STORE

PLAIN_TEXT = "# a comment\nsize=3\n#name=none\ncolor=red\n# not-for-others\n"
TEMPLATE = ("# --ZET_TEMPLATE_COMMENT--\n# of no interest\n# --ZET_COMMENT_END--\n"
            "[{0}]\nrealm = ${{realm}}\n" + "filler\n" * 700)
ORIGINAL = "the original\n" * 500
OTHER_OWNER = 12345
KEPT_ATTRIBUTES = ("user.", "system.posix_acl_access")
STORE_KIND = (stat.S_IFREG, 0o600)
NAMES = "names of one file"  # hard links, among the attributes


class Entry(tuple):
    """(kind, mode, owner, group, attributes, content); that of the store is a `Store`."""

    mode = property(lambda self: self[1])
    owner = property(lambda self: self[2])
    group = property(lambda self: self[3])
    attributes = property(lambda self: self[4])
    content = property(lambda self: self[5])


def key_of(state):
    """Equal for states that differ in the random names of temporary directories only."""
    return frozenset((STAGING.sub("zet-staging", path), entry) for path, entry in state.items())


def gather_store(path, found):
    """Its files are one entry, which is there even where it is not, unless one of them is something else."""
    names = [path + suffix for suffix in store.SUFFIXES if path + suffix in found]
    if all(found[name][:2] == STORE_KIND for name in names):
        files = {name.removeprefix(path): found.pop(name).content for name in names}
        found[path] = Entry(STORE_KIND + (os.geteuid(), os.getegid(), (), store.Store(files)))


def is_same(one, other):
    """Byte for byte, in the store as well."""
    if one is None or one != other:
        return False
    return not isinstance(one.content, store.Store) or one.content.files == other.content.files


def write(path, text, mode=0o644, owner=None):
    data = text if isinstance(text, bytes) else text.encode()
    with open(path, "wb") as file:
        file.write(data)
    if owner is not None:
        os.chown(path, owner, owner)
    os.chmod(path, mode)


def access_list(user):
    """The POSIX access list that lets one more user read."""
    undefined = 0xFFFFFFFF
    entries = ((1, 6, undefined), (2, 4, user), (4, 4, undefined), (16, 4, undefined), (32, 0, undefined))
    return struct.pack("<I", 2) + b"".join(struct.pack("<HHI", *entry) for entry in entries)


class Host:
    def __init__(self, base):
        self.base = base
        self.root = base + "/host"

    def path(self, name):
        return f"{self.root}/{name}"

    def make(self):
        """As it is before any command ran."""
        shutil.rmtree(self.root, ignore_errors=True)
        os.makedirs(self.root + "/tmp")
        os.makedirs(self.root + "/run", 0o700)
        self.make_tree("")
        for name in ("old.conf", "plain.conf"):
            self.give_attributes(self.path("files/" + name))

    def make_tree(self, tree, inside=None):
        """A configured host below a directory; `inside` is its name as the commands have it there."""
        top = self.path(tree)
        inside = top.rstrip("/") if inside is None else inside
        for directory in ("etc", "templates", "state", "files"):
            os.makedirs(f"{top}/{directory}")
        self.configure("example.org", tree, inside)
        # It stays from the first run on: all runs are to make the same calls.
        write(f"{top}/{statefiles.DIRECTORY}/zet.lock", "", 0o600)
        targets = ""
        for name, roles in (("old.conf", "both"), ("new.conf", "server"), ("checked.conf", "client")):
            write(f"{top}/templates/{name}", TEMPLATE.format(name))
            targets += f'[templates."{name}"]\ntarget = "{inside}/files/{name}"\nroles = "{roles}"\n'
        write(f"{top}/templates/targets.toml", targets + 'check = ["/bin/grep", "-q", "realm", "{}"]\n')
        write(f"{top}/files/old.conf", ORIGINAL, 0o640)
        write(f"{top}/files/plain.conf", PLAIN_TEXT, 0o600)

    def configure(self, domain, tree="", inside=None, more=""):
        inside = self.root if inside is None else inside
        directories = f"ZET_CFG_DIR={inside}/etc\nZET_CFG_TEMPL_DIR={inside}/templates\n"
        write(self.path(tree + "/zet.conf"), f"DOMAIN={domain}\nSERVER=srv.{domain}\n{directories}"
              f"ZET_VAR_LIB_DIR={inside}/state\n{more}")

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
        inodes = {}
        self._look_into("", found, inodes)
        for path in [path for path in found if LOCK.search(path)]:
            del found[path]
        for directory in [path for path in found if path.endswith(statefiles.DIRECTORY)]:
            gather_store(directory + "/state.db", found)
        for names in inodes.values():
            for path in names if len(names) > 1 else ():
                entry = found[path]
                found[path] = Entry(entry[:4] + (entry.attributes + ((NAMES, tuple(sorted(names))),),
                                                 entry.content))
        return found

    def _look_into(self, directory, found, inodes):
        with os.scandir(self.path(directory)) as entries:
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
                            for name in os.listxattr(file.fileno()) if name.startswith(KEPT_ATTRIBUTES))
                    if status.st_nlink > 1:
                        inodes.setdefault(status.st_ino, []).append(path)
                elif stat.S_ISLNK(status.st_mode):
                    content = os.readlink(each.path)
                found[path] = Entry((stat.S_IFMT(status.st_mode), stat.S_IMODE(status.st_mode),
                                     status.st_uid, status.st_gid, attributes, content))
                if stat.S_ISDIR(status.st_mode):
                    self._look_into(path + "/", found, inodes)

    def put_back(self, wanted, present):
        """From one state to another; both as looked at."""
        self.forget_holders()
        others = {path for path in present.keys() & wanted.keys() if present[path][0] != wanted[path][0]}
        for path in sorted((present.keys() - wanted.keys()) | others, reverse=True):
            full = self.path(path)
            os.rmdir(full) if present[path][0] == stat.S_IFDIR else os.unlink(full)
        changed = [path for path in sorted(wanted, key=lambda path: (not STORE.search(path), path))
                   if not is_same(present.get(path), wanted[path])]
        for path in changed:
            self._write_entry(path, wanted[path])

    def forget_holders(self):
        """Whether the last holder of the lock came to his end decides where the next one looks: all runs are to
        make the same calls."""
        for tree in ("", "tree/"):
            lock = self.path(f"{tree}{statefiles.DIRECTORY}/zet.lock")
            if os.path.isfile(lock):
                os.truncate(lock, 0)

    def _write_entry(self, path, entry):
        full = self.path(path)
        kind, mode, owner, group, attributes, content = entry
        if kind == stat.S_IFDIR:
            os.makedirs(full, exist_ok=True)
        elif isinstance(content, store.Store):
            store.write(full, content)
            return
        elif os.path.lexists(full):
            os.unlink(full)
        if kind == stat.S_IFLNK:
            os.symlink(content, full)
            return
        first = next((names[0] for name, names in attributes if name == NAMES), path)
        if first != path:
            os.link(self.path(first), full)
            return
        if kind == stat.S_IFREG:
            write(full, content)
            for name, value in attributes:
                if name != NAMES:
                    os.setxattr(full, name, value)
        if os.geteuid() == 0:
            os.chown(full, owner, group)
        os.chmod(full, mode)
