"""A language for tests: the texts of the catalogues in letters of another alphabet, so that what is English is no text of any.

    foreign.py write <TEMPLATE >CATALOGUE   of a template of a catalogue, filled with its own texts
    foreign.py find <OUTPUT WORD...         the lines that hold English, of what commands said; a WORD is one in any language
"""
import os
import re
import sys

CAPITALS, SMALL = 0x1D670, 0x1D68A
# The places of values, and what an escape sequence stands for.
KEPT = re.compile(r"%(?:zu|[sdumc%])|\$\{\w*\}|\\.")
# What nobody translates: quoted texts, paths and names with them, options, assignments, placeholders, reasons of the
# system (whose texts have catalogues of their own), times.
NAMES = re.compile(
    r'"[^"]*"|\'[^\']*\'|\[[^\]]*\]|\S*/\S*|\S+\.\S+|(?<!\w)--?[A-Za-z][\w-]*(?:=\S*)?|\w+=\S*|\$\{\w+\}|'
    + "|".join(re.escape(os.strerror(number)) for number in range(1, 134)))
WORD = re.compile(r"(?<![\w^-])[A-Za-z][a-z-]+(?!\w)")


def foreign(text):
    def letter(c):
        if "A" <= c <= "Z":
            return chr(CAPITALS + ord(c) - ord("A"))
        return chr(SMALL + ord(c) - ord("a")) if "a" <= c <= "z" else c

    end, result = 0, ""
    for kept in KEPT.finditer(text):
        result += "".join(map(letter, text[end:kept.start()])) + kept.group()
        end = kept.end()
    return result + "".join(map(letter, text[end:]))


def write(lines):
    texts, is_translation = 0, False
    for line in lines:
        entry = re.match(r'(?:(msg\w+)(?:\[\d\])? )?"(.*)"$', line)
        if entry and entry[1]:
            texts += entry[1] == "msgid"
            is_translation = entry[1] == "msgstr" and texts > 1
        if entry and is_translation:
            line = line[:line.index('"')] + '"' + foreign(entry[2]) + '"\n'
        print(line, end="")


def find(lines, words):
    command, is_diff = "", False
    for line in lines:
        is_diff = line.startswith(("--- ", "@@")) or is_diff and line.startswith((" ", "+", "-", "\\"))
        if line.startswith("$ "):
            command = line
        elif is_diff:
            continue
        elif left := [word for word in WORD.findall(NAMES.sub(" ", line)) if word not in words]:
            print(f"{' '.join(left)}: {line.rstrip()}\n    of: {command.rstrip()}")


if sys.argv[1] == "write":
    write(sys.stdin)
else:
    find(sys.stdin, set(sys.argv[2:]))
