"""Writes the reference of a surface, by subject."""
import dataclasses
import re


@dataclasses.dataclass
class Subject:
    title: str
    guide: str  # where more is told
    functions: str  # pattern of the functions' names
    classes: str  # pattern of the classes' names


# A name belongs to the first subject that it fits; the last one takes what fits nowhere.
SUBJECTS = [
    Subject("Life cycle", "guide.md#first-script", r"load|exit", r"$^"),
    Subject("Boxes", "guide.md#boxes-and-their-configuration",
            r"[gs]etDevice.*|getChannelNames", r"Device(?!Counters).*|DipData|RVBox.*|Box.*|.*ChannelConfig"),
    Subject("Counters", "guide.md#counters", r".*(Counter|Statistic|BusLoad).*",
            r".*(Counter|Statistic|BusLoad).*"),
    Subject("Receiving", "guide.md#receiving", r"(un)?subscribe.*|getCanFrameCount.*",
            r"CANRawFrame|CANFrameExtend|LinFrame|EthFrame"),
    Subject("Sending", "guide.md#sending", r"send.*|.*Cyclic.*|(start|stop)Lin.*",
            r"FrameUpdate|CrcType|SendResult|.*Cyclic.*|LinScheduleTable|ScheduleTableSlot"),
    Subject("Recording", "recording.md", r".*Record.*", r"Recording.*"),
    Subject("Filters and names", "filters.md", r"(at|de)tachDatabase|toLinMessage",
            r".*Filter.*|LinMessage"),
    Subject("Databases", "databases.md", r"load.*|read.*|[gs]et.*From.*|find.*|(de|en)code.*|"
            r"rawValueToByte|parseSignalValue", r"Can.*|CANFDPhyChannel|L(in|DF).*|ErrorCode"),
    Subject("Further calls", "guide.md", r".*", r".*"),
]

HEADER = """\
<!-- Made by "./quill stubs" from the texts of the built module; a test holds it against them. -->
# Reference

Every function, record and enumeration of the module. The same texts are in `help(QuillScriptsSDK)`
and in the type stub, so an editor shows them too. How things work together is told in the
[guide](guide.md).

Records are plain values. Those with a line "Made with keywords" take every attribute that can be
written as a keyword: `CANRawFrame(id=0x123, data=[1, 2, 3])`. A value out of its range raises
`ValueError`, a wrong kind `TypeError`; both name the attribute. `copy.copy` and `copy.deepcopy` work
on all of them.
"""

_SECTION = re.compile(r"^(Args|Returns|Raises|Arguments of the additions):$")
_TITLES = {"Args": "Arguments", "Returns": "Result", "Raises": "Errors"}
_ITEM = re.compile(r"^    (\S[^:]*): (.*)$")


def subject_of(name, pattern_name):
    for subject in SUBJECTS:
        if re.fullmatch(getattr(subject, pattern_name), name):
            return subject
    raise AssertionError(name)


def cell(text):
    return " ".join(text.split()).replace("|", "\\|").replace("<", "&lt;")


def items(lines):
    """The lines of a section as list items; further lines belong to the item before them."""
    out = []
    for line in lines:
        match = _ITEM.match(line)
        if match and not line.startswith("     "):
            out.append(f"- `{match[1]}`: {match[2]}")
        elif out and line.strip():
            out.append("  " + line.strip())
        elif line.strip():
            out.append("- " + line.strip())
    return out


def prose(text):
    """A docstring as Markdown."""
    out, section = [], []

    def close():
        if section:
            title, body = _TITLES.get(section[0], section[0]), section[1:]
            out.extend([f"**{title}**", "", *items(body), ""])
            section.clear()

    for line in text.splitlines():
        match = _SECTION.match(line)
        if match:
            close()
            section.append(match[1])
        elif section and (line.startswith("    ") or not line):
            section.append(line)
        else:
            close()
            out.append(line.replace("<", "&lt;"))
    close()
    while out and not out[-1]:
        out.pop()
    return [*out, ""]


def heading(signature):
    parts = []
    for parameter in signature.parameters:
        if parameter.name == "self":
            continue
        part = parameter.name + (f": {parameter.type}" if parameter.type else "")
        parts.append(part + (f" = {parameter.default}" if parameter.default else ""))
    line = f"{signature.name}({', '.join(parts)}) -> {signature.result}"
    if len(line) <= 100:
        return [line]
    return [f"{signature.name}(", *(f"    {part}," for part in parts), f") -> {signature.result}"]


def call(function, level):
    lines = [f"{level} {function.name}", "", "```text"]
    for signature, _ in function.overloads:
        lines += heading(signature)
    lines += ["```", ""]
    told = []
    for _, text in function.overloads:
        if text and text not in told:
            told.append(text)
            lines += prose(text)
    return lines


def enumeration(cls):
    lines = ["| Value | Name | Meaning |", "|---|---|---|"]
    with_text = any(member.text for member in cls.members)
    if not with_text:
        lines = ["| Value | Name |", "|---|---|"]
    for member in cls.members:
        row = f"| {member.value} | `{member.name}` |"
        lines.append(row + f" {cell(member.text)} |" if with_text else row)
    return [*lines, ""]


def attributes(cls):
    lines = ["| Attribute | Type | Meaning |", "|---|---|---|"]
    for attribute in cls.attributes:
        kind = attribute.type
        if not attribute.set_type:
            kind += " (read only)"
        elif attribute.set_type != attribute.type:
            kind += f"; takes {attribute.set_type}"
        lines.append(f"| `{attribute.name}` | {cell(kind)} | {cell(attribute.text)} |")
    return [*lines, ""]


def record(cls):
    lines = [f"### {cls.name}", "", *prose(cls.text)]
    if cls.is_enumeration:
        return lines + enumeration(cls)
    made = any(parameter.name == "**kwargs" for method in cls.calls if method.name == "__init__"
               for signature, _ in method.overloads for parameter in signature.parameters)
    if made and "Made with keywords" not in cls.text:
        lines += ["Made with keywords.", ""]
    if cls.attributes:
        lines += attributes(cls)
    for method in cls.calls:
        if not method.name.startswith("__"):
            lines += call(method, "####")
    return lines


def write(surface):
    groups = {subject.title: ([], []) for subject in SUBJECTS}
    for function in surface.functions:
        groups[subject_of(function.name, "functions").title][0].append(function)
    for cls in surface.classes:
        groups[subject_of(cls.name, "classes").title][1].append(cls)
    lines = [HEADER]
    used = [subject for subject in SUBJECTS if any(groups[subject.title])]
    for subject in used:
        names = [entry.name for group in groups[subject.title] for entry in group]
        links = ", ".join(f"[`{name}`](#{name.lower()})" for name in names)
        lines += [f"- **[{subject.title}](#{subject.title.lower().replace(' ', '-')})**: {links}"]
    lines.append("")
    for subject in used:
        functions, classes = groups[subject.title]
        lines += [f"## {subject.title}", "", f"More in [{subject.guide.partition('#')[0]}]"
                  f"({subject.guide}).", ""]
        for function in functions:
            lines += call(function, "###")
        for cls in classes:
            lines += record(cls)
    return "\n".join(lines).rstrip() + "\n"
