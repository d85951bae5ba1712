"""Threads that draw operations from their own random numbers, and the gate that stops them all."""
import random
import threading
import time
import traceback


class Gate:
    """Open while operations may run. Closing it waits until every actor stands before it."""

    def __init__(self):
        self._changed = threading.Condition()
        self._open = True
        self._ended = False
        self._waiting = set()

    def enter(self, actor):
        """Waits while the gate is closed; False when the run is over."""
        with self._changed:
            self._waiting.add(actor)
            self._changed.notify_all()
            self._changed.wait_for(lambda: self._open or self._ended)
            self._waiting.discard(actor)
            return not self._ended

    def close(self, actors, seconds):
        """Names of the actors that did not come within the time."""
        with self._changed:
            self._open = False
            self._changed.wait_for(lambda: self._waiting >= set(actors), seconds)
            return [actor.name for actor in actors if actor not in self._waiting]

    def open(self):
        with self._changed:
            self._open = True
            self._changed.notify_all()

    def end(self):
        with self._changed:
            self._ended = True
            self._changed.notify_all()


class Actor(threading.Thread):
    """Runs operations of one group until the gate ends. Which ones, and with what, follows from
    the seed and the actor's name."""

    def __init__(self, run, group, number, gate):
        super().__init__(name=f"{group.name}#{number}", daemon=True)
        self._run, self._group, self._gate = run, group, gate
        self._rng = random.Random(f"{run.seed} {self.name}")
        self.current = ("", time.monotonic())  # replaced as a whole, read by the beat

    def run(self):
        weights = [operation.weight for operation in self._group.operations]
        while self._gate.enter(self):
            operation = self._rng.choices(self._group.operations, weights)[0]
            seed = self._rng.getrandbits(64)
            pause = self._rng.expovariate(1 / self._group.pause)
            self.current = (operation.name, time.monotonic())
            self._perform(operation, random.Random(seed))
            self.current = ("", time.monotonic())
            self._run.pause(min(pause, 1.0))

    def _perform(self, operation, rng):
        start = time.monotonic()
        try:
            result = operation.call(self._run, rng)
            outcome = result if result == "raised" else (
                "done" if result is None or result is True or
                (result == 0 and result is not False) else "refused")
        except Exception as error:
            if self._run.over and isinstance(error, RuntimeError):
                return  # the module was closed in the midst of it
            outcome = "failed"
            self._run.ledger.fail(f"{operation.name} in {self.name}", traceback.format_exc())
        self._run.ledger.note(operation.name, outcome, time.monotonic() - start)
