"""A door control unit, simulated on one channel of the box.

It sends its status every 20 ms, obeys the body master's commands when their counter and CRC are
right, reports a master that has gone silent, and answers diagnostic requests of a single frame.

The unit has no clock of its own: it lives by the time stamps on the bus, so that a busy machine
cannot make it miss a deadline. Everything happens in its frame callables, which the SDK runs one
after the other on a thread of its own.
"""
import QuillScriptsSDK as sdk

from messages import CRC_BYTE, PROTECTION, crc_of

MASTER_TIMEOUT_NS = 500_000_000
SUPPLY_V = 12.6
TEMPERATURE_C = 23
PART_NUMBER = b"D42"
CODE_MASTER_MISSING, CODE_JAMMED = 0x11, 0x12  # trouble codes

POSITIVE, NEGATIVE = 0x40, 0x7F
SERVICE_NOT_SUPPORTED, OUT_OF_RANGE = 0x11, 0x31


class DoorEcu:
    def __init__(self, handle, messages, channel):
        self._handle, self._messages, self._channel = handle, messages, channel
        self._services = {0x3E: self._tester_present, 0x22: self._read_identifier,
                          0x19: self._read_codes, 0x14: self._clear_codes}
        self._locked = False
        self._fault = "None"
        self._rejected = 0
        self._last_counter = None
        self._last_command_ns = None
        self._codes = set()
        self._job = None
        self.jammed = False  # set by a test: the lock no longer moves

    def start(self):
        for name, callback in self._callbacks().items():
            sdk.subscribeCanFrameById(self._messages.id(name), callback)
        self._job = sdk.startCyclicCanFrame(
            self._handle, self._status(), self._messages.cycle_ms("DoorStatus"), 0,
            update=PROTECTION)
        assert self._job.result == 0, self._job

    def stop(self):
        sdk.stopCyclicCanFrame(self._job)
        for name in self._callbacks():
            sdk.unsubscribeCanFrameById(self._messages.id(name))

    def _callbacks(self):
        return {"DoorCommand": self._on_command, "DiagnosticRequest": self._on_diagnostic_request,
                "DoorStatus": self._on_own_status}

    def _status(self):
        data = self._messages.encode(
            "DoorStatus", LockState="Locked" if self._locked else "Unlocked", Fault=self._fault,
            Supply=SUPPLY_V, Temperature=TEMPERATURE_C, RejectedCommands=self._rejected)
        return sdk.CANRawFrame(id=self._messages.id("DoorStatus"), channelId=self._channel,
                               data=data)

    def _show(self):
        """The running job goes on with the new status; its counter and its cycle stay."""
        sdk.updateCyclicCanFrame(self._job, self._status())

    def _arrived(self, frame):
        return frame.channelId == self._channel and frame.dir == 0

    # Commands of the body master.

    def _on_command(self, frame):
        if not self._arrived(frame):
            return
        values = self._messages.decode("DoorCommand", frame.data)
        if frame.data[CRC_BYTE] != crc_of(frame.data) or values["Counter"] == self._last_counter:
            self._rejected = min(self._rejected + 1, 255)
            self._show()
            return
        self._last_counter = values["Counter"]
        self._last_command_ns = frame.timestamp
        before = (self._locked, self._fault)
        if self._fault == "MasterMissing":
            self._fault = "None"
        if values["Request"] in ("Lock", "Unlock"):
            self._move(values["Request"] == "Lock")
        if (self._locked, self._fault) != before:
            self._show()

    def _move(self, lock):
        if self.jammed and lock != self._locked:
            self._fault = "Jammed"
            self._codes.add(CODE_JAMMED)
            return
        self._locked = lock

    def _on_own_status(self, frame):
        """The unit's own frames tell it the time."""
        if frame.channelId != self._channel or frame.dir != 1:
            return
        if self._last_command_ns is None:
            self._last_command_ns = frame.timestamp
        if self._fault == "None" and frame.timestamp - self._last_command_ns > MASTER_TIMEOUT_NS:
            self._fault = "MasterMissing"
            self._codes.add(CODE_MASTER_MISSING)
            self._show()

    # Diagnostics: length, service and parameters in one frame.

    def _on_diagnostic_request(self, frame):
        if not self._arrived(frame) or not 1 <= frame.data[0] <= len(frame.data) - 1:
            return
        service, parameters = frame.data[1], bytes(frame.data[2:frame.data[0] + 1])
        handler = self._services.get(service)
        answer = handler(parameters) if handler else SERVICE_NOT_SUPPORTED
        if isinstance(answer, int):
            payload = bytes([NEGATIVE, service, answer])
        else:
            payload = bytes([service + POSITIVE]) + answer
        data = (bytes([len(payload)]) + payload).ljust(8, b"\x00")
        sdk.sendCanFrame(self._handle, sdk.CANRawFrame(
            id=self._messages.id("DiagnosticResponse"), channelId=self._channel, data=data))

    def _tester_present(self, parameters):
        return parameters[:1]

    def _read_identifier(self, parameters):
        return parameters + PART_NUMBER if parameters == b"\xf1\x87" else OUT_OF_RANGE

    def _read_codes(self, _parameters):
        return bytes(sorted(self._codes))

    def _clear_codes(self, _parameters):
        self._codes.clear()
        self._fault = "None"
        self._show()
        return b""
