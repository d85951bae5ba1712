"""What every test starts with: a network, the box on it, the bus, the unit under test.

    pytest examples/ecu_test_suite

The tester works on CAN channel 0 of the box, the simulated unit on channel 1 of the same bus. To
test a real unit, connect it to channel 0 and let the fixture `ecu` do nothing.
"""
import itertools
import json
import os
import threading

import pytest

import QuillScriptsSDK as sdk

from door_ecu import DoorEcu
from messages import PROTECTION, Messages

TESTER_CHANNEL, ECU_CHANNEL = 0, 1
MARK_ID = 0x7FF
PATIENCE_S = 30  # how long a test waits before it fails; nothing waits longer than it must

NETWORK = {
    "buses": {"body": {"kind": "can", "bitrate": 500_000}},
    "boxes": [{"name": "bench", "channels": {"can": ["body", "body"]}}],
}


class Bus:
    """All frames that the tester's channel sends and receives, in the order of the bus."""

    def __init__(self, handle):
        self._handle = handle
        self._changed = threading.Condition()
        self._frames = []
        self._marks = itertools.count(1)

    def __call__(self, frame):
        if frame.channelId != TESTER_CHANNEL:
            return
        with self._changed:
            self._frames.append(frame)
            self._changed.notify_all()

    def send(self, identifier, data):
        sdk.sendCanFrame(self._handle, sdk.CANRawFrame(
            id=identifier, channelId=TESTER_CHANNEL, data=data))

    def wait_for(self, condition, count=1):
        """The first `count` frames since the last clear() that meet the condition."""
        found, seen = [], 0
        with self._changed:
            def enough():
                nonlocal seen
                for frame in self._frames[seen:]:
                    if len(found) < count and condition(frame):
                        found.append(frame)
                seen = len(self._frames)
                return len(found) >= count
            assert self._changed.wait_for(enough, PATIENCE_S), (
                f"{len(found)} of {count} frames came in {PATIENCE_S} s")
        return found if count > 1 else found[0]

    def clear(self):
        """Forgets everything up to now, frames on their way included.

        Frames come in the order of their time stamps, so when a mark has come back, all that was
        sent before it has come, too. No sleep could promise that.
        """
        number = list(next(self._marks).to_bytes(8, "big"))
        self.send(MARK_ID, number)
        self.wait_for(lambda frame: frame.id == MARK_ID and frame.data == number)
        with self._changed:
            while self._frames[0].id != MARK_ID or self._frames[0].data != number:
                del self._frames[0]


class Master:
    """The body master: sends the door's command all the time, with counter and CRC."""

    def __init__(self, handle, messages):
        self._handle, self._messages = handle, messages
        self._job = None

    def _frame(self, request):
        return sdk.CANRawFrame(id=self._messages.id("DoorCommand"), channelId=TESTER_CHANNEL,
                               data=self._messages.encode("DoorCommand", Request=request))

    def start(self):
        cycle = self._messages.cycle_ms("DoorCommand")
        self._job = sdk.startCyclicCanFrame(self._handle, self._frame("None"), cycle, 0,
                                            update=PROTECTION)
        assert self._job.result == 0, self._job

    def request(self, text):
        assert sdk.updateCyclicCanFrame(self._job, self._frame(text)) == 0

    def stop(self):
        if self._job is not None:
            assert sdk.stopCyclicCanFrame(self._job) == 0
        self._job = None


@pytest.fixture(scope="session")
def box():
    """Handle of the first box: of the virtual network unless another one is set."""
    os.environ.setdefault("SIMCORE_NETWORK", json.dumps(NETWORK))
    sdk.load()
    handles = sdk.getDeviceList(sdk.DeviceType.All, 10_000)
    if not handles:
        pytest.exit("no box on the network", returncode=1)
    yield handles[0]
    sdk.exit()


@pytest.fixture(scope="session")
def messages():
    return Messages()


@pytest.fixture(scope="session")
def traced_bus(box):
    bus = Bus(box)
    assert sdk.subscribeCanFrame(box, bus)
    return bus


@pytest.fixture
def bus(traced_bus):
    traced_bus.clear()
    return traced_bus


@pytest.fixture
def ecu(box, bus, messages):
    unit = DoorEcu(box, messages, ECU_CHANNEL)
    unit.start()
    yield unit
    unit.stop()


@pytest.fixture
def master(box, messages, ecu):
    sender = Master(box, messages)
    sender.start()
    yield sender
    sender.stop()
