"""What another user does to names in a directory where he may."""

import os

from host import OTHER_OWNER as ATTACKER
from statefiles import RESERVE, TEMPORARY


def take_away(path):
    try:
        os.unlink(path)
    except FileNotFoundError:
        pass


def link_to(name):
    def attack(path, outside, _held):
        take_away(path)
        os.symlink(f"{outside}/{name}", path)
    return attack


def second_name(path, outside, _held):
    take_away(path)
    os.link(f"{outside}/secret.conf", path)


def pipe(path, _outside, _held):
    take_away(path)
    os.mkfifo(path, 0o666)


def held_open(path, _outside, held):
    take_away(path)
    held.append(os.open(path, os.O_RDWR | os.O_CREAT, 0o666))
    os.fchmod(held[-1], 0o666)


def swap_directory(path, outside, _held):
    directory = os.path.dirname(path)
    os.rename(directory, directory + ".away")
    os.symlink(outside, directory)


def swap_and_back(path, outside, held):
    directory = os.path.dirname(path)
    if os.path.islink(directory):
        os.unlink(directory)
        os.rename(directory + ".away", directory)
    else:
        swap_directory(path, outside, held)


def link_and_back(path, outside, _held):
    if os.path.islink(path):
        os.unlink(path)
        os.rename(path + ".mine", path)
    else:
        os.rename(path, path + ".mine")
        os.symlink(f"{outside}/secret.conf", path)


class Attack:
    def __init__(self, name, suffix, act, is_repeated=False):
        self.name = name
        self.suffix = suffix
        self.act = act
        self.is_repeated = is_repeated


KINDS = (("link", link_to("secret.conf")), ("link-to-new", link_to("new.conf")), ("hard-link", second_name),
         ("pipe", pipe), ("held-open", held_open))
ATTACKS = (
    Attack("file-link", "", link_to("secret.conf")),
    Attack("file-hard-link", "", second_name),
    Attack("file-pipe", "", pipe),
    *(Attack(f"temporary-{name}", TEMPORARY, act) for name, act in KINDS),
    *(Attack(f"reserve-{name}", RESERVE, act) for name, act in KINDS),
    Attack("reserve-temporary-link", RESERVE + TEMPORARY, link_to("secret.conf")),
    Attack("directory", "", swap_directory),
    Attack("directory-to-and-fro", "", swap_and_back, is_repeated=True),
    Attack("file-to-and-fro", "", link_and_back, is_repeated=True),
)


def as_attacker(function, *arguments):
    """Whether he was let. What he may do, the system decides by the effective user."""
    os.setgroups([])
    os.setegid(ATTACKER)
    os.seteuid(ATTACKER)
    try:
        function(*arguments)
        return True
    except OSError:
        return False
    finally:
        os.seteuid(0)
        os.setegid(0)
