"""Frames on their way to callables."""
import gc
import sys
import threading
import weakref

import pytest

from support import TIMEOUT_S, Inbox


@pytest.fixture
def send(sdk, box):
    def send_one(identifier, data=b"\x01", channel=0):
        sdk.sendCanFrame(box, sdk.CANRawFrame(id=identifier, channelId=channel, data=data))

    return send_one


@pytest.fixture(autouse=True)
def silence(sdk, box):
    yield
    sdk.unsubscribeCanFrame(box)
    sdk.unsubscribeLinFrame(box)


def test_frames_come_in_time_order_to_every_channel_of_the_bus(sdk, box, send):
    inbox = Inbox()
    assert sdk.subscribeCanFrame(box, inbox)
    for number in range(50):
        send(0x100 + number, bytes([number]))
    frames = inbox.wait(100)
    assert all(type(frame) is sdk.CANRawFrame for frame in frames)
    times = [frame.timestamp for frame in frames]
    assert times == sorted(times)
    own = [(f.id, f.channelId, f.data) for f in frames if f.dir == 1]
    other = [(f.id, f.channelId, f.data) for f in frames if f.dir == 0]
    assert own == [(0x100 + n, 0, [n]) for n in range(50)]
    assert other == [(0x100 + n, 1, [n]) for n in range(50)]


def test_records_are_the_script_s_own(sdk, box, send):
    inbox = Inbox()
    sdk.subscribeCanFrame(box, inbox)
    send(0x111, b"\x01\x02")
    first, second = inbox.wait(2)[:2]
    first.data, first.name = [9], "mine"
    assert second.data == [1, 2] and second.name == ""
    reference = weakref.ref(first)
    inbox.frames.clear()
    del first
    gc.collect()
    assert reference() is None


def test_a_second_subscription_replaces_the_first(sdk, box, send):
    first, second = Inbox(), Inbox()
    sdk.subscribeCanFrame(box, first)
    sdk.subscribeCanFrame(box, second)
    send(0x120)
    second.wait(2)
    assert first.frames == []


def test_a_replaced_callable_is_dropped(sdk, box):
    class Probe(Inbox):
        pass

    probe = Probe()
    reference = weakref.ref(probe)
    sdk.subscribeCanFrame(box, probe)
    sdk.subscribeCanFrameById(0x7F0, probe)
    sdk.subscribeCanFrame(box, None)
    sdk.unsubscribeCanFrameById(0x7F0)
    del probe
    gc.collect()
    assert reference() is None


def test_none_is_accepted_and_other_values_are_not(sdk, box, send):
    assert sdk.subscribeCanFrame(box, None)
    with pytest.raises(TypeError, match="subscribeCanFrame"):
        sdk.subscribeCanFrame(box, 5)
    inbox = Inbox()
    sdk.subscribeCanFrameById(0x130, inbox)
    send(0x130)
    inbox.wait(2)
    sdk.unsubscribeCanFrameById(0x130)


def test_a_subscription_of_none_keeps_the_box_traced(sdk, box, send):
    sdk.subscribeCanFrameById(0x77, None)
    assert sdk.subscribeCanFrame(box, None)
    assert sdk.subscribeCanFrames(box, lambda frames: None)
    assert sdk.unsubscribeCanFrames(box)  # not the last subscription
    inbox = Inbox()
    sdk.subscribeCanFrameById(0x77, inbox)
    send(0x77)
    inbox.wait(2)
    sdk.unsubscribeCanFrameById(0x77)


def test_identifiers_are_counted_and_called(sdk, box, send):
    everything, one = Inbox(), Inbox()
    sdk.subscribeCanFrame(box, everything)
    sdk.subscribeCanFrameById(0x140, one)
    sdk.subscribeCanFrameById(0x141, None)
    for identifier in (0x140, 0x141, 0x142, 0x140):
        send(identifier)
    everything.wait(8)
    one.wait(4)
    assert [f.id for f in one.frames] == [0x140] * 4
    counts = [sdk.getCanFrameCountById(i) for i in (0x140, 0x141, 0x142)]
    assert counts == [4, 2, 0]
    sdk.subscribeCanFrameById(0x140, None)  # keeps counter and callable
    send(0x140)
    one.wait(6)
    assert sdk.getCanFrameCountById(0x140) == 6
    sdk.unsubscribeCanFrameById(0x140)
    sdk.unsubscribeCanFrameById(0x141)
    assert sdk.getCanFrameCountById(0x140) == 0
    send(0x140)
    everything.wait(12)
    assert len(one.frames) == 6 and sdk.getCanFrameCountById(0x140) == 0


def test_no_frame_comes_after_unsubscribing(sdk, box, send):
    inbox, again = Inbox(), Inbox()
    sdk.subscribeCanFrame(box, inbox)
    send(0x150)
    inbox.wait(2)
    assert sdk.unsubscribeCanFrame(box)
    send(0x151)
    sdk.subscribeCanFrame(box, again)
    send(0x152)
    again.wait(2)
    assert {f.id for f in inbox.frames} == {0x150}


def test_lin_frames(sdk, box):
    inbox = Inbox()
    assert sdk.subscribeLinFrame(box, inbox)
    frame = inbox.wait(4)[0]
    assert type(frame) is sdk.LinFrame
    assert (frame.id, frame.data, frame.checkMode) == (18, [1, 2, 3], 1)
    assert {f.channelId for f in inbox.frames} == {0, 1}


def test_ethernet_frames(sdk, box):
    inbox = Inbox(keep=lambda frame: "channelId = 0" in repr(frame))
    assert sdk.subscribeEthFrame(box, inbox)
    frame = inbox.wait(2)[0]
    assert type(frame) is sdk.EthFrame
    assert ("channelId = 0 dir = 0 length = 16 dst = 01:02:03:04:05:06 src = 11:12:13:14:15:16 "
            "type = 0x88b5 Data: [0X1, 0X2, ") in repr(frame)
    assert sdk.unsubscribeEthFrame(box)


@pytest.mark.parametrize("error", [ValueError, KeyboardInterrupt, SystemExit])
def test_a_raising_callable_does_not_stop_delivery(sdk, box, send, error):
    seen, reported = Inbox(), []
    hook = sys.unraisablehook
    sys.unraisablehook = lambda args: reported.append(args.exc_type)

    def raises(frame):
        seen(frame)
        raise error("script fault")

    try:
        sdk.subscribeCanFrame(box, raises)
        send(0x160)
        send(0x161)
        seen.wait(4)
        settled = Inbox()
        sdk.subscribeCanFrame(box, settled)
        send(0x162)
        settled.wait(2)
    finally:
        sys.unraisablehook = hook
    assert reported == [error] * 4


def test_a_callable_may_use_the_module(sdk, box, send):
    answers = Inbox(keep=lambda frame: frame.id == 0x171)

    def answer(frame):
        answers(frame)
        if frame.id == 0x170 and frame.dir == 0:
            send(0x171, channel=1)
            sdk.subscribeCanFrameById(0x172, None)
            sdk.unsubscribeCanFrameById(0x172)

    sdk.subscribeCanFrame(box, answer)
    send(0x170)
    assert {frame.channelId for frame in answers.wait(2)} == {0, 1}


def test_a_blocked_callable_loses_nothing(sdk, box, send):
    gate, inbox = threading.Event(), Inbox()

    def slow(frame):
        assert gate.wait(TIMEOUT_S)
        inbox(frame)

    sdk.subscribeCanFrame(box, slow)
    for number in range(300):
        send(number)
    gate.set()
    frames = inbox.wait(600)
    assert [f.id for f in frames if f.dir == 1] == list(range(300))


def test_subscriptions_change_under_load(sdk, box, send):
    stop = threading.Event()

    def load():
        while not stop.is_set():
            send(0x180)

    thread = threading.Thread(target=load)
    thread.start()
    try:
        for _ in range(30):
            inbox = Inbox()
            sdk.subscribeCanFrame(box, inbox)
            sdk.subscribeCanFrameById(0x180, inbox)
            inbox.wait(3)
            sdk.unsubscribeCanFrameById(0x180)
    finally:
        stop.set()
        thread.join()


def test_an_unknown_box_answers_false(sdk):
    handle = sdk.DeviceHandle(deviceInfo=sdk.RVBoxDeviceInfo(mac="02:00:00:00:00:EE"))
    assert sdk.subscribeCanFrame(handle, print) is False
    assert sdk.unsubscribeCanFrame(handle) is False
    assert sdk.subscribeLinFrame(handle, print) is False
    assert sdk.unsubscribeLinFrame(handle) is False


def test_the_signatures_that_scripts_know(sdk):
    texts = {
        "subscribeCanFrame": "(handle: QuillScriptsSDK.DeviceHandle, "
                             "callback: Callable[[QuillScriptsSDK.CANRawFrame], None]) -> bool",
        "subscribeLinFrame": "(handle: QuillScriptsSDK.DeviceHandle, "
                             "callback: Callable[[QuillScriptsSDK.LinFrame], None]) -> bool",
        "subscribeCanFrameById": "(id: int, "
                                 "callback: Callable[[QuillScriptsSDK.CANRawFrame], None]) -> None",
        "getCanFrameCountById": "(id: int) -> int",
        "enableDataRecording": "(path: str, channels: list[int], format: int) -> None",
    }
    for name, text in texts.items():
        line = getattr(sdk, name).__doc__.splitlines()[0]
        arguments, result = text.rsplit(")", 1)
        # Additions are keywords behind the arguments that scripts know.
        assert line.startswith(name + arguments) and line.endswith(")" + result), line
