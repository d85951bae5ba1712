// LIN schedule tables, frame updates and CRC types.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/crc_types.h"
#include "pysdk/py_extension/schedule_table.h"
#include "pysdk/py_extension/script_values.h"

namespace py = pybind11;

namespace scripts {
namespace {
// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are names
#define QUILL_NUMBER(record, member, type)                                          \
#member, [](const record& self) { return self.member; },                        \
                                                          [](record & self,         \
                                                             Ranged <#member, type> \
                                                                 value) { self.member = value; }
// NOLINTEND(bugprone-macro-parentheses)
void bindSlot(py::module_& m) {
    using Slot = ScheduleTableSlot;
    py::class_<Slot> type(m, "ScheduleTableSlot",
                          "One slot of a LIN schedule table. Made with keywords.");
    type.def(py::init<>())
        .def(makeFromKeywords<Slot>())
        .def_property_readonly(
            "debug_str", [](const Slot& self) { return debugText(self); },
            "All fields as text, one a line.")
        .def_property(QUILL_NUMBER(Slot, id, int32_t), "LIN identifier, 0 to 63 on a bus.")
        .def_property(QUILL_NUMBER(Slot, time_interval, uint64_t), "Duration of the slot in ms.")
        .def_property(QUILL_NUMBER(Slot, msg_type, uint32_t),
                      "4: the master publishes, 3: a slave publishes.")
        .def_property(QUILL_NUMBER(Slot, check_type, uint32_t),
                      "Checksum model: 0 classic, 1 enhanced.")
        .def_property(
            "data", [](const Slot& self) { return toList(self.data); },
            [](Slot& self, BytesField<"data", 8> value) { self.data = std::move(value.value); },
            "Payload, a list of ints; up to 8 bytes.")
        .def_property(QUILL_NUMBER(Slot, sync, uint32_t), "Carried unchanged.")
        .def_readwrite("publisher", &Slot::publisher, "Name of the publishing node.")
        .def_readwrite("subscribers", &Slot::subscribers, "Names of the receiving nodes.")
        .def_readwrite("name", &Slot::name, "Frame name.")
        .def("__repr__",
             [](const Slot& self) { return "ScheduleTableSlot(\n" + debugText(self) + ")"; });
    addEquality(type);
    addCopies(type);
}

void bindTable(py::module_& m) {
    using Table = LinScheduleTable;
    py::class_<Table> type(m, "LinScheduleTable",
                           "A LIN schedule table for one channel. See startLinScheduleTable.");
    type.def(py::init<>())
        .def(makeFromKeywords<Table>())
        .def_property(QUILL_NUMBER(Table, channel_id, int32_t),
                      "LIN channel of the box, counted from 0.")
        .def_property_readonly(
            "debug_str", [](const Table& self) { return debugText(self); },
            "All fields as text, one a line.")
        .def(
            "add_slot",
            [](Table& self, const ScheduleTableSlot& slot) { self.slots.push_back(slot); },
            py::arg("slot"), "Append a copy of a slot.")
        .def(
            "slot_array_size", [](const Table& self) { return self.slots.size(); },
            "Number of slots.")
        .def(
            "slot_array", [](const Table& self) { return self.slots; },
            "The slots, a list of copies.")
        .def_readwrite("name", &Table::name, "Name of the table.")
        .def("__repr__",
             [](const Table& self) { return "LinScheduleTable(\n" + debugText(self) + ")"; });
    addEquality(type);
    addCopies(type);
}

#undef QUILL_NUMBER

void bindCrcTypes(py::module_& m) {
    py::enum_<CrcType> type(m, "CrcType", py::arithmetic(),
                            "CRC algorithms of a FrameUpdate; the values are their codes.");
    for (const CrcTypeName& entry : kCrcTypes) {
        type.value(entry.name, static_cast<CrcType>(entry.code));
    }
}

}  // namespace
}  // namespace scripts

void bindScheduleTables(py::module_& m) {
    scripts::bindSlot(m);
    scripts::bindTable(m);
    scripts::bindCrcTypes(m);
}
