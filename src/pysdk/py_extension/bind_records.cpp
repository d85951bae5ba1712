// Frame records and result codes.
#include <pybind11/pybind11.h>

#include <stdexcept>
#include <string>

#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/script_records.h"
#include "pysdk/py_extension/script_values.h"

namespace py = pybind11;

namespace scripts {
namespace {

constexpr uint64_t kNsPerSecond = 1'000'000'000U;
constexpr uint64_t kLastTimestamp = 0xFFFFFFFFULL * kNsPerSecond + (kNsPerSecond - 1);
using Timestamp = Ranged<"timestamp", uint64_t, 0, kLastTimestamp>;
using Payload = BytesField<"data", ByteList::kCapacity>;

// The members of packed records cannot be bound to references, so every attribute is a pair of
// functions.  NOLINTBEGIN(bugprone-macro-parentheses)
#define QUILL_FIELD(record, member, type)                                           \
#member, [](const record& self) { return self.member; },                        \
                                                          [](record & self,         \
                                                             Ranged <#member, type> \
                                                                 value) { self.member = value; }
#define QUILL_FLAG(member) \
#member, [](const CANRawFrame& self) { return self.extend.member(); },              \
        [](CANRawFrame& self, BitField<#member> value) {                                \
            self.extend.set##member(value.value != 0);                                  \
        }
#define QUILL_WORD_FLAG(member)                                        \
#member,                                                           \
        [](const CANFrameExtend&                                       \
               self) { return self.member(); },                        \
                                             [](CANFrameExtend & self, \
                                                BitField <#member>     \
                                                    value) { self.set##member(value.value != 0); }
// NOLINTEND(bugprone-macro-parentheses)
template <class Class>
void addTimestamp(Class& type) {
    using Record = typename Class::type;
    type.def_property(
        "timestamp", [](const Record& self) { return self.timestampNs(); },
        [](Record& self, Timestamp value) {
            self.seconds = static_cast<uint32_t>(value / kNsPerSecond);
            self.nanoseconds = static_cast<uint32_t>(value % kNsPerSecond);
        },
        "Time of the frame in ns since the epoch, by the clock of the box.");
}

template <class Class>
void addData(Class& type) {
    using Record = typename Class::type;
    type.def_property(
        "data", [](const Record& self) { return toList(self.data.bytes()); },
        [](Record& self, const Payload& value) {
            if (!self.data.assign(value.value)) throw std::length_error("data");
        },
        "Payload, a list of ints; up to 64 bytes. Takes bytes, bytearray or a list of ints.");
}

void bindErrorCode(py::module_& m) {
    py::enum_<ErrorCode> type(
        m, "ErrorCode", py::arithmetic(),
        "First element of the result pairs of database queries, which hold it as an int.");
    type.value("Success", Success, "Done.")
        .value("InvalidParam", InvalidParam, "The file cannot be loaded.");
    // There is no third member, so no other number becomes one.
    type.def(py::init([](Ranged<"ErrorCode", int32_t, Success, InvalidParam> value) {
                 return static_cast<ErrorCode>(value.value);
             }),
             py::arg("value"), py::prepend());
}

void bindFrameExtend(py::module_& m) {
    py::class_<CANFrameExtend> type(m, "CANFrameExtend", "Flag word of a CAN frame.");
    type.def(py::init<>())
        .def(makeFromKeywords<CANFrameExtend>())
        .def_property(QUILL_WORD_FLAG(EDL), "1: CAN FD frame, 0: classic.")
        .def_property(QUILL_WORD_FLAG(BRS), "Bit-rate switch (CAN FD).")
        .def_property(QUILL_WORD_FLAG(ESI), "Error-state indicator (CAN FD).")
        .def_property(
            "COD", [](const CANFrameExtend& self) { return self.COD(); },
            [](CANFrameExtend& self, Ranged<"COD", uint8_t, 0, 15> value) { self.setCOD(value); },
            "Code field, 0 to 15, carried unchanged.")
        .def_property(QUILL_WORD_FLAG(UU2), "Spare flag, carried unchanged.")
        .def_property(QUILL_WORD_FLAG(SRR), "Substitute remote request.")
        .def_property(QUILL_WORD_FLAG(IDE), "1: 29-bit identifier, 0: 11-bit.")
        .def_property(QUILL_WORD_FLAG(RTR), "Remote transmission request.")
        .def_property(
            "DLC", [](const CANFrameExtend& self) { return self.DLC(); },
            [](CANFrameExtend& self, Ranged<"DLC", uint8_t, 0, 15> value) { self.setDLC(value); },
            "Data length code, 0 to 15.")
        .def_property(
            "errorFlag", [](const CANFrameExtend& self) { return self.errorFlag(); },
            [](CANFrameExtend& self, Ranged<"errorFlag", uint16_t> value) {
                self.setErrorFlag(value);
            },
            "Error flags of the box, 16 bits; 0 for a good frame.")
        .def("__repr__", [](const CANFrameExtend& self) { return toText(self); });
    addEquality(type);
    addCopies(type);
}

void bindCanFrame(py::module_& m) {
    py::class_<CANRawFrame> type(
        m, "CANRawFrame",
        "One CAN or CAN FD frame. Made with keywords: CANRawFrame(id=0x123, data=[1, 2]).");
    type.def(py::init<>())
        .def(makeFromKeywords<CANRawFrame>())
        .def_property(QUILL_FIELD(CANRawFrame, id, uint32_t),
                      "CAN identifier: 11 bits, or 29 bits when IDE is 1.")
        .def_property(QUILL_FIELD(CANRawFrame, channelId, uint8_t),
                      "CAN channel of the box, counted from 0.")
        .def_property(
            "name", [](const CANRawFrame& self) { return std::string(self.name.text()); },
            [](CANRawFrame& self, const std::string& value) { self.name.assign(value); },
            "Name of the matched database frame, empty when there is none.");
    addTimestamp(type);
    type.def_property(
            "DLC", [](const CANRawFrame& self) { return self.extend.DLC(); },
            [](CANRawFrame& self, Ranged<"DLC", uint8_t, 0, 15> value) {
                self.extend.setDLC(value);
            },
            "Data length code, 0 to 15. Left at 0, the data gives it when the frame is sent.")
        .def_property(QUILL_FLAG(BRS), "Bit-rate switch (CAN FD), 0 or 1.")
        .def_property(QUILL_FLAG(IDE), "1: 29-bit identifier, 0: 11-bit.")
        .def_property(QUILL_FLAG(EDL), "1: CAN FD frame, 0: classic.");
    addData(type);
    type.def_property(QUILL_FLAG(ESI), "Error-state indicator (CAN FD), 0 or 1.")
        .def_property(QUILL_FLAG(RTR), "1: remote frame.")
        .def_property(
            "errorFlag", [](const CANRawFrame& self) { return self.extend.errorFlag(); },
            [](CANRawFrame& self, Ranged<"errorFlag", uint16_t> value) {
                self.extend.setErrorFlag(value);
            },
            "Error flags of the box, 16 bits; 0 for a good frame.")
        .def_property(
            "extend", [](CANRawFrame& self) -> CANFrameExtend& { return self.extend; },
            [](CANRawFrame& self, const CANFrameExtend& value) { self.extend = value; },
            py::return_value_policy::reference_internal,
            "The whole flag word; changing it changes the frame.")
        .def_property(QUILL_FIELD(CANRawFrame, dir, uint16_t),
                      "Direction: 0 received, 1 sent by the box itself.")
        .def("__repr__", &CANRawFrame::toText);
    addEquality(type);
    addCopies(type);
}

void bindLinFrame(py::module_& m) {
    py::class_<LinFrame> type(m, "LinFrame",
                              "One LIN frame. Made with keywords: LinFrame(id=0x12, data=[1, 2]).");
    type.def(py::init<>())
        .def(makeFromKeywords<LinFrame>())
        .def_property(QUILL_FIELD(LinFrame, id, uint16_t), "LIN identifier, 0 to 63 on a bus.")
        .def_property(QUILL_FIELD(LinFrame, dir, uint16_t),
                      "Direction as the box reports it: 0 received, 1 sent by the box itself.")
        .def_property(QUILL_FIELD(LinFrame, channelId, uint8_t),
                      "LIN channel of the box, counted from 0.")
        .def_property(QUILL_FIELD(LinFrame, checkMode, uint8_t),
                      "Checksum model: 0 classic, 1 enhanced.");
    addTimestamp(type);
    addData(type);
    type.def_property(QUILL_FIELD(LinFrame, checksum, uint16_t), "Checksum as received, 16 bits.")
        .def("__repr__", &LinFrame::toText);
    addEquality(type);
    addCopies(type);
}

void bindEthFrame(py::module_& m) {
    py::class_<EthFrame> type(
        m, "EthFrame",
        "One Ethernet frame. Its text form tells time, channel, direction, length and bytes.");
    type.def(py::init<>()).def("__repr__", &EthFrame::toText);
    addEquality(type);
    addCopies(type);
}

#undef QUILL_FIELD
#undef QUILL_FLAG
#undef QUILL_WORD_FLAG

}  // namespace
}  // namespace scripts

void bindRecords(py::module_& m) {
    scripts::bindErrorCode(m);
    scripts::bindFrameExtend(m);
    scripts::bindCanFrame(m);
    scripts::bindLinFrame(m);
    scripts::bindEthFrame(m);
}
