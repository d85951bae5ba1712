"""Single sends, cyclic jobs and LIN schedule tables."""
import pytest

from support import Inbox


@pytest.fixture
def received(sdk, box):
    inbox = Inbox(keep=lambda frame: frame.dir == 0)
    sdk.subscribeCanFrame(box, inbox)
    # Frames of the test before are still held back for their time order.
    marker(sdk, box, inbox)
    inbox.frames.clear()
    yield inbox
    sdk.unsubscribeCanFrame(box)


def marker(sdk, box, received):
    """All frames up to one that is sent now."""
    sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x7FF, data=b"end"))
    count = 1
    while True:
        frames = received.wait(count)
        if frames[-1].id == 0x7FF:
            return frames[:-1]
        count = len(frames) + 1


@pytest.mark.parametrize("length, dlc", [(0, 0), (8, 8), (12, 9), (48, 14), (64, 15)])
def test_fd_frames_carry_their_data(sdk, box, received, length, dlc):
    data = bytes(range(length))
    sdk.sendCanFDFrame(box, sdk.CANRawFrame(id=0x1ABCDE, IDE=1, BRS=1, data=data))
    frame = received.wait(1)[0]
    assert (frame.id, frame.IDE, frame.EDL, frame.BRS, frame.DLC) == (0x1ABCDE, 1, 1, 1, dlc)
    assert bytes(frame.data) == data


def test_the_sender_s_record_is_not_touched(sdk, box, received):
    frame = sdk.CANRawFrame(id=5, data=b"12")
    text = repr(frame)
    sdk.sendCanFDFrame(box, frame)
    received.wait(1)
    assert repr(frame) == text


def test_remote_frames_have_a_dlc_and_no_data(sdk, box, received):
    sdk.sendCanFrame(box, sdk.CANRawFrame(id=6, RTR=1, DLC=4))
    frame = received.wait(1)[0]
    assert (frame.RTR, frame.DLC, frame.data) == (1, 4, [])


REFUSED = {
    "nine bytes without EDL": dict(data=bytes(9)),
    "DLC that disagrees": dict(DLC=3, data=bytes(8)),
    "length that no frame has": dict(EDL=1, data=bytes(10)),
    "data in a remote frame": dict(RTR=1, data=b"1"),
    "identifier beyond 11 bits": dict(id=0x800),
    "identifier beyond 29 bits": dict(id=0x20000000, IDE=1),
    "channel that the box does not have": dict(channelId=77),
}


@pytest.mark.parametrize("fields", REFUSED.values(), ids=REFUSED.keys())
def test_frames_that_no_bus_carries_are_refused(sdk, box, received, fields):
    frame = sdk.CANRawFrame(**fields)
    assert sdk.sendCanFrame(box, frame) is None
    cyclic = sdk.startCyclicCanFrame(box, frame, 10, 0)
    assert cyclic.result != 0
    assert sdk.stopCyclicCanFrame(cyclic) == int(sdk.SendResult.NoSuchJob)
    assert marker(sdk, box, received) == []


def test_a_job_runs_its_count(sdk, box, received):
    frame = sdk.CANRawFrame(id=0x20, data=b"cycle")
    cyclic = sdk.startCyclicCanFrame(box, frame, 2, 5)
    assert cyclic.result == 0 and cyclic.ms == 2 and cyclic.deviceInfo == box
    assert repr(cyclic) == f"CANCyclicFrameHandle(gid={cyclic.gid}, device {box!r}, ms=2)"
    assert [f.id for f in received.wait(5)] == [0x20] * 5


def test_a_job_runs_until_it_is_stopped(sdk, box, received):
    cyclic = sdk.startCyclicCANFDFrame(box, sdk.CANRawFrame(id=0x21, data=bytes(24)), 1, 0)
    frame = received.wait(20)[0]
    assert (frame.EDL, len(frame.data)) == (1, 24)
    assert sdk.stopCyclicCanFDFrame(cyclic) == 0
    assert sdk.stopCyclicCanFDFrame(cyclic) == int(sdk.SendResult.NoSuchJob)
    marker(sdk, box, received)
    received.frames.clear()
    assert marker(sdk, box, received) == []


def test_pause_resume_and_a_new_frame(sdk, box, received):
    cyclic = sdk.startCyclicCanFrame(box, sdk.CANRawFrame(id=0x22, data=b"old"), 1, 0)
    received.wait(3)
    assert sdk.pauseCyclicCanFrame(cyclic) == 0
    marker(sdk, box, received)
    received.frames.clear()
    assert marker(sdk, box, received) == []
    received.frames.clear()
    assert sdk.updateCyclicCanFrame(cyclic, sdk.CANRawFrame(id=0x22, data=b"new")) == 0
    assert sdk.resumeCyclicCanFrame(cyclic) == 0
    assert bytes(received.wait(3)[0].data) == b"new"
    assert sdk.stopCyclicCanFrame(cyclic) == 0


def test_counter_and_crc_are_kept_up_to_date(sdk, box, received):
    update = sdk.FrameUpdate(counterEnabled=True, counterStartBit=0, counterLength=4,
                             crcType=sdk.CrcType.CRC8_SAE_J1850, crcStartBit=56, crcLength=8)
    cyclic = sdk.startCyclicCanFrame(box, sdk.CANRawFrame(id=0x23, data=bytes(8)), 1, 20,
                                     update=update)
    frames = received.wait(20)
    assert [f.data[0] & 15 for f in frames] == [(n + 1) % 16 for n in range(20)]
    assert all(f.data[7] == crc8_j1850(f.data[:7] + [0]) for f in frames)
    sdk.stopCyclicCanFrame(cyclic)


def crc8_j1850(data):
    crc = 0xFF
    for byte in data:
        crc ^= byte
        for _ in range(8):
            crc = (crc << 1 ^ 0x1D if crc & 0x80 else crc << 1) & 0xFF
    return crc ^ 0xFF


def test_a_single_send_takes_an_update(sdk, box, received):
    update = sdk.FrameUpdate(counterEnabled=True, counterLength=8, counterReset=True)
    sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x24, data=b"\x55\x66"), update=update)
    assert received.wait(1)[0].data == [0, 0x66]


def test_additions_are_keyword_only(sdk, box):
    with pytest.raises(TypeError):
        sdk.sendCanFrame(box, sdk.CANRawFrame(), sdk.FrameUpdate())


@pytest.mark.parametrize("ms", [0, -5])
def test_a_cycle_needs_time(sdk, box, ms):
    assert sdk.startCyclicCanFrame(box, sdk.CANRawFrame(), ms, 0).result == int(
        sdk.SendResult.InvalidParam)


def test_handles_of_an_unknown_box_answer(sdk):
    handle = sdk.DeviceHandle(deviceInfo=sdk.RVBoxDeviceInfo(mac="02:00:00:00:00:EE"))
    sdk.sendCanFrame(handle, sdk.CANRawFrame())
    cyclic = sdk.startCyclicCanFrame(handle, sdk.CANRawFrame(), 10, 0)
    missing = int(sdk.SendResult.NoSuchDevice)
    assert [cyclic.result, sdk.stopCyclicCanFrame(cyclic), sdk.pauseCyclicCanFrame(cyclic)] == [
        missing] * 3
    assert sdk.startLinScheduleTable(handle, sdk.LinScheduleTable()) == missing


def test_a_schedule_table_runs_until_it_is_stopped(sdk, box):
    inbox = Inbox(keep=lambda frame: frame.id == 33 and frame.channelId == 1)
    table = sdk.LinScheduleTable(channel_id=0, name="run")
    table.add_slot(sdk.ScheduleTableSlot(id=33, time_interval=5, msg_type=4, check_type=1,
                                         data=b"\x07\x08"))
    sdk.subscribeLinFrame(box, inbox)
    assert sdk.startLinScheduleTable(box, table) == 0
    assert inbox.wait(3)[0].data == [7, 8]
    assert sdk.stopLinScheduleTable(box, 0) is None
    sdk.unsubscribeLinFrame(box)
