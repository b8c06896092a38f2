"""What the product keeps about a host: the names of its files. Only this file knows them."""

import re

DIRECTORY = "state"  # of the host of the tests, ZET_VAR_LIB_DIR

STORE = re.compile(r"state/state\.db$")
STATUS = re.compile(r"state/zet-(server|client|client-fs)\.status$")
LOCK = re.compile(r"(^|/)state/zet\.lock$")
# By what is broken in them: a record may be lost without losing an original; nobody may write without the lock.
RECORDS = ("state.db", "state.db-wal")
JOURNALS = ("state.db-shm", "state.db-journal", "state.db-last")  # nothing is lost with them
STATUSES = ("zet-server.status",)
LOCKS = ("zet.lock",)

RESERVE = ".before_zet"
ABSENCE = ".no_file_before_zet"
TEMPORARY = ".tmp"
COMPANIONS = (RESERVE, ABSENCE)

STAGING = re.compile(r"zet-staging\.\w+")
# Whatever stays where only temporary files are made is one.
LEFT_OVER = re.compile(r"^(tmp|run)/|\.tmp$|(^|/)zet-staging\.")


def is_left_over(path):
    return LEFT_OVER.search(path) is not None
