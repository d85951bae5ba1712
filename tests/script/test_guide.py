"""Every Python block of the guide runs: the blocks of a page are one script, in their order."""
import os
import re
import subprocess
import sys

import pytest

from conftest import environment

DOCS = os.path.join(os.environ.get("QUILL_SOURCE_DIR", "."), "docs")
PAGES = sorted(name for name in os.listdir(DOCS) if name.endswith(".md"))


def blocks(name):
    with open(os.path.join(DOCS, name), encoding="utf-8") as file:
        return re.findall(r"^```python\n(.*?)^```", file.read(), re.MULTILINE | re.DOTALL)


@pytest.mark.parametrize("page", [page for page in PAGES if blocks(page)])
def test_the_blocks_of_a_page_run(page, tmp_path):
    script = tmp_path / "page.py"
    text = "\n".join(blocks(page))
    # The first script of a page ends with exit(); the blocks behind it go on from where it was.
    text = re.sub(r"^sdk\.exit\(\).*$", "", text, flags=re.MULTILINE) + "\nsdk.exit()\n"
    script.write_text(text, encoding="utf-8")
    env = environment()
    env.pop("SIMCORE_NETWORK")  # a reader has the built-in network
    done = subprocess.run([sys.executable, str(script)], cwd=tmp_path, env=env, timeout=120,
                          capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stdout + done.stderr


def guide():
    with open(os.path.join(DOCS, "guide.md"), encoding="utf-8") as file:
        return " ".join(file.read().split())


BOX = "handle = sdk.getDeviceList(sdk.DeviceType.All, 20000)[0]\n"
# What goes wrong, and the texts that the chapter on it promises.
TROUBLES = [
    ("", {"LocalAPPDATA": None}, ["ImportError: Unable to find AppData directory"]),
    ("sdk.getDeviceList(sdk.DeviceType.All, 0)",
     {"SIMCORE_NETWORK": '{"boxes": [{"mac": "x"}]}'},
     ["Init : false", "s length: 0", "no device!",
      "[Hardware] device library cannot be started: SIMCORE_NETWORK: boxes[0].mac: expected six "
      "hexadecimal pairs such as 02:00:00:00:00:01"]),
    (BOX + "sdk.sendCanFrame(handle, sdk.CANRawFrame(id=0x100, DLC=3, data=[1]))\n"
     "sdk.sendCanFrame(handle, sdk.CANRawFrame(id=0x900, data=[1]))\n"
     "sdk.sendCanFrame(handle, sdk.CANRawFrame(id=0x100, channelId=9, data=[1]))", {},
     ["[pysdk] frame refused: DLC 3 stands for 3 data bytes, the frame has 1",
      "[SimCore] not sent through 02:51:55:49:4C:01: identifier 2304 is out of range",
      "[SimCore] send CAN frame through 02:51:55:49:4C:01: the box has no CAN channel 9 (1004)"]),
    ("info = sdk.RVBoxDeviceInfo(mac='02:00:00:00:00:EE')\n"
     "sdk.subscribeCanFrame(sdk.DeviceHandle(deviceInfo=info), print)", {},
     ["[SimCore] no such device: 02:00:00:00:00:EE"]),
    ("sdk.getDeviceConfig(sdk.DeviceHandle())", {},
     ["ValueError: handle.deviceInfo.mac: '' is not a MAC address"]),
    ("sdk.loadCanDBC('door.dbc')", {}, ["[Database] no exist door.dbc"]),
    ("sdk.enableDataRecording('/nofolder/x.blf', [], 0)", {},
     ["ValueError: create convert context fail, path /nofolder/x.blf, type BLF",
      "[Recorder] convert context: open: No such file or directory"]),
    ("sdk.enableDataRecording('x.blf', [], 0)\nsdk.enableDataRecording('y.blf', [], 0)", {},
     ["enableDataRecording and disableDataRecording are called in pairs"]),
]


@pytest.mark.parametrize("code, changes, texts", TROUBLES,
                         ids=[texts[0][:40] for _, _, texts in TROUBLES])
def test_troubleshooting_names_the_texts_that_are_seen(code, changes, texts, tmp_path):
    env = environment(**{"LocalAPPDATA": str(tmp_path), "SIMCORE_NETWORK": None} | changes)
    done = subprocess.run([sys.executable, "-c", "import QuillScriptsSDK as sdk\n" + code],
                          cwd=tmp_path, env=env, timeout=120, capture_output=True, text=True,
                          check=False)
    log = tmp_path / "RV" / "Quill" / "log" / "QuillScriptsSDK.log"
    seen = done.stdout + done.stderr + (log.read_text(encoding="utf-8") if log.exists() else "")
    told = guide()
    for text in texts:
        assert text in seen, seen
        assert text in told, text
