"""The checks of the soak run find what they are there for."""
import pathlib
import shutil
import sys
import types

import pytest

from support import Inbox

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools" / "soak"))

import actors  # noqa: E402
import counters  # noqa: E402
import faulty_network  # noqa: E402
import process_state  # noqa: E402
from database_folder import DatabaseFolder, fill, unexpected  # noqa: E402
from ledger import Ledger  # noqa: E402
from trace_check import TraceCheck  # noqa: E402
from witness import Witness, crc8_j1850  # noqa: E402


def road(**changes):
    """Counters of ten frames that went the whole road; changes are "step_field" texts."""
    steps = {name: dict(received=10, delivered=10, held=0, dropped=0) for name in counters.ROAD}
    for change, value in changes.items():
        step, field = change.split("_")
        steps[step][field] = value
    return types.SimpleNamespace(
        devices=[], calls=0, callbackErrors=0, backlogAgeUs=0,
        **{name: types.SimpleNamespace(**fields) for name, fields in steps.items()})


@pytest.mark.parametrize("changes, told", [
    ({}, None),
    ({"resort_delivered": 9}, "resort"),
    ({"resort_delivered": 9, "resort_held": 1, "dispatch_received": 9}, "dispatch"),
    ({"library_received": 12, "library_delivered": 12}, "readers received 10"),
])
def test_counters_that_do_not_add_up(changes, told):
    faults = counters.unbalanced(road(**changes))
    assert (faults == []) if told is None else any(told in fault for fault in faults), faults


def test_counters_that_fall_or_cannot_be():
    assert counters.went_backwards(road(), road()) == []
    assert counters.went_backwards(road(), road(readers_dropped=-1))
    assert counters.impossible(road(delivery_held=2**64 - 1))
    assert counters.impossible(road()) == []


def test_a_recording_is_read_back(sdk, box, tmp_path):
    quilltrace = shutil.which("quilltrace", path=str(
        pathlib.Path(sdk.__file__).resolve().parents[1] / "bin"))
    if quilltrace is None:
        pytest.skip("this build has no quilltrace")
    inbox = Inbox()
    sdk.subscribeCanFrame(box, inbox)
    path = tmp_path / "a.blf"
    sdk.enableDataRecording(str(path), [], 0)
    for number in range(100):
        sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x100, data=[number]))
    inbox.wait(200)
    sdk.disableDataRecording()
    written = sdk.getRecordingStatus().written
    sdk.unsubscribeCanFrame(box)
    whole = path.read_bytes()
    traces = TraceCheck(quilltrace, python_can=False)
    assert traces.check(path, written) == []
    assert list(tmp_path.iterdir()) == [], "the checked file is deleted"
    path.write_bytes(whole)
    assert traces.check(path, written + 1), "one frame is missing"
    path.write_bytes(whole[:-50])
    assert traces.check(path, written), "the end is missing"


def test_answers_that_differ_and_files_left_behind(tmp_path):
    folder = tmp_path / "databases"
    fill(folder)
    databases = DatabaseFolder(folder)
    path = databases.names("dbc")[0]
    databases.compare(path, "load", 1)
    databases.compare(path, "load", 1)
    with pytest.raises(AssertionError, match="was 1, now 2"):
        databases.compare(path, "load", 2)
    pathlib.Path(path).with_suffix(".json").write_text("{}")
    assert unexpected(folder) == []
    (folder / "door.json.tmp").write_text("")
    assert unexpected(folder) == ["door.json.tmp"]


def test_the_witness_tells_losses_and_damage():
    run = types.SimpleNamespace(ledger=Ledger())
    witness = Witness(run)

    def frame(counter, stamp, crc=None):
        plain = list(counter.to_bytes(4, "little")) + [0] * 4
        return types.SimpleNamespace(
            dir=0, timestamp=stamp,
            data=plain[:7] + [crc8_j1850(plain) if crc is None else crc])

    for one in (frame(1, 5), frame(2, 6), frame(4, 7), frame(5, 6), frame(6, 8, crc=0)):
        witness._came(one)
    texts = [failure["text"] for failure in run.ledger.snapshot()["failures"]]
    assert [text.split()[0] for text in texts] == ["counter", "stamp", "CRC"], texts


def test_growth_of_what_a_process_holds():
    assert process_state.growth({"a": 1}, {"a": 1, "hub4e-can": 3}, ("hub4e-",)) == {}
    assert process_state.growth({"a": 1}, {"a": 3}) == {"a": 2}
    assert process_state.resident_mib() > 1


def test_the_same_seed_makes_the_same_network():
    assert faulty_network.document(7) == faulty_network.document(7)
    assert faulty_network.document(7) != faulty_network.document(8)
    boxes = {box["name"] for box in faulty_network.document(7)["boxes"]}
    assert all(fault["box"] in boxes - {faulty_network.STEADY}
               for seed in range(20) for fault in faulty_network.document(seed)["faults"])


def test_an_actor_s_operations_follow_from_the_seed():
    def sequence(seed):
        done = []
        group = types.SimpleNamespace(name="test", pause=0.001, operations=[
            types.SimpleNamespace(name=name, weight=1, call=lambda run, rng, name=name: done.append(
                (name, rng.random()))) for name in "abc"])
        gate = actors.Gate()
        run = types.SimpleNamespace(
            seed=seed, over=False, ledger=Ledger(),
            pause=lambda seconds: gate.end() if len(done) >= 20 else None)
        actor = actors.Actor(run, group, 1, gate)
        actor.start()
        actor.join(30)
        return done

    assert len(sequence(1)) == 20
    assert sequence(1) == sequence(1)
    assert sequence(1) != sequence(2)
