"""Prints the frames per second that python-can's writer reaches: FILE FRAMES FD LEVEL."""

import math
import sys
import time

import can


def payload(number, fd):
    speed = int(8000 + 4000 * math.sin(number / 9000))
    torque = int(2000 + 500 * math.sin(number / 2000))
    block = bytes((number & 15, speed & 255, speed >> 8, torque & 255, torque >> 8,
                   128 + number % 4, number % 60, (number * 7) & 255))
    return block * 8 if fd else block


def main():
    path, frames, fd, level = sys.argv[1], int(sys.argv[2]), sys.argv[3] == "1", int(sys.argv[4])
    messages = [can.Message(timestamp=1.7e9 + i * 0.0002, arbitration_id=0x100 + i % 60,
                            is_extended_id=False, is_fd=fd, bitrate_switch=fd, channel=0,
                            data=payload(i, fd)) for i in range(frames)]
    writer = (can.BLFWriter(path, compression_level=level) if path.endswith(".blf")
              else can.ASCWriter(path))
    start = time.perf_counter()
    for message in messages:
        writer.on_message_received(message)
    writer.stop()
    print(frames / (time.perf_counter() - start))


main()
