"""Recording as scripts switch it on and off."""
import pytest

from support import Inbox

PAIRS = "enableDataRecording and disableDataRecording are called in pairs\n"


@pytest.fixture
def inbox(sdk, box):
    callable_ = Inbox()
    sdk.subscribeCanFrame(box, callable_)
    yield callable_
    sdk.disableDataRecording()
    sdk.unsubscribeCanFrame(box)


def asc_channels(path):
    """Channel column of the frame lines with the identifier 77."""
    rows = [line.split() for line in path.read_text().splitlines()]
    return [row[1] for row in rows if len(row) > 3 and row[2] == "77"]


@pytest.mark.parametrize("channels, kept", [([], ["1", "2"]), ([1], ["2"]), ([9], [])])
def test_the_channel_list_filters(sdk, box, inbox, tmp_path, channels, kept):
    path = tmp_path / "drive.asc"
    sdk.enableDataRecording(str(path), channels, 1)
    assert sdk.getRecordingStatus().recording
    sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x77, data=b"12"))
    inbox.wait(2)
    sdk.disableDataRecording()
    assert sorted(asc_channels(path)) == kept
    status = sdk.getRecordingStatus()
    assert not status.recording and status.written >= len(kept) and status.dropped == 0


@pytest.mark.parametrize("kind", [0, 5, -1])
def test_every_other_format_is_blf(sdk, inbox, tmp_path, kind):
    path = tmp_path / "drive.blf"
    sdk.enableDataRecording(str(path), [1, 2], kind)
    sdk.disableDataRecording()
    assert path.read_bytes()[:4] == b"LOGG"


def test_pairs(sdk, inbox, tmp_path, capfd):
    first, second = tmp_path / "first.blf", tmp_path / "second.blf"
    sdk.enableDataRecording(str(first), [], 0)
    sdk.enableDataRecording(str(second), [], 0)
    assert capfd.readouterr().out == PAIRS
    assert first.exists() and not second.exists()
    sdk.disableDataRecording()
    sdk.disableDataRecording()
    assert capfd.readouterr().out == ""


def test_frames_are_recorded_when_callables_raise_or_are_missing(sdk, box, inbox, tmp_path):
    path = tmp_path / "drive.asc"
    sdk.subscribeCanFrame(box, None)
    sdk.subscribeCanFrameById(0x7F, inbox)
    sdk.enableDataRecording(str(path), [], 1)
    sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x77))
    sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x7F))
    inbox.wait(2)
    sdk.unsubscribeCanFrameById(0x7F)
    sdk.disableDataRecording()
    assert len(asc_channels(path)) == 2


def test_a_path_that_cannot_be_is_told_and_leaves_nothing(sdk, inbox, tmp_path):
    with pytest.raises(ValueError, match="create convert context fail, path .*, type BLF"):
        sdk.enableDataRecording(str(tmp_path / "missing" / "drive.blf"), [], 0)
    assert list(tmp_path.iterdir()) == []
    sdk.enableDataRecording(str(tmp_path / "drive.blf"), [], 0)


def test_a_script_that_just_ends_leaves_a_whole_file(run_script, tmp_path):
    path = tmp_path / "drive.asc"
    script = run_script(
        f"""
        import threading
        import QuillScriptsSDK as q
        handle = q.getDeviceList(q.DeviceType.All, 20000)[0]
        came = threading.Event()
        q.subscribeCanFrame(handle, lambda frame: came.set() if frame.channelId == 1 else None)
        q.enableDataRecording({str(path)!r}, [], 1)
        q.sendCanFrame(handle, q.CANRawFrame(id=0x77))
        came.wait(30)
        """)
    assert script.status == 0, script.err
    assert len(asc_channels(path)) == 2
