"""Sits at a terminal: types a line into a shell, presses the tab key, and prints what the shell shows then.

shell.py LINE COMMAND...
"""
import os
import pty
import re
import select
import struct
import sys
import termios
import fcntl
import time

PROMPT = b"@ready@ "
QUIET = 0.25  # seconds in which nothing more is shown
PATIENCE = 15


def read_until(terminal, is_enough):
    text = b""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        ready, _, _ = select.select([terminal], [], [], QUIET)
        if not ready:
            if is_enough(text):
                return text
            continue
        try:
            text += os.read(terminal, 65536)
        except OSError:
            return text
    sys.exit(f"nothing came for {PATIENCE} seconds but {text!r}")


def main():
    line, command = sys.argv[1].encode(), sys.argv[2:]
    child, terminal = pty.fork()
    if child == 0:
        os.execvp(command[0], command)
    fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 200, 200, 0, 0))
    read_until(terminal, lambda text: text.rstrip(b"\r").endswith(PROMPT) or PROMPT in text)
    os.write(terminal, line + b"\t")
    shown = read_until(terminal, lambda text: len(text) > len(line))
    os.write(terminal, b"\x15exit\r")  # the line is taken back
    os.close(terminal)
    os.waitpid(child, 0)
    text = re.sub(rb"\x1b\[[0-9;?]*[a-zA-Z]|\x1b[=>]|\x07|\x1b\][^\x07]*\x07", b"", shown).decode()
    print(re.sub(r"\r+\n?|\n", "\n", text).replace("@ready@ ", ""))


main()
