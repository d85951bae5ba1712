"""Bus databases as scripts query them, through the real converters."""
import os
import signal
import shutil
import threading

import pytest

CORPUS = os.path.join(os.environ.get("QUILL_SOURCE_DIR", "."), "..", "shared", "corpus")
DBC = """VERSION ""
BU_: Engine Dash
BO_ 100 EngineData: 8 Engine
 SG_ Speed : 0|16@1+ (0.25,0) [0|8000] "rpm" Dash
 SG_ Temp : 16|8@1- (1,0) [-40|120] "degC" Dash
 SG_ Mode : 24|4@1+ (1,0) [0|3] "" Dash
BO_ 2566845440 Torque: 8 Engine
 SG_ Kind M : 0|8@1+ (1,0) [0|0] "" Dash
 SG_ Actual m0 : 15|16@0- (0.5,0) [0|0] "Nm" Dash
 SG_ Limit m1 : 15|16@0- (0.5,0) [0|0] "Nm" Dash
VAL_ 100 Mode 0 "Off" 1 "Run" 2 "Limp" ;
"""


@pytest.fixture
def dbc(tmp_path):
    path = tmp_path / "Fahrzeug ä 车.dbc"
    path.write_text(DBC, encoding="utf-8")
    return str(path)


def test_fixed_queries(sdk, dbc):
    code, frame = sdk.getCanFrameByNameFromDBC(dbc, "EngineData")
    assert (code, frame.id, frame.dlc) == (0, 100, 8)
    assert frame.signals[2].mapValueTable == {0.0: "Off", 1.0: "Run", 2.0: "Limp"}
    assert sdk.getCanFrameByIdFromDBC(dbc, 100)[1].name == "EngineData"
    # Extended frames are found by neither.
    assert sdk.getCanFrameByNameFromDBC(dbc, "Torque")[0] == 2
    data = [0x40, 0x1F, 0xFF, 0x01, 0, 0, 0, 0]
    assert sdk.getCanSignalValueFromDBC(data, dbc, "EngineData", "Speed") == (0, 2000.0)
    assert sdk.getCanSignalValueFromDBC(data, dbc, "EngineData", "Temp") == (0, 255.0)
    assert sdk.getCanSignalValueFromDBC(data, dbc, "EngineData", "Mode") == (0, "Run")
    assert sdk.readCanDBCContents(dbc) == (0, DBC)


def test_setting_a_signal_tells_both_payloads(sdk, dbc, capfd):
    frame = sdk.CANRawFrame(id=100, data=[0] * 8)
    assert sdk.setCanFrameBySignalFromDBC(frame, dbc, "EngineData", "Speed", 515.0) == 0
    assert frame.data == [3, 2, 0, 0, 0, 0, 0, 0]
    assert capfd.readouterr().out == (
        "rawValueToByte before:515Data: [0X0, 0X0, 0X0, 0X0, 0X0, 0X0, 0X0, 0X0]\n"
        "rawValueToByte after:1Data: [0X3, 0X2, 0X0, 0X0, 0X0, 0X0, 0X0, 0X0]\n")
    assert sdk.setCanFrameBySignalFromDBC(frame, dbc, "None", "Speed", 1.0) in (0, 2)
    assert sdk.setCanFrameBySignalFromDBC(frame, dbc + "x.dbc", "EngineData", "Speed", 1.0) == 1


def test_calls_on_loaded_records(sdk, dbc):
    code, database = sdk.loadCanDBC(dbc)
    assert code == 0 and len(database.dbcEntrys) == 2
    torque = sdk.findFrame(database, "Torque")
    assert torque.isExtended and sdk.findFrame(database, torque.id) is not None
    assert sdk.findFrame(database, torque.id, extended=False) is None
    assert sdk.decodeFrame(torque, bytes([0, 0xFF, 0xFE, 0, 0, 0, 0, 0])) == {
        "Kind": 0.0, "Actual": -1.0}
    assert set(sdk.decodeFrame(torque, [1] + [0] * 7)) == {"Kind", "Limit"}
    temp = sdk.findFrame(database, 100).signals[1]
    data = sdk.encodeSignalPhysical(temp, bytes(8), -40)
    assert data == [0, 0, 0xD8, 0, 0, 0, 0, 0] and sdk.decodeSignalPhysical(temp, data) == -40
    with pytest.raises(ValueError, match="Temp"):
        sdk.encodeSignalPhysical(temp, data, 400)
    with pytest.raises(ValueError, match="Temp"):
        sdk.decodeSignalPhysical(temp, b"")


def test_the_codec(sdk):
    assert sdk.parseSignalValue([0x12, 0x34], True, 8, 16) == 0x1234
    assert sdk.parseSignalValue([], False, 0, 8) == 0xFFFFFFFFFFFFFFFF
    data = [0xFF]
    assert sdk.rawValueToByte(data, 5, False, 0, 4) == [0x0F] and data == [0xFF]
    with pytest.raises(IndexError, match="invalid bitset position"):
        sdk.rawValueToByte([0], 1, False, 510, 8)


@pytest.mark.parametrize("content, name", [
    (None, "missing.dbc"), (b"", "empty.dbc"), (b"\x00\xff" * 500, "noise.dbc"),
    (DBC[:140].encode(), "cut.dbc"), (b"<AUTOSAR", "cut.arxml"), (b"Nodes {", "cut.ldf")])
def test_a_bad_file_is_a_failed_load(sdk, tmp_path, content, name):
    path = tmp_path / name
    if content is not None:
        path.write_bytes(content)
    load = {".dbc": sdk.loadCanDBC, ".arxml": sdk.loadCanArxml, ".ldf": sdk.loadLinLDF}[path.suffix]
    assert load(str(path))[0] == 1
    assert [entry.name for entry in tmp_path.iterdir()] == ([] if content is None else [name])


def test_schedule_tables_run_on_a_box(sdk, box, tmp_path):
    if not os.path.isdir(CORPUS):
        pytest.skip("the corpus is not there")
    path = shutil.copy(os.path.join(CORPUS, "ldf", "lin_diagnostics.ldf"), tmp_path)
    code, tables = sdk.getScheduleTableFromLDF(path)
    assert code == 0 and tables
    table = next(table for table in tables if table.slot_array_size() > 0)
    table.channel_id = 1
    assert all(slot.msg_type in (3, 4) for slot in table.slot_array())
    sdk.startLinScheduleTable(box, table)
    sdk.stopLinScheduleTable(box, 1)


def test_every_arxml_and_ldf_of_the_corpus_answers(sdk, tmp_path):
    if not os.path.isdir(CORPUS):
        pytest.skip("the corpus is not there")
    for kind, load in (("arxml", sdk.loadCanArxml), ("ldf", sdk.loadLinLDF)):
        for name in sorted(os.listdir(os.path.join(CORPUS, kind))):
            code, database = load(shutil.copy(os.path.join(CORPUS, kind, name), tmp_path))
            assert code in (0, 1), name
            if code == 0 and kind == "arxml":
                for cluster in database.clusters:
                    for frame in cluster.dbcEntrys:
                        sdk.decodeFrame(frame, bytes(64))
            elif code == 0:
                for frame in database.frame:
                    sdk.decodeFrame(frame, bytes(8))


def test_ctrl_c_ends_a_query_that_waits(sdk, dbc, monkeypatch, tmp_path):
    folder = tmp_path / "public" / "dbc_to_json" / "linux"
    folder.mkdir(parents=True)
    (folder / "dbc2json").write_text("#!/bin/sh\nsleep 60\n")
    (folder / "dbc2json").chmod(0o755)
    monkeypatch.setenv("QuillScriptsSDK_Root", str(tmp_path))
    timer = threading.Timer(0.3, lambda: signal.raise_signal(signal.SIGINT))
    timer.start()
    with pytest.raises(KeyboardInterrupt):
        sdk.loadCanDBC(dbc)
    timer.join()
