"""What is installed works elsewhere: the install tree, and the wheel in a clean environment."""
import base64
import csv
import hashlib
import os
import pathlib
import subprocess
import sys
import zipfile

import pytest

ROOT = pathlib.Path(os.environ.get("QUILL_SOURCE_DIR", ".")).resolve()
BUILD = pathlib.Path(os.environ.get("QUILL_BUILD_DIR", ROOT / "build" / "dev")).resolve()
sys.path.insert(0, str(ROOT / "tools" / "wheel"))

import make_wheel  # noqa: E402

QUERIES = """
import pathlib, sys
import QuillScriptsSDK as sdk

pathlib.Path("door.dbc").write_text(
    'VERSION ""\\nBU_: A\\nBO_ 257 Door: 1 A\\n SG_ Open : 0|1@1+ (1,0) [0|1] "" A\\n')
code, frame = sdk.getCanFrameByNameFromDBC("door.dbc", "Door")
assert (code, frame.id) == (0, 257), (code, frame)
# A file that is no database is refused by the converter itself, not for want of one.
for name, load in (("bad.ldf", sdk.loadLinLDF), ("bad.arxml", sdk.loadCanArxml)):
    pathlib.Path(name).write_text("no such thing")
    assert load(name)[0] == 1
log = pathlib.Path(sys.argv[1]) / "RV" / "Quill" / "log" / "QuillScriptsSDK.log"
assert "cannot be started" not in log.read_text()
maps = pathlib.Path("/proc/self/maps")
if maps.exists():
    ours = {line.split()[-1] for line in maps.read_text().splitlines()
            if "simcore" in line or "rvconverter" in line or "QuillScriptsSDK" in line}
    print(*sorted(ours), sep="\\n")
print("queries done")
"""


def clean_environment(tmp_path, **changes):
    env = {name: value for name, value in os.environ.items()
           if not name.startswith(("PYTHON", "SIMCORE_", "LD_", "QuillScripts"))}
    return env | {"LocalAPPDATA": str(tmp_path / "appdata"), "PYTHONDONTWRITEBYTECODE": "1"} | changes


def run(command, cwd, env):
    done = subprocess.run(list(map(str, command)), cwd=cwd, env=env, capture_output=True, text=True,
                          timeout=300, check=False)
    assert done.returncode == 0, f"{command}\n{done.stdout}{done.stderr}"
    return done.stdout


def check_that_it_works(python, folder, tmp_path, **changes):
    """Runs an example and queries of all converters; all of ours is loaded from the folder."""
    elsewhere = tmp_path / "elsewhere"
    elsewhere.mkdir()
    env = clean_environment(tmp_path, **changes)
    out = run([python, ROOT / "examples" / "quickstart.py"], elsewhere, env)
    assert "0x123 was received 10 times" in out
    out = run([python, "-c", QUERIES, tmp_path / "appdata"], elsewhere, env)
    assert "queries done" in out
    loaded = [line for line in out.splitlines() if line.startswith("/")]
    assert all(pathlib.Path(path).is_relative_to(folder) for path in loaded), loaded
    if sys.platform == "linux":
        assert len(loaded) == 3, loaded


@pytest.fixture(scope="module")
def wheel(tmp_path_factory):
    return make_wheel.make(BUILD, tmp_path_factory.mktemp("dist"))


def test_an_install_tree_works_from_elsewhere(tmp_path):
    prefix = tmp_path / "prefix"
    cmake = make_wheel.cache_entry(BUILD, "CMAKE_COMMAND")
    run([cmake, "--install", BUILD, "--prefix", prefix], tmp_path, clean_environment(tmp_path))
    folder = prefix / make_wheel.cache_entry(BUILD, "QUILL_INSTALL_PYTHON_FOLDER")
    check_that_it_works(sys.executable, folder, tmp_path, PYTHONPATH=str(folder))
    assert (folder / "QuillScriptsSDK-stubs" / "__init__.pyi").is_file()
    out = run([prefix / "bin" / "quilltrace", "--version"], "/", clean_environment(tmp_path))
    assert make_wheel.cache_entry(BUILD, "CMAKE_PROJECT_VERSION") in out


def test_the_wheel_works_in_a_clean_environment(wheel, tmp_path):
    venv = tmp_path / "venv"
    env = clean_environment(tmp_path)
    run([sys.executable, "-m", "venv", venv], tmp_path, env)
    scripts = venv / ("Scripts" if os.name == "nt" else "bin")
    python = scripts / "python"
    pip = [python, "-m", "pip", "--disable-pip-version-check"]
    run([*pip, "install", "--no-index", "--no-deps", wheel], tmp_path, env)
    folder = run([python, "-c", "import sysconfig; print(sysconfig.get_path('platlib'))"],
                 tmp_path, env).strip()
    check_that_it_works(python, folder, tmp_path)
    assert "quilltrace" in run([scripts / "quilltrace", "--help"], tmp_path, env)
    assert "Version: " + wheel.name.split("-")[1] in run([*pip, "show", "QuillScriptsSDK"],
                                                          tmp_path, env)
    run([*pip, "uninstall", "--yes", "QuillScriptsSDK"], tmp_path, env)
    # pip itself leaves empty folders.
    left = [path.relative_to(folder) for path in pathlib.Path(folder).rglob("*") if path.is_file()]
    assert all(path.parts[0].startswith("pip") for path in left), left


def test_the_record_of_the_wheel_is_true(wheel):
    with zipfile.ZipFile(wheel) as archive:
        names = [info.filename for info in archive.infolist()]
        record = next(name for name in names if name.endswith(".dist-info/RECORD"))
        rows = list(csv.reader(archive.read(record).decode().splitlines()))
        assert [row[0] for row in rows] == names and len(set(names)) == len(names)
        for name, digest, size in rows:
            if name == record:
                continue
            data = archive.read(name)
            text = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
            assert (digest, size) == (f"sha256={text}", str(len(data))), name
        tag = archive.read(record.replace("RECORD", "WHEEL")).decode().splitlines()[-1]
    assert tag == "Tag: " + wheel.name.removesuffix(".whl").split("-", 2)[2]
    assert "-cp312-cp312-" in wheel.name


def test_two_wheels_of_the_same_files_are_the_same(tmp_path):
    made = []
    for name in ("one", "other"):
        tree = tmp_path / name
        for file, mode in (("b/program", 0o755), ("a.txt", 0o600)):
            path = tree / file
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(file)
            path.chmod(mode)
        os.utime(tree / "a.txt", (len(made), len(made)))
        writer = make_wheel.WheelWriter(tmp_path / f"{name}.whl")
        writer.add_tree(tree)
        writer.close("info")
        made.append((tmp_path / f"{name}.whl").read_bytes())
    assert made[0] == made[1]
    with zipfile.ZipFile(tmp_path / "one.whl") as archive:
        modes = {info.filename: info.external_attr >> 16 & 0o777 for info in archive.infolist()}
    if os.name != "nt":
        assert modes == {"a.txt": 0o644, "b/program": 0o755, "info/RECORD": 0o644}


def test_a_folder_without_a_build_is_told(tmp_path):
    (tmp_path / "CMakeCache.txt").write_text("CMAKE_PROJECT_VERSION:STATIC=1.0\n")
    done = subprocess.run([sys.executable, ROOT / "tools" / "wheel" / "make_wheel.py", tmp_path,
                           tmp_path / "dist"], capture_output=True, text=True, check=False)
    assert done.returncode == 1 and "make_wheel: " in done.stderr
    assert not list(tmp_path.glob("dist/*.whl"))
