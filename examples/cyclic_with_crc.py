"""A cyclic frame with a rolling counter and a CRC, checked frame by frame on another channel.

    python cyclic_with_crc.py

The box brings counter and CRC up to date before every transmission. The script checks each received
frame itself, changes the cycle, pauses and resumes the job, and stops it.
"""
import sys
import threading

import QuillScriptsSDK as sdk

FRAME_ID = 0x321
CRC_BYTE = 7


def crc8_j1850(data):
    crc = 0xFF
    for byte in data:
        crc ^= byte
        for _ in range(8):
            crc = ((crc << 1) ^ (0x1D if crc & 0x80 else 0)) & 0xFF
    return crc ^ 0xFF


class Checker:
    """Checks every received frame; runs on the SDK's own thread."""

    def __init__(self):
        self.changed = threading.Condition()
        self.count = 0
        self.faults = []
        self.last_counter = 0

    def __call__(self, frame):
        if frame.dir == 1:  # the sender's own
            return
        data = frame.data
        counter = data[0] & 0x0F
        plain = [0 if at == CRC_BYTE else byte for at, byte in enumerate(data)]
        with self.changed:
            if counter != (self.last_counter + 1) % 16:
                self.faults.append(f"counter {counter} after {self.last_counter}")
            if data[CRC_BYTE] != crc8_j1850(plain):
                self.faults.append(f"CRC of {data}")
            self.last_counter = counter
            self.count += 1
            self.changed.notify_all()

    def wait(self, count):
        with self.changed:
            return self.changed.wait_for(lambda: self.count >= count, 20)


def main():
    sdk.load()
    handles = sdk.getDeviceList(sdk.DeviceType.All, 3000)
    if not handles:
        print("no box on the network")
        return 1
    handle = handles[0]
    checker = Checker()
    sdk.subscribeCanFrame(handle, lambda frame: None)  # keeps tracing on
    sdk.subscribeCanFrameById(FRAME_ID, checker)

    update = sdk.FrameUpdate(counterEnabled=True, counterStartBit=0, counterLength=4,
                             crcType=sdk.CrcType.CRC8_SAE_J1850, crcStartBit=8 * CRC_BYTE,
                             crcLength=8)
    frame = sdk.CANRawFrame(id=FRAME_ID, channelId=0, data=[0, 0x11, 0x22, 0x33, 0, 0, 0, 0])
    job = sdk.startCyclicCanFrame(handle, frame, 10, 0, update=update)
    print(job)
    ok = checker.wait(40)

    job.ms = 5
    frame.data = [0, 0x44, 0x55, 0x66, 0, 0, 0, 0]
    sdk.updateCyclicCanFrame(job, frame)  # new cycle and payload; the counter goes on
    ok = ok and checker.wait(checker.count + 40)

    sdk.pauseCyclicCanFrame(job)
    sdk.resumeCyclicCanFrame(job)  # no transmission in between, so no counter is missing
    ok = ok and checker.wait(checker.count + 20)
    print("stopped with", sdk.stopCyclicCanFrame(job), "- again with", sdk.stopCyclicCanFrame(job))

    print(f"{checker.count} frames checked, {len(checker.faults)} faults {checker.faults[:3]}")
    sdk.unsubscribeCanFrame(handle)
    sdk.exit()
    return 0 if ok and not checker.faults else 1


if __name__ == "__main__":
    sys.exit(main())
