"""The module under test on a virtual box network, in this process or in one of its own."""
import json
import os
import subprocess
import sys
import textwrap

import pytest

MAC = "02:00:00:00:00:0A"

# CAN channels 0 and 1 share one bus, 2 hangs alone; LIN channels 0 and 1 share another.
NETWORK = {
    "boxes": [
        {
            "name": "bench",
            "mac": MAC,
            "serial": "SN-10",
            "channels": {"can": ["powertrain", "powertrain", "body", "idle"],
                         "lin": ["seat", "seat"], "eth": ["backbone"] * 6},
        }
    ],
    "buses": {"powertrain": {"kind": "can"}, "body": {"kind": "can"}, "idle": {"kind": "can"},
              "seat": {"kind": "lin"}, "backbone": {"kind": "ethernet"}},
    "sources": [
        {"bus": "seat", "periodic": {"id": 18, "data": [1, 2, 3], "period_ms": 5}},
        {"bus": "backbone",
         "periodic": {"data": [1, 2, 3, 4, 5, 6, 17, 18, 19, 20, 21, 22, 0x88, 0xB5, 7, 8],
                      "period_ms": 5}},
    ],
}


def environment(network=NETWORK, **changes):
    env = dict(os.environ)
    env["SIMCORE_NETWORK"] = json.dumps(network)
    env.update(changes)
    return {name: value for name, value in env.items() if value is not None}


class Script:
    """A script in a process of its own."""

    def __init__(self, code, network=NETWORK, cwd=None, **changes):
        self.process = subprocess.Popen(
            [sys.executable, "-c", textwrap.dedent(code)], env=environment(network, **changes),
            cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def finish(self, timeout_s=60):
        self.out, self.err = self.process.communicate(timeout=timeout_s)
        self.status = self.process.returncode
        return self


@pytest.fixture
def run_script():
    def run(code, network=NETWORK, cwd=None, **changes):
        return Script(code, network, cwd, **changes).finish()

    return run


@pytest.fixture(scope="session")
def sdk():
    os.environ["SIMCORE_NETWORK"] = json.dumps(NETWORK)
    import QuillScriptsSDK

    return QuillScriptsSDK


@pytest.fixture(scope="session")
def box(sdk):
    handles = sdk.getDeviceList(sdk.DeviceType.All, 20000)
    assert [handle.deviceInfo.mac for handle in handles] == [MAC]
    return handles[0]
