"""What a soak run prints."""
import time

COLUMNS = ("operation", "count", "refused", "raised", "failed", "mean ms", "longest ms")


class Report:
    """Lines on standard output, with the time since the start in front."""

    def __init__(self):
        self._start = time.monotonic()

    def line(self, text):
        print(f"[{time.monotonic() - self._start:6.1f} s] {text}", flush=True)

    @staticmethod
    def table(title, found):
        print(f"\n{title}\n{COLUMNS[0]:<34}" + "".join(f"{name:>12}" for name in COLUMNS[1:]))
        total = [0, 0, 0, 0]
        for name, entry in found.items():
            count = entry["done"] + entry["refused"] + entry["raised"] + entry["failed"]
            row = [count, entry["refused"], entry["raised"], entry["failed"]]
            total = [a + b for a, b in zip(total, row)]
            print(f"{name:<34}" + "".join(f"{number:>12,}" for number in row) +
                  f"{1000 * entry['seconds'] / max(count, 1):>12.2f}"
                  f"{1000 * entry['longest']:>12.1f}")
        print(f"{'all':<34}" + "".join(f"{number:>12,}" for number in total), flush=True)

    @staticmethod
    def failures(texts):
        for number, text in enumerate(texts, 1):
            print(f"\nFAILURE {number}: {text}", flush=True)
