"""What was done how often, how it ended and how long it took."""
import dataclasses
import threading
import time

LONGEST_LISTED = 20


@dataclasses.dataclass
class Entry:
    done: int = 0
    refused: int = 0  # answered with a failure that the faulty network explains
    raised: int = 0   # ended with an exception that the operation provokes
    failed: int = 0   # anything else
    seconds: float = 0.0
    longest: float = 0.0

    def count(self):
        return self.done + self.refused + self.raised + self.failed


class Ledger:
    """Counts operations; all methods may be called from any thread."""

    def __init__(self):
        self._lock = threading.Lock()
        self._entries = {}
        self._failures = []
        self._failed = 0

    def note(self, operation, outcome, seconds):
        """`outcome` is "done", "refused", "raised" or "failed"."""
        with self._lock:
            entry = self._entries.setdefault(operation, Entry())
            setattr(entry, outcome, getattr(entry, outcome) + 1)
            entry.seconds += seconds
            entry.longest = max(entry.longest, seconds)

    def fail(self, where, text):
        """A fault of the product, or of the soak itself."""
        with self._lock:
            self._failed += 1
            if len(self._failures) < LONGEST_LISTED:
                self._failures.append({"at": round(time.monotonic(), 1), "where": where,
                                       "text": text})

    def snapshot(self):
        with self._lock:
            return {"operations": {name: dataclasses.asdict(entry)
                                   for name, entry in sorted(self._entries.items())},
                    "failures": list(self._failures), "failed": self._failed}
