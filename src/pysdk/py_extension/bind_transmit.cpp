// Sending, cyclic jobs and LIN schedule tables.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <optional>
#include <string>

#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/pysdk_entry.h"
#include "pysdk/py_extension/script_arguments.h"
#include "pysdk/py_extension/script_values.h"

namespace py = pybind11;

namespace scripts {
namespace {

using rv::BoxResult;
using rv::FrameUpdate;
using Ms = Ranged<"ms", int32_t>;
using Count = Ranged<"limitCount", int32_t>;
// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are names
#define QUILL_BITS(member, min, max)                                                             \
#member,                                                                                     \
        [](const FrameUpdate& self) { return self.member; },                                     \
                                                          [](FrameUpdate & self,                 \
                                                             Ranged <#member, int32_t, min, max> \
                                                                 value) { self.member = value; }
// NOLINTEND(bugprone-macro-parentheses)
void bindFrameUpdate(py::module_& m) {
    constexpr size_t kMaxKey = 256;
    constexpr const char* kStartBitText =
        "8 x byte + bit of the least significant bit, 0 to 511, for both byte orders.";
    py::class_<FrameUpdate> type(
        m, "FrameUpdate",
        "Rolling counter and CRC that are brought up to date before every transmission.");
    type.def(py::init<>())
        .def(makeFromKeywords<FrameUpdate>())
        .def_readwrite("counterEnabled", &FrameUpdate::counterEnabled,
                       "True: the frame carries a rolling counter.")
        .def_property(QUILL_BITS(counterStartBit, 0, 511), kStartBitText)
        .def_property(QUILL_BITS(counterLength, 0, 64), "Number of bits, 0 to 64.")
        .def_readwrite("counterBigEndian", &FrameUpdate::counterBigEndian,
                       "True: Motorola byte order.")
        .def_readwrite("counterReset", &FrameUpdate::counterReset,
                       "True: the first transmission carries 0, else 1.")
        .def_property(
            "crcType", [](const FrameUpdate& self) { return self.crcType; },
            [](FrameUpdate& self, Ranged<"crcType", uint8_t, 0, 40> value) {
                self.crcType = value;
            },
            "A CrcType or its code, 0 for none.")
        .def_property(QUILL_BITS(crcStartBit, 0, 511), kStartBitText)
        .def_property(QUILL_BITS(crcLength, 0, 64),
                      "Number of bits, 0 to 64; a shorter field gets the low bits.")
        .def_readwrite("crcBigEndian", &FrameUpdate::crcBigEndian, "True: Motorola byte order.")
        .def_property(
            "crcKey", [](const FrameUpdate& self) { return toList(self.crcKey); },
            [](FrameUpdate& self, BytesField<"crcKey", kMaxKey> value) {
                self.crcKey = std::move(value.value);
            },
            "Key bytes, a list of up to 256 ints; used by CRC8_VARIANT only.")
        .def("__repr__", [](const FrameUpdate& self) { return toText(self); })
        .def(
            "__eq__",
            [](const FrameUpdate& self, const FrameUpdate& other) {
                return sameUpdate(self, other);
            },
            py::arg("other"), py::is_operator());
    addCopies(type);
}

#undef QUILL_BITS

void bindSendResult(py::module_& m) {
    py::enum_<BoxResult>(m, "SendResult", py::arithmetic(),
                         "Results of cyclic jobs; the calls return them as ints.")
        .value("Done", BoxResult::Done, "The box did it.")
        .value("NoSuchDevice", BoxResult::NoSuchDevice, "No box has this MAC address.")
        .value("NoSuchJob", BoxResult::NoSuchJob, "The box does not run this job.")
        .value("InvalidParam", BoxResult::InvalidParam, "Refused; the log gives the reason.")
        .value("DeviceRefused", BoxResult::DeviceRefused, "The box refused the command.")
        .value("TimedOut", BoxResult::TimedOut, "The box did not answer in time.")
        .value("NotConnected", BoxResult::NotConnected, "The box is not connected.");
}

void bindCyclicHandle(py::module_& m) {
    using Handle = CANCyclicFrameHandle;
    py::class_<Handle> type(m, "CANCyclicFrameHandle", "A frame that a box sends cyclically.");
    type.def(py::init<>())
        .def_property_readonly(
            "gid", [](const Handle& self) { return self.gid; },
            "Identifier of the job, made when it starts.")
        .def_property_readonly(
            "deviceInfo", [](const Handle& self) { return self.deviceInfo; },
            "DeviceHandle of the box that sends the frame.")
        .def_property(
            "ms", [](const Handle& self) { return self.ms; },
            [](Handle& self, Ms value) { self.ms = value; },
            "Cycle time in ms; takes effect with updateCyclicCanFrame.")
        .def_property_readonly(
            "result", [](const Handle& self) { return static_cast<int>(self.result); },
            "What the start came to, a SendResult as int; 0: the job runs.")
        .def("__repr__",
             [](const Handle& self) { return toText(self, connectionStatus(self.deviceInfo)); });
    addEquality(type);
    addCopies(type);
}

template <FrameFormat Format>
void send(const DeviceHandle& handle, const CANRawFrame& frame,
          const std::optional<FrameUpdate>& update) {
    checkAddress(handle);
    PySDKEntry::instance().sendFrame(handle, frame, Format, update ? &*update : nullptr);
}

template <FrameFormat Format>
CANCyclicFrameHandle start(const DeviceHandle& handle, const CANRawFrame& frame, Ms ms,
                           Count limitCount, const std::optional<FrameUpdate>& update) {
    checkAddress(handle);
    return PySDKEntry::instance().startCyclic(handle, frame, ms, limitCount, Format,
                                              update ? &*update : nullptr);
}

int stop(const CANCyclicFrameHandle& cyclic) {
    return static_cast<int>(PySDKEntry::instance().stopCyclic(cyclic));
}

constexpr const char* kSendText = R"(Send one frame through the box.

A DLC of 0 is taken from the data; any other must agree with it. A frame that no bus carries is not
sent, and the log gives the reason.

Args:
    handle: the box.
    frame: what is sent, as CAN FD when its EDL is set; it is not changed.
    update: counter and CRC that are brought up to date first; None for neither.

Raises:
    ValueError: the handle's MAC address is malformed.)";

constexpr const char* kSendFdText = R"(Send one frame through the box as a CAN FD frame.

A DLC of 0 is taken from the data; any other must agree with it. A frame that no bus carries is not
sent, and the log gives the reason.

Args:
    handle: the box.
    frame: what is sent, whatever its EDL says; it is not changed.
    update: counter and CRC that are brought up to date first; None for neither.

Raises:
    ValueError: the handle's MAC address is malformed.)";

constexpr const char* kStartText = R"(Let the box send a frame cyclically, on a fixed grid.

Args:
    handle: the box.
    frame: what is sent, as CAN FD when its EDL is set; it is copied.
    ms: cycle time in ms, 1 and up.
    limitCount: number of transmissions; 0 or less: without end.
    update: counter and CRC that are brought up to date before every transmission.

Returns:
    CANCyclicFrameHandle: the job runs when its result is 0.

Raises:
    ValueError: the handle's MAC address is malformed.)";

constexpr const char* kStartFdText = R"(Let the box send a CAN FD frame cyclically, on a fixed grid.

Args:
    handle: the box.
    frame: what is sent, whatever its EDL says; it is copied.
    ms: cycle time in ms, 1 and up.
    limitCount: number of transmissions; 0 or less: without end.
    update: counter and CRC that are brought up to date before every transmission.

Returns:
    CANCyclicFrameHandle: the job runs when its result is 0.

Raises:
    ValueError: the handle's MAC address is malformed.)";

void addSends(py::module_& m) {
    const auto handle = py::arg("handle");
    const auto frame = py::arg("frame");
    const auto cycle = py::arg("ms");
    const auto count = py::arg("limitCount");
    const auto update = py::arg("update") = py::none();
    m.def("sendCanFrame", &send<FrameFormat::AsFlagged>, handle, frame, py::kw_only(), update,
          kSendText);
    m.def("sendCanFDFrame", &send<FrameFormat::Fd>, handle, frame, py::kw_only(), update,
          kSendFdText);
    m.def("startCyclicCanFrame", &start<FrameFormat::AsFlagged>, handle, frame, cycle, count,
          py::kw_only(), update, kStartText);
    m.def("startCyclicCANFDFrame", &start<FrameFormat::Fd>, handle, frame, cycle, count,
          py::kw_only(), update, kStartFdText);
}

void addJobs(py::module_& m) {
    m.def("stopCyclicCanFrame", &stop, py::arg("cyclic"),
          "Stop a cyclic frame.\n\nReturns:\n    int: 0 when done, else a SendResult.");
    m.def("stopCyclicCanFDFrame", &stop, py::arg("cyclic"),
          "Stop a cyclic CAN FD frame.\n\nReturns:\n    int: 0 when done, else a SendResult.");
    m.def(
        "updateCyclicCanFrame",
        [](const CANCyclicFrameHandle& cyclic, const CANRawFrame& frame) {
            return static_cast<int>(PySDKEntry::instance().updateCyclic(cyclic, frame));
        },
        py::arg("cyclic"), py::arg("frame"),
        R"(Replace the frame of a running job and set its cycle time to the handle's ms.

The phase and the rolling counter go on.

Returns:
    int: 0 when done, else a SendResult.)");
    m.def(
        "pauseCyclicCanFrame",
        [](const CANCyclicFrameHandle& cyclic) {
            return static_cast<int>(PySDKEntry::instance().pauseCyclic(cyclic));
        },
        py::arg("cyclic"),
        "Pause a cyclic frame; its counter stands still.\n\nReturns:\n    int: 0 when done, else a "
        "SendResult.");
    m.def(
        "resumeCyclicCanFrame",
        [](const CANCyclicFrameHandle& cyclic) {
            return static_cast<int>(PySDKEntry::instance().resumeCyclic(cyclic));
        },
        py::arg("cyclic"),
        "Resume a paused cyclic frame.\n\nReturns:\n    int: 0 when done, else a SendResult.");
}

void addLinTables(py::module_& m) {
    m.def(
        "startLinScheduleTable",
        [](const DeviceHandle& handle, const LinScheduleTable& table) {
            checkAddress(handle);
            return static_cast<int>(PySDKEntry::instance().startLinTable(handle, table));
        },
        py::arg("handle"), py::arg("table"),
        R"(Run a LIN schedule table on the channel that it names, round after round until it is stopped.

Returns:
    int: 0 when done, else a SendResult.

Raises:
    ValueError: the handle's MAC address is malformed.)");
    m.def(
        "stopLinScheduleTable",
        [](const DeviceHandle& handle, Ranged<"channel", int32_t> channel) {
            checkAddress(handle);
            PySDKEntry::instance().stopLinTable(handle, channel);
        },
        py::arg("handle"), py::arg("channel"),
        R"(Stop the LIN schedule table that runs on a channel of the box.

Args:
    handle: the box.
    channel: LIN channel, counted from 0.

Raises:
    ValueError: the handle's MAC address is malformed.)");
}

}  // namespace
}  // namespace scripts

void bindTransmit(py::module_& m) {
    scripts::bindFrameUpdate(m);
    scripts::bindSendResult(m);
    scripts::bindCyclicHandle(m);
    scripts::addSends(m);
    scripts::addJobs(m);
    scripts::addLinTables(m);
}
