#!/usr/bin/env python3
"""Gives the program itself trouble: kills, two runs at once, what a user may not do, a full disk, no
memory, odd machines and power cuts. No map may ever be lost.

    program.py BUILDFOLDER [--kills N] [--cuts N] [--seed N]

N kills for each edition (100), a fifth of them on each file system without power cuts, and twice as
many failing allocations; N power cuts for each edition and file system that has them (20). The seed repeats a run's random moments.
What needs root, mounts or mkfs is skipped where that is missing.
"""
import argparse
import contextlib
import fcntl
import os
import pathlib
import random
import resource
import shutil
import signal
import statistics
import struct
import subprocess
import sys
import tempfile
import time

COUNT = 15  # maps
OPEN_FILES = 39, 46, 64, 1024  # limits, which bound a batch
NOBODY = 65534
SIGNALS = signal.SIGINT, signal.SIGTERM, signal.SIGHUP  # that end a run after the maps in hand
MEGABYTE = 1 << 20
DISK = 320 * MEGABYTE  # some kinds want 300 MB; the file is sparse
SHUT_DOWN, FLUSHING_NOTHING = 0x8004587D, 2  # XFS_IOC_GOINGDOWN, which ext4 knows too
MAKE = {"ext4": ["-q", "-F"], "xfs": ["-q", "-f"], "btrfs": ["-q", "-f"], "ntfs": ["-q", "-F", "-f"],
        "exfat": []}
MOUNT = {"ntfs": ["-t", "ntfs-3g"], "exfat": ["-t", "exfat-fuse", "-o", "nonempty"]}
EDITIONS = {
    "base": "AppData/Local/Kettlewick Games/Vorakai",
    "expansion": "Documents/My Games/Kettlewick Games/Vorakai Tarnfall",
}


def tree(folder):
    """The files below a folder with their contents."""
    return {str(p.relative_to(folder)): p.read_bytes() for p in folder.rglob("*") if p.is_file()}


@contextlib.contextmanager
def mounted(*arguments):
    subprocess.run(["mount", *arguments], check=True, stdout=subprocess.DEVNULL)
    try:
        yield
    finally:
        subprocess.run(["umount", "-l", arguments[-1]], check=True)


def put(path, content):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)


class Machine:
    """A sample machine whose only maps are in `maps`."""

    def __init__(self, build, program, scratch, edition):
        self.root = pathlib.Path(scratch) / edition
        subprocess.run(["bash", "-c", 'source scripts/common.sh; make_sample "$@"', "bash", edition,
                        str(self.root), str(build)], check=True)
        found = [p for p in self.root.rglob("*") if p.suffix.lower() == ".galaxy" and p.is_file()]
        sample = "Rung One" if edition == "expansion" else "Amber Reach"
        self.old = next(p for p in found if p.stem == sample).read_bytes()
        for path in found:
            path.unlink()
        self.edition = edition
        self.drive = self.root / "machine/drive_c"
        self.user = self.drive / "users/player" / EDITIONS[edition]
        self.maps = self.user / "maps"
        self.program = program
        self.sanitized = b"__asan_init" in pathlib.Path(program).read_bytes()
        self.converted = None

    def start(self, env=(), **how):
        """Starts a silent run, whose batches are of one, two, four or all maps."""
        how.setdefault("preexec_fn", lambda files=random.choice(OPEN_FILES): resource.setrlimit(
            resource.RLIMIT_NOFILE, (files, files)))
        hidden = ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")
        environment = {k: v for k, v in os.environ.items() if k not in hidden}
        environment.update(env, WINEPREFIX=str(self.root / "machine"), LC_ALL="C.UTF-8")
        return subprocess.Popen([self.program, "/silent"], cwd=self.root / "data", env=environment,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **how)

    def run(self, megabytes=None, said="", **how):
        """Runs the program to its end; it must say that and use at most that much memory."""
        process = self.start(**how)
        reported = process.stdout.read().decode()
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        assert reported == said or said and said in reported, reported
        assert process.returncode == (1 if said else 0), process.returncode
        if megabytes:
            print(f"memory: {usage.ru_maxrss // 1024} of {megabytes} MB")
            assert self.sanitized or usage.ru_maxrss <= megabytes * 1024
        return reported

    def map(self, i):
        return self.old + b"~map %d\r\n" % i

    def fill(self, count=COUNT):
        """Makes maps without a backup, with an older one of other content, or with an equal one."""
        shutil.rmtree(self.maps, ignore_errors=True)
        for i in range(count):
            put(self.maps / f"map{i}.galaxy", self.map(i))
            if i % 3:
                put(self.maps / f"map{i}.GALold", self.map(1000 + i) if i % 3 == 1 else self.map(i))

    def measure(self):
        """Looks at a few runs that nobody disturbs."""
        times = []
        for _ in range(5):
            self.fill()
            start = time.monotonic()
            self.run()
            times.append(time.monotonic() - start)
        self.median = statistics.median(times)
        self.converted = tree(self.maps)
        for i in range(COUNT):
            assert self.converted[f"map{i}.galaxy"] != self.map(i)
        self.check(self.converted)

    def any_moment(self):
        time.sleep(random.uniform(0, self.median))

    def check(self, left):
        """Checks the promise; returns whether some maps are converted and some are not."""
        done = 0
        for i in range(COUNT):
            own = left[f"map{i}.galaxy"]
            backups = [c for n, c in left.items() if n.lower().startswith(f"map{i}.galold")]
            assert own in (self.map(i), self.converted[f"map{i}.galaxy"]), f"map{i} is half converted"
            assert own == self.map(i) or self.map(i) in backups, f"map{i} is lost"
            assert i % 3 != 1 or self.map(1000 + i) in backups, f"map{i}'s older backup is lost"
            done += own != self.map(i)
        return 0 < done < COUNT

    def finish(self):
        """A run to its end must leave what undisturbed ones do. A backup whose name was taken away just
        before a kill is made anew, spelled like the map."""
        self.run()
        lowered = [{name.lower(): content for name, content in left.items()}
                   for left in (tree(self.maps), self.converted)]
        assert lowered[0] == lowered[1]


def kill(machine, kills, kind="memory"):
    midway = done = 0
    while done < kills:
        machine.fill()
        killed = True
        while killed and done < kills:
            process = machine.start()
            machine.any_moment()
            process.kill()
            killed = process.wait() == -signal.SIGKILL
            done += killed
            midway += killed and machine.check(tree(machine.maps))
        machine.finish()
    print(f"{machine.edition}, {kind}: {kills} kills, {midway} with some maps converted and some not")
    assert midway or kills < 20


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
    """What the user may not do is reported, and the rest is converted."""
    for path in (machine.root.parent, *machine.drive.parents):
        if str(path).startswith(str(machine.root.parent)):
            path.chmod(0o755)
    cases = [
        # the map, whether it is the user's, its mode, and why it is skipped
        ("readonly/a.galaxy", False, 0o644, "Permission denied"),
        ("unreadable/b.galaxy", False, 0o600, "Permission denied"),
        ("longname/" + "x" * 248 + ".galaxy", True, 0o644, "File name too long"),
        ("taken/c.galaxy", True, 0o644, "a folder has the name c.galold"),
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
    put(machine.maps / "longname" / ("x" * 248 + ".galold"), b"older")
    (machine.maps / "taken/c.galold").mkdir()
    reported = machine.run(said="Permission denied", user=NOBODY, group=NOBODY, extra_groups=[])
    for name, _, _, reason in cases:
        path = machine.maps / name
        assert (path.read_bytes() == machine.old) == bool(reason), name
        lines = [line for line in reported.splitlines() if path.name in line]
        assert reason in lines[0] if reason else not lines, reported
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
    """No temporary file is left behind by a run that could not remove it."""
    machine.fill()
    before = tree(machine.maps)
    if not succeeds("chattr", "+a", machine.maps):
        return print("skipped: run_where_nothing_may_be_renamed")
    try:
        machine.run(said="nothing may be renamed in its folder")
        assert tree(machine.maps) == before
    finally:
        subprocess.run(["chattr", "-a", machine.maps], check=True)
    machine.finish()


def fill_disk(machine):
    """A full disk loses nothing, and the rest is converted later."""
    machine.maps.mkdir(exist_ok=True)
    with mounted("-t", "tmpfs", "-o", "size=120k", "none", machine.user):
        machine.fill()
        machine.run(said="No space left on device")
        machine.check(tree(machine.maps))
        subprocess.run(["mount", "-o", "remount,size=4m", machine.user], check=True)
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


def make_file_system(kind, image, size=DISK):
    with open(image, "wb") as file:
        file.truncate(size)
    subprocess.run([f"mkfs.{kind}", *MAKE[kind], image], check=True, capture_output=True)


def on_file_system(kind, image, folder):
    return mounted(*MOUNT.get(kind, []), "-o", "loop", image, folder)


def cut_power(machine, kind, cuts):
    """Stops a disk as a power cut would: what was not flushed to it never gets there. The disk is a
    file on another file system, which forgets what it has not yet written itself."""
    below, outer = machine.root / "below", machine.root / "outer"
    below.mkdir(exist_ok=True)
    make_file_system("ext4", outer, 2 * DISK)
    midway = 0
    with on_file_system("ext4", outer, below):
        make_file_system(kind, below / "disk")
        with on_file_system(kind, below / "disk", machine.user):
            machine.measure()
    for _ in range(cuts):
        with on_file_system("ext4", outer, below), \
                on_file_system(kind, below / "disk", machine.user):
            machine.fill()
            subprocess.run(["sync", "-f", machine.user], check=True)
            process = machine.start()
            machine.any_moment()
            folder = os.open(below, os.O_RDONLY)
            fcntl.ioctl(folder, SHUT_DOWN, struct.pack("I", FLUSHING_NOTHING))
            os.close(folder)
            process.kill()
            process.communicate()
        with on_file_system("ext4", outer, below), \
                on_file_system(kind, below / "disk", machine.user):
            midway += machine.check(tree(machine.maps))
            machine.finish()
    print(f"{machine.edition}, {kind}: {cuts} power cuts, {midway} amid conversions")
    assert midway or cuts < 20


def kill_on(machine, kind, kills):
    """Kills runs on a file system of another kind."""
    image = machine.root / "disk"
    make_file_system(kind, image)
    with on_file_system(kind, image, machine.user):
        machine.measure()
        kill(machine, kills, kind)


def run_short_of_space(machine):
    """Where backups are copies and there is room for all results and a few copies more, every map
    is converted, although the maps of a batch want all their copies at once."""
    image = machine.root / "disk"
    make_file_system("exfat", image, 8 * MEGABYTE)
    with on_file_system("exfat", image, machine.user):
        for i in range(COUNT):
            put(machine.maps / f"map{i}.galaxy", machine.map(i))
        space = os.statvfs(machine.user)
        left = COUNT * (len(machine.converted["map0.galaxy"]) // space.f_frsize + 1) + 4
        put(machine.user / "filler", bytes((space.f_bavail - left) * space.f_frsize))
        machine.run(preexec_fn=None)
        for i in range(COUNT):
            content = (machine.maps / f"map{i}.galaxy").read_bytes()
            assert content == machine.converted[f"map{i}.galaxy"]


def succeeds(*command):
    return subprocess.run(command, capture_output=True, check=False).returncode == 0


def can_make(kind, scratch):
    """Whether a file system of a kind can be made and mounted."""
    image, folder = os.path.join(scratch, kind), os.path.join(scratch, "mounted")
    os.makedirs(folder, exist_ok=True)
    try:
        make_file_system(kind, image)
        with on_file_system(kind, image, folder):
            return True
    except (OSError, subprocess.CalledProcessError):
        return False


def attempt(test, possible, *arguments):
    if possible:
        test(*arguments)
    else:
        print("skipped:", test.__name__, *arguments[1:])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--kills", type=int, default=100)
    parser.add_argument("--cuts", type=int, default=20)
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


if __name__ == "__main__":
    main()
