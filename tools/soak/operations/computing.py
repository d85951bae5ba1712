"""A script thread that computes without pause, and one that collects garbage."""
import gc
import time

from operations import Group

GROUP = Group("computing", pause=0.5)


@GROUP.operation(weight=3)
def compute(_run, rng):
    """Gives the interpreter away only when it is made to."""
    end = time.monotonic() + rng.uniform(0.01, 0.3)
    while time.monotonic() < end:
        sum(range(1000))


@GROUP.operation()
def collect(_run, _rng):
    gc.collect()
