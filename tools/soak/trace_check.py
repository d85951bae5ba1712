"""Checks recorded files with our own reader and, now and then, with python-can."""
import pathlib
import sqlite3
import subprocess

CAN = 1
# quilltrace ends with this status for a file that holds a header but no frame.
NO_FRAME = 16
PYTHON_CAN_EVERY = 4
SYSTEM_PYTHON = "/usr/bin/python3"
COUNT = """
import sys, can
reader = can.BLFReader if sys.argv[1].endswith(".blf") else can.ASCReader
print(sum(1 for message in reader(sys.argv[1])))
"""


def have_python_can():
    try:
        return subprocess.run([SYSTEM_PYTHON, "-c", "import can"], capture_output=True,
                              check=False).returncode == 0
    except OSError:
        return False


class TraceCheck:
    """Every file is read whole and deleted."""

    def __init__(self, quilltrace, python_can):
        self._quilltrace, self._python_can = str(quilltrace), python_can
        self.checked = 0
        self.compared = 0
        self.frames = 0

    def check(self, path, written):
        """Texts about what is wrong with a file of so many frames; None where nobody knows."""
        path = pathlib.Path(path)
        database = path.with_suffix(path.suffix + ".qtrace")
        try:
            return self._check(path, database, written)
        finally:
            path.unlink(missing_ok=True)
            database.unlink(missing_ok=True)

    def _check(self, path, database, written):
        self.checked += 1
        done = subprocess.run([self._quilltrace, "import", "--strict", "--quiet", str(path), "-o",
                               str(database)], capture_output=True, text=True, timeout=300,
                              check=False)
        if not written and done.returncode != 0:
            return [] if done.returncode in (0, NO_FRAME) else [
                f"{path.name}: import ended with {done.returncode}: {done.stderr.strip()}"]
        if done.returncode != 0:
            return [f"{path.name}: import ended with {done.returncode}: {done.stderr.strip()}"]
        info = subprocess.run([self._quilltrace, "info", str(database)], capture_output=True,
                              text=True, timeout=300, check=False)
        if info.returncode != 0:
            return [f"{path.name}: info ended with {info.returncode}: {info.stderr.strip()}"]
        with sqlite3.connect(database) as connection:
            frames = connection.execute("SELECT count(*) FROM frame").fetchone()[0]
            can_frames = connection.execute("SELECT count(*) FROM frame WHERE bus = ?",
                                            (CAN,)).fetchone()[0]
        connection.close()
        self.frames += frames
        if written is not None and frames != written:
            return [f"{path.name}: {written} frames were written, {frames} were read"]
        return self._compare(path, can_frames)

    def _compare(self, path, can_frames):
        if not self._python_can or self.checked % PYTHON_CAN_EVERY != 1:
            return []
        done = subprocess.run([SYSTEM_PYTHON, "-c", COUNT, str(path)], capture_output=True,
                              text=True, timeout=300, check=False)
        self.compared += 1
        if done.returncode != 0:
            return [f"{path.name}: python-can: {done.stderr.strip()[-400:]}"]
        seen = int(done.stdout)
        return [] if seen == can_frames else [
            f"{path.name}: python-can reads {seen} CAN frames, {can_frames} are there"]
