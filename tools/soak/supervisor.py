"""Starts the processes of a soak run, watches them and gives the verdict."""
import json
import os

import queue
import threading
import time

import database_folder
import faulty_network
from report import Report
from trace_check import TraceCheck, have_python_can
from watched_process import WatchedProcess

LINE_EVERY_S = 5
LOOK_EVERY_S = 0.2


class Supervisor:
    """One run, in a folder of its own that is deleted afterwards."""

    def __init__(self, options, folder):
        self._options, self._folder = options, folder
        self._report = Report()
        self._failures = []
        self._lock = threading.Lock()
        self._state = {}    # last beat of each process
        self._ends = {}     # last word of each process
        self._files = queue.Queue()
        self._traces = TraceCheck(options.quilltrace, have_python_can())
        self._last_line = 0.0
        self._told = {}

    def run(self):
        options = self._options
        print(f"soak: {options.seconds:g} s, seed {options.seed}; repeat with: ./quill soak "
              f"{options.seconds:g} --seed {options.seed}", flush=True)
        self._prepare()
        checker = threading.Thread(target=self._check_files, daemon=True)
        checker.start()
        processes = self._start()
        try:
            self._watch(processes)
        finally:  # Ctrl-C ends the others, too
            for process in processes:
                if not process.ended():
                    process.kill()
        for process in processes:
            self._look_at_end(process)
        self._files.put(None)
        checker.join()
        self._check_open_recordings()
        self._look_for_remains()
        return self._verdict()

    def _prepare(self):
        for name in ("recordings", "cwd", "tmp", "appdata"):
            (self._folder / name).mkdir()
        database_folder.fill(self._folder / "databases")
        network = faulty_network.document(self._options.seed)
        (self._folder / "network.json").write_text(json.dumps(network), encoding="utf-8")

    def _environment(self):
        return os.environ | {
            "SIMCORE_NETWORK": str(self._folder / "network.json"),
            "LocalAPPDATA": str(self._folder / "appdata"), "TMPDIR": str(self._folder / "tmp"),
            "PYTHONDONTWRITEBYTECODE": "1"}

    def _start(self):
        options = self._options
        rest_every = max(3.0, min(options.seconds / 6, 30.0))
        common = ["--hang-after", str(options.hang_after), "--seconds", str(options.seconds)]
        main = common + ["--seed", str(options.seed), "--only", options.only,
                         "--warm-up", str(options.warm_up), "--rest-every", str(rest_every),
                         "--memory-bound", str(options.memory_bound)]
        # Its sequence differs from that of the same actors in the first process.
        second = common + ["--seed", str(options.seed + 1_000_003), "--only", "databases",
                           "--network", "0"]
        return [WatchedProcess(name, arguments, self._environment(), self._folder, self._on_event)
                for name, arguments in (("boxes", main), ("databases", second))]

    def _fail(self, text):
        with self._lock:
            self._failures.append(text)

    def _on_event(self, process, event):
        kind = event["event"]
        if kind == "beat":
            self._state[process.name] = event
        elif kind == "file":
            self._files.put((event["path"], event["written"]))
        elif kind == "rest":
            self._report.line(
                "rest: {frames:,} frames so far, {lost:,} lost in the boxes, memory {rss} MiB, "
                "{threads} threads, {files} open files".format(**event))
        elif kind == "end":
            self._ends[process.name] = event

    def _check_files(self):
        while (job := self._files.get()) is not None:
            try:
                for fault in self._traces.check(*job):
                    self._fail(fault)
            except Exception as error:
                self._fail(f"{job[0]} cannot be checked: {error!r}")

    def _check_open_recordings(self):
        """Recordings that ran when the module was closed are whole, too."""
        for path in sorted((self._folder / "recordings").iterdir()):
            for fault in self._traces.check(path, None):
                self._fail(f"ended with the module: {fault}")

    def _watch(self, processes):
        end = time.monotonic() + self._options.seconds + 6 * self._options.hang_after
        looked = time.monotonic()
        while not all(process.ended() for process in processes):
            late = time.monotonic() - looked - LOOK_EVERY_S
            if late > 1:  # the machine had no time for this process, so signs of life may wait
                end += late
                for process in processes:
                    process.forgive(late)
            looked = time.monotonic()
            for process in processes:
                if process.ended():
                    continue
                reason = self._hang_reason(process)
                if not reason and time.monotonic() > end:
                    reason = "does not come to its end"
                if reason:
                    self._fail(f"{process.name}: {reason}\n{process.dump_stacks()}")
                    process.kill()
            self._print_state()
            time.sleep(LOOK_EVERY_S)

    def _hang_reason(self, process):
        limit = self._options.hang_after
        if process.silent_for() > limit:
            return f"no sign of life for {limit:g} s"
        for actor, (operation, seconds) in self._state.get(process.name, {}).get("busy",
                                                                                 {}).items():
            if seconds > limit:
                return f"{actor} has been in {operation} for {seconds:g} s"
        return ""

    def _print_state(self):
        if time.monotonic() - self._last_line < LINE_EVERY_S or "boxes" not in self._state:
            return
        self._last_line = time.monotonic()
        boxes, other = self._state["boxes"], self._state.get("databases", {})
        failed = boxes["failed"] + other.get("failed", 0) + len(self._failures)
        self._report.line(
            f"{boxes['operations']:,} operations, {other.get('operations', 0):,} in the second "
            f"process, {self._traces.checked} files read, memory {boxes['rss']} MiB, "
            f"{failed} failures")

    def _look_at_end(self, process):
        process.finish_reading()
        if process.status() != 0:
            self._fail(f"{process.name} ended with status {process.status()}:\n"
                       f"{process.errors()[-6000:]}")
        elif process.name not in self._ends:
            self._fail(f"{process.name} ended without a word:\n{process.errors()[-6000:]}")
        left = process.session()
        if left:
            self._fail(f"{process.name} left processes behind: {left}")
            process.kill()

    def _look_for_remains(self):
        for name in ("tmp", "cwd", "recordings"):
            left = sorted(path.name for path in (self._folder / name).rglob("*")
                          if path.is_file())
            if left:
                self._fail(f"left behind in {name}: {left[:20]}")
        left = database_folder.unexpected(self._folder / "databases")
        if left:
            self._fail(f"left behind beside the databases: {left[:20]}")

    def _verdict(self):
        texts = list(self._failures)
        for name, end in sorted(self._ends.items()):
            self._report.table(f"process {name}", end["operations"])
            texts += [f"{name}, {failure['where']}: {failure['text']}"
                      for failure in end["failures"]]
            if end["failed"] > len(end["failures"]):
                texts.append(f"{name}: {end['failed'] - len(end['failures'])} more failures")
        print(f"\n{self._traces.checked} recorded files with {self._traces.frames:,} frames were "
              f"read back, {self._traces.compared} of them by python-can too")
        self._report.failures(texts)
        print(f"\nsoak, seed {self._options.seed}: " +
              (f"{len(texts)} FAILURES" if texts else "passed"), flush=True)
        return 1 if texts else 0
