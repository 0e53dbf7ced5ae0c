#!/usr/bin/env python3
"""Times the whole program against what a user would do instead, in turn, and prints the medians.

    compare.py WORKFOLDER --program PROGRAM --floor FLOOR [--rounds N] [--skip NAME]...

WORKFOLDER holds a machine (`machine`) and its data files (`data`), as `scripts/bench` makes them.
"""
import argparse
import hashlib
import os
import shutil
import statistics
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
USER = "machine/drive_c/users/player/AppData/Local/Kettlewick Games/Vorakai"


def each(tree, ending):
    for folder, _, names in os.walk(tree):
        for name in names:
            if name.endswith(ending):
                yield os.path.join(folder, name)


def restore(tree):
    """Brings every map back from its backup, so that each run begins with the same tree."""
    for ending in (".galold", ".bak"):
        for backup in list(each(tree, ending)):
            os.replace(backup, backup.removesuffix(ending) + (".galaxy" if ending != ".bak" else ""))


def digest(tree):
    """What a tree holds, backups included."""
    result = hashlib.sha256()
    for path in sorted(each(tree, "")):
        with open(path, "rb") as file:
            result.update(path.encode() + hashlib.sha256(file.read()).digest())
    return result.hexdigest()


def run(command, folder, environment):
    """Wall-clock time, processor time in seconds and the largest memory in bytes of one run."""
    with open(os.devnull, "wb") as sink:
        begin = time.perf_counter()
        child = subprocess.Popen(command, cwd=folder, env=environment, stdout=sink)
        _, status, usage = os.wait4(child.pid, 0)
        wall = time.perf_counter() - begin
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        sys.exit(f"{command[0]} failed with {child.returncode}")
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def makesedscript(data, path):
    """As many rules as the template has lines to recognise."""
    with open(os.path.join(data, "voldstruct9.txt"), encoding="utf-8") as template:
        lines = [line.rstrip("\r\n") for line in template]
    with open(path, "w", encoding="utf-8") as script:
        script.writelines(f"s/^{line}/{line}x/\n" for line in lines if "$" not in line)


class Contest:
    def __init__(self, options):
        self.folder = os.path.abspath(options.folder)
        self.tree = os.path.join(self.folder, USER)
        self.data = os.path.join(self.folder, "data")
        self.copy = os.path.join(self.folder, "copy")
        script = os.path.join(self.folder, "rules.sed")
        makesedscript(self.data, script)
        sed = f'find . -name "*.galaxy" -print0 | xargs -0 sed -i.bak -f "{script}"'
        convert = [sys.executable, os.path.join(HERE, "convert.py"), self.tree, "--edition", "v"]
        everyone = {
            "program": ([os.path.abspath(options.program), "/silent"], self.data),
            "floor": ([os.path.abspath(options.floor), self.tree], self.data),
            "cp -r": (["cp", "-r", self.tree, self.copy], self.folder),
            "sed -i.bak": (["sh", "-c", sed], self.tree),
            "convert.py": ([*convert, "--data", self.data], self.folder),
        }
        self.contenders = {name: how for name, how in everyone.items() if name not in options.skip}
        self.environment = dict(os.environ, WINEPREFIX=os.path.join(self.folder, "machine"))
        self.results = {name: [] for name in self.contenders}
        self.largest = max(os.path.getsize(path) for path in each(self.tree, ".galaxy"))

    def turn(self, name):
        command, folder = self.contenders[name]
        os.sync()
        measured = run(command, folder, self.environment)
        result = digest(self.tree) if name in ("program", "convert.py") else None
        restore(self.tree)
        shutil.rmtree(self.copy, ignore_errors=True)
        return measured, result

    def play(self, rounds):
        digests = set()
        for _ in range(rounds):
            for name in self.contenders:
                measured, result = self.turn(name)
                self.results[name].append(measured)
                digests.update({result} - {None})
        if len(digests) != 1:
            sys.exit("the program and convert.py do not give the same maps")

    def median(self, name, which):
        return statistics.median(measured[which] for measured in self.results[name])

    def tell(self):
        print(f"{'':12} {'wall s':>8} {'cpu s':>8} {'MB':>6} {'program/it, wall':>17} {'cpu':>6}")
        for name in self.contenders:
            wall, cpu, memory = (self.median(name, which) for which in range(3))
            ratios = [self.median("program", which) / max(self.median(name, which), 1e-9)
                      for which in range(2)]
            print(f"{name:12} {wall:8.3f} {cpu:8.3f} {memory / 2**20:6.1f} "
                  f"{ratios[0]:17.2f} {ratios[1]:6.2f}")
        print(f"largest map: {self.largest / 2**20:.2f} MB")


def main():
    parser = argparse.ArgumentParser(description="time the program against its peers")
    parser.add_argument("folder")
    parser.add_argument("--program", required=True)
    parser.add_argument("--floor", required=True)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--skip", action="append", default=[], help="a contender to leave out")
    options = parser.parse_args()
    contest = Contest(options)
    contest.play(options.rounds)
    contest.tell()


if __name__ == "__main__":
    main()
