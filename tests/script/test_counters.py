"""Counters of the road from the boxes to the callables."""
import pytest

from support import HAND_OVERS, Inbox, quiet_counters


def check_balance(counters):
    parts = [getattr(counters, name) for name in HAND_OVERS]
    for name, part in zip(HAND_OVERS, parts):
        assert part.received == part.delivered + part.held + part.dropped, name
    for (name, part), following in zip(zip(HAND_OVERS, parts), parts[1:]):
        assert part.delivered == following.received, f"{name} to the next"


@pytest.fixture
def quiet(sdk, box):
    yield lambda: quiet_counters(sdk, box)
    quiet_counters(sdk, box)


def test_sums_balance_under_load_with_raising_and_slow_callables(sdk, box, quiet, monkeypatch):
    monkeypatch.setattr("sys.unraisablehook", lambda report: None)
    before = quiet()
    inbox = Inbox()

    def moody(frame):
        inbox(frame)
        if frame.id % 7 == 0:
            raise KeyError(frame.id)

    passing = sdk.CANFrameFilterList()
    passing.add_pass_range_list(0x100, 0x200, 0, 1, "CAN1")
    sdk.subscribeCanFrame(box, moody, filter=passing)
    sdk.subscribeLinFrame(box, lambda frame: None)
    count = 2000
    for number in range(count):
        sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x100 + number % 512, data=[number % 256]))
    passed = sum(1 for number in range(count) if 0x100 + number % 512 <= 0x200)
    raised = sum(1 for number in range(count)
                 if 0x100 + number % 512 <= 0x200 and (0x100 + number % 512) % 7 == 0)
    inbox.wait(passed)
    during = sdk.getCounters()
    assert during.readers.received >= during.readers.delivered + during.readers.dropped
    after = quiet()
    check_balance(after)
    assert len(inbox.frames) == passed
    assert after.callbackErrors - before.callbackErrors == raised
    # Both channels of the bus trace each frame; channel 1 and the identifiers above are filtered.
    # Ethernet frames, which nobody wants, come on top.
    assert after.delivery.dropped - before.delivery.dropped >= 2 * count - passed
    assert after.backlogAgeUs == 0


def test_channels_count_their_own_frames(sdk, box, quiet):
    def received():
        device, = [d for d in sdk.getCounters().devices if d.mac == box.deviceInfo.mac]
        assert [c.name for c in device.channels] == sdk.getChannelNames(box)
        return {(c.bus, c.channel): c.received for c in device.channels}

    quiet()
    before = received()
    inbox = Inbox()
    sdk.subscribeCanFrame(box, inbox)
    for _ in range(30):
        sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x10, channelId=0, data=[1]))
    for _ in range(20):
        sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x11, channelId=2, data=[1]))
    inbox.wait(80)
    after = received()
    grown = {key: after[key] - before[key] for key in after if key[0] == "CAN"}
    assert grown == {("CAN", 0): 30, ("CAN", 1): 30, ("CAN", 2): 20, ("CAN", 3): 0}


LOAD = """
    import threading, time
    import QuillScriptsSDK as q
    handle = q.getDeviceList(q.DeviceType.All, 20000)[0]
    q.subscribeCanFrame(handle, None)
    loads = set()
    end = time.monotonic() + 60
    while time.monotonic() < end:
        device = q.getCounters().devices[0]
        loads.add(round(device.channels[0].busLoad, 3))
        if max(loads) > 20.0:
            break
        threading.Event().wait(0.05)
    print(max(loads), device.channels[1].busLoad, device.clockOffsetUs)
    q.unsubscribeCanFrame(handle)
    q.exit()
"""


def test_bus_load_and_clock_offset(run_script):
    network = {
        "boxes": [{"name": "bench", "mac": "02:00:00:00:00:0A", "serial": "SN-1",
                   "channels": {"can": ["bus", {}]}}],
        "buses": {"bus": {"kind": "can"}},
        # 111 bits at 500 kbit/s, once a millisecond: 22.2 percent of the bus.
        "sources": [{"bus": "bus", "periodic": {"id": 1, "data": [0] * 8, "period_ms": 1}}],
        "faults": [{"at_ms": 0, "do": "clock", "box": "bench", "offset_ns": 5_000_000_000}],
    }
    script = run_script(LOAD, network)
    assert script.status == 0, script.err
    load, silent, offset_us = map(float, script.out.splitlines()[-1].split())
    assert 20.0 < load <= 22.3
    assert silent == 0.0
    # Frames are read late, never early.
    assert 3_000_000 < offset_us <= 5_000_000


BEHIND = """
    import threading
    import QuillScriptsSDK as q
    handle = q.getDeviceList(q.DeviceType.All, 20000)[0]
    gate, tick = threading.Event(), threading.Event()
    q.subscribeCanFrame(handle, lambda frame: gate.wait())
    ages = []
    def until(reached):
        while not reached():
            tick.wait(0.01)
            ages.append(q.getCounters().backlogAgeUs)
    until(lambda: ages and ages[-1] > 800_000)
    gate.set()
    until(lambda: ages[-1] < 20_000 and q.getCounters().calls > 500)
    print(q.getCounters().calls)
    q.exit()
"""


def test_one_log_line_tells_of_a_backlog(run_script, tmp_path):
    network = {
        "boxes": [{"name": "bench", "mac": "02:00:00:00:00:0A", "serial": "SN-1",
                   "channels": {"can": ["bus"]}}],
        "buses": {"bus": {"kind": "can"}},
        "sources": [{"bus": "bus", "periodic": {"id": 1, "data": [0] * 8, "period_ms": 1}}],
    }
    script = run_script(BEHIND, network, LocalAPPDATA=str(tmp_path))
    assert script.status == 0, script.err
    lines = (tmp_path / "RV/Quill/log/QuillScriptsSDK.log").read_text().splitlines()
    warnings = [line for line in lines if "delivery to scripts is behind: " in line]
    assert len(warnings) == 1 and "[warning]" in warnings[0]


def test_records_read_well_and_copy(sdk, box):
    import copy

    counters = copy.deepcopy(sdk.getCounters())
    assert repr(counters).startswith("<Counters library=<HandOverCounters received=")
    assert repr(counters.devices[0]) == f"<DeviceCounters bench {box.deviceInfo.mac}>"
    assert copy.copy(counters.devices[0]).channels[0].bus == "CAN"
    with pytest.raises(AttributeError):
        counters.calls = 1
