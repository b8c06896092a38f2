#!/usr/bin/env python3
"""Tells which functions of the public headers no library exports.

declared.py HEADERS <NAMES: HEADERS is the directory of the headers, NAMES are the demangled names that the libraries export.
"""
import collections
import pathlib
import re
import sys

COMMENT = re.compile(r"//.*|^#.*", re.MULTILINE)
BODY = re.compile(r"\{[^{}]*\}")
INLINE = " = default;"
FUNCTION = re.compile(r"\bZET_API\s+[^;{}()]*?\b(\w+)\s*\(")
CLASS = re.compile(r"\b(class|struct) ZET_API (\w+)[^;{]*\{\n(.*?)^\};", re.DOTALL | re.MULTILINE)
ACCESS = re.compile(r"\b(public|protected|private):")
CALLED = re.compile(r"(~?\w+|operator[^\s(]+)\s*\(")
NOT_COMPILED = re.compile(r"=\s*(0|default|delete)\s*$|\bImplementation\b|^\s*(using|friend)\b")


def public_part(kind, body):
    parts = ACCESS.split(body)
    accessible = [parts[0]] if kind == "struct" else []
    return "".join(accessible + [text for access, text in zip(parts[1::2], parts[2::2]) if access == "public"])


def members(kind, body):
    """What others may call and no header has the code of."""
    body = BODY.sub(INLINE, BODY.sub(INLINE, body))
    for declaration in public_part(kind, body).split(";"):
        found = CALLED.search(declaration)
        if found and not NOT_COMPILED.search(declaration):
            yield found.group(1)


def declared(directory):
    """But for what a module has to give, which no library has."""
    for header in sorted(set(directory.rglob("*.h")) - set(directory.rglob("ZETModule.h"))):
        text = COMMENT.sub("", header.read_text(encoding="utf-8"))
        space = "ZET::Deploy::" if header.parent.name == "deploy" else "ZET::"
        for name in FUNCTION.findall(text):
            yield space + name
        for kind, name, body in CLASS.findall(text):
            for member in members(kind, body):
                yield f"{space}{name}::{member}"


def exported(names):
    """Without their arguments, which tell functions of one name apart."""
    return (re.split(r"[(@]", name.strip())[0].replace("[abi:cxx11]", "") for name in set(names))


def main():
    there = collections.Counter(exported(sys.stdin))
    wanted = collections.Counter(declared(pathlib.Path(sys.argv[1])))
    for name, count in wanted.items():
        if there[name] < count:
            print(f"{name}: {count} declared, {there[name]} exported")
    print(f"of {len(wanted)} names, those above are missing")


main()
