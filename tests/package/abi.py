#!/usr/bin/env python3
"""Cuts what abidw tells of a library down to what this product promises, in a form to read and to keep.

abi.py <FULL >SHORT: of the types of others (the standard library's above all) name and size stay; what no exported
function and no public class leads to goes.
"""
import os
import sys
import xml.etree.ElementTree as ElementTree

OWN = "ZET"
SPACES = ("namespace-decl", "abi-instr")
REFERENCES = ("type-id", "naming-typedef-id")


def declarations(parent, spaces):
    """The declarations below an element, each with the namespaces that it is in."""
    for child in parent:
        if child.tag in SPACES:
            inner = spaces + [child.get("name")] if child.tag == "namespace-decl" else spaces
            yield from declarations(child, inner)
        else:
            yield child, spaces


def empty(declaration):
    for child in list(declaration):
        declaration.remove(child)
    declaration.text = None


def cut_foreign(declaration, spaces):
    """Of somebody else's class nothing but name and size is part of the promise."""
    if declaration.tag in ("class-decl", "union-decl") and OWN not in spaces:
        empty(declaration)


def cut_hidden(declaration):
    """A class may have operations that the library keeps to itself, and other classes inside."""
    for member in list(declaration):
        function = member.find("function-decl")
        has_slot = member.get("vtable-offset", "-1") != "-1"
        if function is not None and not function.get("elf-symbol-id") and not has_slot:
            declaration.remove(member)
    for inner in declaration.iter("class-decl"):
        if inner.get("is-declaration-only"):
            empty(inner)


def references(declaration):
    return {element.get(name) for element in declaration.iter() for name in REFERENCES if element.get(name)}


def identities(declaration):
    return {element.get("id") for element in declaration.iter() if element.get("id")}


def is_promised(declaration):
    return any(element.get("elf-symbol-id") for element in declaration.iter())


def kept(known):
    """What is exported, and all types that this leads to."""
    owners = {identity: each for each in known for identity in identities(each)}
    waiting = [each for each in known if is_promised(each)]
    found = set()
    while waiting:
        declaration = waiting.pop()
        if declaration not in found:
            found.add(declaration)
            waiting += [owners[each] for each in references(declaration) if each in owners]
    return found


def prune(parent, keep):
    for child in list(parent):
        if child.tag in SPACES:
            prune(child, keep)
        if child not in keep and (child.tag not in SPACES or len(child) == 0):
            parent.remove(child)


def shorten(corpus):
    known = []
    for unit in corpus.iter("abi-instr"):
        unit.set("path", os.path.basename(unit.get("path")))
        for declaration, spaces in declarations(unit, []):
            cut_foreign(declaration, spaces)
            cut_hidden(declaration)
            known.append(declaration)
    keep = kept(known)
    for unit in list(corpus.iter("abi-instr")):
        prune(unit, keep)
        if len(unit) == 0:
            corpus.remove(unit)


def main():
    tree = ElementTree.parse(sys.stdin)
    shorten(tree.getroot())
    ElementTree.indent(tree, " ")
    tree.write(sys.stdout, encoding="unicode")
    print()


main()
