"""Databases: loaded, queried, decoded and encoded, while a second process does the same."""
import math

from operations import Group

GROUP = Group("databases", pause=0.15)


def frame_of(database, rng):
    number = rng.randrange(1 << 30)
    frames = list(database.dbcEntrys)
    return frames[number % len(frames)] if frames else None


@GROUP.operation(weight=4)
def load_dbc(run, rng):
    path = rng.choice(run.databases.names("dbc"))
    code, database = run.sdk.loadCanDBC(path)
    run.databases.compare(path, "load", (code, [(f.id, f.name, len(f.signals))
                                                for f in database.dbcEntrys]))


@GROUP.operation(weight=3)
def decode_and_encode(run, rng):
    path, data = rng.choice(run.databases.names("dbc")), rng.randbytes(64)
    code, database = run.sdk.loadCanDBC(path)
    frame = frame_of(database, rng)
    if code != 0 or frame is None:
        return False
    values = run.sdk.decodeFrame(frame, data)
    assert all(isinstance(value, (float, str)) for value in values.values()), values
    for signal in frame.signals:
        back = run.sdk.decodeSignalPhysical(signal, data)
        if math.isnan(back) or math.isinf(back):
            continue
        try:
            again = run.sdk.encodeSignalPhysical(signal, data, back)
        except ValueError:  # outside the limits of the file
            continue
        value = run.sdk.decodeSignalPhysical(signal, again)
        assert math.isclose(value, back, rel_tol=1e-9, abs_tol=abs(signal.factor)), (
            path, frame.name, signal.name, back, value)


@GROUP.operation(weight=3)
def query_file(run, rng):
    path, data = rng.choice(run.databases.names("dbc")), rng.randbytes(64)
    code, database = run.sdk.loadCanDBC(path)
    frame = frame_of(database, rng)
    if code != 0 or frame is None:
        return False
    code, found = run.sdk.getCanFrameByNameFromDBC(path, frame.name)
    assert code in (0, 2), (path, frame.name, code)
    for signal in list(frame.signals)[:2]:
        code, _ = run.sdk.getCanSignalValueFromDBC(list(data), path, frame.name, signal.name)
        assert code in (0, 2), (path, frame.name, signal.name, code)
    return True


@GROUP.operation(weight=2)
def load_lin(run, rng):
    names = run.databases.names("ldf")
    number = rng.randrange(1 << 30)
    if not names:
        return False
    path = names[number % len(names)]
    code, database = run.sdk.loadLinLDF(path)
    run.databases.compare(path, "load", (code, [(f.id, f.name) for f in database.frame]))
    code, tables = run.sdk.getScheduleTableFromLDF(path)
    run.databases.compare(path, "tables", (code, [(t.name, t.slot_array_size()) for t in tables]))


@GROUP.operation()
def load_arxml(run, rng):
    names = run.databases.names("arxml")
    number = rng.randrange(1 << 30)
    if not names:
        return False
    path = names[number % len(names)]
    code, database = run.sdk.loadCanArxml(path)
    run.databases.compare(path, "load", (code, [[(f.id, f.name) for f in c.dbcEntrys]
                                                for c in database.clusters]))


@GROUP.operation()
def load_missing(run, rng):
    load = rng.choice([run.sdk.loadCanDBC, run.sdk.loadCanArxml, run.sdk.loadLinLDF])
    code, _ = load(rng.choice(["missing.dbc", "", run.folder, "/dev/null"]))
    assert code == 1, code
    return code
