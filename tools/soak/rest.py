"""Moments of rest: all operations stop, the traffic stops, and everything is looked at."""
import time

import counters
import process_state
from faulty_network import FLAKY
from operations.receive import SOME_IDS

PATIENCE_S = 60
TRIES = 20
NO_DEVICE, NO_JOB = 1, 2
# Threads that come and go with the boxes and with the databases' converters.
PASSING_THREADS = ("hub4e-", "busdev-")


class RestPoints:
    """Compares each moment of rest with the first one after the warm-up."""

    def __init__(self, run, witness, warm_up_s):
        self._run, self._witness, self._warm_up_s = run, witness, warm_up_s
        self._start = time.monotonic()
        self._last_counters = None
        self._base = None  # (memory, threads, open files)
        self.taken = []

    def take(self):
        """Called while no operation runs. The traffic is stopped and started again."""
        self._run.resting = True  # callables that work off a backlog start nothing new
        self._stop_traffic()
        self._witness.pause()
        quiet = self._wait_until_quiet()
        if not quiet:
            before = self._run.sdk.getCounters()
            time.sleep(1)
            self._run.ledger.fail(
                "rest", f"frames still move {PATIENCE_S} s after the traffic stopped: {before}, a "
                f"second later {self._run.sdk.getCounters()}")
        self._look(quiet)
        self._witness.resume()
        self._run.resting = False

    def _stop_traffic(self):
        sdk, run = self._run.sdk, self._run
        sdk.disableDataRecording()
        for job in run.all_jobs():
            self._until(lambda: sdk.stopCyclicCanFrame(job) in (0, NO_DEVICE, NO_JOB))
        run.forget_jobs()
        for handle in run.handles.values():
            for channel in range(2):
                sdk.stopLinScheduleTable(handle, channel)
        for identifier in SOME_IDS:
            sdk.unsubscribeCanFrameById(identifier)
        for name in FLAKY:  # a box that has gone has nothing to stop
            handle = run.handles[name]
            self._until(lambda: sdk.unsubscribeCanFrame(handle) or not sdk.getDeviceConfig(handle))
            for stop in (sdk.unsubscribeLinFrame, sdk.unsubscribeEthFrame,
                         sdk.unsubscribeCanFrames, sdk.unsubscribeLinFrames):
                stop(handle)
        sdk.subscribeCanFrame(run.steady, None)
        sdk.subscribeLinFrame(run.steady, None)
        sdk.unsubscribeCanFrames(run.steady)
        sdk.unsubscribeLinFrames(run.steady)

    @staticmethod
    def _until(done):
        for _ in range(TRIES):
            if done():
                return
            time.sleep(0.05)

    def _wait_until_quiet(self):
        end = time.monotonic() + PATIENCE_S
        before = self._run.sdk.getCounters()
        while time.monotonic() < end:
            time.sleep(0.3)  # longer than frames are held back for their order
            now = self._run.sdk.getCounters()
            if counters.is_quiet(before, now):
                return True
            before = now
        return False

    def _look(self, quiet):
        run, now = self._run, self._run.sdk.getCounters()
        faults = counters.unbalanced(now) if quiet else []
        faults += counters.went_backwards(self._last_counters, now)
        faults += counters.impossible(now)
        self._last_counters = now
        if quiet and now.callbackErrors != run.raised:
            faults.append(f"{now.callbackErrors} callback errors counted, {run.raised} raised")
        if quiet and not self._witness.balanced():
            faults.append("witness frames (received, sent): %s, %s" % self._witness.seen())
        state = (process_state.resident_mib(), process_state.thread_names(),
                 process_state.open_files())
        if time.monotonic() - self._start >= self._warm_up_s:
            faults += self._compare(state)
        for fault in faults:
            run.ledger.fail("rest", fault)
        self.taken.append({"at": round(time.monotonic() - self._start, 1),
                           "rss": round(state[0], 1), "threads": sum(state[1].values()),
                           "files": sum(state[2].values()), "frames": now.delivery.received,
                           "lost": now.library.dropped, "quiet": quiet})

    def _compare(self, state):
        if self._base is None:
            self._base = state
            return []
        memory, threads, files = self._base
        faults = []
        bound = self._run.memory_bound_mib
        if bound and state[0] > memory + bound:
            faults.append(f"memory grew from {memory:.1f} to {state[0]:.1f} MiB; "
                          f"{bound} MiB more are allowed")
        more = process_state.growth(threads, state[1], PASSING_THREADS)
        if more:
            faults.append(f"more threads than before: {more}")
        more = process_state.growth(files, state[2])
        if more:
            faults.append(f"more open files than before: {more}")
        return faults
