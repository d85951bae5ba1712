"""The type stub and the reference say what the built module says, and the module says enough."""
import ast
import inspect
import os
import pathlib
import sys

import pytest

ROOT = pathlib.Path(os.environ.get("QUILL_SOURCE_DIR", ".")).resolve()
sys.path.insert(0, str(ROOT / "tools" / "stubs"))

import generate  # noqa: E402
import signatures  # noqa: E402

STUB = ROOT / generate.STUB


@pytest.fixture(scope="module")
def stub():
    return ast.parse(STUB.read_text(encoding="utf-8"))


def test_the_files_are_those_that_the_module_makes(sdk):
    stale = [path for path, text in generate.texts(sdk).items()
             if (ROOT / path).read_text(encoding="utf-8") != text]
    assert not stale, f"run ./quill stubs: {stale}"


def names_of(body):
    found = set()
    for node in body:
        if isinstance(node, ast.AnnAssign):
            found.add(node.target.id)
        elif isinstance(node, (ast.FunctionDef, ast.ClassDef)):
            found.add(node.name)
    return found


def public(scope):
    return {name for name in vars(scope) if not name.startswith("_")}


def test_every_public_name_is_in_the_stub(sdk, stub):
    assert names_of(stub.body) - {"__version__", "__build_time__"} == public(sdk)
    for node in stub.body:
        if isinstance(node, ast.ClassDef):
            names = {name for name in names_of(node.body) if not name.startswith("__")}
            # name and value of enumerations are theirs as well.
            assert names == public(getattr(sdk, node.name)), node.name


def test_the_stub_names_only_types_that_python_knows(sdk, stub):
    known = public(sdk) | {"int", "float", "str", "bool", "bytes", "bytearray", "object", "list",
                           "dict", "tuple", "None", "Callable", "Sequence", "ClassVar", "builtins"}
    for node in ast.walk(stub):
        for place in ("annotation", "returns"):
            kind = getattr(node, place, None)
            names = {part.id for part in ast.walk(kind) if isinstance(part, ast.Name)} if kind \
                else set()
            assert names <= known, ast.unparse(node)


def test_a_parameter_and_result_are_always_typed(stub):
    for node in ast.walk(stub):
        if isinstance(node, ast.FunctionDef):
            assert node.returns is not None, node.name
            everything = node.args.args + node.args.kwonlyargs
            assert all(arg.annotation or arg.arg == "self" for arg in everything), node.name


def test_the_module_documents_everything_that_it_shows(sdk):
    bare = []
    for name in public(sdk):
        value = getattr(sdk, name)
        if not isinstance(value, type):
            if any(not text for _, text in signatures.parse_docstring(value.__doc__)):
                bare.append(name)
            continue
        if not inspect.cleandoc(value.__doc__ or ""):
            bare.append(name)
        for member in public(value) - set(getattr(value, "__members__", ())) - {"name", "value"}:
            entry = inspect.getattr_static(value, member)
            text = entry.__doc__ or ""
            if not isinstance(entry, property):
                text = signatures.parse_docstring(text)[0][1]
            if not text:
                bare.append(f"{name}.{member}")
    assert not bare, bare


def test_help_begins_with_an_overview(sdk):
    overview = inspect.getdoc(sdk)
    for name in ("load", "getDeviceList", "subscribeCanFrame", "sendCanFrame", "exit"):
        assert name in overview


@pytest.mark.parametrize("text, stub_text", [
    ("List[int]", "list[int]"),
    ("Dict[float, str]", "dict[float, str]"),
    ("Tuple[int, str]", "tuple[int, str]"),
    ("tuple[M.A, ...]", "tuple[A, ...]"),
    ("Optional[M.A]", "A | None"),
    ("Union[bytes, bytearray, list[int]]", "bytes | bytearray | list[int]"),
    ("Callable[[M.A], None]", "Callable[[A], object]"),
    ("Callable[[List[M.A]], None]", "Callable[[list[A]], object]"),
    ("list[Tuple[int, Optional[M.A]]]", "list[tuple[int, A | None]]"),
    ("M.A", "A"),
])
def test_a_type_becomes_that_of_a_stub(text, stub_text):
    assert signatures.stub_type(text, "M", {"A"}) == stub_text


@pytest.mark.parametrize("text", ["std::vector<int>", "rv::Frame", "handle", "M.B", "N.A", "numpy",
                                  "List[unsigned char]"])
def test_a_name_that_python_does_not_know_is_refused(text):
    with pytest.raises(signatures.SignatureError):
        signatures.stub_type(text, "M", {"A"})


def test_signatures_are_read_at_the_right_commas():
    read = signatures.parse("f(a: Callable[[M.A, int], None], *, b: Tuple[int, str] = (1, ','), "
                            "**kwargs) -> Dict[str, int]")
    assert [(p.name, p.type, p.default) for p in read.parameters] == [
        ("a", "Callable[[M.A, int], None]", ""), ("*", "", ""),
        ("b", "Tuple[int, str]", "(1, ',')"), ("**kwargs", "", "")]
    assert (read.name, read.result) == ("f", "Dict[str, int]")


def test_overloads_keep_their_own_texts():
    text = ("f(*args, **kwargs)\nOverloaded function.\n\n1. f(a: int) -> int\n\nFirst.\n\n"
            "1. not a signature\n\n2. f(a: str) -> str\n\nSecond.\n")
    read = signatures.parse_docstring(text)
    assert [(s.result, body) for s, body in read] == [
        ("int", "First.\n\n1. not a signature"), ("str", "Second.")]


@pytest.mark.parametrize("line", ["no brackets", "f(a: int)", ""])
def test_a_line_that_is_no_signature_is_told(line):
    with pytest.raises(signatures.SignatureError):
        signatures.parse(line)
