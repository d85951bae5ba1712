"""Frame records: text forms, ranges, copies."""
import copy

import pytest

WORD = "CANFrameExtend:\tEDL:{}\tBRS:{}\tESI:0\tCOD:0\tUU2:0\tSRR:0\tIDE:{}\tRTR:0\tDLC:{}\terrorFlag:0"


def test_can_frame_text(sdk):
    frame = sdk.CANRawFrame()
    frame.id = 291
    frame.channelId = 2
    frame.timestamp = 1_000_000_005
    frame.DLC, frame.BRS, frame.IDE, frame.EDL = 2, 1, 1, 1
    frame.data = [1, 255]
    assert repr(frame) == ("CANRawFrame: timestamp:1000000005 id = 291 channelId = 2 " +
                           WORD.format(1, 1, 1, 2) + " \nData: [0X1, 0XFF]")


def test_empty_can_frame_text(sdk):
    assert repr(sdk.CANRawFrame(name="unmatched")) == (
        "CANRawFrame: timestamp:0 id = 0 channelId = 0 " + WORD.format(0, 0, 0, 0) + " \nData: []")


@pytest.mark.parametrize("mode, text", [(0, "Classic"), (1, "Enhance"), (7, "")])
def test_lin_frame_text(sdk, mode, text):
    frame = sdk.LinFrame(id=18, channelId=1, checkMode=mode, checksum=60, dir=1, data=b"\x0a",
                         timestamp=5)
    assert repr(frame) == (f"LinFrame: timestamp:5 id = 18 channelId = 1 checkType = {text} "
                           "checksum = 0x3c dir = 1 Data: [0XA] \n")


def test_flag_word_text_and_bits(sdk):
    word = sdk.CANFrameExtend(EDL=1, ESI=True, COD=9, UU2=1, RTR=1, DLC=15, errorFlag=65535)
    assert repr(word) == ("CANFrameExtend:\tEDL:1\tBRS:0\tESI:1\tCOD:9\tUU2:1\tSRR:0\tIDE:0\tRTR:1"
                          "\tDLC:15\terrorFlag:65535")
    frame = sdk.CANRawFrame(extend=word)
    frame.extend.COD = 3
    assert (frame.extend.COD, frame.RTR, frame.errorFlag, word.COD) == (3, 1, 65535, 9)


def test_eth_frame_has_text_and_no_attributes(sdk):
    frame = sdk.EthFrame()
    assert repr(frame) == "EthFrame: timestamp:0 channelId = 0 dir = 0 length = 0 Data: []"
    assert [name for name in dir(frame) if not name.startswith("_")] == []


def test_error_code_has_two_members(sdk):
    assert sdk.ErrorCode.__members__.keys() == {"Success", "InvalidParam"}
    assert sdk.ErrorCode(1) == sdk.ErrorCode.InvalidParam and sdk.ErrorCode.Success == 0
    with pytest.raises(ValueError):
        sdk.ErrorCode(2)


@pytest.mark.parametrize("data", [b"\x00\xff", bytearray(b"\x00\xff"), [0, 255], (0, 255)])
def test_data_reads_as_list_of_ints(sdk, data):
    for frame in (sdk.CANRawFrame(data=data), sdk.LinFrame(data=data)):
        assert frame.data == [0, 255]


REFUSED = [
    ("CANRawFrame", "id", -1, ValueError), ("CANRawFrame", "id", 2**32, ValueError),
    ("CANRawFrame", "id", 1.5, TypeError), ("CANRawFrame", "id", "1", TypeError),
    ("CANRawFrame", "channelId", 256, ValueError), ("CANRawFrame", "DLC", 16, ValueError),
    ("CANRawFrame", "BRS", 2, ValueError), ("CANRawFrame", "timestamp", -1, ValueError),
    ("CANRawFrame", "timestamp", 2**32 * 10**9, ValueError),
    ("CANRawFrame", "data", [256], ValueError), ("CANRawFrame", "data", [0, "x"], TypeError),
    ("CANRawFrame", "data", "text", TypeError), ("CANRawFrame", "data", bytes(65), ValueError),
    ("CANRawFrame", "data", 5, TypeError), ("LinFrame", "id", 65536, ValueError),
    ("LinFrame", "dir", -1, ValueError), ("LinFrame", "checkMode", 300, ValueError),
    ("ScheduleTableSlot", "data", bytes(9), ValueError),
    ("ScheduleTableSlot", "id", 2**31, ValueError),
    ("FrameUpdate", "crcType", 41, ValueError), ("FrameUpdate", "counterLength", 65, ValueError),
    ("CanChannelConfig", "bitrate", 5, ValueError),
    ("CanChannelConfig", "samplePoint", float("nan"), ValueError),
]


@pytest.mark.parametrize("kind, field, value, error", REFUSED)
def test_values_out_of_range_name_the_field(sdk, kind, field, value, error):
    record = getattr(sdk, kind)()
    before = copy.copy(record)
    with pytest.raises(error, match=field):
        setattr(record, field, value)
    with pytest.raises(error, match=field):
        getattr(sdk, kind)(**{field: value})
    assert record == before


def test_an_unknown_keyword_is_named(sdk):
    with pytest.raises(TypeError, match="identifier"):
        sdk.CANRawFrame(identifier=1)


@pytest.mark.parametrize("make", [
    lambda q: q.CANRawFrame(id=1, data=[1], name="a", dir=1),
    lambda q: q.LinFrame(id=1, data=[1], checksum=3),
    lambda q: q.DipData(program=1),
    lambda q: q.ScheduleTableSlot(id=3, subscribers=["a"], data=[1]),
    lambda q: q.FrameUpdate(crcType=q.CrcType.CRC8_H2F, crcKey=b"\x01"),
    lambda q: q.DeviceHandle(deviceInfo=q.RVBoxDeviceInfo(mac="02:00:00:00:00:01")),
])
@pytest.mark.parametrize("copier", [copy.copy, copy.deepcopy])
def test_copies_are_equal_and_independent(sdk, make, copier):
    record = make(sdk)
    twin = copier(record)
    assert twin == record and not twin != record and twin is not record
    assert record != type(record)()
    assert record != "something else"
    with pytest.raises(TypeError):
        hash(record)


def test_a_changed_copy_leaves_the_first(sdk):
    frame = sdk.CANRawFrame(data=[1, 2], name="first")
    twin = copy.copy(frame)
    twin.data, twin.name = [9], "second, with a name that is long enough for the heap"
    assert frame.data == [1, 2] and frame.name == "first" and frame != twin


def test_schedule_table(sdk):
    table = sdk.LinScheduleTable(channel_id=1, name="normal")
    slot = sdk.ScheduleTableSlot(id=18, time_interval=10, msg_type=4, check_type=1,
                                 data=b"\x01\xff")
    table.add_slot(slot)
    slot.id = 99
    assert table.slot_array_size() == 1 and table.slot_array()[0].id == 18
    assert table.debug_str == (
        'channel_id: 1\nname: "normal"\nslot_array {\n  id: 18\n  time_interval: 10\n'
        '  msg_type: 4\n  check_type: 1\n  data: "\\001\\377"\n}\n')


def test_crc_types(sdk):
    codes = sorted(int(member) for member in sdk.CrcType.__members__.values())
    assert codes == list(range(41))
    assert (int(sdk.CrcType.CRC8), int(sdk.CrcType.CRC8_VARIANT),
            int(sdk.CrcType.CRC8_SAE_J1850), int(sdk.CrcType.CRC64_ISO)) == (2, 3, 4, 40)
