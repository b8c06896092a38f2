"""What the product recorded on a host, read from the store's files. Only this file knows its tables."""

import hashlib
import os
import re
import sqlite3
import tempfile

SUFFIXES = ("", "-wal", "-shm", "-journal", "-last")
LAST = re.compile(rb"(\d{20}) \1\n")
# What is the host's, and not only remembered: targets and edits.
KINDS = (0, 1)
KNOWN = ("SELECT path, kind, present, mode, owner, grp, size, digest, roles, named_role, template"
         " FROM known JOIN states ON known.state = states.id")
OPEN = ("SELECT path, coalesce(was.digest, x''), becomes.present, becomes.digest FROM entries JOIN files ON files.entry = entries.number"
        " LEFT JOIN states AS was ON files.before = was.id JOIN states AS becomes ON files.after = becomes.id"
        " WHERE outcome = 0")
GIVEN = "SELECT coalesce(max(seq), 0) FROM sqlite_sequence WHERE name = 'entries'"

_read = {}  # what files tell that were read already, by their digest: the files themselves are large


class Store:
    """The bytes of the store's files, equal to others that tell the same."""

    def __init__(self, files):
        self.files = files  # by suffix
        key = _digest(files)
        if key not in _read:
            _read[key] = _contents(files)
        self.known, self.open, self.damage, self.texts = _read[key]

    def __eq__(self, other):
        return isinstance(other, Store) and self._told() == other._told()

    def __hash__(self):
        return hash(self._told())

    def _told(self):
        return self.known, self.open, self.damage

    def __repr__(self):
        return f"store of {sorted(self.known)}, open {sorted(self.open)}, {self.damage or 'sound'}"

    def is_between(self, old, new):
        """Each file is known as before or as it was to become, or not yet."""
        return not self.damage and self.known <= old.known | new.known

    def tells_same_texts(self, other):
        """Of files that may have other owners and modes."""
        texts, others = ({(row[0], row[1], row[2], row[7]) for row in each.known} for each in (self, other))
        return not self.damage and texts == others


def _digest(files):
    digest = hashlib.sha256()
    for suffix, data in sorted(files.items()):
        if suffix != "-shm":
            digest.update(f"{suffix} {len(data)}\n".encode())
            digest.update(data)
    return digest.digest()


def _contents(files):
    """What is known of files, what was about to be written, what is damaged, and how many texts are kept."""
    told = LAST.fullmatch(files.get("-last", b""))
    last = int(told[1]) if told else 0  # a number that is cut short tells nothing
    if not files.get("") and not files.get("-wal"):
        return frozenset(), frozenset(), "all entries are gone" if last else "", 0
    with tempfile.TemporaryDirectory(dir="/dev/shm" if os.path.isdir("/dev/shm") else None) as directory:
        for suffix, data in files.items():
            if suffix not in ("-shm", "-last"):
                with open(f"{directory}/state.db{suffix}", "wb") as file:
                    file.write(data)
        database = sqlite3.connect(f"{directory}/state.db")
        try:
            return _tables(database, last)
        except sqlite3.DatabaseError as error:
            return frozenset(), frozenset(), str(error), 0
        finally:
            database.close()


def _tables(database, last):
    damage = database.execute("PRAGMA integrity_check").fetchone()[0]
    if database.execute("SELECT count(*) FROM sqlite_schema").fetchone()[0] == 0:
        return frozenset(), frozenset(), "all entries are gone" if last else "", 0
    if damage == "ok" and database.execute(GIVEN).fetchone()[0] < last:
        damage = f"entries up to {last} are gone"
    known = frozenset(row for row in database.execute(KNOWN) if row[1] in KINDS)
    texts = database.execute("SELECT count(*) FROM texts").fetchone()[0]
    return known, frozenset(database.execute(OPEN)), "" if damage == "ok" else damage, texts


def write(path, store):
    """In the place of whatever is there."""
    for suffix in SUFFIXES:
        if os.path.lexists(path + suffix):
            os.unlink(path + suffix)
    for suffix, data in store.files.items():
        descriptor = os.open(path + suffix, os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o600)
        with open(descriptor, "wb") as file:
            file.write(data)
