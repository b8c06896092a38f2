"""Which faults a command meets."""

import errno
import os

from run import Fault

# The error that fits best comes first; without --long, the others are sampled.
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
    "readlink": (errno.EIO, errno.EACCES, errno.EMFILE),
    "readlinkat": (errno.EIO, errno.EACCES, errno.EMFILE),
    "openat2": (errno.EIO, errno.ENOSYS, errno.EACCES, errno.EMFILE, errno.EAGAIN),
    "statx": (errno.EIO, errno.ENOSYS, errno.EACCES),
    "fchdir": (errno.EIO, errno.EACCES),
    "unshare": (errno.EPERM, errno.ENOMEM),
    "getcwd": (errno.ENOENT, errno.EACCES),
    "fchmodat2": (errno.EIO, errno.ENOSYS, errno.EPERM),
    "mmap": (errno.ENOMEM,),
    "mremap": (errno.ENOMEM,),
    "mprotect": (errno.ENOMEM,),
    "pipe2": (errno.EMFILE,),
    "vfork": (errno.EAGAIN,),
}
CREATION = (errno.ENOSPC, errno.EACCES, errno.EMFILE, errno.EINTR, errno.EROFS)
PARTIAL = ("read", "write", "copy_file_range")
# What decides who may do what with a file: the host is looked at after every call.
OWNERSHIP = ("fchown", "fchmod", "chown", "chmod", "lchown", "fchownat", "fchmodat", "fchmodat2", "fsetxattr",
             "setxattr", "lsetxattr")
# What decides which file it is.
LEADING = ("readlink", "readlinkat", "openat2")
CLEARING = ("unlink", "unlinkat", "rmdir", "getdents64", "openat", "newfstatat", "fcntl", "flock")

# Without --long, one of so many is taken.
STEP_OF_OTHER_ERRORS = 7
STEP_OF_BROKEN_DISKS = 11
STEP_OF_ALLOCATIONS = 9
STEP_OF_STARVATIONS = 15
STEP_OF_EARLY_ALLOCATIONS = 29  # before the command looks at the host, where all commands do the same


def faults(options, calls, allocations, host):
    if options.kind == "kill":
        return [Fault("kill", turn) for turn in range(1, len(calls) + 1)]
    if options.kind == "memory":
        early = next(call.allocations for call in calls if call.path.startswith(host))
        return list(allocation_faults(early, allocations, options.long))
    return list(call_faults(calls, options.long))


def errors_of(call):
    if call.name == "openat" and call.flags & os.O_CREAT:
        return CREATION
    return ERRORS.get(call.name, BROKEN)


def call_faults(calls, is_long):
    for turn, call in enumerate(calls, 1):
        for place, error in enumerate(errors_of(call)):
            if place == 0 or is_long or call.name in OWNERSHIP + LEADING or (turn + place) % STEP_OF_OTHER_ERRORS == 0:
                yield Fault("fail", turn, error)
        # How often a pipe is read depends on when its writer comes to write.
        if call.name in PARTIAL and not call.path.startswith("pipe:"):
            yield Fault("short", turn)
        if call.name in ("write", "copy_file_range", "mkdir") or call.flags & os.O_CREAT:
            yield Fault("full", turn)
        if is_long or turn % STEP_OF_BROKEN_DISKS == 0:
            yield Fault("dead", turn, errno.EIO)


def allocation_faults(early, allocations, is_long):
    if is_long:
        turns = starvations = range(1, allocations + 1)
    else:
        sparse = list(range(1, early, STEP_OF_EARLY_ALLOCATIONS))
        turns = sparse + list(range(early + 1, allocations + 1, STEP_OF_ALLOCATIONS))
        starvations = sparse[::2] + list(range(early + 1, allocations + 1, STEP_OF_STARVATIONS))
    yield from (Fault("memory", turn) for turn in turns)
    yield from (Fault("starve", turn) for turn in starvations)


def is_of_calls(fault):
    return fault.kind not in ("memory", "starve")


def is_watched(options, fault, calls):
    """Whether the host is looked at after every call of the run."""
    if options.kind != "fail" or fault.kind != "fail":
        return False
    return options.long or calls[fault.turn - 1].name in OWNERSHIP


def may_leave_temporaries(fault, calls):
    """Whether what fails may be the clearing away itself."""
    if fault.kind in ("kill", "dead", "memory", "starve"):
        return True
    return fault.kind == "fail" and calls[fault.turn - 1].name in CLEARING
