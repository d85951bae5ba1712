"""Generate bus load on CAN channels of a box and see whether every frame arrives.

    python load_generator.py [--channels N] [--load PERCENT | --rate FRAMES] [--fd SHARE]
                             [--duration SECONDS] [--seed N]

The box itself sends cyclic frames with a counter in their payload; the script takes them in lists
from the other channels of the bus and looks for gaps in the counters. Once a second it prints what
was sent, received and lost, and the bus load. The exit status is 0 when nothing was lost.

Each sending channel is joined with a listening one: without a network of its own
(SIMCORE_NETWORK), the script describes a virtual box whose channels 0 and 1 share a bus, 2 and 3
the next, and so on. Drive a real box in the same way by joining its channels with cables.
"""
import argparse
import json
import os
import random
import sys
import threading
import time

import QuillScriptsSDK as sdk

BIT_RATE, DATA_BIT_RATE = 500_000, 2_000_000
CYCLES_MS = (1, 2, 5, 10, 20, 50, 100, 1000)
FIRST_ID = 0x100
MOST_JOBS = 1000
COUNTER = sdk.FrameUpdate(counterEnabled=True, counterStartBit=0, counterLength=32)
QUIET_S = 30  # longest wait for the last frames


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--channels", type=int, default=1, metavar="N",
                        help="sending channels, 1 to 16; as many listen (default 1)")
    amount = parser.add_mutually_exclusive_group()
    amount.add_argument("--load", type=float, default=40, metavar="PERCENT",
                        help="wanted load of each bus, up to 90 (default 40)")
    amount.add_argument("--rate", type=float, metavar="FRAMES",
                        help="frames per second on each bus instead of a load")
    parser.add_argument("--fd", type=float, default=0.25, metavar="SHARE",
                        help="share of CAN FD frames, 0 to 1 (default 0.25)")
    parser.add_argument("--duration", type=float, default=10, metavar="SECONDS")
    parser.add_argument("--seed", type=int, default=1, help="the same seed sends the same frames")
    options = parser.parse_args()
    if not 1 <= options.channels <= 16:
        parser.error("--channels takes 1 to 16")
    if options.rate is None and not 0 < options.load <= 90:
        parser.error("--load takes more than 0 and at most 90")
    if options.rate is not None and options.rate <= 0:
        parser.error("--rate takes more than 0")
    if not 0 <= options.fd <= 1:
        parser.error("--fd takes 0 to 1")
    if options.duration <= 0:
        parser.error("--duration takes more than 0")
    return options


def network(channels):
    """A virtual box with a bus for each sending channel; the next channel listens on it."""
    names = [f"bus{number}" for number in range(channels)]
    return {"buses": {name: {"kind": "can", "bitrate": BIT_RATE, "dataBitrate": DATA_BIT_RATE}
                      for name in names},
            "boxes": [{"name": "load", "channels": {
                "can": [name for name in names for _ in range(2)]}}]}


def seconds_on_bus(length, fd):
    """About how long a frame takes: header, checksum and gaps, and stuff bits at their mean."""
    if fd:
        return 30 / BIT_RATE + (8 * length + 40) * 31 / 30 / DATA_BIT_RATE
    return (47 + 8 * length + (34 + 8 * length) / 30) / BIT_RATE


class Plan:
    """Cyclic frames for one channel that add up to the wanted load."""

    def __init__(self, channel, options, rng):
        self.channel = channel
        self.jobs = []  # (frame, cycle in ms)
        self.rate = 0.0
        self.load = 0.0
        while len(self.jobs) < MOST_JOBS and self._add(options, rng):
            pass

    def _add(self, options, rng):
        """Adds a frame; False when there is no room for another one. One frame is always sent."""
        fd = rng.random() < options.fd
        length = rng.choice([8, 16, 32, 64]) if fd else rng.randrange(4, 9)
        data = [0] * 4 + list(rng.randbytes(length - 4))
        wanted = options.rate if options.rate is not None else options.load
        for cycle in rng.sample(CYCLES_MS, 3) + [CYCLES_MS[-1]]:
            rate = 1000 / cycle
            load = 100 * rate * seconds_on_bus(length, fd)
            total = self.rate + rate if options.rate is not None else self.load + load
            if total <= wanted or (not self.jobs and cycle == CYCLES_MS[-1]):
                frame = sdk.CANRawFrame(id=FIRST_ID + len(self.jobs), channelId=self.channel,
                                        EDL=int(fd), BRS=int(fd), data=data)
                self.jobs.append((frame, cycle))
                self.rate += rate
                self.load += load
                return True
        return False


class Tally:
    """Counts frames and gaps; its callable takes lists, so that it keeps up with busy buses."""

    def __init__(self):
        self._lock = threading.Lock()
        self._last = {}  # counter by channel and identifier
        self.sent = 0
        self.received = 0
        self.lost = 0

    def __call__(self, frames):
        with self._lock:
            for frame in frames:
                if frame.dir == 1:
                    self.sent += 1
                    continue
                self.received += 1
                data = frame.data
                counter = data[0] | data[1] << 8 | data[2] << 16 | data[3] << 24
                key = (frame.channelId, frame.id)
                self.lost += counter - self._last.get(key, 0) - 1
                self._last[key] = counter

    def read(self):
        with self._lock:
            return self.sent, self.received, self.lost


def bus_loads(handle, channels):
    """Load of each sending channel in percent, as the module measures it."""
    for device in sdk.getCounters().devices:
        if device.mac == handle.deviceInfo.mac:
            return [channel.busLoad for channel in device.channels
                    if channel.bus == "CAN" and channel.channel in channels]
    return []


def start(handle, plans):
    jobs = []
    for plan in plans:
        print(f"channel {plan.channel}: {len(plan.jobs)} cyclic frames, {plan.rate:.0f} frames/s, "
              f"about {plan.load:.0f} % load")
        for frame, cycle in plan.jobs:
            job = sdk.startCyclicCanFrame(handle, frame, cycle, 0, update=COUNTER)
            if job.result != 0:
                print(f"frame {frame.id:#x} on channel {plan.channel} was refused: {job.result}")
                return jobs, False
            jobs.append(job)
    return jobs, True


def watch(handle, channels, tally, duration):
    """Prints a line a second until the time is over."""
    begin = time.monotonic()
    before = (0, 0, 0)
    while (left := begin + duration - time.monotonic()) > 0:
        time.sleep(min(1.0, left))
        now = tally.read()
        loads = " ".join(f"{load:.0f} %" for load in bus_loads(handle, channels))
        print(f"{time.monotonic() - begin:6.1f} s  sent {now[0] - before[0]:>7,}  received "
              f"{now[1] - before[1]:>7,}  bus load {loads}  lost {now[2]:,}", flush=True)
        before = now


def wait_for_the_rest(tally):
    """Frames are held 240 ms for their order; True when all that were sent have come."""
    end = time.monotonic() + QUIET_S
    last = None
    while time.monotonic() < end:
        now = tally.read()
        if now == last and now[0] == now[1]:
            return True
        last = now
        time.sleep(0.5)
    return False


def main():
    options = arguments()
    os.environ.setdefault("SIMCORE_NETWORK", json.dumps(network(options.channels)))
    rng = random.Random(options.seed)
    sdk.load()
    handles = sdk.getDeviceList(sdk.DeviceType.All, 3000)
    if not handles:
        print("no box on the network")
        return 1
    handle = handles[0]
    if len(handle.config.can) < 2 * options.channels:
        print(f"the box has {len(handle.config.can)} CAN channels, "
              f"{2 * options.channels} are needed")
        return 1
    plans = [Plan(2 * number, options, rng) for number in range(options.channels)]
    channels = [plan.channel for plan in plans]
    tally = Tally()
    if not sdk.subscribeCanFrames(handle, tally, maxFrames=2000, maxDelayMs=100):
        print("tracing could not be started")
        return 1

    jobs, ok = start(handle, plans)
    if ok:
        watch(handle, channels, tally, options.duration)
    for job in jobs:
        sdk.stopCyclicCanFrame(job)
    complete = wait_for_the_rest(tally)
    sent, received, lost = tally.read()
    counters = sdk.getCounters()
    dropped = sum(getattr(counters, step).dropped
                  for step in ("library", "readers", "resort", "dispatch", "delivery"))
    sdk.exit()
    print(f"sent {sent:,}, received {received:,}, lost {lost:,}, dropped on the way {dropped:,}")
    return 0 if ok and complete and sent > 0 and lost == 0 and dropped == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
