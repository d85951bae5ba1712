"""Frames of the door's database by name, and the counter and CRC that protect them."""
import pathlib

import QuillScriptsSDK as sdk

DATABASE = pathlib.Path(__file__).with_name("door.dbc")
CRC_BYTE = 7

# The box brings these up to date before every transmission: a counter of 4 bits, a CRC of 8.
PROTECTION = sdk.FrameUpdate(counterEnabled=True, counterStartBit=48, counterLength=4,
                             crcType=sdk.CrcType.CRC8_SAE_J1850, crcStartBit=8 * CRC_BYTE,
                             crcLength=8)


def crc8_j1850(data):
    crc = 0xFF
    for byte in data:
        crc ^= byte
        for _ in range(8):
            crc = ((crc << 1) ^ (0x1D if crc & 0x80 else 0)) & 0xFF
    return crc ^ 0xFF


def crc_of(data):
    """CRC of a payload; its own byte counts as 0."""
    return crc8_j1850([0 if at == CRC_BYTE else byte for at, byte in enumerate(data)])


class Messages:
    """Encodes and decodes by names, with texts where the database has them."""

    def __init__(self, path=DATABASE):
        code, database = sdk.loadCanDBC(str(path))
        if code != 0:
            raise RuntimeError(f"{path} cannot be loaded; the log says why")
        self._frames = {frame.name: frame for frame in database.dbcEntrys}

    def id(self, name):
        return self._frames[name].id

    def cycle_ms(self, name):
        return self._frames[name].cycleTime

    def encode(self, name, **values):
        """Payload of a frame: signals that are not given are 0."""
        data = [0] * self._frames[name].dlc
        for signal in self._frames[name].signals:
            value = values.pop(signal.name, 0)
            if isinstance(value, str):
                value = next(raw for raw, text in signal.mapValueTable.items() if text == value)
            data = sdk.encodeSignalPhysical(signal, data, value)
        if values:
            raise KeyError(f"{name} has no signal {', '.join(values)}")
        return data

    def decode(self, name, data):
        """{signal: text or physical value}"""
        return sdk.decodeFrame(self._frames[name], data)
