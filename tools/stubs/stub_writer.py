"""Writes the type stub of a surface."""
import re
import textwrap

HEADER = '''\
# Made by "./quill stubs" from the built module; a test holds it against the module.
'''

_ENUM_TYPES = {"__init__": ("value: int", "None"), "__int__": ("", "int"), "__index__": ("", "int"),
               "__hash__": ("", "int"), "__eq__": ("other: object", "bool"),
               "__ne__": ("other: object", "bool"), "__invert__": ("", "int")}
_ENUM_ORDER = ("__lt__", "__le__", "__gt__", "__ge__")
_ENUM_BITS = ("__and__", "__rand__", "__or__", "__ror__", "__xor__", "__rxor__")
_BUILTINS = ("int", "float", "str", "bool", "bytes", "bytearray", "object", "list", "dict",
             "tuple", "set", "type")


def quoted(text, indent):
    """A docstring; the closing quotes stand on the line of a short one."""
    text = text.replace("\\", "\\\\").replace('"""', '\\"\\"\\"')
    if len(text) + len(indent) <= 94 and "\n" not in text and not text.endswith('"'):
        return [f'{indent}"""{text}"""']
    # A text of several lines has been laid out by its author.
    lines = text.splitlines() if "\n" in text else textwrap.wrap(text, 96 - len(indent))
    body = [indent + line if line else "" for line in lines[1:]]
    return [f'{indent}"""{lines[0]}', *body, f'{indent}"""']


class StubWriter:
    def __init__(self, surface):
        self.surface = surface
        self.lines = []
        self.shadowed = set()  # built-in names that the class at hand uses for attributes

    def kind(self, text):
        for name in self.shadowed:
            text = re.sub(rf"(?<![\w.]){name}\b", f"builtins.{name}", text)
        return text

    def parameters(self, signature):
        parts = []
        for parameter in signature.parameters:
            part = parameter.name
            if parameter.type:
                part += f": {self.kind(parameter.type)}"
            if parameter.default:
                part += f" = {parameter.default}"
            parts.append(part)
        return parts

    def definition(self, indent, name, parts, result):
        line = f"{indent}def {name}({', '.join(parts)}) -> {result}:"
        if len(line) <= 100:
            self.lines.append(line)
            return
        self.lines.append(f"{indent}def {name}(")
        self.lines += [f"{indent}    {part}," for part in parts]
        self.lines.append(f"{indent}) -> {result}:")

    def body(self, text, indent):
        if text:
            self.lines += quoted(text, indent)
        elif self.lines[-1].endswith(":"):
            self.lines[-1] += " ..."

    def call(self, call, indent=""):
        for signature, text in call.overloads:
            if len(call.overloads) > 1:
                self.lines.append(f"{indent}@overload")
            self.definition(indent, call.name, self.parameters(signature),
                            self.kind(signature.result))
            self.body(text, indent + "    ")
            if not indent:
                self.lines.append("")

    def keywords(self, cls):
        """A constructor that sets attributes by name, spelled out."""
        parts = [f"{attribute.name}: {self.kind(attribute.set_type)} = ..."
                 for attribute in cls.attributes if attribute.set_type]
        self.definition("    ", "__init__", ["self", "*", *parts] if parts else ["self"], "None")
        self.lines[-1] += " ..."

    def method(self, cls, call):
        if call.name == "__init__" and any(
                parameter.name == "**kwargs"
                for signature, _ in call.overloads for parameter in signature.parameters):
            self.keywords(cls)
        elif call.name == "__eq__":
            # Another kind of object is answered for by that object.
            self.lines.append("    def __eq__(self, other: object) -> bool: ...")
        else:
            self.call(call, "    ")

    def attribute(self, attribute):
        kind = self.kind(attribute.type)
        if attribute.set_type == attribute.type:
            self.lines.append(f"    {attribute.name}: {kind}")
            self.body(attribute.text, "    ")
            return
        self.lines.append("    @property")
        self.definition("    ", attribute.name, ["self"], kind)
        self.body(attribute.text, "        ")
        if attribute.set_type:
            self.lines.append(f"    @{attribute.name}.setter")
            self.definition("    ", attribute.name,
                            ["self", f"value: {self.kind(attribute.set_type)}"], "None")
            self.lines[-1] += " ..."

    def record(self, cls):
        self.shadowed = {attribute.name for attribute in cls.attributes} & set(_BUILTINS)
        # Attributes first, so that they are known where the constructor takes them.
        for attribute in cls.attributes:
            self.attribute(attribute)
        for call in cls.calls:
            self.method(cls, call)
        if not cls.is_hashable:
            self.lines.append("    __hash__: ClassVar[None]  # type: ignore[assignment]")
        self.shadowed = set()

    def enumeration(self, cls):
        for member in cls.members:
            self.lines.append(f"    {member.name}: ClassVar[{cls.name}]")
            text = f"{member.value}: {member.text}" if member.text else str(member.value)
            self.body(text, "    ")
        self.lines.append(f"    __members__: ClassVar[dict[str, {cls.name}]]")
        for name, kind in (("name", "str"), ("value", "int")):
            self.lines += ["    @property", f"    def {name}(self) -> {kind}: ..."]
        either = f"other: {cls.name} | int"
        rows = _ENUM_TYPES | dict.fromkeys(_ENUM_ORDER, (either, "bool"))
        rows |= dict.fromkeys(_ENUM_BITS, (either, "int"))
        for name, (other, result) in rows.items():
            self.definition("    ", name, ["self", other] if other else ["self"], result)
            self.lines[-1] += " ..."

    def write(self):
        surface = self.surface
        self.lines = quoted(surface.text, "")
        self.lines.append("")
        first = len(self.lines)
        for name, kind in surface.constants:
            self.lines.append(f"{name}: {kind}")
        for cls in surface.classes:
            self.lines += ["", f"class {cls.name}:"]
            self.body(cls.text, "    ")
            (self.enumeration if cls.is_enumeration else self.record)(cls)
        self.lines.append("")
        for function in surface.functions:
            self.call(function)
        text = "\n".join(self.lines[first:])
        return HEADER + "\n".join(self.lines[:first] + self.imports(text)) + "\n" + text

    @staticmethod
    def imports(text):
        lines = ["import builtins"] if "builtins." in text else []
        abstract = [name for name in ("Callable", "Sequence") if f"{name}[" in text]
        if abstract:
            lines.append(f"from collections.abc import {', '.join(abstract)}")
        typing = [name for name in ("ClassVar", "overload")
                  if f"{name}[" in text or f"@{name}" in text]
        if typing:
            lines.append(f"from typing import {', '.join(typing)}")
        return lines + [""]
