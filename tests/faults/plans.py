"""Which faults a command meets."""

import errno
import os

from run import Fault

# The error that fits best comes first; without --all, the others are sampled.
NO_ROOM = (errno.ENOSPC, errno.EIO, errno.EACCES)
BROKEN = (errno.EIO, errno.EACCES)
ERRORS = {
    "openat": (errno.EIO, errno.EACCES, errno.EMFILE, errno.EINTR),
    "write": (errno.ENOSPC, errno.EIO, errno.EINTR),
    "copy_file_range": (errno.ENOSPC, errno.EIO, errno.EXDEV),
    "read": (errno.EIO, errno.EINTR),
    "fsync": (errno.EIO, errno.ENOSPC, errno.EINTR),
    "close": (errno.EIO, errno.ENOSPC, errno.EINTR),
    "rename": NO_ROOM,
    "mkdir": NO_ROOM,
    "fchmod": (errno.EIO, errno.EPERM),
    "fchown": (errno.EIO, errno.EPERM),
    "fsetxattr": (errno.ENOSPC, errno.EPERM),
    "fcntl": (errno.ENOLCK, errno.EINTR),
    "flock": (errno.ENOLCK, errno.EINTR),
    "mmap": (errno.ENOMEM,),
    "mremap": (errno.ENOMEM,),
    "mprotect": (errno.ENOMEM,),
    "pipe2": (errno.EMFILE,),
    "vfork": (errno.EAGAIN,),
}
CREATION = (errno.ENOSPC, errno.EACCES, errno.EMFILE, errno.EINTR, errno.EROFS)
PARTIAL = ("read", "write", "copy_file_range")
CLEARING = ("unlink", "unlinkat", "rmdir", "getdents64", "openat", "newfstatat", "fcntl", "flock")

# Without --all, one of so many is taken.
STEP_OF_OTHER_ERRORS = 7
STEP_OF_BROKEN_DISKS = 11
ALLOCATION_RUNS = 150


def faults(kind, calls, allocations, is_all):
    if kind == "kill":
        return [Fault("kill", turn) for turn in range(1, len(calls) + 1)]
    if kind == "memory":
        return list(allocation_faults(allocations, is_all))
    return list(call_faults(calls, is_all))


def errors_of(call):
    if call.name == "openat" and call.flags & os.O_CREAT:
        return CREATION
    return ERRORS.get(call.name, BROKEN)


def call_faults(calls, is_all):
    for turn, call in enumerate(calls, 1):
        for place, error in enumerate(errors_of(call)):
            if place == 0 or is_all or (turn + place) % STEP_OF_OTHER_ERRORS == 0:
                yield Fault("fail", turn, error)
        if call.name in PARTIAL:
            yield Fault("short", turn)
        if call.name in ("write", "copy_file_range", "mkdir") or call.flags & os.O_CREAT:
            yield Fault("full", turn)
        if is_all or turn % STEP_OF_BROKEN_DISKS == 0:
            yield Fault("dead", turn, errno.EIO)


def allocation_faults(allocations, is_all):
    step = 1 if is_all else max(1, allocations // ALLOCATION_RUNS)
    for turn in range(1, allocations + 1, step):
        yield Fault("memory", turn)
    for turn in range(1, allocations + 1, step * 4):
        yield Fault("starve", turn)


def may_leave_temporaries(fault, calls):
    """Whether what fails may be the clearing away itself."""
    if fault.kind in ("kill", "dead", "memory", "starve"):
        return True
    return fault.kind == "fail" and calls[fault.turn - 1].name in CLEARING
