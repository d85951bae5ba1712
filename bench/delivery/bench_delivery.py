"""Delivery to callables: against a bare loop, against python-can's virtual bus, and the import.

    python3.12 bench_delivery.py BUILD_FOLDER [--rounds N] [--peer PYTHON] [--only PART]

The sides of a ratio run in turn; minimum, median and maximum are printed. PYTHON is an interpreter
with python-can, /usr/bin/python3 by default.
"""
import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time




def trivial(frame):
    pass


def row(name, values, unit):
    print(f"  {name:34} min {min(values):10.1f}  median {statistics.median(values):10.1f}  "
          f"max {max(values):10.1f} {unit}")


def table_row(what, unit, ours, floor=float("nan"), peer=float("nan"), peer_name="", wanted=""):
    """A line for bench/table.py."""
    print(f"@|{what}|{unit}|{ours:.6g}|{floor:.6g}|{peer:.6g}|{peer_name}|{wanted}")


def bench_floor(build, rounds):
    sys.path.insert(0, str(build / "bench"))
    import quill_bench_delivery as bench

    count = 200_000
    for length in (8, 64):
        sides = {"floor": [], "convert": [], "deliver": []}
        for _ in range(rounds):
            for name, values in sides.items():
                values.append(getattr(bench, name)(trivial, count, length))
        print(f"resort buffer to callable, {length} bytes, {count} frames a round")
        row("bare loop", sides["floor"], "ns/frame")
        row("bare loop, general conversion", sides["convert"], "ns/frame")
        row("delivery", sides["deliver"], "ns/frame")
        ratios = [d / f for d, f in zip(sides["deliver"], sides["floor"])]
        print(f"  delivery / bare loop: {statistics.median(ratios):.2f}")
        table_row(f"delivery, resort buffer to callable, {length} bytes", "ns",
                  statistics.median(sides["deliver"]), statistics.median(sides["floor"]),
                  wanted="2 x floor at most")


def bench_filter(build, rounds):
    """What a filter of 1,000 identifiers and 100 ranges adds to a frame."""
    sys.path.insert(0, str(build / "bench"))
    import quill_bench_delivery as bench

    print("filter of 1,000 identifiers and 100 ranges, all frames pass")
    for name, callable_ in (("to a callable", trivial), ("without a callable", None)):
        plain, filtered = [], []
        for _ in range(2 * rounds):
            plain.append(bench.deliver(callable_, 200_000, 8))
            filtered.append(bench.deliver(callable_, 200_000, 8, filtered=True))
        row(f"{name}, no filter", plain, "ns/frame")
        row(f"{name}, filtered", filtered, "ns/frame")
        more = statistics.median(b - a for a, b in zip(plain, filtered))
        print(f"  {name}: {more:.1f} ns a frame more")
        table_row(f"a filter of 1,000 identifiers and 100 ranges, {name}", "ns a frame more", more,
                  wanted="50 ns at most")


def environment(build, appdata, network=None):
    env = dict(os.environ, PYTHONPATH=str(build / "python"), LocalAPPDATA=appdata)
    if network is not None:
        env["SIMCORE_NETWORK"] = json.dumps(network)
    return env


OURS = r"""
import sys, threading, time
import QuillScriptsSDK as q
count = int(sys.argv[1])
handle = q.getDeviceList(q.DeviceType.All, 20000)[0]
seen = 0
first = 0.0
done = threading.Event()
def on_frame(frame):
    global seen, first
    if seen == 0:
        first = time.perf_counter()
    seen += 1
    if seen == count:
        done.set()
q.subscribeCanFrame(handle, on_frame)
if not done.wait(120):
    sys.exit(f"{seen} of {count} frames")
# From the first call to the last: the hold time is not counted.
print((count - 1) / (time.perf_counter() - first))
q.exit()
"""

PEER = r"""
import sys, threading, time
import can
count, length = int(sys.argv[1]), int(sys.argv[2])
fd = length > 8
sender = can.Bus("bench", interface="virtual")
receiver = can.Bus("bench", interface="virtual")
seen = 0
done = threading.Event()
def on_frame(message):
    global seen
    seen += 1
    if seen == count:
        done.set()
notifier = can.Notifier(receiver, [on_frame])
message = can.Message(arbitration_id=0x123, data=bytes(length), is_extended_id=False, is_fd=fd)
start = time.perf_counter()
for _ in range(count):
    sender.send(message)
if not done.wait(120):
    sys.exit(f"{seen} of {count} frames")
print(count / (time.perf_counter() - start))
notifier.stop()
"""


def frames_per_second(command, env):
    result = subprocess.run(command, env=env, capture_output=True, text=True)
    if result.returncode != 0:
        raise SystemExit(result.stderr or result.stdout)
    return float(result.stdout.split()[-1])


def bench_end_to_end(build, appdata, peer, rounds):
    count = 300_000
    for length in (8, 64):
        source = {"id": 0x123, "data": [1] * length, "fd": length > 8, "period_ms": 0,
                  "count": count}
        network = {
            "boxes": [{"name": "bench", "mac": "02:00:00:00:00:0A", "serial": "SN-1",
                       "traceCapacity": 2 * count, "channels": {"can": ["bus"]}}],
            "buses": {"bus": {"kind": "can"}},
            "sources": [{"bus": "bus", "periodic": source}],
        }
        ours, theirs = [], []
        for _ in range(rounds):
            ours.append(frames_per_second([sys.executable, "-c", OURS, str(count)],
                                          environment(build, appdata, network)))
            theirs.append(frames_per_second([peer, "-c", PEER, str(count // 3), str(length)],
                                            dict(os.environ)))
        print(f"unpaced virtual bus to callable, {length} bytes")
        row("QuillScriptsSDK", ours, "frames/s")
        row("python-can Notifier", theirs, "frames/s")
        ratios = [a / b for a, b in zip(ours, theirs)]
        print(f"  QuillScriptsSDK / python-can: {statistics.median(ratios):.2f}")
        table_row(f"unpaced virtual bus to callable, {length} bytes", "frames/s",
                  statistics.median(ours), peer=statistics.median(theirs), peer_name="python-can",
                  wanted="4 x peer")


BUSY = r"""
import sys, threading, time
import QuillScriptsSDK as q
form, busy, count = sys.argv[1], sys.argv[2] == "busy", int(sys.argv[3])
handle = q.getDeviceList(q.DeviceType.All, 20000)[0]
seen, first, last = 0, 0.0, 0.0
done, stop = threading.Event(), False
def take(number):
    global seen, first, last
    last = time.perf_counter()
    if seen == 0:
        first = last
    seen += number
    if seen >= count:
        done.set()
def compute():
    number = 0
    while not stop:
        number = (number * 31 + 7) % 1000003
thread = threading.Thread(target=compute)
if busy:
    thread.start()
if form == "lists":
    q.subscribeCanFrames(handle, lambda frames: take(len(frames)))
else:
    q.subscribeCanFrame(handle, lambda frame: take(1))
done.wait(30)
stop = True
print(q.getCounters().backlogAgeUs / 1000, seen / (last - first))
import os
sys.stdout.flush()
os._exit(0)
"""


def bench_busy(build, appdata, rounds):
    """Beside a script thread that computes without pause."""
    def network(period_ms, sources):
        return {
            "boxes": [{"name": "bench", "mac": "02:00:00:00:00:0A", "serial": "SN-1",
                       "channels": {"can": ["bus"]}}],
            "buses": {"bus": {"kind": "can"}},
            "sources": [{"bus": "bus", "periodic": {"id": 0x120 + i, "data": [1] * 8,
                                                    "period_ms": period_ms}}
                        for i in range(sources)],
        }

    cases = [("lists, alone", "lists", "idle", 1_000_000, network(0, 1)),
             ("lists, beside a busy thread", "lists", "busy", 1_000_000, network(0, 1)),
             ("one by one, beside a busy thread", "single", "busy", 1_000_000, network(0, 1))]
    rates = {case[0]: [] for case in cases}
    for _ in range(rounds):
        for name, form, busy, count, net in cases:
            rates[name].append(frames_per_second(
                [sys.executable, "-c", BUSY, form, busy, str(count)],
                environment(build, appdata, net)))
    print("unpaced virtual bus to callables that take lists")
    for name, values in rates.items():
        row(name, values, "frames/s")
        table_row(f"unpaced virtual bus to callables: {name}", "frames/s",
                  statistics.median(values))
    print("100,000 frames/s offered, 5 s, beside a busy thread")
    ages = []
    for _ in range(rounds):
        result = subprocess.run([sys.executable, "-c", BUSY, "lists", "busy", "500000"],
                                env=environment(build, appdata, network(0.1, 10)), check=True,
                                capture_output=True, text=True)
        ages.append([float(value) for value in result.stdout.split()[-2:]])
    row("delivered", [rate for _, rate in ages], "frames/s")
    row("backlog at the end", [age for age, _ in ages], "ms")
    table_row("backlog of lists at 100,000 frames/s beside a busy thread", "ms",
              statistics.median(age for age, _ in ages), wanted="does not grow")


def bench_import(build, appdata, rounds):
    sides = {"pass": [], "import QuillScriptsSDK": []}
    for _ in range(3 * rounds):
        for code, values in sides.items():
            start = time.perf_counter()
            subprocess.run([sys.executable, "-c", code], env=environment(build, appdata),
                           check=True)
            values.append(1000 * (time.perf_counter() - start))
    print("import")
    for code, values in sides.items():
        row(code, values, "ms")
    bare, whole = (statistics.median(values) for values in sides.values())
    print(f"  import over the interpreter's start: {whole - bare:.1f} ms")
    table_row("import over the interpreter's start", "ms", whole - bare)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--peer", default="/usr/bin/python3")
    parser.add_argument("--only", choices=["floor", "filter", "road", "busy", "import"])
    options = parser.parse_args()
    build = options.build.resolve()
    if options.only in (None, "floor"):
        bench_floor(build, 3 * options.rounds)
    if options.only in (None, "filter"):
        bench_filter(build, 2 * options.rounds)
    with tempfile.TemporaryDirectory() as appdata:
        if options.only in (None, "road"):
            bench_end_to_end(build, appdata, options.peer, options.rounds)
        if options.only in (None, "busy"):
            bench_busy(build, appdata, min(options.rounds, 3))
        if options.only in (None, "import"):
            bench_import(build, appdata, options.rounds)


if __name__ == "__main__":
    main()
