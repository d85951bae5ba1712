"""Makes the type stub and the reference from the built module; "./quill stubs" calls it.

    python3.12 tools/stubs/generate.py [--check]

The module is found by PYTHONPATH. With --check nothing is written, and the exit status is 1 when a
file is not what it should be.
"""
import pathlib
import sys

import reference_writer
import stub_writer
import surface

ROOT = pathlib.Path(__file__).resolve().parents[2]
STUB = "src/pysdk/stubs/QuillScriptsSDK-stubs/__init__.pyi"
REFERENCE = "docs/reference.md"


def texts(module):
    """{path below the root: content} of everything that is made from the module."""
    read = surface.read(module)
    return {STUB: stub_writer.StubWriter(read).write(), REFERENCE: reference_writer.write(read)}


def main():
    import QuillScriptsSDK

    stale = []
    for path, text in texts(QuillScriptsSDK).items():
        file = ROOT / path
        if file.exists() and file.read_text(encoding="utf-8") == text:
            continue
        stale.append(path)
        if "--check" not in sys.argv[1:]:
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")
            print("wrote", path)
    if "--check" in sys.argv[1:] and stale:
        print("not up to date:", ", ".join(stale), "- run ./quill stubs", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
