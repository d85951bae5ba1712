"""Errors of the frame distances in ns of python-can's 1 ms periodic sender on its virtual bus, one line per frame.

    python3 python_can_periodic.py CYCLES [busy]     busy: beside a thread that computes
"""

import sys
import threading

import can


def compute() -> None:
    number = 0
    while True:
        number = (number * 31 + 7) % 1000003


def main() -> None:
    cycles = int(sys.argv[1])
    if "busy" in sys.argv[2:]:
        threading.Thread(target=compute, daemon=True).start()
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
