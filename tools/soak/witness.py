"""A cyclic frame on the box that never fails: not one may be lost, changed or out of order."""
import threading

WITNESS_ID = 0x7A0
CYCLE_MS = 5
CRC_BYTE = 7


def crc8_j1850(data):
    crc = 0xFF
    for byte in data:
        crc ^= byte
        for _ in range(8):
            crc = ((crc << 1) ^ (0x1D if crc & 0x80 else 0)) & 0xFF
    return crc ^ 0xFF


class Witness:
    """Its frames come twice: as sent on channel 0 and as received on channel 1."""

    def __init__(self, run):
        self._run = run
        self._lock = threading.Lock()
        self._last = {0: 0, 1: 0}  # counter by direction
        self._stamp = 0
        self._job = None

    def start(self):
        sdk = self._run.sdk
        assert sdk.subscribeCanFrame(self._run.steady, None), "the steady box cannot be traced"
        sdk.subscribeCanFrameById(WITNESS_ID, self._came)
        update = sdk.FrameUpdate(counterEnabled=True, counterStartBit=0, counterLength=32,
                                 crcType=sdk.CrcType.CRC8_SAE_J1850, crcStartBit=8 * CRC_BYTE,
                                 crcLength=8)
        frame = sdk.CANRawFrame(id=WITNESS_ID, channelId=0, data=[0] * 8)
        self._job = sdk.startCyclicCanFrame(self._run.steady, frame, CYCLE_MS, 0, update=update)
        assert self._job.result == 0, repr(self._job)

    def _came(self, frame):
        data = frame.data
        counter = int.from_bytes(bytes(data[:4]), "little")
        plain = data[:CRC_BYTE] + [0]
        faults = []
        with self._lock:
            if counter != self._last[frame.dir] + 1:
                faults.append(f"counter {counter} after {self._last[frame.dir]}, dir {frame.dir}")
            if frame.timestamp < self._stamp:
                faults.append(f"stamp {frame.timestamp} after {self._stamp}")
            if data[CRC_BYTE] != crc8_j1850(plain):
                faults.append(f"CRC of {data}")
            self._last[frame.dir] = counter
            self._stamp = frame.timestamp
        for fault in faults:
            self._run.ledger.fail("witness", fault)

    def pause(self):
        assert self._run.sdk.pauseCyclicCanFrame(self._job) == 0

    def resume(self):
        assert self._run.sdk.resumeCyclicCanFrame(self._job) == 0

    def stop(self):
        assert self._run.sdk.stopCyclicCanFrame(self._job) == 0

    def seen(self):
        """(frames received, frames sent)"""
        with self._lock:
            return self._last[0], self._last[1]

    def balanced(self):
        received, sent = self.seen()
        return received == sent
