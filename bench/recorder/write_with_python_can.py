"""Prints the frames per second of python-can's writer: FILE TRAFFIC FD LEVEL.

TRAFFIC holds frames of 77 bytes: time in ns, identifier, length, 64 bytes of data.
"""

import struct
import sys
import time

import can


def main():
    path, traffic, fd, level = sys.argv[1], sys.argv[2], sys.argv[3] == "1", int(sys.argv[4])
    with open(traffic, "rb") as file:
        frames = struct.iter_unpack("<QIB64s", file.read())
    messages = [can.Message(timestamp=ns * 1e-9, arbitration_id=number, is_extended_id=False,
                            is_fd=fd, bitrate_switch=fd, channel=0, data=data[:length])
                for ns, number, length, data in frames]
    writer = (can.BLFWriter(path, compression_level=level) if path.endswith(".blf")
              else can.ASCWriter(path))
    start = time.perf_counter()
    for message in messages:
        writer.on_message_received(message)
    writer.stop()
    print(len(messages) / (time.perf_counter() - start))


main()
