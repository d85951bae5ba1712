"""What a process holds: memory, threads, open files."""
import collections
import ctypes
import gc
import os
import pathlib


def resident_mib():
    """Resident memory in MiB, once what is free was given back to the system."""
    gc.collect()
    try:
        ctypes.CDLL(None).malloc_trim(0)
    except AttributeError:
        pass  # another C library; the figure is then a little higher
    return int(resident_field("VmRSS")) / 1024


def resident_field(name):
    for line in pathlib.Path("/proc/self/status").read_text(encoding="ascii").splitlines():
        if line.startswith(name + ":"):
            return line.split()[1]
    return "0"


def thread_names():
    """How many threads have which name."""
    names = collections.Counter()
    for task in pathlib.Path("/proc/self/task").iterdir():
        try:
            names[(task / "comm").read_text(encoding="utf-8").strip()] += 1
        except OSError:
            pass  # it has just ended
    return names


def open_files():
    """What the open descriptors stand for, without those of this question."""
    targets = collections.Counter()
    for descriptor in os.listdir("/proc/self/fd"):
        try:
            target = os.readlink(f"/proc/self/fd/{descriptor}")
        except OSError:
            continue
        if not target.startswith("/proc/"):
            # The numbers of pipes and sockets differ from one to the next.
            targets[target.split(":")[0] if ":[" in target else target] += 1
    return targets


def growth(before, after, ignored=()):
    """What is there more often than before."""
    more = collections.Counter(after)
    more.subtract(before)
    return {name: count for name, count in more.items()
            if count > 0 and not any(name.startswith(text) for text in ignored)}
