"""Errors of the frame distances in ns of python-can's 1 ms periodic sender on its virtual bus, one line per frame."""

import sys

import can


def main() -> None:
    cycles = int(sys.argv[1])
    sender = can.Bus("jitter", interface="virtual")
    receiver = can.Bus("jitter", interface="virtual")
    task = sender.send_periodic(can.Message(arbitration_id=1, data=bytes(8)), 0.001)
    stamps = []
    while len(stamps) < cycles:
        message = receiver.recv(5.0)
        if message is None:
            break
        stamps.append(message.timestamp)
    task.stop()
    sender.shutdown()
    receiver.shutdown()
    # The sender drifts by the length of each send, so the distances are looked at, not a grid.
    for before, after in zip(stamps, stamps[1:]):
        print(int(abs(after - before - 0.001) * 1e9))


if __name__ == "__main__":
    main()
