"""Recordings in both formats, started and stopped at any moment, and ones that cannot be made."""
import os

from operations import Group

GROUP = Group("recording", pause=0.05)


@GROUP.operation(weight=8)
def record(run, rng):
    """One recording from start to end; another thread may end it before."""
    text = rng.random() < 0.4
    channels = rng.choice([[], [0], [0, 1], [2, 3, 7]])
    can_filter = rng.choice(run.can_lists) if rng.random() < 0.3 else None
    length = rng.uniform(0.05, 2.5)
    path = run.new_recording("asc" if text else "blf")
    run.sdk.enableDataRecording(path, channels, 1 if text else 0, canFilter=can_filter)
    run.pause(length)
    run.sdk.disableDataRecording()
    return run.recording_ended(path)


@GROUP.operation(weight=2)
def record_in_pairs(run, rng):
    """A second start while one runs changes nothing; a second stop does nothing."""
    path = run.new_recording("blf")
    run.sdk.enableDataRecording(path, [], 0)
    unused = path + ".unused"
    run.sdk.enableDataRecording(unused, [], 1)
    run.pause(rng.uniform(0.0, 0.3))
    run.sdk.disableDataRecording()
    run.sdk.disableDataRecording()
    assert not os.path.exists(unused), "a refused start left a file behind"
    return run.recording_ended(path)


@GROUP.operation(weight=2)
def record_to_nowhere(run, rng):
    path = rng.choice(["/dev/full", os.path.join(run.folder, "missing", "x.blf"), run.folder, ""])
    try:
        run.sdk.enableDataRecording(path, [], rng.randrange(2))
    except ValueError:
        return "raised"
    finally:
        run.sdk.disableDataRecording()
    raise AssertionError(f"a recording runs into {path!r}")


@GROUP.operation(weight=3)
def status(run, rng):
    status = run.sdk.getRecordingStatus()
    assert status.written + status.dropped + status.skipped <= status.offered, repr(status)
    assert status.error == "", repr(status)
