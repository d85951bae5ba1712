"""Finding boxes, handles and configurations."""
import copy
import signal
import time

import pytest

from conftest import MAC, NETWORK, Script


def test_handle_describes_the_box(sdk, box):
    assert (box.deviceInfo.sn, box.type) == ("SN-10", sdk.DeviceType.RV_Hub4e)
    assert repr(box) == f"DeviceHandle(mac={MAC}, status=connected, type=hub4e)"
    assert [len(kind) for kind in (box.config.can, box.config.lin)] == [4, 2]


def test_device_types_are_one(sdk):
    assert sdk.DeviceType.All == sdk.DeviceType.RV_Hub4e and int(sdk.DeviceType.All) == 0


def test_a_known_box_is_answered_at_once(sdk, box, capsys):
    assert sdk.getDeviceList(sdk.DeviceType.All, 0) == [box]
    assert "s length" not in capsys.readouterr().out


def test_other_device_types_are_refused(sdk, capsys):
    assert sdk.getDeviceList(sdk.DeviceType(5), 1000) == []
    assert capsys.readouterr().out == "no support other type device!!!\n"


def test_no_box(run_script):
    script = run_script("import QuillScriptsSDK as q\nprint(q.getDeviceList(q.DeviceType.All, 0))",
                        network={"boxes": []})
    assert script.out.splitlines()[-3:] == ["s length: 0", "no device!", "[]"]


def test_boxes_come_in_the_order_of_the_network(run_script):
    macs = [f"02:00:00:00:00:{number:02X}" for number in (3, 1, 2)]
    network = {"boxes": [{"name": mac, "mac": mac, "serial": mac} for mac in macs]}
    script = run_script(
        """
        import QuillScriptsSDK as q
        print([handle.deviceInfo.mac for handle in q.getDeviceList(q.DeviceType.All, 20000)])
        """, network=network)
    assert script.out.splitlines()[-1] == repr(macs)


def test_ctrl_c_ends_the_wait():
    script = Script("import QuillScriptsSDK as q\nq.load()\nprint('waits', flush=True)\n"
                    "q.getDeviceList(q.DeviceType.All, 60000)", network={"boxes": []})
    while script.process.stdout.readline() != "waits\n":
        pass
    time.sleep(0.2)  # anywhere in the wait is right; this is most likely in its first sleep
    script.process.send_signal(signal.SIGINT)
    script.finish(timeout_s=30)  # far below the minute of the wait
    assert "KeyboardInterrupt" in script.err


def test_configuration_is_written_and_read_back(sdk, box):
    handle = copy.deepcopy(box)
    handle.config.can[2].bitrate = 250000
    handle.config.can[2].samplePoint = 87.5
    handle.config.lin[1].master = not handle.config.lin[1].master
    assert handle.config != box.config
    assert sdk.setDeviceConfig(handle)
    seen = copy.deepcopy(box)
    assert sdk.getDeviceConfig(seen) and seen.config == handle.config
    assert sdk.setDeviceConfig(handle, box.config)
    assert sdk.getDeviceConfig(seen) and seen.config == box.config


def test_channels_are_replaced_as_a_whole(sdk, box):
    config = copy.copy(box.config)
    config.can = [sdk.CanChannelConfig(channel=0, bitrate=125000)]
    assert len(config.can) == 1 and config.can[0].bitrate == 125000
    with pytest.raises(TypeError):
        config.can[0] = sdk.CanChannelConfig()


def test_an_unknown_box_answers_false(sdk, capsys):
    handle = sdk.DeviceHandle(deviceInfo=sdk.RVBoxDeviceInfo(mac="02:00:00:00:00:EE"))
    assert not sdk.getDeviceConfig(handle) and not sdk.setDeviceConfig(handle)
    assert "setDeviceConfig: " in capsys.readouterr().out
    assert "status=unknown" in repr(handle) or "status=disconnected" in repr(handle)


@pytest.mark.parametrize("mac", ["", "02:00:00:00:00", "02:00:00:00:00:GG", "02:00:00:00:00:01:02"])
def test_a_malformed_address_is_named(sdk, mac):
    handle = sdk.DeviceHandle(deviceInfo=sdk.RVBoxDeviceInfo(mac=mac))
    for call in (sdk.getDeviceConfig, sdk.setDeviceConfig, sdk.unsubscribeCanFrame):
        with pytest.raises(ValueError, match=f"'{mac}' is not a MAC address"):
            call(handle)


def test_a_box_that_does_not_answer_is_left_out(run_script):
    network = dict(NETWORK, faults=[{"do": "fail", "function": "get_device_info", "times": -1,
                                     "code": 7, "at_ms": 0, "box": "bench"}])
    script = run_script(
        """
        import QuillScriptsSDK as q
        print(q.getDeviceList(q.DeviceType.All, 0))
        """, network=network)
    assert script.status == 0 and script.out.splitlines()[-1] == "[]"
