"""Makes a wheel of a build: "./quill wheel" calls it.

    python3.12 tools/wheel/make_wheel.py BUILD_FOLDER OUTPUT_FOLDER

The build is installed into a folder of its own, and what lies there goes into the wheel. It is to
be run by the Python that the build is for. The name of the wheel is printed.
"""
import base64
import hashlib
import pathlib
import re
import subprocess
import sys
import sysconfig
import tempfile
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
NAME = "quillscriptssdk"
# The oldest time that a zip file knows: two wheels of one build are the same, byte by byte.
TIME = (1980, 1, 1, 0, 0, 0)

METADATA = """\
Metadata-Version: 2.1
Name: QuillScriptsSDK
Version: {version}
Summary: {summary}
License: MIT
License-File: LICENSE
Requires-Python: >=3.12,<3.13
Classifier: License :: OSI Approved :: MIT License
Classifier: Programming Language :: Python :: 3.12
Classifier: Programming Language :: Python :: Implementation :: CPython
Classifier: Typing :: Typed
Description-Content-Type: text/markdown

{readme}"""

WHEEL = """\
Wheel-Version: 1.0
Generator: quill
Root-Is-Purelib: false
Tag: {tag}
"""


class WheelError(Exception):
    """The build cannot be made into a wheel."""


def cache_entry(build, name):
    """A value of CMake's cache; the version is written once, in the project."""
    text = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    match = re.search(rf"^{name}:\w+=(.*)$", text, re.MULTILINE)
    if not match:
        raise WheelError(f"{build} has no {name} in its CMake cache")
    return match[1]


def install(build, prefix, config):
    command = [cache_entry(build, "CMAKE_COMMAND"), "--install", build, "--prefix", prefix,
               "--strip"] + (["--config", config] if config else [])
    done = subprocess.run(list(map(str, command)), capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise WheelError(f"the build is not complete (./quill wheel builds it):\n{done.stderr}")


def tag_of(modules):
    """Interpreter and platform that the build is for: those of the Python that runs this."""
    suffix = sysconfig.get_config_var("EXT_SUFFIX")
    if not (modules / f"QuillScriptsSDK{suffix}").is_file():
        raise WheelError(f"no QuillScriptsSDK{suffix}: the build is for another Python than "
                         f"{sys.executable}")
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = re.sub(r"[^A-Za-z0-9]", "_", sysconfig.get_platform())
    return f"{python}-{python}-{platform}"


def files_below(folder):
    return sorted(path for path in folder.rglob("*") if path.is_file())


class WheelWriter:
    def __init__(self, path):
        self.zip = zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED)
        self.record = []

    def add(self, name, data, mode=0o644):
        info = zipfile.ZipInfo(name, TIME)
        info.compress_type = zipfile.ZIP_DEFLATED
        info.external_attr = (0o100000 | mode) << 16  # pip keeps what may be executed
        self.zip.writestr(info, data)
        digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
        self.record.append(f"{name},sha256={digest},{len(data)}\n")

    def add_tree(self, folder, prefix=""):
        for path in files_below(folder):
            # Windows has no such bit and asks by suffix instead.
            runs = path.stat().st_mode & 0o111 or path.suffix == ".exe"
            self.add(prefix + path.relative_to(folder).as_posix(), path.read_bytes(),
                     0o755 if runs else 0o644)

    def close(self, info_folder):
        record = f"{info_folder}/RECORD"
        self.add(record, ("".join(self.record) + f"{record},,\n").encode())
        self.zip.close()


def make(build, output, config=""):
    version = cache_entry(build, "CMAKE_PROJECT_VERSION")
    with tempfile.TemporaryDirectory() as folder:
        prefix = pathlib.Path(folder)
        install(build, prefix, config)
        modules = prefix / cache_entry(build, "QUILL_INSTALL_PYTHON_FOLDER")
        tag = tag_of(modules)
        output.mkdir(parents=True, exist_ok=True)
        path = output / f"{NAME}-{version}-{tag}.whl"
        info = f"{NAME}-{version}.dist-info"
        wheel = WheelWriter(path)
        wheel.add_tree(modules)
        wheel.add_tree(prefix / "bin", f"{NAME}-{version}.data/scripts/")
        summary = cache_entry(build, "CMAKE_PROJECT_DESCRIPTION")
        readme = (ROOT / "README.md").read_text(encoding="utf-8")
        wheel.add(f"{info}/METADATA",
                  METADATA.format(version=version, summary=summary, readme=readme).encode())
        wheel.add(f"{info}/WHEEL", WHEEL.format(tag=tag).encode())
        wheel.add(f"{info}/LICENSE", (ROOT / "LICENSE").read_bytes())
        wheel.close(info)
    return path


def main():
    if len(sys.argv) not in (3, 4):
        print(__doc__, file=sys.stderr)
        return 2
    try:
        print(make(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]),
                   *sys.argv[3:4]))
    except (OSError, WheelError) as error:
        print("make_wheel:", error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
