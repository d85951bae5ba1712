"""One process of a soak run: imports the module, performs the operations, checks, tells.

Started by the supervisor, which reads what is told, one JSON object a line, from a descriptor.
"""
import argparse
import faulthandler
import json
import os
import pathlib
import signal
import sys
import threading
import time
import traceback

import actors
import faulty_network
import operations
import process_state
import rest
from callables import ON_PURPOSE
from database_folder import DatabaseFolder
from ledger import Ledger
from operations.transmit import JOB_SLOTS
from witness import Witness

BEAT_S = 1.0
# Two actors of these groups work side by side.
TWICE = {"transmit", "databases"}
# Threads that may live on when the module was closed: those of the interpreter.
ENDED = ("frame-dispatch", "box-discovery", "hub4e-", "busdev-", "rec-", "blf-", "imp-")


class Teller:
    """Writes events for the supervisor."""

    def __init__(self, descriptor):
        self._file = os.fdopen(descriptor, "w", encoding="utf-8")
        self._lock = threading.Lock()

    def tell(self, event, **fields):
        try:
            with self._lock:
                self._file.write(json.dumps({"event": event} | fields) + "\n")
                self._file.flush()
        except BrokenPipeError:
            os._exit(3)  # the supervisor is gone


class Run:
    """What operations work with."""

    def __init__(self, sdk, options, teller):
        self.sdk, self.seed, self.folder = sdk, options.seed, options.folder
        self.memory_bound_mib = options.memory_bound
        self.ledger = Ledger()
        self.over = False
        self.resting = False
        self.raised = 0
        self.seen_counters = None
        self._teller = teller
        self._ending = threading.Event()
        self._recordings = 0
        self.jobs = [None] * JOB_SLOTS
        self._replaced_jobs = []
        self.databases = DatabaseFolder(pathlib.Path(options.folder) / "databases")
        self.steady = self.handle(faulty_network.STEADY_MAC)
        self.absent = self.handle(faulty_network.ABSENT_MAC)
        self.handles = {name: self.handle(mac) for name, mac in faulty_network.FLAKY.items()}
        self.handles[faulty_network.STEADY] = self.steady
        self.can_lists = [sdk.CANFrameFilterList() for _ in range(4)]
        self.lin_lists = [sdk.LINFrameFilterList() for _ in range(2)]

    def handle(self, mac):
        return self.sdk.DeviceHandle(deviceInfo=self.sdk.RVBoxDeviceInfo(mac=mac))

    def some_handle(self, rng):
        return self.handle(self.handles[rng.choice(sorted(self.handles))].deviceInfo.mac)

    def some_flaky_handle(self, rng):
        return self.handle(faulty_network.FLAKY[rng.choice(sorted(faulty_network.FLAKY))])

    def keep_job(self, slot, job):
        """The job that was there may still run, when its box refused to stop it."""
        if self.jobs[slot] is not None:
            self._replaced_jobs.append(self.jobs[slot])
        self.jobs[slot] = job

    def all_jobs(self):
        return self._replaced_jobs + [job for job in self.jobs if job is not None]

    def forget_jobs(self):
        self._replaced_jobs.clear()

    def new_recording(self, extension):
        self._recordings += 1
        return os.path.join(self.folder, "recordings", f"{self._recordings:05}.{extension}")

    def recording_ended(self, path):
        """Checks what the module says about a recording and hands the file to the supervisor."""
        status = self.sdk.getRecordingStatus()
        assert not status.recording, repr(status)
        assert status.offered == status.written + status.dropped + status.skipped, repr(status)
        assert status.dropped == 0 and status.error == "", repr(status)
        assert os.path.getsize(path) == status.bytes, (os.path.getsize(path), repr(status))
        self._teller.tell("file", path=path, written=status.written)

    def raised_on_purpose(self):
        self.raised += 1  # on the one thread that delivers

    def pause(self, seconds):
        self._ending.wait(seconds)

    def end(self):
        self.over = True
        self._ending.set()


def watch_unraisable(run):
    """Errors of callables come here; those on purpose are counted where they are raised."""
    def hook(unraisable):
        if str(unraisable.exc_value) == ON_PURPOSE:
            return
        if run.over and isinstance(unraisable.exc_value, RuntimeError):
            return
        text = "".join(traceback.format_exception(unraisable.exc_value))
        run.ledger.fail(f"callable {unraisable.object!r}", text)
    sys.unraisablehook = hook


class Beat(threading.Thread):
    """Tells every second what the process is at, until stop(). Silence means a hang."""

    def __init__(self, run, teller, cast):
        super().__init__(name="beat", daemon=True)
        self._run, self._teller, self._cast = run, teller, cast
        self._stopped = threading.Event()

    def run(self):
        while not self._stopped.wait(BEAT_S):
            now = time.monotonic()
            busy = {actor.name: [actor.current[0], round(now - actor.current[1], 1)]
                    for actor in self._cast if actor.current[0]}
            found = self._run.ledger.snapshot()
            self._teller.tell(
                "beat", busy=busy, failed=found["failed"],
                operations=sum(sum(entry[kind] for kind in ("done", "refused", "raised", "failed"))
                               for entry in found["operations"].values()),
                rss=round(int(process_state.resident_field("VmRSS")) / 1024, 1))

    def stop(self):
        self._stopped.set()
        self.join()


def chosen_groups(options):
    groups = operations.groups()
    names = options.only.split(",") if options.only else [group.name for group in groups]
    unknown = set(names) - {group.name for group in groups}
    if unknown:
        sys.exit(f"no such group of operations: {', '.join(sorted(unknown))}")
    return [group for group in groups if group.name in names]


def leftover_threads():
    """Names of the module's threads that live although it was closed."""
    end = time.monotonic() + 5
    while True:
        left = {name: count for name, count in process_state.thread_names().items()
                if name.startswith(ENDED)}
        if not left or time.monotonic() > end:
            return left
        time.sleep(0.05)


def perform(run, options, teller):
    gate = actors.Gate()
    cast = [actors.Actor(run, group, number, gate) for group in chosen_groups(options)
            for number in range(1, 3 if group.name in TWICE else 2)]
    beat = Beat(run, teller, cast)
    beat.start()
    witness = Witness(run)
    points = rest.RestPoints(run, witness, options.warm_up)
    if options.network:
        handles = run.sdk.getDeviceList(run.sdk.DeviceType.All, 20000)
        assert handles, "the network has no box"
        witness.start()
    end = time.monotonic() + options.seconds
    for actor in cast:
        actor.start()
    while time.monotonic() < end:
        run.pause(min(options.rest_every, end - time.monotonic()))
        if not options.network:
            continue
        late = gate.close(cast, 10 * options.hang_after)
        assert not late, f"still busy: {late}"
        points.take()
        teller.tell("rest", **points.taken[-1])
        gate.open()
    close_module(run, gate, cast, options)
    beat.stop()
    return points.taken


def end_actors(run, gate, cast, options):
    run.end()
    gate.end()
    for actor in cast:
        actor.join(options.hang_after)
        if actor.is_alive():
            run.ledger.fail("end", f"{actor.name} does not end")


def close_module(run, gate, cast, options):
    """By its seed, a run closes the module in the midst of the operations, after them, or leaves
    that to the interpreter's end."""
    end = ["in the midst", "after", "never"][options.seed % 3]
    if options.network:
        run.pause(1.0)  # traffic again
    if end != "in the midst":
        end_actors(run, gate, cast, options)
        if options.network:  # it is for the end to complete the file
            run.sdk.enableDataRecording(run.new_recording("blf"), [], 0)
        if end == "never":
            return
    run.end()
    run.sdk.exit()
    end_actors(run, gate, cast, options)
    left = leftover_threads()
    if left:
        run.ledger.fail("end", f"threads live on after exit(): {left}")


def parse():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--seed", type=int, required=True)
    parser.add_argument("--seconds", type=float, required=True)
    parser.add_argument("--folder", required=True)
    parser.add_argument("--events", type=int, required=True, help="descriptor for events")
    parser.add_argument("--only", default="", help="groups of operations, with commas")
    parser.add_argument("--network", type=int, default=1, help="0: without boxes")
    parser.add_argument("--warm-up", type=float, default=30)
    parser.add_argument("--rest-every", type=float, default=20)
    parser.add_argument("--memory-bound", type=float, default=0, help="MiB; 0: none")
    parser.add_argument("--hang-after", type=float, default=60)
    return parser.parse_args()


def main():
    options = parse()
    faulthandler.enable()
    faulthandler.register(signal.SIGUSR1, all_threads=True)
    teller = Teller(options.events)
    import QuillScriptsSDK as sdk

    run = Run(sdk, options, teller)
    watch_unraisable(run)
    taken = []
    try:
        taken = perform(run, options, teller)
    except Exception:
        run.ledger.fail("run", traceback.format_exc())
    teller.tell("end", rests=taken, **run.ledger.snapshot())
    return 0


if __name__ == "__main__":
    sys.exit(main())
