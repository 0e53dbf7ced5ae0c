#!/usr/bin/env python3
"""Gives the program itself trouble: kills, two runs at once, what a user may not do, no memory, odd
machines and disks. No map may ever be lost.

    program.py BUILDFOLDER [--kills N] [--cuts N] [--blocks N] [--seed N]

N kills for each edition (60), a fifth of them on each file system without power cuts, and twice as
many failing allocations; N power cuts for each edition and file system that has them (10); N blocks
that cannot be written on each file system (6). The seed repeats a run's random moments. What needs
root, mounts or mkfs is skipped where that is missing.
"""
import argparse
import fcntl
import os
import pathlib
import random
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
from disks import (can_make, cut_power, fail_blocks, fill_disk, kill_on,  # noqa: E402
                   run_short_of_space)
from machine import COUNT, EDITIONS, MEGABYTE, Machine, kill, put, succeeds, tree  # noqa: E402

NOBODY = 65534
SIGNALS = signal.SIGINT, signal.SIGTERM, signal.SIGHUP  # that end a run after the maps in hand


def stopped_when(machine, seen, **how):
    """A run on new maps, stopped at a moment when that is seen of it; that may take a few."""
    for _ in range(200):
        machine.fill()
        process = machine.start(**how)
        while process.poll() is None:
            os.kill(process.pid, signal.SIGSTOP)
            change = os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
            if change.si_code == os.CLD_STOPPED and seen(process):
                return process
            process.send_signal(signal.SIGCONT)
            time.sleep(random.uniform(0, 0.001))  # in which it goes on
        process.communicate()
    raise AssertionError("it was never seen")


def run_two_at_once(machine):
    """Each skips the maps that the other is converting; now and then one is killed."""
    for i in range(20):
        machine.fill()
        pair = machine.start(), machine.start()
        machine.any_moment()
        if i % 2:
            pair[1].kill()
        for process in pair:
            process.communicate()
        machine.check(tree(machine.maps))
        machine.finish()


def run_as_nobody(machine):
    """What the user may not do is reported, and the rest is converted. A map that is skipped has no
    backup beside it, which would later be put over its owner's newer work."""
    for path in (machine.root.parent, *machine.drive.parents):
        if str(path).startswith(str(machine.root.parent)):
            path.chmod(0o755)
    cases = [
        # the map, whether it is the user's, its mode, and why it is skipped
        ("readonly/a.galaxy", False, 0o644, "Permission denied"),
        ("unreadable/b.galaxy", False, 0o600, "Permission denied"),
        ("longname/" + "x" * 248 + ".galaxy", True, 0o644, "File name too long"),
        ("taken/c.galaxy", True, 0o644, "a folder has the name c.galold"),
        ("sticky/s.galaxy", False, 0o666, "Operation not permitted"),
        ("fine/d.galaxy", True, 0o640, None),
        ("nolinks/e.galaxy", None, 0o6664, None),  # only the folder is
    ]
    shutil.rmtree(machine.maps, ignore_errors=True)
    for name, ours, mode, _ in cases:
        path = machine.maps / name
        put(path, machine.old)
        if ours:
            os.chown(path, NOBODY, NOBODY)
        if ours is not False:
            os.chown(path.parent, NOBODY, NOBODY)
        path.chmod(mode)
    (machine.maps / "sticky").chmod(0o1777)
    put(machine.maps / "longname" / ("x" * 248 + ".galold"), b"older")
    (machine.maps / "taken/c.galold").mkdir()
    reported = machine.run(said="Permission denied", user=NOBODY, group=NOBODY, extra_groups=[])
    for name, _, _, reason in cases:
        path = machine.maps / name
        assert (path.read_bytes() == machine.old) == bool(reason), name
        lines = [line for line in reported.splitlines() if path.name in line]
        assert reason in lines[0] if reason else not lines, reported
        assert not reason or (path.with_suffix(".galold").is_file() == (len(name) > 200)), name
    # Its backup is a copy, as nobody may link to somebody else's file; what the user makes of it
    # does nothing in the user's name, nor shows the user's group what was another group's.
    result, backup = ((machine.maps / "nolinks" / name).stat() for name in ("e.galaxy", "e.galold"))
    assert result.st_mode & 0o7777 == 0o604
    if open("/proc/sys/fs/protected_hardlinks").read() == "1\n":
        assert backup.st_uid == NOBODY
    assert len(list((machine.maps / "longname").iterdir())) == 2


def waits_for_lease(path):
    """Whether a program that opens a file for writing must wait for one that has a lease of it."""
    try:
        os.close(os.open(path, os.O_WRONLY | os.O_NONBLOCK))
    except BlockingIOError:
        return True
    return False


def run_beside_others(machine):
    """Another program has or opens a map, stderr is gone, files may not grow."""
    machine.fill()
    with open(machine.maps / "map0.galaxy", "r+b"):
        machine.run(said="map0.galaxy: cannot convert it: another program has it open")
        assert (machine.maps / "map0.galaxy").read_bytes() == machine.map(0)
    machine.finish()

    def without_standard_files():
        for descriptor in range(3):
            os.close(descriptor)

    def with_broken_stderr():
        reading, writing = os.pipe()
        os.close(reading)
        os.dup2(writing, 2)

    def with_small_files():
        resource.setrlimit(resource.RLIMIT_FSIZE, (64, 64))

    def has_standard_files(process):
        return os.path.realpath(f"/proc/{process.pid}/fd/2") == "/dev/null"

    def has_a_map_leased(_):
        return any(waits_for_lease(path) for path in machine.maps.glob("*.galaxy"))

    for seen, preparation in (
            (has_standard_files, without_standard_files), (has_a_map_leased, None)):
        process = stopped_when(machine, seen, preexec_fn=preparation)
        process.send_signal(signal.SIGCONT)
        process.communicate()
        assert process.returncode == 0, (seen, process.returncode)
        machine.finish()

    for preparation in (without_standard_files, with_broken_stderr, with_small_files):
        machine.fill()
        put(machine.maps / "bad.galaxy", b"only one line")
        process = machine.start(preexec_fn=preparation)
        process.communicate()
        assert process.returncode == 1, (preparation, process.returncode)
        machine.check(tree(machine.maps))
        (machine.maps / "bad.galaxy").unlink()
        machine.finish()


def run_short_of_memory(machine, build, runs):
    """Whichever allocation fails, the run ends in order: what is not converted is told, and no
    temporary file stays."""
    number = machine.root / "allocations"
    preloaded = {"LD_PRELOAD": str(build / "failing_memory.so")}
    machine.fill()
    machine.run(env={**preloaded, "ALLOCATIONS_FILE": str(number)})
    allocations = int(number.read_text())
    midway = 0
    may_fail = range(2, allocations)  # the first is the runtime's reserve for exceptions
    runs = min(runs, len(may_fail))
    for first in random.sample(may_fail, runs):
        failures = random.choice((1, 2, allocations))
        where = f"{failures} of {allocations} allocations from {first} on"
        machine.fill()
        process = machine.start(env={**preloaded, "FAIL_FROM": str(first), "FAILURES": str(failures)})
        said = process.communicate()[0].decode()
        left = tree(machine.maps)
        midway += machine.check(left)
        assert process.returncode in (0, 1), (where, process.returncode, said)
        assert not [name for name in left if name.startswith(".vora")], (where, said)
        assert bool(process.returncode) == ("memory is not enough" in said), (where, said)
        for i in range(COUNT):
            converted = left[f"map{i}.galaxy"] != machine.map(i)
            assert converted or process.returncode, (where, i)
    print(f"memory fails: {runs} times in {allocations} allocations, {midway} amid conversions")
    machine.finish()


def interrupt(machine):
    """The maps in hand are finished, and nothing is left behind."""
    midway = 0
    while midway < 5:
        machine.fill()
        process = machine.start()
        machine.any_moment()
        process.send_signal(random.choice(SIGNALS))
        reported = process.communicate()[0].decode()
        left = tree(machine.maps)
        midway += machine.check(left)
        if process.returncode > 0:
            assert "Interrupted: " in reported and "the rest is as it was." in reported, reported
        if machine.check(left):
            assert process.returncode == 1, process.returncode
        assert not [name for name in left if name.startswith(".vora")], left
        machine.finish()


def run_where_nothing_may_be_renamed(machine):
    """No file is left behind by a run that could not remove it, nor beside a map that stays."""
    machine.fill()
    before = tree(machine.maps)
    if not succeeds("chattr", "+a", machine.maps):
        return print("skipped: run_where_nothing_may_be_renamed")
    try:
        machine.run(said="nothing may be renamed in its folder")
        assert tree(machine.maps) == before
    finally:
        subprocess.run(["chattr", "-a", machine.maps], check=True)
    fixed = machine.maps / "map0.galaxy"
    for attribute in "ia":
        subprocess.run(["chattr", f"+{attribute}", fixed], check=True)
        try:
            machine.run(said="map0.galaxy: cannot")
            left = tree(machine.maps)
            assert left.pop("map0.galaxy") == machine.map(0) and "map0.galold" not in left, left
        finally:
            subprocess.run(["chattr", f"-{attribute}", fixed], check=True)
    machine.finish()


def run_beside_a_lease(machine):
    """A file server has a lease on a map, which it gives up when it is asked to."""
    machine.fill()
    served = os.open(machine.maps / "map0.galaxy", os.O_RDWR)
    read_end, write_end = os.pipe()
    server = os.fork()
    if server == 0:
        def give_up(*_):
            time.sleep(0.05)
            fcntl.fcntl(served, fcntl.F_SETLEASE, fcntl.F_UNLCK)
            os._exit(0)
        signal.signal(signal.SIGIO, give_up)
        fcntl.fcntl(served, fcntl.F_SETLEASE, fcntl.F_WRLCK)
        os.write(write_end, b"x")
        while True:
            signal.pause()
    os.close(served)
    os.read(read_end, 1)
    machine.run()
    os.waitpid(server, 0)
    machine.finish()


def run_with_a_small_stack(machine):
    machine.fill()
    machine.run(preexec_fn=lambda: resource.setrlimit(
        resource.RLIMIT_STACK, ((1 << 16) if not machine.sanitized else (1 << 23), -1)))
    machine.finish()


def run_odd_machines(machine):
    """Machines that are large and deep: time and memory follow what the program is given."""
    registry = machine.root / "machine/system.reg"
    plain = registry.read_bytes()
    many = rb"[Software\\Some\\Key] 1" + b'\n"Name"="text"\n"Data"=hex:01,\\\n  03\n\n'
    size = (5 if machine.sanitized else 100) * MEGABYTE
    large = rb"[Software\\Large] 1" + b'\n"Name"="' + b"v" * MEGABYTE + b'"\n\n'
    with open(registry, "wb") as file:  # in pieces: a process begins with the memory of its parent
        for _ in range(size // MEGABYTE):
            file.write(many * (MEGABYTE // len(many)))
        file.write(large + plain)
    machine.fill()
    machine.run(megabytes=112)  # the registry is read whole
    machine.check(tree(machine.maps))
    registry.write_bytes(plain)

    shutil.rmtree(machine.maps)
    machine.maps.mkdir()
    below = os.open(machine.maps, os.O_RDONLY)
    for _ in range(2000):  # deeper than the system takes a path in one piece
        os.mkdir("deep", dir_fd=below)
        above, below = below, os.open("deep", os.O_RDONLY, dir_fd=below)
        os.close(above)
    opener = lambda name, flags: os.open(name, flags, 0o644, dir_fd=below)
    with open("map0.galaxy", "wb", opener=opener) as file:
        file.write(machine.map(0))
    machine.run(megabytes=96)
    with open("map0.galaxy", "rb", opener=opener) as file:
        assert file.read() == machine.converted["map0.galaxy"]
    os.close(below)
    subprocess.run(["rm", "-rf", machine.maps], check=True)

    for i in range(2000 if machine.sanitized else 50000):
        old = i < COUNT
        put(machine.maps / f"map{i}.galaxy",
            machine.map(i) if old else machine.converted["map0.galaxy"])
    machine.run(megabytes=24)
    for i in range(COUNT):
        content = (machine.maps / f"map{i}.galaxy").read_bytes()
        assert content == machine.converted[f"map{i}.galaxy"]
    shutil.rmtree(machine.maps)

    size = MEGABYTE  # of each map: a batch is full before it has 64
    for i in range(4 if machine.sanitized else 64):
        put(machine.maps / f"map{i}.galaxy", machine.map(i) + b"~\r\n" * (size // 3))
    machine.run(megabytes=24 + 4 * size // MEGABYTE, preexec_fn=None)
    shutil.rmtree(machine.maps)


def attempt(test, possible, *arguments):
    if possible:
        test(*arguments)
    else:
        print("skipped:", test.__name__, *arguments[1:])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--kills", type=int, default=60)
    parser.add_argument("--cuts", type=int, default=10)
    parser.add_argument("--blocks", type=int, default=6)
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 16))
    options = parser.parse_args()
    mounts = "OWN_MOUNTS" in os.environ
    if not mounts and succeeds("unshare", "-m", "true"):  # what is mounted goes with the process
        os.environ["OWN_MOUNTS"] = "1"
        os.execvp("unshare", ["unshare", "-m", sys.executable, *sys.argv])
    build = options.build.resolve()
    os.chdir(pathlib.Path(__file__).resolve().parents[2])
    for number in SIGNALS:  # programs inherit that they are ignored
        if signal.getsignal(number) == signal.SIG_IGN:
            signal.signal(number, signal.SIG_DFL)
    print(f"--seed {options.seed}")
    random.seed(options.seed)
    memory = "/dev/shm" if os.path.isdir("/dev/shm") else None
    with tempfile.TemporaryDirectory(dir=memory) as scratch, tempfile.TemporaryDirectory() as public:
        os.chmod(public, 0o755)  # every user may start the program
        program = shutil.copy(build / "vora-map-updater", public)
        for edition in EDITIONS:
            machine = Machine(build, program, scratch, edition)
            machine.measure()
            kill(machine, options.kills)
            run_two_at_once(machine)
            interrupt(machine)
            if edition == "base":
                run_odd_machines(machine)
                run_beside_others(machine)
                run_beside_a_lease(machine)
                run_with_a_small_stack(machine)
                attempt(run_short_of_memory, not machine.sanitized, machine, build, 2 * options.kills)
                run_where_nothing_may_be_renamed(machine)
                attempt(run_as_nobody, os.geteuid() == 0, machine)
                attempt(fill_disk, mounts, machine)
                attempt(run_short_of_space, mounts and can_make("exfat", scratch), machine)
            for kind in ("ext4", "xfs", "btrfs"):
                attempt(cut_power, mounts and can_make(kind, scratch), machine, kind, options.cuts)
            for kind in ("ntfs", "exfat"):
                attempt(kill_on, mounts and can_make(kind, scratch), machine, kind,
                        options.kills // 5)
            for kind in ("ext4", "ntfs", "exfat"):
                attempt(fail_blocks, mounts and os.path.isdir("/sys/block") and
                        can_make(kind, scratch), machine, kind, options.blocks)


if __name__ == "__main__":
    main()
