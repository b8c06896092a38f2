"""Plays the sessions of a document on a host tree: sessions.py SESSIONS PROGRAMS ROOT.

A session is "$ command", then what it prints. A line "..." stands for any lines; times, users and numbers of changes may be others.
"""
import re
import subprocess
import sys

sessions, programs, root = sys.argv[1:]
ABSOLUTE = re.compile(r"(?<![\w.$/])/(etc|usr|var)/")
VARYING = [(re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d"), "TIME"), (re.compile(r"^\d+  "), "N  "), (re.compile(r"TIME  .*?  (client|server)"), r"TIME  \1"),
           (re.compile(r'change \d+ \("undo \d+"'), 'change N ("undo N"'), (re.compile(r"  # .*$"), "")]


def same(line):
    for pattern, text in VARYING:
        line = pattern.sub(text, line)
    return line.rstrip()


def play(command):
    words = command
    if words.startswith("zet-"):
        program, rest = words.split(" ", 1)
        line = f"{programs}/{program} --root {root} {rest}"
    else:
        line = ABSOLUTE.sub(rf"{root}/\1/", words)
    result = subprocess.run(line, shell=True, capture_output=True, text=True, check=False)
    if result.returncode not in (0, 3):
        sys.exit(f"$ {command}\nends with {result.returncode}: {result.stderr}")
    return [same(text) for text in (result.stdout + result.stderr).replace(f"--root {root} ", "").replace(root, "").split("\n")]


def compare(command, wanted, actual):
    position, may_skip = 0, False
    for line in wanted:
        if line.strip() == "...":
            may_skip = True
            continue
        found = [i for i in range(position, len(actual) if may_skip else min(position + 1, len(actual))) if actual[i] == same(line)]
        if not found:
            sys.exit(f"$ {command}\nis to print: {same(line)}\nprints: " + "\n        ".join(actual))
        position, may_skip = found[0] + 1, False


entries = []
with open(sessions, encoding="utf-8") as text:
    for line in text.read().split("\n"):
        if line.startswith("$ "):
            entries.append((line[2:], []))
        elif line or (entries and entries[-1][1]):
            entries[-1][1].append(line)
for command, wanted in entries:
    while wanted and not wanted[-1]:
        wanted.pop()
    compare(command, wanted, play(command))
print(f"{len(entries)} commands")
