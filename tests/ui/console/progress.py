#!/usr/bin/env python3
"""Reads the progress of silent runs on a terminal: what it tells, how often, and that it is erased.

    progress.py BUILDFOLDER
"""
import os
import pathlib
import pty
import re
import signal
import subprocess
import sys
import tempfile
import time

FOLDERS, MAPS = 3000, 1000
COLUMNS = 80
MEMORY = "/dev/shm" if os.path.isdir("/dev/shm") else None
REPORT = ["1 map could not be converted and was skipped:",
          r"C:\users\player\AppData\Local\Kettlewick Games\Vorakai\bad.galaxy: "
          "cannot convert it: it has no second line", ""]


def make_machine(build, root, bad):
    """A machine with many folders, many old maps and, if `bad`, one that cannot be converted;
    returns the folder that holds them."""
    subprocess.run(["bash", "-c", 'source scripts/common.sh; make_sample base "$@"', "bash",
                    root, build], check=True)
    user = root / "machine/drive_c/users/player/AppData/Local/Kettlewick Games/Vorakai"
    old = (user / "Amber Reach.galaxy").read_bytes()
    for i in range(FOLDERS):
        (user / f"many/folder{i}").mkdir(parents=True)
    (user / "thousand").mkdir()
    for i in range(MAPS):
        (user / f"thousand/map{i}.galaxy").write_bytes(old)
    if bad:
        (user / "bad.galaxy").write_bytes(b"only one line")
    return user


def searching(process, folder):
    """Whether the process has a folder below `folder` open."""
    for name in os.listdir(f"/proc/{process.pid}/fd"):
        try:
            if os.readlink(f"/proc/{process.pid}/fd/{name}").startswith(f"{folder}/"):
                return True
        except FileNotFoundError:
            pass
    return False


def pause_when(process, reached, seconds):
    """Stops the process at a moment at which `reached` is true, and lets it go on later."""
    while True:
        process.send_signal(signal.SIGSTOP)
        assert process.poll() is None, "the run was over too early"
        os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
        if reached():
            break
        process.send_signal(signal.SIGCONT)
        time.sleep(0.0005)  # or a call that every signal interrupts would never end
    time.sleep(seconds)
    process.send_signal(signal.SIGCONT)


def run(build, stderr, pauses, bad):
    """Converts a fresh machine's maps; returns how many seconds it took."""
    with tempfile.TemporaryDirectory(dir=MEMORY) as scratch:
        root = pathlib.Path(scratch) / "base"
        user = make_machine(build, root, bad)
        hidden = ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")
        environment = {k: v for k, v in os.environ.items() if k not in hidden}
        start = time.monotonic()
        process = subprocess.Popen([build / "vora-map-updater", "/silent"], cwd=root / "data",
                                   env=environment | {"WINEPREFIX": str(root / "machine")},
                                   stderr=stderr)
        if pauses:
            pause_when(process, lambda: searching(process, user / "many"), 1.2)
            pause_when(process, lambda: any((user / "thousand").glob("*.galold")), 0.2)
        assert process.wait() == int(bad)
        return time.monotonic() - start


def run_on_terminal(build, pauses, bad):
    """Returns the progress lines, the terminal's lines at the end, and the seconds."""
    master, slave = pty.openpty()
    subprocess.run(["stty", "cols", str(COLUMNS)], stdin=slave, check=True)
    seconds = run(build, slave, pauses, bad)
    os.close(slave)
    said = b""
    try:
        while piece := os.read(master, 1 << 16):
            said += piece
    except OSError:  # its end
        os.close(master)
    lines, progress = [], []
    for line in said.decode().replace("\r\n", "\n").split("\n"):
        shown = ""
        for written in line.split("\r"):
            assert len(written) < COLUMNS or "cannot" in written, written
            shown = written + shown[len(written):]
            progress += [shown.rstrip()] * written.startswith("stage")
        lines.append(shown.rstrip())
    return progress, lines, seconds


def check(progress, seconds):
    """Checks what the lines of a run of two stages tell, and that they are not too many."""
    print(*progress, sep="\n")
    assert len(progress) <= 10 * seconds, (len(progress), seconds)
    search, conversion = [[re.fullmatch(pattern, line) for line in progress] for pattern in (
        r"stage 1 of 2: (\d+) folders searched, (\d+) maps found",
        r"stage 2 of 2: (\d+) of (\d+) maps checked, (\d+) converted")]
    assert all(a or b for a, b in zip(search, conversion))
    assert 0 < max(int(line[1]) for line in search if line) <= FOLDERS + 100
    counts = [tuple(map(int, line.groups())) for line in conversion if line]
    assert all(0 <= converted < looked_at <= found for looked_at, found, converted in counts), counts
    assert MAPS < counts[-1][1] < MAPS + 100 and counts[-1][2] > 0, counts


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    os.chdir(pathlib.Path(__file__).resolve().parents[3])
    for bad in (True, False):
        progress, lines, seconds = run_on_terminal(build, True, bad)
        check(progress, seconds)
        assert lines == (REPORT if bad else [""]), lines
    progress, lines, seconds = run_on_terminal(build, False, False)
    assert lines == [""] and (seconds > 1 or not progress), (lines, progress)
    with tempfile.TemporaryFile() as file:
        run(build, file, True, True)
        file.seek(0)
        assert file.read().decode() == "\n".join(REPORT)
    print("the progress passed")


if __name__ == "__main__":
    main()
