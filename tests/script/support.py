"""Waiting for frames without fixed times."""
import threading

TIMEOUT_S = 30


class Inbox:
    """A callable that keeps what it is called with."""

    def __init__(self, keep=lambda frame: True):
        self._changed = threading.Condition()
        self._keep = keep
        self.frames = []

    def __call__(self, frame):
        with self._changed:
            if self._keep(frame):
                self.frames.append(frame)
                self._changed.notify_all()

    def wait(self, count):
        with self._changed:
            done = self._changed.wait_for(lambda: len(self.frames) >= count, TIMEOUT_S)
        assert done, f"{len(self.frames)} of {count} frames"
        return list(self.frames)


HAND_OVERS = ["library", "readers", "resort", "dispatch", "delivery"]


def quiet_counters(sdk, box):
    """Ends the subscriptions of a box and answers the counters once no frame is on the road."""
    sdk.unsubscribeCanFrames(box)
    sdk.unsubscribeLinFrames(box)
    sdk.unsubscribeLinFrame(box)
    sdk.unsubscribeCanFrame(box)
    wake = threading.Event()
    counters = sdk.getCounters()
    while any(getattr(counters, name).held for name in HAND_OVERS):
        wake.wait(0.02)
        counters = sdk.getCounters()
    return counters
