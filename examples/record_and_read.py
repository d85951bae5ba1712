"""Record traffic to a BLF file and read it back with python-can.

    python record_and_read.py [FILE]

python-can is looked for in this interpreter and, when it is not there, in the system's python3.
"""
import subprocess
import sys
import threading

import QuillScriptsSDK as sdk

FRAMES = 200
READER = """
import sys, can
messages = list(can.BLFReader(sys.argv[1]))
print(len(messages), sum(m.is_fd for m in messages), messages[0].arbitration_id)
"""


def read_back(path):
    """(frames, CAN FD frames, first identifier) as python-can sees them; None without python-can."""
    for python in (sys.executable, "python3", "/usr/bin/python3"):
        try:
            done = subprocess.run([python, "-c", READER, path], capture_output=True, text=True,
                                  check=False)
        except FileNotFoundError:
            continue
        if done.returncode == 0:
            return tuple(int(word) for word in done.stdout.split())
    return None


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else "drive.blf"
    sdk.load()
    handles = sdk.getDeviceList(sdk.DeviceType.All, 3000)
    if not handles:
        print("no box on the network")
        return 1
    handle = handles[0]
    came = threading.Semaphore(0)
    sdk.subscribeCanFrame(handle, lambda frame: came.release())
    sdk.enableDataRecording(path, [0, 1], 0)
    for number in range(FRAMES // 2):
        sdk.sendCanFrame(handle, sdk.CANRawFrame(id=0x100, data=[number, 1, 2]))
        sdk.sendCanFDFrame(handle, sdk.CANRawFrame(id=0x200, BRS=1, data=bytes(32)))
    for _ in range(2 * FRAMES):  # each frame as sent on channel 0 and as received on channel 1
        if not came.acquire(timeout=20):
            print("frames are missing")
            return 1
    sdk.disableDataRecording()
    status = sdk.getRecordingStatus()
    print(status)
    sdk.exit()

    seen = read_back(path)
    if seen is None:
        print(f"{path} is written; python-can is not installed, so it was not read back")
        return 0 if status.written == 2 * FRAMES else 1
    print(f"python-can reads {seen[0]} frames, {seen[1]} of them CAN FD, the first 0x{seen[2]:X}")
    return 0 if seen == (2 * FRAMES, FRAMES, 0x100) else 1


if __name__ == "__main__":
    sys.exit(main())
