"""A 1 ms job of a script, alone and beside a script thread that computes without pause; its drift.

    python3.12 script_jitter.py BUILD_FOLDER [--seconds N] [--drift N] [--peer PYTHON]

The lateness of each stamp against the job's grid, beside that of a bare clock_nanosleep loop in a
process of its own under the same load, and python-can's periodic sender beside such a thread.
"""
import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import threading

PERIOD_NS = 1_000_000
NETWORK = {"boxes": [{"name": "bench", "mac": "02:00:00:00:00:0A", "serial": "SN-1",
                      "channels": {"can": ["bus", "bus"]}}], "buses": {"bus": {"kind": "can"}}}


class BusyThread:
    """Computes without pause while the block runs."""

    def __enter__(self):
        self._stop = False
        self._thread = threading.Thread(target=self._compute)
        self._thread.start()

    def _compute(self):
        number = 0
        while not self._stop:
            number = (number * 31 + 7) % 1000003

    def __exit__(self, *_):
        self._stop = True
        self._thread.join()


class Idle:
    def __enter__(self):
        pass

    def __exit__(self, *_):
        pass


def stamps_of_job(sdk, handle, cycles):
    """Box times of a 1 ms job's frames as another channel receives them."""
    stamps, done = [], threading.Event()

    def on_frames(frames):
        stamps.extend(f.timestamp for f in frames if f.dir == 0)
        if len(stamps) >= cycles:
            done.set()

    sdk.subscribeCanFrames(handle, on_frames)
    job = sdk.startCyclicCanFrame(handle, sdk.CANRawFrame(id=1, data=[0] * 8), 1, cycles)
    if not done.wait(cycles / 1000 * 2 + 30):
        raise SystemExit(f"{len(stamps)} of {cycles} frames")
    sdk.stopCyclicCanFrame(job)
    sdk.unsubscribeCanFrames(handle)
    return stamps


def lateness(stamps):
    """Against the grid through the earliest stamp; a period that was missed counts as late as the
    frame after it."""
    origin = min(s - i * PERIOD_NS for i, s in enumerate(stamps[:200]))
    late, number = [], 0
    for stamp in stamps:
        while origin + number * PERIOD_NS <= stamp - PERIOD_NS:
            late.append(stamp - origin - number * PERIOD_NS)
            number += 1
        late.append(stamp - origin - number * PERIOD_NS)
        number += 1
    return late


def percentile(values, share):
    return sorted(values)[int(share * (len(values) - 1))] / 1000


def bare_loop(build, cycles):
    out = subprocess.run([str(build / "bench" / "simcore_jitter_bench"), "--bare", str(cycles)],
                         check=True, capture_output=True, text=True).stdout
    return [int(line) for line in out.split()]


def peer(python, cycles, busy):
    script = pathlib.Path(__file__).with_name("python_can_periodic.py")
    out = subprocess.run([python, str(script), str(cycles)] + ["busy"] * busy,
                         capture_output=True, text=True, check=False).stdout
    return [int(line) for line in out.split()]


def row(name, values):
    if values:
        print(f"  {name:46} p50 {percentile(values, 0.5):8.1f}  p99 {percentile(values, 0.99):8.1f} us")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--seconds", type=int, default=8)
    parser.add_argument("--drift", type=int, default=60)
    parser.add_argument("--peer", default="/usr/bin/python3")
    options = parser.parse_args()
    build = options.build.resolve()
    sys.path.insert(0, str(build / "python"))
    os.environ["SIMCORE_NETWORK"] = json.dumps(NETWORK)
    with tempfile.TemporaryDirectory() as folder:
        os.environ["LocalAPPDATA"] = folder
        import QuillScriptsSDK as sdk

        handle = sdk.getDeviceList(sdk.DeviceType.All, 20000)[0]
        cycles = options.seconds * 1000
        for name, load in (("alone", Idle), ("beside a busy script thread", BusyThread)):
            print(f"1 ms job, {name}")
            ratios, floors, jobs = [], [], []
            for _ in range(3):
                with load():
                    floor = bare_loop(build, cycles)
                    job = lateness(stamps_of_job(sdk, handle, cycles))
                row("bare clock_nanosleep loop", floor)
                row("cyclic job", job)
                floors.append(percentile(floor, 0.99))
                jobs.append(percentile(job, 0.99))
                ratios.append(jobs[-1] / floors[-1])
            theirs = peer(options.peer, min(cycles, 3000), load is BusyThread)
            row("python-can send_periodic (distances)", theirs)
            print(f"@|p99 lateness of a script's 1 ms job, {name}|us|{statistics.median(jobs):.1f}|"
                  f"{statistics.median(floors):.1f}|"
                  f"{percentile(theirs, 0.99) if theirs else float('nan'):.1f}|python-can|"
                  "2 x floor at most")
            print(f"  p99, job / bare loop: {statistics.median(ratios):.2f}  (target 2 at most)")
        with BusyThread():
            stamps = stamps_of_job(sdk, handle, options.drift * 1000)
        late = lateness(stamps)
        edge = min(1000, len(late) // 4)
        drift = statistics.median(late[-edge:]) - statistics.median(late[:edge])
        print(f"{options.drift} s beside a busy script thread: {len(stamps)} transmissions, "
              f"{len(late) - len(stamps)} periods missed, drift {drift / 1000:.1f} us")
        print(f"@|drift of a 1 ms job over {options.drift} s|us|{drift / 1000:.3f}|nan|nan||0")
        sdk.exit()


if __name__ == "__main__":
    main()
