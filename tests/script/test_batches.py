"""Frames in lists: bounds, filters, ends, and a busy script beside them."""
import threading

import pytest

from support import TIMEOUT_S, Inbox, quiet_counters


class ListInbox:
    """A callable that keeps the lists it is called with."""

    def __init__(self):
        self._changed = threading.Condition()
        self.lists = []

    def __call__(self, frames):
        with self._changed:
            self.lists.append(frames)
            self._changed.notify_all()

    @property
    def frames(self):
        return [frame for frames in self.lists for frame in frames]

    def wait(self, count):
        with self._changed:
            done = self._changed.wait_for(lambda: len(self.frames) >= count, TIMEOUT_S)
        assert done, f"{len(self.frames)} of {count} frames"
        return self.frames


@pytest.fixture
def send(sdk, box):
    def send_one(identifier, data=b"\x01", channel=0):
        sdk.sendCanFrame(box, sdk.CANRawFrame(id=identifier, channelId=channel, data=data))

    return send_one


@pytest.fixture(autouse=True)
def silence(sdk, box):
    quiet_counters(sdk, box)
    yield
    quiet_counters(sdk, box)


def test_lists_hold_every_frame_in_time_order_within_their_bound(sdk, box, send):
    lists, single = ListInbox(), Inbox()
    assert sdk.subscribeCanFrames(box, lists, maxFrames=7, maxDelayMs=50)
    assert sdk.subscribeCanFrame(box, single)
    for number in range(100):
        send(0x100 + number, bytes([number]))
    frames = lists.wait(200)
    assert all(type(frame) is sdk.CANRawFrame for frame in frames)
    assert all(1 <= len(one) <= 7 for one in lists.lists)
    assert max(map(len, lists.lists)) == 7

    def facts(frame):
        return frame.timestamp, frame.id, frame.channelId, frame.dir, tuple(frame.data)

    assert list(map(facts, frames)) == list(map(facts, single.wait(200)))


def test_lin_lists_and_filters(sdk, box, send):
    lin, can = ListInbox(), ListInbox()
    sdk.subscribeLinFrames(box, lin, maxDelayMs=0)
    assert {type(frame) for frame in lin.wait(5)} == {sdk.LinFrame}
    passing = sdk.CANFrameFilterList()
    passing.add_pass_list(0x155, 0, 1, "CAN1")
    single = Inbox()
    sdk.subscribeCanFrame(box, single)
    sdk.subscribeCanFrames(box, can, maxDelayMs=0, filter=passing)
    for number in range(0x150, 0x15A):
        send(number)
    assert [frame.id for frame in can.wait(1)] == [0x155]
    assert len(single.wait(20)) == 20


def test_a_list_subscription_ends(sdk, box, send):
    first, second, single = ListInbox(), ListInbox(), Inbox()
    sdk.subscribeCanFrames(box, first, maxFrames=100_000, maxDelayMs=10_000)
    sdk.subscribeCanFrame(box, single)
    before = sdk.getCounters().delivery
    send(0x160)
    single.wait(2)
    # What waits for a list that is gone is dropped, and counted so.
    sdk.subscribeCanFrames(box, second, maxDelayMs=0)
    send(0x161)
    assert {frame.id for frame in second.wait(2)} == {0x161}
    assert sdk.unsubscribeCanFrames(box)
    send(0x162)
    assert single.wait(6)[-1].id == 0x162  # the other subscription keeps tracing on
    assert first.lists == [] and len(second.frames) == 2
    after = sdk.getCounters().delivery
    assert after.dropped - before.dropped >= 2
    assert after.received == after.delivered + after.held + after.dropped


def test_a_raising_callable_gets_the_next_list(sdk, box, send, monkeypatch):
    reports = []
    monkeypatch.setattr("sys.unraisablehook", lambda report: reports.append(report.exc_value))
    inbox = ListInbox()

    def raising(frames):
        inbox(frames)
        raise ValueError(len(frames))

    errors = sdk.getCounters().callbackErrors
    sdk.subscribeCanFrames(box, raising, maxFrames=2, maxDelayMs=0)
    for number in range(4):
        send(0x170 + number)
    inbox.wait(8)
    sdk.unsubscribeCanFrames(box)
    assert sdk.getCounters().callbackErrors - errors == len(inbox.lists) == len(reports)


@pytest.mark.parametrize("arguments, error", [
    ({"callback": None}, TypeError),
    ({"callback": 7}, TypeError),
    ({"callback": print, "maxFrames": 0}, ValueError),
    ({"callback": print, "maxFrames": 100_001}, ValueError),
    ({"callback": print, "maxDelayMs": -1}, ValueError),
    ({"callback": print, "maxDelayMs": 10_001}, ValueError),
    ({"callback": print, "filter": 5}, TypeError),
])
def test_wrong_arguments_are_refused(sdk, box, arguments, error):
    with pytest.raises(error):
        sdk.subscribeCanFrames(box, **arguments)


BUSY = """
    import threading
    import QuillScriptsSDK as q
    count = 200_000
    handle = q.getDeviceList(q.DeviceType.All, 20000)[0]
    seen, done, stop = 0, threading.Event(), False

    def on_frames(frames):
        global seen
        seen += len(frames)
        if seen >= count:
            done.set()

    def compute():
        number = 0
        while not stop:
            number = (number * 31 + 7) % 1000003

    thread = threading.Thread(target=compute)
    thread.start()
    q.subscribeCanFrames(handle, on_frames)
    complete = done.wait(50)
    c = q.getCounters()  # the end of tracing discards what the busy bus still brings
    stop = True
    thread.join()
    q.unsubscribeCanFrames(handle)
    print(complete, seen, c.calls, c.library.dropped, c.callbackErrors)
    q.exit()
"""


def test_lists_keep_up_with_100000_frames_a_second_beside_a_busy_thread(run_script):
    network = {
        "boxes": [{"name": "bench", "mac": "02:00:00:00:00:0A", "serial": "SN-1",
                   "channels": {"can": ["bus"]}}],
        "buses": {"bus": {"kind": "can"}},
        "sources": [{"bus": "bus", "periodic": {"id": 0x120 + number, "data": [0] * 8,
                                                "period_ms": 0.1}} for number in range(10)],
    }
    script = run_script(BUSY, network)
    assert script.status == 0, script.err
    complete, seen, calls, dropped, errors = script.out.splitlines()[-1].split()
    # A callable that is called frame by frame would need a quarter of an hour for them.
    assert (complete, dropped, errors) == ("True", "0", "0")
    assert int(calls) < int(seen) / 20
