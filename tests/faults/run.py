"""Runs a command with a fault, and reads what the injector counted."""

import errno
import os
import signal
import struct
from collections import namedtuple

Result = namedtuple("Result", "status output errors is_met")
Call = namedtuple("Call", "name flags allocations path")
Fault = namedtuple("Fault", "kind turn error", defaults=(0, 0))

CANNOT_INJECT = 99
LONGEST_RUN = 60  # s

HEADER = struct.Struct("3Q")
ENTRY = struct.Struct("2iQ240s")

# Of x86-64; other calls go by their number.
NAMES = {
    0: "read", 1: "write", 2: "open", 3: "close", 4: "stat", 5: "fstat", 6: "lstat", 8: "lseek", 9: "mmap",
    10: "mprotect", 16: "ioctl", 17: "pread64", 18: "pwrite64", 20: "writev", 21: "access", 25: "mremap",
    32: "dup", 40: "sendfile", 58: "vfork", 72: "fcntl", 73: "flock", 74: "fsync", 75: "fdatasync",
    77: "ftruncate", 82: "rename", 83: "mkdir", 84: "rmdir", 86: "link", 87: "unlink", 88: "symlink",
    89: "readlink", 90: "chmod", 91: "fchmod", 92: "chown", 93: "fchown", 137: "statfs", 162: "sync",
    190: "fsetxattr", 191: "getxattr", 193: "fgetxattr", 194: "listxattr", 196: "flistxattr",
    199: "fremovexattr", 217: "getdents64", 257: "openat", 258: "mkdirat", 262: "newfstatat", 263: "unlinkat",
    264: "renameat", 267: "readlinkat", 268: "fchmodat", 269: "faccessat", 285: "fallocate", 293: "pipe2",
    316: "renameat2", 326: "copy_file_range", 332: "statx", 439: "faccessat2",
}


def describe(fault):
    text = f"{fault.kind} {fault.turn}"
    return text + (f" {errno.errorcode[fault.error]}" if fault.error else "")


class Runner:
    """The commands of one build, on one host. What they print goes through files beside the host."""

    def __init__(self, programs, injector, base):
        self._programs = programs
        self._injector = injector
        self._log = base + "/log"
        self._streams = [os.open(f"{base}/{name}", os.O_RDWR | os.O_CREAT | os.O_APPEND | os.O_CLOEXEC)
                         for name in ("output", "errors")]
        self._environment = {"PATH": "/usr/bin:/bin", "LC_ALL": "C", "TZ": "UTC",
                             "TMPDIR": base + "/host/tmp", "XDG_RUNTIME_DIR": base + "/host/run"}

    def environment(self, fault):
        added = {}
        if fault:
            plan = f"{fault.kind} {fault.turn} {fault.error}"
            added = {"LD_PRELOAD": self._injector, "ZET_FAULT": plan, "ZET_FAULT_LOG": self._log}
        return {**self._environment, **added}

    def command(self, program, arguments):
        return [f"{self._programs}/{program}"] + arguments

    def run(self, program, arguments, fault=None):
        for stream in self._streams:
            os.ftruncate(stream, 0)
        command = self.command(program, arguments)
        actions = [(os.POSIX_SPAWN_DUP2, stream, number) for number, stream in enumerate(self._streams, 1)]
        process = os.posix_spawn(command[0], command, self.environment(fault), file_actions=actions)
        signal.signal(signal.SIGALRM, lambda *_: os.kill(process, signal.SIGABRT))
        signal.alarm(LONGEST_RUN)
        status = os.waitstatus_to_exitcode(os.waitpid(process, 0)[1])
        signal.alarm(0)
        output, errors = (os.pread(stream, 1 << 20, 0).decode(errors="replace") for stream in self._streams)
        if status == CANNOT_INJECT:
            raise NotPossible(errors)
        return Result(status, output, errors, fault is not None and self._header()[2] != 0)

    def _header(self):
        with open(self._log, "rb", buffering=0) as file:
            return HEADER.unpack(file.read(HEADER.size))

    def counted(self):
        """The calls and the number of allocations of the run before."""
        with open(self._log, "rb") as file:
            calls, allocations, _ = HEADER.unpack(file.read(HEADER.size))
            entries = [ENTRY.unpack(file.read(ENTRY.size)) for _ in range(calls)]
        named = [Call(NAMES.get(number, f"call {number}"), flags, before,
                      path.split(b"\0")[0].decode(errors="replace"))
                 for number, flags, before, path in entries]
        return named, allocations


class NotPossible(Exception):
    """This machine cannot do what the faults need."""
