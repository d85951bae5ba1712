"""Frame callables of every temper: quick, slow, busy, raising, and such that use the module."""
import collections
import time

RAISES_EVERY = 7
KEPT_FRAMES = 500
ON_PURPOSE = "on purpose"


class SoakError(Exception):
    """Raised by callables on purpose."""


class Counting:
    """Counts what it is called with; the base of all others."""

    def __init__(self, run):
        self.run = run
        self.count = 0

    def __call__(self, frame):
        self.count += 1
        # Batch subscriptions call with a list, which is never empty.
        self.act(frame[0] if isinstance(frame, list) else frame)

    def act(self, frame):
        pass


class Keeping(Counting):
    """Keeps and changes frames, which belong to it."""

    def __init__(self, run):
        super().__init__(run)
        self.frames = collections.deque(maxlen=KEPT_FRAMES)

    def act(self, frame):
        if isinstance(frame, self.run.sdk.LinFrame):
            self.run.sdk.toLinMessage(self.run.steady, frame)
        if hasattr(frame, "id"):
            frame.id = 1
        repr(frame)
        self.frames.append(frame)


class Slow(Counting):
    """Blocks for its first frames only, so that the backlog can be worked off."""

    def __init__(self, run, frames, seconds):
        super().__init__(run)
        self.frames, self.seconds = frames, seconds

    def act(self, frame):
        if self.count <= self.frames:
            time.sleep(self.seconds)


class Busy(Slow):
    """As Slow, but computes."""

    def act(self, frame):
        end = time.monotonic() + (self.seconds if self.count <= self.frames else 0)
        while time.monotonic() < end:
            pass


class Raising(Counting):
    """Raises now and then; even what would end a script must not end delivery."""

    def __init__(self, run, choice):
        super().__init__(run)
        self.error = [SoakError, SoakError, SystemExit, KeyboardInterrupt][choice % 4]

    def act(self, frame):
        if self.count % RAISES_EVERY == 0:
            self.run.raised_on_purpose()
            raise self.error(ON_PURPOSE)


class UsesModule(Counting):
    """Calls back into the module, now and then, from the thread that delivers frames."""

    def __init__(self, run, choice):
        super().__init__(run)
        self.choice = choice

    def act(self, frame):
        if self.count % 50 != 1 or self.run.resting:
            return
        sdk, run = self.run.sdk, self.run
        calls = [
            lambda: sdk.sendCanFrame(run.steady, sdk.CANRawFrame(id=0x155, data=[1])),
            lambda: sdk.subscribeCanFrameById(3, None),
            lambda: sdk.unsubscribeCanFrameById(3),
            lambda: sdk.getRecordingStatus(),
            lambda: sdk.getDeviceList(sdk.DeviceType.All, 0),
            lambda: sdk.getDeviceConfig(run.handles["flaky-1"]),
            lambda: sdk.unsubscribeEthFrame(run.handles["flaky-1"]),
            lambda: sdk.subscribeLinFrame(run.handles["flaky-2"], None),
            lambda: repr(run.handles["flaky-2"]),
            lambda: sdk.getCounters().devices,
            lambda: sdk.setDeviceConfig(run.handle(run.handles["flaky-2"].deviceInfo.mac)),
        ]
        calls[self.choice % len(calls)]()


class CallsWhenDropped(Counting):
    """Uses the module while it is being dropped, which happens inside a subscription."""

    def __del__(self):
        if not self.run.over:
            self.run.sdk.getCanFrameCountById(1)


def random_callable(run, rng):
    """A callable; which one follows from the random numbers alone."""
    frames, seconds, choice = rng.randrange(1, 10), rng.uniform(0.001, 0.03), rng.randrange(100)
    return rng.choice([
        lambda: Counting(run), lambda: Keeping(run), lambda: Slow(run, frames, seconds),
        lambda: Busy(run, frames, seconds), lambda: Raising(run, choice), lambda: UsesModule(run, choice),
        lambda: CallsWhenDropped(run), lambda: None])()
