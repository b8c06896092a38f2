"""Runs a command with a fault, and reads what the injector counted."""

import errno
import os
import signal
import struct
import time
from collections import namedtuple

Result = namedtuple("Result", "status output errors is_met")
Call = namedtuple("Call", "name flags allocations path")
Fault = namedtuple("Fault", "kind turn error", defaults=(0, 0))

CANNOT_INJECT = 99
LONGEST_RUN = 60  # s

HOOKS = (900, 901)  # descriptors of the command, by which it stops for its driver
MESSAGE = struct.Struct("2Q")

HEADER = struct.Struct("3Q")
ENTRY = struct.Struct("2iQ240s")

# Of x86-64; other calls go by their number.
NAMES = {
    0: "read", 1: "write", 2: "open", 3: "close", 4: "stat", 5: "fstat", 6: "lstat", 8: "lseek", 9: "mmap",
    10: "mprotect", 16: "ioctl", 17: "pread64", 18: "pwrite64", 20: "writev", 21: "access", 25: "mremap",
    32: "dup", 40: "sendfile", 58: "vfork", 72: "fcntl", 73: "flock", 74: "fsync", 75: "fdatasync",
    77: "ftruncate", 79: "getcwd", 80: "chdir", 81: "fchdir", 82: "rename",
    83: "mkdir", 84: "rmdir", 86: "link", 87: "unlink", 88: "symlink",
    89: "readlink", 90: "chmod", 91: "fchmod", 92: "chown", 93: "fchown", 137: "statfs", 162: "sync",
    188: "setxattr", 189: "lsetxattr", 190: "fsetxattr", 191: "getxattr", 193: "fgetxattr",
    194: "listxattr", 196: "flistxattr",
    199: "fremovexattr", 217: "getdents64", 257: "openat", 258: "mkdirat", 262: "newfstatat", 263: "unlinkat",
    260: "fchownat", 264: "renameat", 265: "linkat", 266: "symlinkat", 267: "readlinkat", 268: "fchmodat",
    269: "faccessat", 272: "unshare", 285: "fallocate", 293: "pipe2",
    316: "renameat2", 319: "memfd_create", 326: "copy_file_range", 332: "statx", 437: "openat2", 439: "faccessat2",
    452: "fchmodat2",
}


# Calls that take a descriptor and look up no name.
WITHOUT_NAMES = {"read", "write", "close", "fstat", "lseek", "pread64", "pwrite64", "writev", "fsync", "fdatasync",
                 "ftruncate", "fchmod", "fchown", "getdents64", "fcntl", "flock", "ioctl", "fsetxattr", "fgetxattr",
                 "flistxattr", "fstatfs", "fremovexattr", "sendfile", "copy_file_range", "dup", "fchdir", "mmap",
                 "mremap", "mprotect", "pipe2", "vfork"}


def looks_up(call):
    """Whether the call looks for a file by a name."""
    return call.name not in WITHOUT_NAMES


def describe(fault):
    text = f"{fault.kind} {fault.turn}"
    return text + (f" {errno.errorcode[fault.error]}" if fault.error else "")


class Runner:
    """The commands of one build, on one host. What they print goes through files beside the host."""

    def __init__(self, programs, injector, base):
        self._programs = programs
        self._injector = injector
        self._log = base + "/log"
        self.longest_run = LONGEST_RUN
        self.usage = None  # of the last run
        self.elapsed = 0.0  # s, likewise
        self._streams = [os.open(f"{base}/{name}", os.O_RDWR | os.O_CREAT | os.O_APPEND | os.O_CLOEXEC)
                         for name in ("output", "errors")]
        self._environment = {"PATH": "/usr/bin:/bin", "LC_ALL": "C", "TZ": "UTC",
                             "TMPDIR": base + "/host/tmp", "XDG_RUNTIME_DIR": base + "/host/run"}

    def environment(self, fault, hook=None):
        added = {}
        if fault:
            plan = f"{fault.kind} {fault.turn} {fault.error}"
            added = {"LD_PRELOAD": self._injector, "ZET_FAULT": plan, "ZET_FAULT_LOG": self._log}
        if fault and hook:
            added["ZET_FAULT_HOOK"] = f"{HOOKS[0]} {HOOKS[1]} {int(hook.is_watching)}"
        return {**self._environment, **added}

    def command(self, program, arguments):
        return [f"{self._programs}/{program}"] + arguments

    def run(self, program, arguments, fault=None, hook=None):
        """With a hook, it is called with the turn and whether the call was done: before each call from the
        turn of a fault "stop" on, and, if it is watching, after each call that may have changed something."""
        for stream in self._streams:
            os.ftruncate(stream, 0)
        begin = time.monotonic()
        process, pipes = self._start(program, arguments, fault, hook)
        signal.signal(signal.SIGALRM, lambda *_: os.kill(process, signal.SIGABRT))
        signal.alarm(self.longest_run)
        if hook:
            serve(pipes, hook)
        _, status, self.usage = os.wait4(process, 0)
        status = os.waitstatus_to_exitcode(status)
        self.elapsed = time.monotonic() - begin
        signal.alarm(0)
        output, errors = (os.pread(stream, 1 << 20, 0).decode(errors="replace") for stream in self._streams)
        if status == CANNOT_INJECT:
            raise NotPossible(errors)
        return Result(status, output, errors, fault is not None and self._header()[2] != 0)

    def counts(self):
        """How many calls and allocations the run before made, if it was to meet something."""
        return self._header()[:2]

    def _start(self, program, arguments, fault, hook):
        command = self.command(program, arguments)
        actions = [(os.POSIX_SPAWN_DUP2, stream, number) for number, stream in enumerate(self._streams, 1)]
        pipes = []
        if hook:
            from_command, to_driver = os.pipe()
            from_driver, to_command = os.pipe()
            actions += [(os.POSIX_SPAWN_DUP2, to_driver, HOOKS[0]),
                        (os.POSIX_SPAWN_DUP2, from_driver, HOOKS[1])]
            pipes = [from_command, to_command]
        process = os.posix_spawn(command[0], command, self.environment(fault, hook), file_actions=actions)
        for descriptor in (to_driver, from_driver) if hook else ():
            os.close(descriptor)
        return process, pipes

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


def serve(pipes, hook):
    """Until the command ends."""
    from_command, to_command = pipes
    try:
        while message := os.read(from_command, MESSAGE.size):
            hook(*MESSAGE.unpack(message))
            os.write(to_command, b".")
    except BrokenPipeError:
        pass
    finally:
        os.close(from_command)
        os.close(to_command)


class NotPossible(Exception):
    """This machine cannot do what the faults need."""
