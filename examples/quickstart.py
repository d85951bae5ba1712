"""First steps: find the boxes, send CAN and CAN FD frames on one channel, receive them on another.

    python quickstart.py [SECONDS]

Without a box on the network, the built-in virtual box answers: its first two CAN channels share a
bus. With traffic of its own (a replayed log), the script listens for up to SECONDS, 5 by default,
or until the bus has been quiet for a second.
"""
import collections
import sys
import threading
import time

import QuillScriptsSDK as sdk

SENT_ID = 0x123
ROUNDS = 5


class Listener:
    """Keeps what the callables are called with; they run on the SDK's own thread."""

    def __init__(self):
        self.changed = threading.Condition()
        self.frames = []
        self.lin_count = 0
        self.sent_id_count = 0
        self.last = time.monotonic()

    def on_can(self, frame):
        with self.changed:
            self.frames.append(frame)
            self.last = time.monotonic()
            self.changed.notify_all()

    def on_lin(self, frame):
        with self.changed:
            self.lin_count += 1
            self.changed.notify_all()

    def on_sent_id(self, frame):
        with self.changed:
            self.sent_id_count += 1
            self.changed.notify_all()

    def wait(self, condition, seconds):
        with self.changed:
            return self.changed.wait_for(condition, seconds)


def show_boxes(handles):
    for handle in handles:
        info = handle.deviceInfo
        print(handle)
        print(f"  serial number {info.sn}, model {info.model}, found through {info.networkCard!r}")
        print(f"  {len(handle.config.can)} CAN, {len(handle.config.lin)} LIN and "
              f"{len(handle.config.eth)} Ethernet channels")


def send_frames(handle):
    for number in range(ROUNDS):
        classic = sdk.CANRawFrame(id=SENT_ID, channelId=0, data=[number, 0xCA, 0xFE])
        sdk.sendCanFrame(handle, classic)
        fd = sdk.CANRawFrame(id=SENT_ID, channelId=0, BRS=1, data=bytes(range(number, number + 16)))
        sdk.sendCanFDFrame(handle, fd)


def start_lin_table(handle):
    """The box sends two LIN frames in turn; LIN channels 0 and 1 of the virtual box share a bus."""
    table = sdk.LinScheduleTable(channel_id=0, name="quickstart")
    for identifier in (0x10, 0x11):
        table.add_slot(sdk.ScheduleTableSlot(id=identifier, time_interval=10, msg_type=4,
                                             check_type=1, data=[identifier, 1, 2]))
    sdk.startLinScheduleTable(handle, table)


def listen_on(listener, seconds):
    """Goes on while others than this script send."""
    end = time.monotonic() + seconds
    while time.monotonic() < end and time.monotonic() - listener.last < 1.0:
        time.sleep(0.1)


def show_counts(listener):
    received = [frame for frame in listener.frames if frame.dir == 0]
    print(f"\n{len(listener.frames)} CAN frames, {len(received)} of them received and "
          f"{len(listener.frames) - len(received)} sent; {listener.lin_count} LIN frames")
    in_order = all(a.timestamp <= b.timestamp
                   for a, b in zip(listener.frames, listener.frames[1:]))
    print("in time order" if in_order else "NOT in time order")
    counts = collections.Counter(frame.id for frame in received)
    for identifier, count in counts.most_common(10):
        print(f"  {identifier:#05X}".replace("X", "x") + f" was received {count} times")
    return in_order


def main():
    seconds = float(sys.argv[1]) if len(sys.argv) > 1 else 5.0
    sdk.load()
    handles = sdk.getDeviceList(sdk.DeviceType.All, 3000)
    if not handles:
        print("no box on the network")
        sdk.exit()
        return 1
    show_boxes(handles)
    handle = handles[0]

    listener = Listener()
    sdk.subscribeCanFrameById(SENT_ID, listener.on_sent_id)
    sdk.subscribeLinFrame(handle, listener.on_lin)
    if not sdk.subscribeCanFrame(handle, listener.on_can):
        print("tracing could not be started")
        return 1
    start_lin_table(handle)
    send_frames(handle)
    # Each frame comes twice: marked as sent on channel 0, and received on channel 1.
    complete = listener.wait(lambda: listener.sent_id_count >= 4 * ROUNDS, 10)
    listener.wait(lambda: listener.lin_count >= 4, 5)
    sdk.stopLinScheduleTable(handle, 0)
    listen_on(listener, seconds)
    sdk.unsubscribeCanFrame(handle)

    print("\nthe first frames:")
    for frame in [frame for frame in listener.frames if frame.dir == 0][:5]:
        print(frame)
    in_order = show_counts(listener)
    print(f"{sdk.getCanFrameCountById(SENT_ID)} frames with identifier {SENT_ID:#x} were counted")
    sdk.exit()
    return 0 if complete and in_order else 1


if __name__ == "__main__":
    sys.exit(main())
