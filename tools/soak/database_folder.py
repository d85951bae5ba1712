"""Database files of a run, in a folder that two processes use at once."""
import os
import pathlib
import shutil
import threading

LARGEST = 200_000  # bytes; larger ones would take all the time of the run
ROOT = pathlib.Path(__file__).resolve().parents[2]
CORPUS = ROOT.parent / "shared" / "corpus"
OWN = ROOT / "examples" / "ecu_test_suite"
KINDS = ("dbc", "ldf", "arxml")
MOST_REMEMBERED = 2000


def fill(folder):
    """Copies databases: of the corpus where it is there, of the examples in any case."""
    folder.mkdir(parents=True)
    for kind in KINDS:
        sources = sorted(OWN.glob(f"*.{kind}"))
        if CORPUS.is_dir():
            sources += sorted((CORPUS / kind).glob(f"*.{kind}"))
        for source in sources:
            if source.stat().st_size <= LARGEST:
                shutil.copyfile(source, folder / source.name)


def unexpected(folder):
    """Files that neither belong there nor are converters' documents."""
    expected = {path.name for kind in KINDS for path in folder.glob(f"*.{kind}")}
    expected |= {pathlib.Path(name).with_suffix(".json").name for name in expected}
    return sorted(set(os.listdir(folder)) - expected)


class DatabaseFolder:
    """The same question must get the same answer every time, whoever converts meanwhile."""

    def __init__(self, folder):
        self._names = {kind: sorted(str(path) for path in folder.glob(f"*.{kind}"))
                       for kind in KINDS}
        self._lock = threading.Lock()
        self._answers = {}

    def names(self, kind):
        return self._names[kind]

    def compare(self, path, question, answer):
        with self._lock:
            if len(self._answers) < MOST_REMEMBERED:
                first = self._answers.setdefault((path, question), answer)
            else:
                first = self._answers.get((path, question), answer)
        assert answer == first, f"{path}: {question} was {first!r:.200}, now {answer!r:.200}"
