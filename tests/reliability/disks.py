"""Trouble with disks: full ones, cut power, kills on other file systems, blocks that cannot be written."""
import contextlib
import errno
import fcntl
import os
import pathlib
import random
import struct
import subprocess
import time

from machine import COUNT, MEGABYTE, OPEN_FILES, kill, mounted, put, succeeds, tree

DISK = 320 * MEGABYTE  # some kinds want 300 MB; the file is sparse
BLOCK = 4096  # bytes
SHUT_DOWN, FLUSHING_NOTHING = 0x8004587D, 2  # XFS_IOC_GOINGDOWN, which ext4 knows too
MAKE = {"ext4": ["-q", "-F", "-b", "4096"], "xfs": ["-q", "-f"], "btrfs": ["-q", "-f"], "ntfs": ["-q", "-F", "-f"],
        "exfat": []}
MOUNT = {"ntfs": ["-t", "ntfs-3g"], "exfat": ["-t", "exfat-fuse", "-o", "nonempty"]}


def fill_disk(machine):
    """A full disk loses nothing, and the rest is converted later."""
    machine.maps.mkdir(exist_ok=True)
    with mounted("-t", "tmpfs", "-o", "size=120k", "none", machine.user):
        machine.fill()
        machine.run(said="No space left on device")
        machine.check(tree(machine.maps))
        subprocess.run(["mount", "-o", "remount,size=4m", machine.user], check=True)
        machine.finish()


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


def fill_up(folder):
    """Writes a file that leaves no room."""
    with open(folder / "filler", "wb", buffering=0) as file:
        try:
            while True:
                file.write(bytes(BLOCK))
        except OSError:
            pass


@contextlib.contextmanager
def on_loop(kind, image, folder):
    """Like `on_file_system`, but the disk is let go of before this ends."""
    loop = subprocess.run(["losetup", "--find", "--show", image], check=True, capture_output=True,
                          text=True).stdout.strip()
    # A block at a time: the kernel takes a loop device's write that was done in part for a whole one.
    sysfs = pathlib.Path("/sys/block") / pathlib.Path(loop).name
    (sysfs / "queue/max_sectors_kb").write_text(str(BLOCK // 1024))
    try:
        subprocess.run(["mount", *MOUNT.get(kind, []), loop, folder], check=True,
                       stdout=subprocess.DEVNULL)
        try:
            yield
        finally:
            subprocess.run(["umount", folder], check=True)
    finally:
        while not succeeds("losetup", "--detach", loop) or succeeds("losetup", loop):
            time.sleep(0.01)


@contextlib.contextmanager
def on_one_processor():
    """ext4 gives each processor its own blocks."""
    all_of_them = os.sched_getaffinity(0)
    os.sched_setaffinity(0, {min(all_of_them)})
    try:
        yield
    finally:
        os.sched_setaffinity(0, all_of_them)


def fail_blocks(machine, kind, blocks):
    """A block of a file that a run writes cannot be written. The disk is a file in memory with a hole
    where the block is, and the memory is full. The kernel tells of it once, to whoever flushes
    first. Blocks of folders are left out, as file systems without a journal lose the folder."""
    below = machine.root / "below"
    below.mkdir(exist_ok=True)
    image, written = below / "disk", {}
    reported = folders = 0
    size = 8 * MEGABYTE
    with mounted("-t", "tmpfs", "-o", f"size={size + MEGABYTE}", "none", below), on_one_processor():
        make_file_system(kind, image, size)
        image.write_bytes(image.read_bytes())  # no holes
        with on_loop(kind, image, machine.user):
            machine.fill()
        before = image.read_bytes()
        for files in OPEN_FILES:
            image.write_bytes(before)
            with on_loop(kind, image, machine.user):
                machine.run(files=files)
            after = image.read_bytes()
            written[files] = [at for at in range(0, size, BLOCK) if not any(before[at:at + BLOCK])
                              and 0 not in (after[at:at + BLOCK].rstrip(b"\0") or b"\0")]
        for _ in range(blocks):
            files = random.choice(OPEN_FILES)
            at = random.choice(written[files])
            image.write_bytes(before)
            subprocess.run(["fallocate", "--punch-hole", "--offset", str(at), "--length", str(BLOCK),
                            image], check=True)
            fill_up(below)
            with on_loop(kind, image, machine.user):
                process = machine.start(files=files)
                process.communicate()
            (below / "filler").unlink()
            reported += process.returncode
            with on_loop(kind, image, machine.user):
                try:
                    machine.check(tree(machine.maps))
                except OSError as error:  # the block was given to the folder for a while
                    assert error.errno == errno.EIO and process.returncode
                    folders += 1
    print(f"{machine.edition}, {kind}: {blocks} times a block cannot be written, {reported} reported, "
          f"{folders} folders lost")
    assert reported > folders or blocks < 8


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
