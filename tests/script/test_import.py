"""What happens at import, at load() and at exit()."""
import pathlib

import pytest


def log_text(appdata):
    return (pathlib.Path(appdata) / "RV" / "Quill" / "log" / "QuillScriptsSDK.log").read_text()


def test_attributes(sdk):
    assert sdk.__version__ == "2.3.4"
    assert sdk.__build_time__ == "Jun 30 2025 09:30:10"
    assert sdk.load.__doc__.splitlines()[0] == "load() -> None"
    assert sdk.exit.__doc__.splitlines()[0] == "exit() -> None"


def test_import_without_app_data_fails(run_script):
    script = run_script("import QuillScriptsSDK", LocalAPPDATA=None)
    assert script.status == 1
    assert "ImportError: Unable to find AppData directory" in script.err


def test_import_without_a_log_directory_names_it(run_script, tmp_path):
    blocker = tmp_path / "file"
    blocker.write_text("")
    script = run_script("import QuillScriptsSDK", LocalAPPDATA=str(blocker))
    assert script.status == 1
    assert "ImportError" in script.err and "cannot create log directory" in script.err


def test_root_variable_is_the_working_directory(run_script, tmp_path):
    script = run_script(
        """
        import QuillScriptsSDK, os, subprocess, sys
        print(os.environ["QuillScriptsSDK_Root"])
        os.chdir("/")
        subprocess.run([sys.executable, "-c",
                        "import os; print(os.environ['QuillScriptsSDK_Root'])"])
        """,
        cwd=tmp_path)
    assert script.out.split() == [str(tmp_path)] * 2


def test_import_logs_directory_and_root(run_script, tmp_path):
    run_script("import QuillScriptsSDK", cwd=tmp_path, LocalAPPDATA=str(tmp_path / "data"))
    lines = log_text(tmp_path / "data").splitlines()
    assert f"[entry,87,pybind11_init_QuillScriptsSDK][info]: [pysdk] {tmp_path}" in lines[0]
    assert f"[entry,93,pybind11_init_QuillScriptsSDK][info]: [pysdk] {tmp_path}" in lines[1]


STATUS = ["RegistEventCallBack : true", "Init : true"]


@pytest.mark.parametrize("calls", ["q.load(); q.load()", "q.getCanFrameCountById(1)", "q.exit()"],
                         ids=["load twice", "first use", "exit without load"])
def test_status_lines_come_once(run_script, calls):
    script = run_script(f"import QuillScriptsSDK as q\n{calls}")
    assert script.status == 0
    assert [line for line in script.out.splitlines() if " : " in line] == STATUS


def test_lines_keep_their_order_in_a_file(run_script):
    script = run_script(
        """
        import QuillScriptsSDK as q
        print("before")
        q.load()
        print("after")
        """)
    lines = script.out.splitlines()
    assert lines[0] == "before" and lines[-1] == "after"
    assert lines.index(STATUS[0]) + 1 == lines.index(STATUS[1])


def test_exit_logs_its_steps(run_script, tmp_path):
    run_script("import QuillScriptsSDK as q\nq.exit()", LocalAPPDATA=str(tmp_path))
    text = log_text(tmp_path)
    enter = text.index("[pysdk_entry,51,")
    assert "enter function: PySDKEntry::~PySDKEntry" in text[enter:].splitlines()[0]
    assert text.index("exit function: PySDKEntry::{dtor}::<lambda_1>::operator (), cost: ") > enter


def test_calls_after_exit_are_refused_and_do_no_harm(run_script):
    script = run_script(
        """
        import QuillScriptsSDK as q
        handle = q.getDeviceList(q.DeviceType.All, 20000)[0]
        q.exit()
        q.exit()
        for call in (q.load, lambda: q.unsubscribeCanFrame(handle)):
            try:
                call()
            except RuntimeError as error:
                print("refused:", error)
        print(handle)
        """)
    assert script.status == 0, script.err
    assert script.out.count("refused: ") == 2


def test_a_bad_network_is_told(run_script, tmp_path):
    script = run_script("import QuillScriptsSDK as q\nq.load()", network={"boxes": [{"mac": "x"}]},
                        LocalAPPDATA=str(tmp_path))
    assert script.status == 0
    assert "Init : false" in script.out
    assert "mac" in log_text(tmp_path)
