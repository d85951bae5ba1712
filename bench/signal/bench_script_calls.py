"""Signal calls of a script against a call that does nothing: python3.12 bench_script_calls.py BUILD

The sides of a ratio run in turn; minimum, median and maximum of the rounds are printed.
"""
import os
import pathlib
import statistics
import sys
import tempfile
import timeit

ROUNDS = 15
CALLS = 100_000
DBC = """VERSION ""
BU_: A
BO_ 291 Powertrain: 8 A
""" + "".join(
    f' SG_ S{i} : {start}|{length}@1{sign} ({factor},0) [0|0] "" A\n'
    for i, (start, length, sign, factor) in enumerate(
        [(0, 4, "+", 1), (4, 4, "+", 1), (8, 12, "-", 0.1), (20, 4, "+", 1), (24, 8, "+", 0.5),
         (32, 6, "+", 1), (38, 2, "+", 1), (40, 10, "-", 0.25), (50, 6, "+", 1),
         (56, 8, "+", 1)]))


def row(name, values):
    print(f"  {name:42} min {min(values):8.1f}  median {statistics.median(values):8.1f}  "
          f"max {max(values):8.1f} ns")


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    sys.path[:0] = [str(build / "bench"), str(build / "python")]
    with tempfile.TemporaryDirectory() as folder:
        os.environ["LocalAPPDATA"] = folder
        import quill_bench_calls as bench
        import QuillScriptsSDK as sdk

        path = pathlib.Path(folder) / "bench.dbc"
        path.write_text(DBC, encoding="ascii")
        _, database = sdk.loadCanDBC(str(path))
        frame = sdk.findFrame(database, 291)
        raw = bytes(range(8))
        payload = list(raw)  # as a received frame has it
        sides = {
            "a call that does nothing": lambda: bench.noop(payload, False, 8, 12),
            "the same, data not read": lambda: bench.noopUnread(payload, False, 8, 12),
            "parseSignalValue": lambda: sdk.parseSignalValue(payload, False, 8, 12),
            "decodeFrame, 10 signals": lambda: sdk.decodeFrame(frame, payload),
            "decodeFrame, 10 signals, data as bytes": lambda: sdk.decodeFrame(frame, raw),
        }
        times = {name: [] for name in sides}
        for _ in range(ROUNDS):
            for name, call in sides.items():
                times[name].append(timeit.timeit(call, number=CALLS) / CALLS * 1e9)
        print("calls from a script")
        for name, values in times.items():
            row(name, values)
        medians = {name: statistics.median(values) for name, values in times.items()}
        nothing = medians["a call that does nothing"]
        print(f"@|parseSignalValue from a script|ns|{medians['parseSignalValue']:.1f}|"
              f"{nothing:.1f}|nan||1.5 x floor at most")
        print(f"@|decodeFrame of 10 signals from a script|ns|"
              f"{medians['decodeFrame, 10 signals']:.1f}|nan|nan||1200 ns at most")
        ratio = statistics.median(
            a / b for a, b in zip(times["parseSignalValue"], times["a call that does nothing"]))
        print(f"  parseSignalValue / nothing: {ratio:.2f}  (target 1.5 at most)")
        sdk.exit()


if __name__ == "__main__":
    main()
