"""Disks that are full: a file system of the checker's own, with so much room and no more."""

import ctypes
import os
import subprocess
import sys

import verdict
from run import NotPossible

MS_REMOUNT = 32
ROOM = 1 << 24  # bytes, until it is made scarce
NAMES = 1 << 12
ENOUGH = 3  # runs in a row that succeed
MOST_LEFT = 200  # pages or names, which is more than any of the commands takes
INSIDE = "ZET_FAULTS_OWN_MOUNTS"

libc = ctypes.CDLL(None, use_errno=True)


def enter_own_mounts(is_needed=True):
    """Starts anew where nobody else sees what is mounted. Whether it could, where it is not needed."""
    if INSIDE in os.environ:
        return True
    trial = subprocess.run(["unshare", "--mount", "mount", "-t", "tmpfs", "zet-faults", "/mnt"],
                           capture_output=True, text=True, check=False)
    if trial.returncode != 0 and not is_needed:
        return False
    if trial.returncode != 0:
        print(f"skipped: no file system can be mounted here to be filled: {trial.stderr.strip()}")
        sys.exit(77)
    os.environ[INSIDE] = "yes"
    sys.stdout.flush()
    os.execvp("unshare", ["unshare", "--mount", sys.executable, "-B"] + sys.argv)


def hide_temporary_files(needed):
    """The commands look for what killed runs left in these directories: what others leave there meanwhile would
    change which calls they make. A directory with something that is needed stays."""
    for directory, mode in (("/run", 755), ("/dev/shm", 1777), ("/tmp", 1777)):
        if not any(os.path.realpath(each).startswith(directory + "/") for each in needed):
            mount(directory, options=f"mode={mode}")


def mount(path, flags=0, options=f"mode=755,size={ROOM},nr_inodes={NAMES}"):
    os.makedirs(path, exist_ok=True)
    if libc.mount(b"zet-faults", path.encode(), b"tmpfs", flags, options.encode()) != 0:
        raise NotPossible(f"{path}: cannot be mounted: {os.strerror(ctypes.get_errno())}")


def unmount(path):
    libc.umount(path.encode())


def make_scarce(path, resource, left):
    status = os.statvfs(path)
    if resource == "room":
        used = status.f_blocks - status.f_bfree
        mount(path, MS_REMOUNT, f"size={(used + left) * status.f_frsize}")
    else:
        mount(path, MS_REMOUNT, f"nr_inodes={status.f_files - status.f_ffree + left}")


def make_plenty(path):
    mount(path, MS_REMOUNT)


def check(scenario, checker, host):
    return sum(check_resource(scenario, checker, host, resource) for resource in ("room", "names"))


def check_resource(scenario, checker, host, resource):
    failures = successes = 0
    for left in range(MOST_LEFT):
        make_scarce(host.root, resource, left)
        result = checker.run()
        now = host.look()
        make_plenty(host.root)
        found = verdict.of_exit(result, False) + verdict.of_left_overs(now) + checker.judge(result, now)
        if found:
            failures += 1
            print(f"{scenario.name}: {resource} left for {left}")
            print("".join(f"    {each}\n" for each in found) + f"    it said {result.errors!r}")
        successes = successes + 1 if result.status == 0 else 0
        if successes == ENOUGH:
            return failures
    print(f"{scenario.name}: fails with {resource} left for {MOST_LEFT}: {result.errors}")
    return failures + 1
