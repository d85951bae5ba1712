"""Every example runs as a user would run it."""
import json
import os
import pathlib
import re
import subprocess
import sys

import pytest

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"


def run(name, *arguments, cwd, **changes):
    env = {key: value for key, value in os.environ.items() if not key.startswith("SIMCORE_")}
    script = [str(EXAMPLES / name)] if name else []
    return subprocess.run([sys.executable, *script, *arguments], cwd=cwd, env=env | changes,
                          capture_output=True, text=True, timeout=240)


def test_quickstart(tmp_path):
    result = run("quickstart.py", cwd=tmp_path)
    assert result.returncode == 0, result.stderr
    assert "DeviceHandle(mac=" in result.stdout
    assert "CANRawFrame: timestamp:" in result.stdout
    assert "0x123 was received 10 times" in result.stdout


def test_quickstart_with_a_recorded_log(tmp_path):
    log = tmp_path / "drive.log"
    log.write_text("".join(f"({1700000000 + n / 1000:.6f}) can0 2A{n % 4}#0102{n:02X}\n"
                           for n in range(100)))
    result = run("quickstart.py", cwd=tmp_path, SIMCORE_REPLAY=str(log))
    assert result.returncode == 0, result.stderr
    assert "0x2A3" in result.stdout


@pytest.mark.parametrize("name, told", [
    ("cyclic_with_crc.py", "100 frames checked, 0 faults"),
    ("record_and_read.py", "written=400"),
    ("filtered_recording.py", "recorded: 8 frames"),
])
def test_an_example_checks_itself(tmp_path, name, told):
    result = run(name, cwd=tmp_path)
    assert result.returncode == 0, result.stdout + result.stderr
    # The number of cyclic frames depends on the moment of the stop, so only its end is compared.
    assert told.split(" ", 1)[-1] in result.stdout, result.stdout


def test_the_database_explorer(tmp_path):
    (tmp_path / "door.dbc").write_text(
        'VERSION ""\nBU_: A\nBO_ 257 Door: 1 A\n SG_ Open : 0|1@1+ (1,0) [0|1] "" A\n')
    result = run("database_explorer.py", "door.dbc", "Door", "01", cwd=tmp_path)
    assert result.returncode == 0, result.stderr
    assert "Open: bit 0, 1 bits Intel" in result.stdout and "Open = 1.0" in result.stdout


def test_the_ecu_test_suite(tmp_path):
    result = run("", "-m", "pytest", "-q", "-p", "no:cacheprovider",
                 str(EXAMPLES / "ecu_test_suite"), cwd=tmp_path)
    assert result.returncode == 0, result.stdout + result.stderr
    assert re.search(r"\b13 passed", result.stdout), result.stdout


def test_the_load_generator(tmp_path):
    result = run("load_generator.py", "--channels", "2", "--load", "60", "--duration", "2.5",
                 cwd=tmp_path)
    assert result.returncode == 0, result.stdout + result.stderr
    assert "channel 2: " in result.stdout and "bus load" in result.stdout, result.stdout
    told = re.search(r"sent ([\d,]+), received ([\d,]+), lost 0, dropped on the way 0",
                     result.stdout)
    sent, received = (int(number.replace(",", "")) for number in told.groups())
    assert sent == received > 0


def test_the_load_generator_tells_a_loss(tmp_path):
    # The box has room for four frames only, so that the reader cannot keep up.
    network = {"boxes": [{"name": "tight", "traceCapacity": 4, "channels": {"can": 2}}]}
    result = run("load_generator.py", "--rate", "4000", "--duration", "2", cwd=tmp_path,
                 SIMCORE_NETWORK=json.dumps(network))
    assert result.returncode == 1, result.stdout + result.stderr
    assert "dropped on the way 0" not in result.stdout


@pytest.mark.parametrize("arguments", [["--load", "0"], ["--channels", "17"], ["--fd", "2"],
                                       ["--duration", "-1"], ["--rate", "0"]])
def test_the_load_generator_refuses_what_makes_no_sense(tmp_path, arguments):
    result = run("load_generator.py", *arguments, cwd=tmp_path)
    assert result.returncode == 2 and arguments[0] in result.stderr


@pytest.mark.parametrize("name", ["quickstart.py", "cyclic_with_crc.py", "record_and_read.py",
                                  "filtered_recording.py", "load_generator.py"])
def test_without_a_box_the_script_says_so(tmp_path, name):
    result = run(name, cwd=tmp_path, SIMCORE_NETWORK='{"boxes": []}')
    assert result.returncode == 1, result.stderr
    assert "no box" in result.stdout + result.stderr
