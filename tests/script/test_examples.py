"""Every example runs as a user would run it."""
import os
import pathlib
import subprocess
import sys

import pytest

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"


def run(name, *arguments, cwd, **changes):
    env = {key: value for key, value in os.environ.items() if not key.startswith("SIMCORE_")}
    return subprocess.run([sys.executable, str(EXAMPLES / name), *arguments], cwd=cwd,
                          env=env | changes, capture_output=True, text=True, timeout=120)


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


@pytest.mark.parametrize("name", ["quickstart.py", "cyclic_with_crc.py", "record_and_read.py",
                                  "filtered_recording.py"])
def test_without_a_box_the_script_says_so(tmp_path, name):
    result = run(name, cwd=tmp_path, SIMCORE_NETWORK='{"boxes": []}')
    assert result.returncode == 1, result.stderr
    assert "no box" in result.stdout + result.stderr
