"""Is the system's journal while a command runs: journal.py SOCKET COMMAND... prints the fields that arrive, one a line."""
import socket
import subprocess
import sys

receiver = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
receiver.bind(sys.argv[1])
receiver.setblocking(False)
status = subprocess.run(sys.argv[2:], stdout=subprocess.DEVNULL, check=False).returncode


def fields(record):
    while record:
        line, _, record = record.partition(b"\n")
        name, equals, value = line.partition(b"=")
        if not equals:
            size = int.from_bytes(record[:8], "little")
            value, record = record[8 : 8 + size], record[8 + size + 1 :]
        yield f"{name.decode()}={value.decode()!r}"


try:
    while True:
        print(*fields(receiver.recv(1 << 20)), "--", sep="\n")
except BlockingIOError:
    pass
sys.exit(status)
