"""Filter lists on subscriptions and recordings, channel names and attached databases."""
import pytest

from support import Inbox

DBC = """VERSION ""
BU_: A
BO_ 257 Door: 1 A
 SG_ Open : 0|1@1+ (1,0) [0|1] "" A
BO_ 258 Light: 1 A
"""
LDF = """LIN_description_file;
LIN_protocol_version = "2.1"; LIN_language_version = "2.1"; LIN_speed = 19.2 kbps;
Nodes { Master: M, 5 ms, 0.1 ms; Slaves: S; }
Signals { Pos: 8, 0, S, M; }
Frames { Seat: 18, S, 3 { Pos, 0; } }
"""


@pytest.fixture
def inbox(sdk, box):
    callable_ = Inbox()
    yield callable_
    sdk.disableDataRecording()
    sdk.subscribeCanFrame(box, None)
    sdk.unsubscribeCanFrame(box)
    for channel in (0, 1):
        sdk.detachDatabase(box, channel)


def send(sdk, box, *ids):
    for number in ids:
        sdk.sendCanFrame(box, sdk.CANRawFrame(id=number, data=b"1"))


def test_channels_have_names(sdk, box):
    names = sdk.getChannelNames(box)
    assert names[:4] == ["bench.CAN1", "bench.CAN2", "bench.CAN3", "bench.CAN4"]
    assert "bench.LIN2" in names and "bench.ETH6" in names
    lists = sdk.CANFrameFilterList()
    assert lists.add_pass_list(1, 0, 0, "bench.CAN2") and lists.add_pass_list(1, 0, 0, "CAN2")
    assert [item.channelId for item in lists.pass_items] == [1, 1]


def test_refusals_come_with_their_text(sdk, box, capfd):
    lists = sdk.CANFrameFilterList()
    assert lists.add_pass_list(0x800, 0, 0, "CAN1") is False
    assert lists.add_block_list(0x20000000, 1, 0, "CAN1") is False
    assert lists.add_pass_channel("LIN1") is False
    lin = sdk.LINFrameFilterList()
    assert lin.add_block_range_list(3, 2, 0, "LIN1") is False
    assert capfd.readouterr().out == (
        "[CANFrameFilter]id 2048 is invalid!\n"
        "[CANFrameFilter]id 536870912x is invalid!\n"
        "[CANFrameFilter]channel LIN1 is invalid!\n"
        "[LINFrameFilterList]idStart 3, idEnd2 is invalid!\n")
    assert lists.pass_items == [] and lists.block_items == []


def test_a_subscription_sees_only_what_its_list_passes(sdk, box, inbox):
    lists = sdk.CANFrameFilterList()
    lists.add_pass_range_list(0x100, 0x1FF, 0, 0, "CAN2")
    lists.add_block_list(0x180, 0, 0, "CAN2")
    assert sdk.subscribeCanFrame(box, inbox, filter=lists)
    send(sdk, box, 0x080, 0x200, 0x100, 0x180, 0x1FF)
    frames = inbox.wait(2)
    assert [(frame.id, frame.channelId) for frame in frames] == [(0x100, 1), (0x1FF, 1)]
    # The list may change while frames flow, and a subscription without one sees everything.
    lists.add_pass_list(0x200, 0, 0, "CAN2")
    send(sdk, box, 0x180, 0x200)
    assert [frame.id for frame in inbox.wait(3)][2:] == [0x200]
    sdk.subscribeCanFrame(box, inbox)
    send(sdk, box, 0x080)
    assert [frame.id for frame in inbox.wait(5)][3:] == [0x080, 0x080]


def test_frames_get_the_name_of_an_attached_database(sdk, box, inbox, tmp_path):
    path = tmp_path / "doors.dbc"
    path.write_text(DBC)
    assert sdk.attachDatabase(box, 1, str(path)) == 0
    assert sdk.attachDatabase(box, 1, str(tmp_path / "none.dbc")) == 1
    lists = sdk.CANFrameFilterList()
    lists.add_name_pass_list("Door", 0, "CAN2")
    sdk.subscribeCanFrame(box, inbox, filter=lists)
    send(sdk, box, 258, 257)
    (frame,) = inbox.wait(1)
    assert frame.name == "Door" and "paresed info:\nname:Door" in repr(frame)


def test_a_recording_has_filters_of_its_own(sdk, box, inbox, tmp_path):
    lists = sdk.CANFrameFilterList()
    lists.add_block_channel("CAN1")
    lin = sdk.LINFrameFilterList()
    lin.add_block_range_list(0, 63, 0, "LIN1")
    lin.add_block_range_list(0, 63, 0, "LIN2")
    sdk.subscribeCanFrame(box, inbox)
    path = tmp_path / "filtered.asc"
    sdk.enableDataRecording(str(path), [], 1, canFilter=lists, linFilter=lin)
    send(sdk, box, 0x77)
    assert len(inbox.wait(2)) == 2
    sdk.disableDataRecording()
    lines = [line.split() for line in path.read_text().splitlines()]
    assert [line[1] for line in lines if len(line) > 3 and line[2] == "77"] == ["2"]
    assert not [line for line in lines if len(line) > 1 and line[1] in ("Li", "L2")]


def test_a_lin_frame_becomes_a_message_of_its_database(sdk, box, inbox, tmp_path):
    path = tmp_path / "seat.ldf"
    path.write_text(LDF)
    assert sdk.attachDatabase(box, 0, str(path)) == 0
    sdk.subscribeLinFrame(box, inbox)
    frame = next(frame for frame in inbox.wait(4) if frame.channelId == 0)
    sdk.subscribeLinFrame(box, None)
    message = sdk.toLinMessage(box, frame)
    assert (message.id, message.data, message.frame.name) == (18, [1, 2, 3], "Seat")
    assert message.timestamp == frame.timestamp and "frame = Seat" in repr(message)
