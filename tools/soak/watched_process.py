"""A process whose events are read and which is told on when it hangs."""
import json
import os
import shutil
import signal
import subprocess
import sys
import threading
import time

import pathlib

HERE = pathlib.Path(__file__).resolve().parent
DUMP_S = 20


class WatchedProcess:
    """Runs run.py in a session of its own; `on_event` is called on a thread of this object."""

    def __init__(self, name, arguments, environment, folder, on_event):
        self.name = name
        self._stderr_path = folder / f"{name}.err"
        self._last_sign = time.monotonic()
        self._on_event = on_event
        reading, writing = os.pipe()
        with open(folder / f"{name}.out", "wb") as out, open(self._stderr_path, "wb") as err:
            self._process = subprocess.Popen(
                [sys.executable, str(HERE / "run.py"), "--folder", str(folder), "--events",
                 str(writing), *arguments],
                cwd=folder / "cwd", env=environment, stdin=subprocess.DEVNULL, stdout=out,
                stderr=err, pass_fds=[writing], start_new_session=True)
        os.close(writing)
        self._reader = threading.Thread(target=self._read, args=(reading,), daemon=True)
        self._reader.start()

    def _read(self, descriptor):
        with os.fdopen(descriptor, encoding="utf-8") as events:
            for line in events:
                self._last_sign = time.monotonic()
                self._on_event(self, json.loads(line))

    def silent_for(self):
        return time.monotonic() - self._last_sign

    def forgive(self, seconds):
        """Leaves time out of the count in which nobody looked."""
        self._last_sign += seconds

    def ended(self):
        return self._process.poll() is not None

    def status(self):
        return self._process.returncode

    def pid(self):
        return self._process.pid

    def finish_reading(self):
        self._reader.join(30)

    def errors(self):
        return self._stderr_path.read_text(encoding="utf-8", errors="replace")

    def dump_stacks(self):
        """Python's stacks go to its standard error; native ones come from gdb where it is there."""
        self._process.send_signal(signal.SIGUSR1)
        time.sleep(1)
        text = self.errors()[-20000:]
        gdb = shutil.which("gdb")
        if gdb:
            try:
                done = subprocess.run([gdb, "-batch", "-p", str(self._process.pid), "-ex",
                                       "thread apply all bt 25"], capture_output=True, text=True,
                                      timeout=DUMP_S, check=False)
                text += done.stdout
            except subprocess.TimeoutExpired:
                text += "gdb took too long\n"
        return text

    def kill(self):
        """Ends the process and what it started."""
        for pid in self.session():
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
        self._process.wait(30)

    def session(self):
        """Processes of the session that are there now."""
        found = []
        for entry in os.listdir("/proc"):
            if not entry.isdigit():
                continue
            try:
                fields = pathlib.Path(f"/proc/{entry}/stat").read_text(encoding="utf-8")
            except OSError:
                continue
            # pid (name) state ppid pgrp session ...; the name may hold blanks.
            rest = fields.rpartition(")")[2].split()
            if rest[3] == str(self._process.pid) and rest[0] != "Z":
                found.append(int(entry))
        return found
