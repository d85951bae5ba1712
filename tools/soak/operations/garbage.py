"""Arguments of the wrong kind, number and size: each must end in a plain Python error, or work."""
import inspect

from operations import Group

GROUP = Group("garbage", pause=0.01)

# What Python code may raise for a bad argument. SystemError and MemoryError are none of them.
CLEAN = (TypeError, ValueError, OverflowError, AttributeError, IndexError, KeyError)
# These end or block the run by their purpose.
EXCLUDED = {"exit", "load"}


class Anything:
    """A class, which is callable, too; as a frame callable it does no harm."""

    def __init__(self, *_arguments, **_keywords):
        pass


def garbage_value(run, rng):
    sdk = run.sdk
    pool = [
        lambda: None, lambda: True, lambda: -1, lambda: 0, lambda: 2**31, lambda: 2**64,
        lambda: -2**63, lambda: 10**40, lambda: 1.5, lambda: float("nan"), lambda: float("inf"),
        lambda: "", lambda: "\0", lambda: "/nonexistent/file.dbc", lambda: "\ud800",
        lambda: "/nonexistent/" + "x" * 5000, lambda: b"", lambda: b"\xff" * 65, lambda: [],
        lambda: [300], lambda: [None], lambda: ["a"], lambda: [[1]], lambda: (), lambda: {},
        lambda: object(), lambda: Anything, lambda: lambda *a: None, lambda: range(70),
        lambda: run.absent, lambda: run.some_flaky_handle(rng), sdk.DeviceHandle,
        lambda: sdk.DeviceHandle(deviceInfo=sdk.RVBoxDeviceInfo(mac="no address")),
        sdk.CANRawFrame, lambda: sdk.CANRawFrame(id=2**32 - 1, data=bytes(64)), sdk.LinFrame,
        sdk.EthFrame, sdk.LinScheduleTable, sdk.ScheduleTableSlot, sdk.FrameUpdate,
        sdk.CANCyclicFrameHandle, sdk.BoxConfig, sdk.CANFrameFilterList, sdk.LINFrameFilterList,
        lambda: sdk.DeviceType.All, lambda: sdk.CrcType.CRC8_SAE_J1850, sdk.CanDbcDatabase,
        sdk.CanDBCEntry, sdk.CanDBCEntrySignal]
    return rng.choice(pool)()


def functions(sdk):
    return [name for name in sorted(dir(sdk))
            if name not in EXCLUDED and inspect.isbuiltin(getattr(sdk, name))]


def classes(sdk):
    return [name for name in sorted(dir(sdk)) if inspect.isclass(getattr(sdk, name))]


def attempt(call):
    try:
        call()
    except CLEAN as error:
        assert str(error), f"{type(error).__name__} without a text"
        return "raised"
    return True


@GROUP.operation(weight=10)
def call_function(run, rng):
    name = rng.choice(functions(run.sdk))
    arguments = [garbage_value(run, rng) for _ in range(rng.choice([0, 1, 2, 2, 3, 3, 4, 4, 5, 7]))]
    try:
        return attempt(lambda: getattr(run.sdk, name)(*arguments))
    except CLEAN:
        raise
    except Exception as error:
        raise AssertionError(f"{name}{tuple(arguments)!r:.300}: {error!r}") from error


@GROUP.operation(weight=6)
def set_attribute(run, rng):
    made = make_record(run, rng)
    if made is None:
        return "raised"
    names = [name for name in dir(made) if not name.startswith("_")]
    name, value = rng.choice(names or ["nothing"]), garbage_value(run, rng)
    outcome = attempt(lambda: setattr(made, name, value))
    attempt(lambda: repr(made))
    attempt(lambda: made == value)
    return outcome


@GROUP.operation(weight=3)
def call_method(run, rng):
    made = make_record(run, rng)
    if made is None:
        return "raised"
    names = [name for name in dir(made) if callable(getattr(made, name, None))
             and not name.startswith("_")]
    name = rng.choice(names or ["__repr__"])
    arguments = [garbage_value(run, rng) for _ in range(rng.randrange(6))]
    return attempt(lambda: getattr(made, name)(*arguments))


@GROUP.operation(weight=3)
def make_with_keywords(run, rng):
    name = rng.choice(classes(run.sdk))
    keywords = {rng.choice(["id", "data", "mac", "config", "can", "channel", "x"]):
                garbage_value(run, rng) for _ in range(rng.randrange(4))}
    return attempt(lambda: getattr(run.sdk, name)(**keywords))


def make_record(run, rng):
    made = getattr(run.sdk, rng.choice(classes(run.sdk)))
    try:
        return made()
    except TypeError:  # a record that only the module makes
        return None
