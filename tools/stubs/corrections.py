"""What the signature texts of the built module cannot say.

The texts are part of the interface and stay as they are, so the stub is more exact than they are in
the places named here. Each entry names the text that it replaces: once the module says something
else, the entry no longer fits and the tool asks for its removal.
"""

# (function or Class.attribute, parameter, "return" or "set", type in the text): (type, reason)
TYPES = {}


def _correct(names, part, old, new, reason):
    for name in names:
        TYPES[(name, part, old)] = (new, reason)


_correct(["getCanSignalValueFromDBC", "getCanSignalValueFromArxml", "getLinSignalValueFromLDF"],
         "return", "tuple[int, object]", "tuple[int, float | str | None]",
         "a number or a value-table text; None when the query failed")
for _frame in ("CanDBCEntry", "CanFdDBCEntry", "LDFFrame"):
    _correct(["findFrame"], "return", _frame, f"{_frame} | None",
             "a pointer: null reads as None")
_correct(["LinMessage.frame"], "get", "LDFFrame", "LDFFrame | None",
         "a pointer: null reads as None")
_correct(["LinMessage.frame"], "set", "LDFFrame", "LDFFrame | None",
         "a pointer: None becomes null")
_correct(["FrameUpdate.crcType"], "set", "int", "CrcType | int",
         "enumerations of the module stand for their ints but are no subclass of int")
for _attribute, _element in (("can", "CanChannelConfig"), ("lin", "LinChannelConfig"),
                             ("eth", "EthChannelConfig")):
    _correct([f"BoxConfig.{_attribute}"], "set", f"list[{_element}]", f"Sequence[{_element}]",
             "reads as a tuple, and what was read can be written")
_correct(["*.__deepcopy__"], "memo", "dict", "dict[int, object]", "what copy.deepcopy hands in")

# Callables may be None, which keeps none, except in these calls: a list for nobody has no use.
CALLABLE_NEEDED = {"subscribeCanFrames", "subscribeLinFrames"}

# Three texts that scripts already know are shorter than what there is to say.
DETAILS = {
    "getDeviceList": """\
Returns at once when a box is known. Otherwise looks once a second, at least once, until there is
one; Ctrl-C ends the wait. Boxes that do not answer are left out.

Args:
    type: DeviceType.All; there is one kind of box.
    timeout: longest wait in ms.

Returns:
    list of DeviceHandle, in the order in which the boxes were found; empty when there is none, and
    then 'no device!' is printed.""",
    "getDeviceConfig": """\
Asks the box and fills the handle's config with the answer.

Returns:
    bool: False when the box does not answer or is not there; the config is unchanged then.

Raises:
    ValueError: the handle's MAC address is malformed.""",
    "setDeviceConfig": """\
Writes the handle's config to the box and keeps in it what the box then reports.

Args:
    handle: the box.
    config: taken into the handle first; None writes the handle's own.

Returns:
    bool: False when the box refuses, does not answer or is not there; the reason is printed and
    logged, and the box keeps its old settings.

Raises:
    ValueError: the handle's MAC address is malformed.""",
}
