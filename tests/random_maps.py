#!/usr/bin/env python3
"""Makes templates of random lines for many format versions, and maps for them.

    random_maps.py DATAFOLDER MAPFOLDER v|t SEED
"""
import os
import random
import sys

HUGE = b"x$99999999999999999999"


def lines(most, pieces):
    return [b"".join(random.choices(pieces, k=random.randrange(4)))
            for _ in range(random.randint(1, most))]


def write(folder, name, text):
    with open(os.path.join(folder, name), "wb") as file:
        file.write(b"\r\n".join(text) + b"\r\n")


def heads(text):
    return [line for line in text if line.find(b"$") > 0]


def make_templates(data, tail, letter, often=None):
    """A pair whose new template can write every section of the old one, and which knows `often`."""
    old = lines(12, [b"a", b"b", b"\t", b"ab", b"\xff", b"$-1", b"$0", b"$1", b"$2", b"$3", HUGE])
    if often:  # an empty line would match every line
        old = [line for line in old if line] + often
    new = []
    for _ in range(max(1, len(heads(old)))):
        body = lines(5, [b"a", b"b\n", b"x", b" #", b"##", b" &", b"#", b"&"])
        new += [b"x$%d" % random.randint(1, len(body)), *body]
    write(data, f"{letter}oldstruct{tail}.txt", old + [b"end"])
    write(data, f"{letter}newstruct{tail}.txt", new + [b"end"])


def main():
    data, maps, letter, seed = sys.argv[1:]
    random.seed(seed)
    os.makedirs(maps, exist_ok=True)
    with open(os.path.join(data, letter + "newstruct0.txt"), "rb") as file:
        current = file.read().split(b"\r\n")[1].split()[-1].decode()
    if letter == "t":
        make_templates(data, "fix" + current, letter, [b"a", b"b", b"x"])
    for version in range(100):
        tail = chr(ord("a") + version // 26) + chr(ord("a") + version % 26)
        make_templates(data, tail, letter)
        for i in range(5):
            text = lines(20, [b"a", b"b", b"\t", b"ab", b"\xff", b"$1", b"\n", b"\rc", b"7", b""])
            text.insert(1, random.choice([b"a", b"b", b"v "]) + tail.encode())
            write(maps, f"{tail}{i}.galaxy", text)


if __name__ == "__main__":
    main()
