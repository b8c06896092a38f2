"""Sits at a terminal of a width: asks for help for each command, and tells where the pager begins.

pages.py WIDTH PROGRAM COMMAND...    each "COMMAND: LINE", the line of the page that is the first on the screen
"""
import fcntl
import os
import pty
import re
import select
import struct
import subprocess
import sys
import termios

PATIENCE = 20


def shown_first(program, words, width):
    child, terminal = pty.fork()
    if child == 0:
        os.execv(program, [program, "help", *words])
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, width, 0, 0))
    text = b""
    places = []
    while select.select([terminal], [], [], 0.4 if places else PATIENCE)[0]:
        try:
            text += os.read(terminal, 65536)
        except OSError:
            break
        places = re.findall(rb"\(1\) line (\d+)", text)
    os.write(terminal, b"q")
    os.close(terminal)
    os.waitpid(child, 0)
    if not places:
        sys.exit(f"help {' '.join(words)}: the pager tells no line, but {text[-500:]!r}")
    return int(places[-1])


def main():
    width, program = int(sys.argv[1]), sys.argv[2]
    os.environ.update(MANWIDTH=str(width), TERM="xterm", MANPAGER="less", COLUMNS=str(width))
    page = subprocess.run(["man", os.path.basename(program)], check=True, capture_output=True, text=True)
    lines = re.sub(".\b", "", page.stdout).split("\n")
    for command in sys.argv[3:]:
        print(f"{command}: {lines[shown_first(program, command.split(), width) - 1]}")


main()
