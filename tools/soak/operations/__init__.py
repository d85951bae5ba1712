"""What a soak run does: every operation draws all it needs from its random numbers first, so that
the sequence follows from the seed alone, whatever the network does to it.

An operation takes (run, rng) and returns how it ended: True, None or 0 when it was done, False or
another number when it was refused, or the text "raised" for an error that it provoked.
"""
import dataclasses
import importlib

MODULES = ["devices", "transmit", "lin", "receive", "filtering", "recording", "databases",
           "garbage", "computing"]


@dataclasses.dataclass(frozen=True)
class Operation:
    name: str
    weight: int
    call: object


@dataclasses.dataclass
class Group:
    """Operations that one actor draws from."""
    name: str
    pause: float  # mean time between two operations in seconds
    operations: list = dataclasses.field(default_factory=list)

    def operation(self, weight=1):
        """Registers a function under its own name."""
        def register(function):
            self.operations.append(Operation(f"{self.name}.{function.__name__}", weight, function))
            return function
        return register


def groups():
    """All groups, in a fixed order."""
    return [importlib.import_module(f"operations.{name}").GROUP for name in MODULES]
