"""Every Python block of the guide runs: the blocks of a page are one script, in their order."""
import os
import re
import subprocess
import sys

import pytest

from conftest import environment

DOCS = os.path.join(os.environ.get("QUILL_SOURCE_DIR", "."), "docs")
PAGES = sorted(name for name in os.listdir(DOCS) if name.endswith(".md"))


def blocks(name):
    with open(os.path.join(DOCS, name), encoding="utf-8") as file:
        return re.findall(r"^```python\n(.*?)^```", file.read(), re.MULTILINE | re.DOTALL)


@pytest.mark.parametrize("page", [page for page in PAGES if blocks(page)])
def test_the_blocks_of_a_page_run(page, tmp_path):
    script = tmp_path / "page.py"
    text = "\n".join(blocks(page))
    # The first script of a page ends with exit(); the blocks behind it go on from where it was.
    text = re.sub(r"^sdk\.exit\(\).*$", "", text, flags=re.MULTILINE) + "\nsdk.exit()\n"
    script.write_text(text, encoding="utf-8")
    env = environment()
    env.pop("SIMCORE_NETWORK")  # a reader has the built-in network
    done = subprocess.run([sys.executable, str(script)], cwd=tmp_path, env=env, timeout=120,
                          capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stdout + done.stderr
