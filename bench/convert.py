#!/usr/bin/env python3
"""Converts the galaxy maps below a folder in the simplest way, one line at a time.

An independent implementation to check and time the program against: it compares every template
line with every map line, and uses only the standard library. Maps and templates stay bytes.

    convert.py FOLDER --edition v|t --data DATAFOLDER
"""
import argparse
import filecmp
import os
import re
import shutil
import sys

EOL = b"\r\n"
NUMBER = re.compile(rb"[+-]?(\d+\.?\d*|\.\d+)")


class TemplateError(Exception):
    pass


def split(text):
    """The lines of a text, without trailing empty lines."""
    while text.endswith(EOL):
        text = text[:-2]
    return text.split(EOL) if text else []


def readlines(path):
    """The lines of a file; a missing file counts as 11 empty lines."""
    if not os.path.isfile(path):
        return [b""] * 11
    with open(path, "rb") as file:
        return split(file.read())


def number(text):
    """The number at the start of a text, ignoring blanks; 0 if there is none."""
    found = NUMBER.match(text.translate(None, b" \t"))
    return float(found.group()) if found else 0.0


class Template:
    def __init__(self, folder, name):
        self.name = name
        self.path = os.path.join(folder, name)
        self.lines = readlines(self.path)
        self.heads = [i for i, line in enumerate(self.lines) if line.find(b"$") > 0] or [0]

    def count(self, section):
        """A section's count: the integer part of the number after its header's first "$"."""
        header = b"".join(self.lines[self.heads[section]:][:1])
        return int(number(header[header.find(b"$") + 1:]))

    def fail(self, why):
        raise TemplateError(f"{self.name}: {why}")

    def match(self, line):
        """The index of the last template line that the line begins with; 0 if there is none."""
        return max((j for j, text in enumerate(self.lines) if line.startswith(text)), default=0)

    def sectionof(self, t):
        """The last section whose header is above template line t; 0 if there is none."""
        return max((s for s, head in enumerate(self.heads) if head < t), default=0)


def fill(text, first, aligned):
    """One output line of a new-format section, or None if its marker drops it."""
    if text.endswith(b" #"):
        return text[:-1] + aligned[-1:]
    if text.endswith(b"##"):
        return text[:-2] + aligned[-2:]
    if text.endswith(b" &"):
        return text[:-1] + first[len(text) - 2:]
    return None if text[-1:] in (b"#", b"&") else text


def rewrite(old, new, section, lines, k, out):
    """Writes a section in the new format; returns the index of the next line to match."""
    for template in (old, new):
        if not os.path.isfile(template.path):
            template.fail("the file is missing")
    if section >= len(new.heads):
        new.fail("it has no such section")
    old_count, new_count = old.count(section), new.count(section)
    begin = new.heads[section] + 1
    if new_count <= 0:
        new.fail("its section count is 0 or below")
    if begin + new_count > len(new.lines):
        new.fail("its count runs past its end")
    for d, text in enumerate(new.lines[begin:begin + new_count]):
        line = fill(text, lines[k], lines[k + d] if k + d < len(lines) else b"")
        if line is not None:
            out.append(line)
    if old_count < 1:
        out.append(lines[k])
    return k + max(old_count, 1)


def convert(lines, old, new, needed=1):
    """The text in the new format; a block begins where `needed` lines in a row match."""
    out, k = [], 0
    while k <= len(lines) - needed:
        hits = [old.match(line) for line in lines[k:k + needed]]
        if all(hits):
            k = rewrite(old, new, old.sectionof(hits[0]), lines, k, out)
        else:
            out.append(lines[k])
            k += 1
    return b"".join(line + EOL for line in out + lines[k:])


def write(path, text):
    with open(path, "wb") as file:
        file.write(text)


def keep_old(how, path):
    """Makes the backup; an older backup of other content moves to the first free number."""
    old, n = path[:-3] + "old", 2
    while os.path.exists(f"{old}{n}"):
        n += 1
    if os.path.exists(old) and not filecmp.cmp(path, old, shallow=False):
        os.rename(old, f"{old}{n}")
    how(path, old)


def convert_map(path, edition, folder, current):
    """Converts one map; returns whether it was older than the current format."""
    lines = readlines(path)
    if len(lines) < 2:
        return False
    version = lines[1][-2:].removeprefix(b" ")
    if number(version) >= current:
        return False

    def templates(tail):
        return [Template(folder, edition + kind + tail) for kind in ("oldstruct", "newstruct")]

    try:
        result = first = convert(lines, *templates(os.fsdecode(version) + ".txt"))
        if edition == "t":
            result = convert(split(first), *templates(f"fix{current:g}.txt"), needed=3)
    except TemplateError:
        keep_old(shutil.copyfile, path)
        raise
    keep_old(os.rename, path)
    if edition == "t":
        write(path[:-3] + "fix", first)
    write(path, result)
    return True


def find_maps(folder):
    """The maps below a folder: subfolders first, names in case-insensitive order."""
    entries = sorted(os.scandir(folder), key=lambda entry: entry.name.lower())
    entries = [entry for entry in entries if entry.name[0] != "." and not entry.is_symlink()]
    for entry in entries:
        if entry.is_dir():
            yield from find_maps(entry.path)
    for entry in entries:
        if entry.is_file() and entry.name.lower().endswith(".galaxy"):
            yield entry.path


def main():
    parser = argparse.ArgumentParser(description="bring galaxy maps up to the current format")
    parser.add_argument("folder")
    parser.add_argument("--edition", choices=["v", "t"], required=True)
    parser.add_argument("--data", required=True, help="folder of the templates and lists")
    options = parser.parse_args()
    baseline = readlines(os.path.join(options.data, options.edition + "newstruct0.txt"))
    current = number(baseline[1][-2:])
    owned = readlines(os.path.join(options.data, "original vora galaxies.txt"))
    owned = {os.fsdecode(name).lower() for name in owned}
    maps = [p for p in find_maps(options.folder) if os.path.basename(p).lower() not in owned]
    for path in maps:
        try:
            if convert_map(path, options.edition, options.data, current):
                print(os.path.basename(path))
        except TemplateError as error:
            sys.exit(f"{path}: {error}")


if __name__ == "__main__":
    main()
