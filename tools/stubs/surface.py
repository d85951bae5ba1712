"""The script surface of the built module: its functions, records and enumerations."""
import dataclasses
import inspect

import corrections
import signatures


@dataclasses.dataclass
class Call:
    """One function or method; several when it is overloaded."""
    name: str
    overloads: list  # (signatures.Signature with stub types, text)


@dataclasses.dataclass
class Attribute:
    name: str
    type: str
    set_type: str  # empty: read only
    text: str


@dataclasses.dataclass
class Member:
    name: str
    value: int
    text: str


@dataclasses.dataclass
class Class:
    name: str
    text: str
    members: list = dataclasses.field(default_factory=list)  # of an enumeration
    attributes: list = dataclasses.field(default_factory=list)
    calls: list = dataclasses.field(default_factory=list)
    is_enumeration: bool = False
    is_hashable: bool = True


@dataclasses.dataclass
class Surface:
    module: str
    text: str
    constants: list  # (name, type)
    classes: list
    functions: list


class Reader:
    def __init__(self, module):
        self.module = module
        self.name = module.__name__
        self.class_names = {name for name, value in vars(module).items()
                            if isinstance(value, type)}
        self.used = set()

    def type_of(self, text, owner, part):
        """Stub type of one place, corrected where the table says so."""
        try:
            kind = signatures.stub_type(text, self.name, self.class_names)
        except signatures.SignatureError as error:
            raise signatures.SignatureError(f"{owner}, {part}: {error}") from None
        for key in ((owner, part, kind), ("*." + owner.rpartition(".")[2], part, kind)):
            if key in corrections.TYPES:
                self.used.add(key)
                return corrections.TYPES[key][0]
        return kind

    def translate(self, signature, owner):
        """The signature with stub types; the first parameter of a method loses its own."""
        parameters = []
        for parameter in signature.parameters:
            kind = parameter.type
            if parameter.name == "self" or not kind:
                parameters.append(signatures.Parameter(parameter.name, ""))
                continue
            kind = self.type_of(kind, owner, parameter.name)
            takes_none = parameter.default == "None" or (
                kind.startswith("Callable[") and owner not in corrections.CALLABLE_NEEDED)
            if takes_none and not kind.endswith("| None"):
                kind += " | None"
            default = parameter.default if parameter.default in ("", "None") else "..."
            parameters.append(signatures.Parameter(parameter.name, kind, default))
        result = signature.result
        if result != "None":
            result = self.type_of(result, owner, "return")
        return signatures.Signature(signature.name, parameters, result)

    def call(self, name, docstring, owner):
        overloads = []
        for signature, text in signatures.parse_docstring(docstring):
            entry = (self.translate(signature, owner), text)
            if entry not in overloads:
                overloads.append(entry)
        return Call(name, overloads)

    def attribute(self, class_name, name, value):
        owner = f"{class_name}.{name}"
        getter = signatures.parse(value.fget.__doc__.splitlines()[0])
        kind = self.type_of(getter.result, owner, "get")
        set_type = ""
        if value.fset is not None:
            setter = signatures.parse(value.fset.__doc__.splitlines()[0])
            set_type = self.type_of(setter.parameters[-1].type, owner, "set")
        return Attribute(name, kind, set_type, inspect.cleandoc(value.__doc__ or ""))

    def enumeration(self, name, value):
        # pybind11 lists the members behind the text of the class.
        text = value.__doc__.partition("\n\nMembers:")[0]
        entries = getattr(value, "__entries")
        members = [Member(member, int(entry[0]), entry[1] or "")
                   for member, entry in entries.items()]
        return Class(name, text, members=members, is_enumeration=True)

    def record(self, name, value):
        result = Class(name, inspect.cleandoc(value.__doc__ or ""))
        for member, entry in vars(value).items():
            if isinstance(entry, property):
                result.attributes.append(self.attribute(name, member, entry))
            elif member == "__hash__" and entry is None:
                result.is_hashable = False
            elif type(entry).__name__ == "instancemethod" and member != "__repr__":
                result.calls.append(self.call(member, entry.__doc__, f"{name}.{member}"))
        return result

    def read(self):
        surface = Surface(self.name, inspect.cleandoc(self.module.__doc__), [], [], [])
        for name, value in vars(self.module).items():
            if name in ("__version__", "__build_time__"):
                surface.constants.append((name, type(value).__name__))
            elif name.startswith("_"):
                continue
            elif isinstance(value, type):
                read = self.enumeration if hasattr(value, "__entries") else self.record
                surface.classes.append(read(name, value))
            elif callable(value):
                surface.functions.append(self.call(name, value.__doc__, name))
            else:
                surface.constants.append((name, type(value).__name__))
        surface.functions = [self.detailed(function) for function in surface.functions]
        return surface

    @staticmethod
    def detailed(function):
        more = corrections.DETAILS.get(function.name)
        if more is not None:
            function.overloads = [(signature, f"{text}\n\n{more}")
                                  for signature, text in function.overloads]
        return function

    def check_corrections(self):
        """Raises SignatureError when a correction fits nothing any more."""
        stale = [" ".join(key) for key in corrections.TYPES if key not in self.used]
        stale += [name for name in (*corrections.DETAILS, *corrections.CALLABLE_NEEDED)
                  if not hasattr(self.module, name)]
        if stale:
            raise signatures.SignatureError("corrections without use: " + "; ".join(stale))


def read(module):
    reader = Reader(module)
    surface = reader.read()
    reader.check_corrections()
    return surface
