#!/usr/bin/env python3
"""Times the program and its alternatives in turn, and prints the medians.

    compare.py WHAT WORKFOLDER --build BUILDFOLDER [--rounds N]

WHAT is convert, flushes, delay, script, growth, search or start.

WORKFOLDER holds a machine (`machine`) and its data files (`data`), as `scripts/bench` makes them.
"""
import argparse
import contextlib
import glob
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
    """Restores every map from its backup, so that each run begins with the same tree."""
    for ending in (".galold", ".bak"):
        for backup in list(each(tree, ending)):
            os.replace(backup, backup.removesuffix(ending) + (".galaxy" if ending != ".bak" else ""))


def digest(tree):
    """A checksum of all files in a tree, backups included."""
    result = hashlib.sha256()
    for path in sorted(each(tree, "")):
        with open(path, "rb") as file:
            result.update(path.encode() + hashlib.sha256(file.read()).digest())
    return result.hexdigest()


def run(command, folder, environment, statuses=(0,)):
    """Wall-clock and processor time of one run, in seconds."""
    with open(os.devnull, "wb") as sink:
        begin = time.perf_counter()
        child = subprocess.Popen(command, cwd=folder, env=environment, stdout=sink, stderr=sink)
        _, status, usage = os.wait4(child.pid, 0)
        wall = time.perf_counter() - begin
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode not in statuses:
        sys.exit(f"{command[0]} failed with {child.returncode}")
    return wall, usage.ru_utime + usage.ru_stime


def output(command, folder, environment):
    """The stdout and stderr of a run that is not timed."""
    result = subprocess.run(command, cwd=folder, env=environment, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, check=False)
    return result.stdout


def make_sed_script(data, path):
    """Writes a sed script with one rule for each recognition line of the template."""
    with open(os.path.join(data, "voldstruct9.txt"), encoding="utf-8") as template:
        lines = [line.rstrip("\r\n") for line in template]
    with open(path, "w", encoding="utf-8") as script:
        script.writelines(f"s/^{line}/{line}x/\n" for line in lines if "$" not in line)


def converted(command, folder, environment, tree):
    """Runs the program, checks that it converted every map, restores the tree and returns the peak
    memory in bytes. `time` measures it, as a direct child would inherit this script's peak."""
    count = sum(1 for _ in each(tree, ".galaxy"))
    said = output(["/usr/bin/time", "-f", "%M", *command], folder, environment)
    if sum(1 for _ in each(tree, ".galold")) != count:
        sys.exit("not every map was converted: " + said)
    restore(tree)
    return int(said.split()[-1]) * 1024


class Contest:
    """Runs contenders in turn; `restored` restores the tree after each run."""

    def __init__(self, contenders, environment, restored=lambda: None, statuses=(0,)):
        self.contenders = contenders
        self.environment = environment
        self.statuses = statuses
        self.restored = restored
        self.results = {name: [] for name in contenders}

    def play(self, rounds):
        for _ in range(rounds):
            for name, (command, folder) in self.contenders.items():
                os.sync()
                self.results[name].append(run(command, folder, self.environment, self.statuses))
                self.restored()

    def median(self, name, which):
        return statistics.median(measured[which] for measured in self.results[name])

    def tell(self):
        first = next(iter(self.contenders))
        print(f"{'':12} {'wall s':>8} {'cpu s':>8} {first + '/it: wall':>16} {'cpu':>6}")
        for name in self.contenders:
            wall, cpu = (self.median(name, which) for which in range(2))
            ratios = [self.median(first, which) / max(self.median(name, which), 1e-9)
                      for which in range(2)]
            print(f"{name:12} {wall:8.4f} {cpu:8.4f} {ratios[0]:16.3f} {ratios[1]:6.3f}")


def check_results(contenders, environment, tree):
    """Checks that the program and the script leave the same bytes."""
    digests = []
    for name in ("program", "convert.py"):
        command, folder = contenders[name]
        run(command, folder, environment)
        digests.append(digest(tree))
        restore(tree)
    if digests[0] != digests[1]:
        sys.exit("the program and convert.py do not give the same maps")


def convert(folder, build, environment, rounds):
    tree, data, copy = (os.path.join(folder, name) for name in (USER, "data", "copy"))
    contenders = {
        "program": ([os.path.join(build, "vora-map-updater"), "/silent"], data),
        "floor": ([os.path.join(build, "floor"), tree], data),
        "cp -r": (["cp", "-r", tree, copy], folder),
    }

    def restored():
        restore(tree)
        shutil.rmtree(copy, ignore_errors=True)

    converted(*contenders["program"], environment, tree)
    contest = Contest(contenders, environment, restored)
    contest.play(rounds)
    contest.tell()
    sizes = [os.path.getsize(path) for path in each(tree, ".galaxy")]
    print(f"{len(sizes)} maps of {sum(sizes) / 2**20:.1f} MB, the largest {max(sizes) / 2**20:.2f}")


@contextlib.contextmanager
def mounted(image, folder):
    subprocess.run(["mount", "-o", "loop", image, folder], check=True)
    try:
        yield os.path.basename(os.path.dirname(os.path.dirname(next(
            path for path in glob.glob("/sys/block/loop*/loop/backing_file")
            if open(path, encoding="utf-8").read().strip() == image))))
    finally:
        subprocess.run(["umount", "-l", folder], check=True)


def flush_requests(device):
    """How many flush requests the kernel has sent to a block device."""
    with open(f"/sys/block/{device}/stat", encoding="utf-8") as counters:
        return int(counters.read().split()[15])


def flushes(folder, build, environment, rounds):
    """Counts the flush requests that a disk gets for each map, on file systems made for it."""
    tree, data, image = (os.path.join(folder, name) for name in (USER, "data", "image"))
    commands = {
        "program": ([os.path.join(build, "vora-map-updater"), "/silent"], data),
        "floor": ([os.path.join(build, "floor"), tree], data),
    }
    maps = os.path.join(folder, "maps")
    os.rename(tree, maps)
    os.mkdir(tree)
    for kind in ("ext4", "xfs", "btrfs"):
        with open(image, "wb") as file:
            file.truncate(600 << 20)
        try:
            subprocess.run([f"mkfs.{kind}", "-q", image], check=True)
            with mounted(image, tree) as device:
                told = []
                for name, command in commands.items():
                    counts = []
                    for _ in range(rounds):
                        shutil.copytree(maps, tree, dirs_exist_ok=True)
                        os.sync()
                        before = flush_requests(device)
                        run(*command, environment)
                        counts.append(flush_requests(device) - before)
                        count = sum(1 for _ in each(tree, ".galold"))
                        restore(tree)
                    told.append(f"{name} {statistics.median(counts) / count:.2f}")
            print(f"{kind:5} flush requests a map, {count} maps: {', '.join(told)}")
        except (OSError, StopIteration, subprocess.CalledProcessError) as error:
            print(f"{kind:5} skipped, it wants root, loop devices and mkfs.{kind}: {error}")


def delay(folder, build, environment, rounds):
    """Times a run on a disk on which each flush takes 10 ms."""
    tree, data = (os.path.join(folder, name) for name in (USER, "data"))
    slow = dict(environment, LD_PRELOAD=os.path.join(build, "slow_flush.so"))
    contenders = {
        "program": ([os.path.join(build, "vora-map-updater"), "/silent"], data),
        "floor": ([os.path.join(build, "floor"), tree], data),
    }
    contest = Contest(contenders, slow, lambda: restore(tree))
    contest.play(rounds)
    contest.tell()


def script(folder, build, environment, rounds):
    tree, data, rules = (os.path.join(folder, name) for name in (USER, "data", "rules.sed"))
    make_sed_script(data, rules)
    sed = f'find . -name "*.galaxy" -print0 | xargs -0 sed -i.bak -f "{rules}"'
    python = [sys.executable, os.path.join(HERE, "convert.py"), tree, "--edition", "v"]
    contenders = {
        "program": ([os.path.join(build, "vora-map-updater"), "/silent"], data),
        "convert.py": ([*python, "--data", data], folder),
        "sed -i.bak": (["sh", "-c", sed], tree),
    }
    check_results(contenders, environment, tree)
    contest = Contest(contenders, environment, lambda: restore(tree))
    contest.play(rounds)
    contest.tell()


def growth(folder, build, environment, rounds):
    tree, data = (os.path.join(folder, name) for name in (USER, "data"))
    program = {"program": ([os.path.join(build, "vora-map-updater"), "/silent"], data)}
    memory = converted(*program["program"], environment, tree) / 2**20
    contest = Contest(program, environment, lambda: restore(tree))
    contest.play(rounds)
    sizes = [os.path.getsize(path) for path in each(tree, ".galaxy")]
    wall, cpu = (contest.median("program", which) / len(sizes) * 1e6 for which in range(2))
    print(f"{len(sizes):7} maps: {wall:6.1f} us a map, {cpu:6.1f} us of them on the processor; "
          f"{memory:.1f} MB, the largest map {max(sizes) / 2**20:.1f} MB")


def search(folder, build, environment, rounds):
    tree = os.path.join(folder, USER)
    find = ["find", tree, "-iname", "*.galaxy"]
    fd = ["fdfind", "--no-ignore", "-e", "galaxy", ".", tree]
    contenders = {
        "search": ([os.path.join(build, "search"), tree], folder),
        "find": (find, folder),
        "fd": (fd, folder),
    }
    counts = {int(output(contenders["search"][0], folder, environment))}
    counts |= {output(command, folder, environment).count("\n") for command in (find, fd)}
    if len(counts) != 1:
        sys.exit(f"the searches do not find the same: {counts}")
    contest = Contest(contenders, environment)
    contest.play(rounds)
    contest.tell()


def start(folder, build, environment, rounds):
    """Times start-up until the program would wait for its user, if there were a window."""
    with open(os.path.join(folder, "machine/system.reg"), "a", encoding="utf-8") as registry:
        for i in range(20000):
            registry.write(f"\n[Software\\\\Classes\\\\CLSID\\\\{{{i}}}] 1\n@=\"class {i}\"\n"
                           '"Threading"="Both"\n"Version"="1.0"\n"Icon"=dword:00000001\n')
        print(f"registry text of {registry.tell() / 1e6:.1f} MB")
    data = os.path.join(folder, "data")
    contenders = {
        "program": ([os.path.join(build, "vora-map-updater")], data),
        "true": (["true"], data),
    }
    environment = {name: environment[name] for name in environment
                   if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
    # Without a window the program exits with status 1.
    if not output(*contenders["program"], environment).startswith("There is no window"):
        sys.exit("the program did not finish its start-up")
    contest = Contest(contenders, environment, statuses=(0, 1))
    contest.play(8 * rounds)
    contest.tell()


CONTESTS = {contest.__name__: contest
            for contest in (convert, flushes, delay, script, growth, search, start)}


def main():
    parser = argparse.ArgumentParser(description="time the program against its peers")
    parser.add_argument("what", choices=CONTESTS)
    parser.add_argument("folder")
    parser.add_argument("--build", required=True, help="folder of the programs")
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()
    folder, build = os.path.abspath(options.folder), os.path.abspath(options.build)
    environment = dict(os.environ, WINEPREFIX=os.path.join(folder, "machine"))
    CONTESTS[options.what](folder, build, environment, options.rounds)


if __name__ == "__main__":
    main()
