"""A sample machine whose only maps are many of one kind, and the promise about them."""
import contextlib
import os
import pathlib
import random
import resource
import shutil
import signal
import statistics
import subprocess
import time

COUNT = 15  # maps
OPEN_FILES = 39, 46, 64, 1024  # limits, with which a batch is of one, two, four or all maps
MEGABYTE = 1 << 20
EDITIONS = {
    "base": "AppData/Local/Kettlewick Games/Vorakai",
    "expansion": "Documents/My Games/Kettlewick Games/Vorakai Tarnfall",
}


def tree(folder):
    """The files below a folder with their contents."""
    return {str(p.relative_to(folder)): p.read_bytes() for p in folder.rglob("*") if p.is_file()}


def succeeds(*command):
    return subprocess.run(command, capture_output=True, check=False).returncode == 0


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

    def start(self, env=(), files=None, **how):
        """Starts a silent run that may open so many files, by chance if that is not said."""
        files = files or random.choice(OPEN_FILES)
        how.setdefault("preexec_fn", lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (files, files)))
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
        assert lowered[0] == lowered[1], lowered[0].keys() ^ lowered[1].keys()


def kill(machine, kills, kind="memory"):
    """Kills runs so many times, and until a few were amid conversions if the number is no small one."""
    midway = done = 0
    wanted = 3 if kills >= 20 else 0

    def enough():
        return done >= kills and midway >= wanted

    while not enough():
        assert done < 20 * kills, midway
        machine.fill()
        killed = True
        while killed and not enough():
            process = machine.start()
            machine.any_moment()
            process.kill()
            killed = process.wait() == -signal.SIGKILL
            done += killed
            midway += killed and machine.check(tree(machine.maps))
        machine.finish()
    print(f"{machine.edition}, {kind}: {done} kills, {midway} with some maps converted and some not")
