#!/usr/bin/env python3
"""Generates a tree of galaxy maps in an old format, and the templates that convert them.

The output depends on the arguments alone.

    make_tree.py TREE DATAFOLDER [--maps N] [--folders N] [--lines N] [--sections N] [--known N]
"""
import argparse
import os
import random

OLD, CURRENT = 9, 13
ENDINGS = (" #", " ##", " &", " 0")


def write(path, lines):
    with open(path, "wb") as file:
        file.write(("\r\n".join(lines) + "\r\n").encode())


class Section:
    """A section: its recognition lines, and its number of lines in both formats."""

    def __init__(self, number, known, chance):
        self.name = f"section{number}"
        self.known = [f"\t{self.name}key{i}" for i in range(known)]
        self.old_count = chance.randint(2, 8)
        self.new_count = max(1, self.old_count + chance.randint(-1, 2))

    def old_lines(self):
        return [f"{self.name}${self.old_count}", *self.known]

    def new_lines(self):
        lines = [f"\t{self.name}new{i}{ENDINGS[i % len(ENDINGS)]}" for i in range(self.new_count)]
        return [f"{self.name}${self.new_count}", *lines]

    def block(self, chance):
        """A block of a map: a recognised line, then lines with values."""
        values = [f"\t\tvalue of line {i} = {chance.randint(10, 99999)}" for i in
                  range(1, self.old_count)]
        return [f"{chance.choice(self.known)} {chance.randint(10, 99)}", *values]


def make_templates(folder, sections):
    old = [line for section in sections for line in section.old_lines()]
    new = [line for section in sections for line in section.new_lines()]
    version = ["version$1", "version"], ["version$1", f"version {CURRENT}"]
    write(os.path.join(folder, f"voldstruct{OLD}.txt"), ["GALAXY", *version[0], *old])
    write(os.path.join(folder, f"vnewstruct{OLD}.txt"), ["GALAXY", *version[1], *new])
    write(os.path.join(folder, "vnewstruct0.txt"), ["GALAXY", f"version {CURRENT}"])


def make_pieces(sections, chance):
    """The building blocks of maps: a block each, followed by lines that are not recognised."""
    pieces = []
    for section in sections * 4:
        others = [f"\tfree line {chance.randint(0, 10**9):09d} of the map" for _ in range(4)]
        pieces.append(section.block(chance) + others)
    return pieces


def make_map(pieces, count, number, chance):
    lines = ["GALAXY", f"version {OLD}", f"map number {number}"]
    while len(lines) < count:
        lines += chance.choice(pieces)
    return lines[:count]


def main():
    parser = argparse.ArgumentParser(description="make a tree of galaxy maps and its templates")
    parser.add_argument("tree")
    parser.add_argument("data", help="folder of the templates")
    parser.add_argument("--maps", type=int, default=5000)
    parser.add_argument("--folders", type=int, default=500)
    parser.add_argument("--lines", type=int, default=2000, help="of a map")
    parser.add_argument("--sections", type=int, default=60, help="of a template")
    parser.add_argument("--known", type=int, default=400, help="recognition lines of a template")
    parser.add_argument("--others", type=int, default=0, help="files of another kind per map")
    options = parser.parse_args()
    chance = random.Random(1)
    share = [options.known // options.sections + (i < options.known % options.sections)
             for i in range(options.sections)]
    sections = [Section(i, max(1, known), chance) for i, known in enumerate(share)]
    make_templates(options.data, sections)
    pieces = make_pieces(sections, chance)
    for i in range(options.folders):
        os.makedirs(os.path.join(options.tree, f"Region {i % 20}", f"Folder {i}"), exist_ok=True)
    for number in range(options.maps):
        i = number % options.folders
        path = os.path.join(options.tree, f"Region {i % 20}", f"Folder {i}", f"Map {number}.")
        write(path + "galaxy", make_map(pieces, options.lines, number, chance))
        for other in range(options.others):
            write(f"{path}{other}.txt", [])


if __name__ == "__main__":
    main()
