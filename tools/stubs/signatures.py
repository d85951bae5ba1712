"""Reads the signature texts in the docstrings of the built module."""
import ast
import dataclasses


class SignatureError(ValueError):
    """A text that is no signature, or a type in it that Python does not know."""


@dataclasses.dataclass
class Parameter:
    name: str
    type: str  # as the text has it; empty when it gives none
    default: str = ""  # empty: the parameter must be given


@dataclasses.dataclass
class Signature:
    name: str
    parameters: list  # Parameter; the names "*" and "**kwargs" stand for themselves
    result: str


def split_at_commas(text):
    """Parts of a list at the commas outside brackets and quotes."""
    parts, depth, start, quote = [], 0, 0, ""
    for place, character in enumerate(text):
        if quote:
            quote = "" if character == quote else quote
        elif character in "'\"":
            quote = character
        elif character in "[({<":
            depth += 1
        elif character in "])}>":
            depth -= 1
        elif character == "," and depth == 0:
            parts.append(text[start:place].strip())
            start = place + 1
    last = text[start:].strip()
    return parts + [last] if last else parts


def parse_parameter(text):
    name, colon, rest = text.partition(":")
    if not colon:
        return Parameter(text.strip(), "")
    kind, _, default = rest.partition(" = ")
    return Parameter(name.strip(), kind.strip(), default.strip())


def parse(line):
    """One line such as "send(handle: Module.Handle, count: int = 1) -> bool"."""
    opening = line.find("(")
    head, arrow, result = line.rpartition(") -> ")
    if opening < 0 or not arrow:
        raise SignatureError(f"not a signature: {line!r}")
    parameters = [parse_parameter(part) for part in split_at_commas(head[opening + 1:])]
    return Signature(line[:opening].strip(), parameters, result.strip())


def parse_docstring(text):
    """[(Signature, text)] of a function's docstring, one for each overload."""
    lines = text.splitlines()
    if len(lines) < 2 or lines[1] != "Overloaded function.":
        return [(parse(lines[0]), "\n".join(lines[1:]).strip())]
    found = []
    for line in lines[2:]:
        number = f"{len(found) + 1}. {lines[0].partition('(')[0]}("
        if line.startswith(number):
            found.append((parse(line.partition(". ")[2]), []))
        elif found:
            found[-1][1].append(line)
    return [(signature, "\n".join(body).strip()) for signature, body in found]


# Names of types as pybind11 writes them, and as stubs do.
_GENERICS = {"List": "list", "Dict": "dict", "Tuple": "tuple", "Set": "set"}
_PLAIN = {"int", "float", "str", "bool", "bytes", "bytearray", "object", "list", "dict", "tuple",
          "set", "Callable"}


class _ToStub(ast.NodeTransformer):
    def __init__(self, module, classes):
        self.module = module
        self.classes = classes

    def visit_Attribute(self, node):
        name = ast.unparse(node)
        prefix = self.module + "."
        if not name.startswith(prefix) or name[len(prefix):] not in self.classes:
            raise SignatureError(f"unknown type {name}")
        return ast.Name(name[len(prefix):])

    def visit_Name(self, node):
        name = _GENERICS.get(node.id, node.id)
        if name not in _PLAIN and name not in self.classes:
            raise SignatureError(f"unknown type {name}")
        return ast.Name(name)

    def visit_Subscript(self, node):
        if isinstance(node.value, ast.Name) and node.value.id in ("Optional", "Union"):
            inner = node.slice.elts if isinstance(node.slice, ast.Tuple) else [node.slice]
            if node.value.id == "Optional":
                inner = [*inner, ast.Constant(None)]
            result = self.visit(inner[0])
            for part in inner[1:]:
                result = ast.BinOp(result, ast.BitOr(), self.visit(part))
            return result
        # What a callable returns is not looked at.
        if isinstance(node.value, ast.Name) and node.value.id == "Callable":
            arguments, _ = node.slice.elts
            return ast.Subscript(node.value,
                                 ast.Tuple([self.visit(arguments), ast.Name("object")]))
        return self.generic_visit(node)


def stub_type(text, module, classes):
    """The type as a stub names it. Raises SignatureError for a name that Python does not know."""
    try:
        tree = ast.parse(text, mode="eval").body
    except SyntaxError:
        raise SignatureError(f"not a Python type: {text!r}") from None
    text = ast.unparse(_ToStub(module, classes).visit(tree))
    return text.replace("tuple[(", "tuple[").replace(")]", "]") if "[(" in text else text
