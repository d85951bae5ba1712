// Subscriptions, by device and by identifier, and recording.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <string>
#include <utility>
#include <vector>

#include "core/capturefilter/model/CANFilterModel.h"
#include "core/capturefilter/model/LINFilterModel.h"
#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/pysdk_entry.h"
#include "pysdk/py_extension/script_arguments.h"
#include "pysdk/py_extension/script_callback.h"
#include "pysdk/py_extension/script_values.h"

namespace py = pybind11;

namespace scripts {
namespace {

using CanCallback = CallbackFor<CANRawFrame>;
using LinCallback = CallbackFor<LinFrame>;
using EthCallback = CallbackFor<EthFrame>;
using CanId = Ranged<"id", uint32_t>;

using CanList = std::shared_ptr<rv::CANFrameFilterList>;
using LinList = std::shared_ptr<rv::LINFrameFilterList>;

template <class List>
FrameViews::List sourceOf(const List& list) {
    return list == nullptr ? nullptr : list->source();
}

ScriptRegistries& registries() { return PySDKEntry::instance().delivery().registries(); }

// Texts with "%" for the kind of frame.
constexpr const char* kSubscribeText =
    R"(Call a callable with every % frame of a box, sent ones included.

Args:
    handle: the box.
    callback: takes one frame, which it may keep; None counts and records without a call. It
        replaces an earlier one and runs on the SDK's own thread, in the order of the time stamps,
        240 ms after the frame's time. What it raises goes to sys.unraisablehook.
)";
constexpr const char* kFilterText =
    "    filter: only frames that this list passes; None for all.\n";
constexpr const char* kSubscribeEnd = R"(
Returns:
    bool: True when tracing could be started.

Raises:
    ValueError: the handle's MAC address is malformed.)";
constexpr const char* kUnsubscribeText =
    R"(Drop the callable for % frames and stop tracing on the box, for all kinds of frames.

Returns:
    bool: True when tracing could be stopped.

Raises:
    ValueError: the handle's MAC address is malformed.)";

std::string forKind(std::string text, const char* kind) {
    text.replace(text.find('%'), 1, kind);
    return text;
}

using Subscribe = bool (PySDKEntry::*)(const DeviceHandle&, ScriptCallback);
using Unsubscribe = bool (PySDKEntry::*)(const DeviceHandle&);

template <FrameViews::Bus bus, class Callback, class List, Subscribe subscribe>
void addFilteredSubscribe(py::module_& m, const char* name, const char* kind) {
    m.def(
        name,
        [](const DeviceHandle& handle, const Callback& callback, const List& filter) {
            checkAddress(handle);
            PySDKEntry& entry = PySDKEntry::instance();
            entry.delivery().views().setSubscriptionFilter(
                handle.deviceInfo.mac, bus, FrameViews::Form::Single, sourceOf(filter));
            return (entry.*subscribe)(handle, callback.callback);
        },
        py::arg("handle"), py::arg("callback"), py::kw_only(), py::arg("filter") = py::none(),
        (forKind(kSubscribeText, kind) + kFilterText + kSubscribeEnd).c_str());
}

template <Unsubscribe unsubscribe>
void addUnsubscribe(py::module_& m, const char* name, const char* kind) {
    m.def(
        name,
        [](const DeviceHandle& handle) {
            checkAddress(handle);
            return (PySDKEntry::instance().*unsubscribe)(handle);
        },
        py::arg("handle"), forKind(kUnsubscribeText, kind).c_str());
}

void addDeviceSubscriptions(py::module_& m) {
    using Bus = FrameViews::Bus;
    addFilteredSubscribe<Bus::Can, CanCallback, CanList, &PySDKEntry::subscribeCan>(
        m, "subscribeCanFrame", "CAN");
    addUnsubscribe<&PySDKEntry::unsubscribeCan>(m, "unsubscribeCanFrame", "CAN");
}

void addLinSubscriptions(py::module_& m) {
    using Bus = FrameViews::Bus;
    addFilteredSubscribe<Bus::Lin, LinCallback, LinList, &PySDKEntry::subscribeLin>(
        m, "subscribeLinFrame", "LIN");
    addUnsubscribe<&PySDKEntry::unsubscribeLin>(m, "unsubscribeLinFrame", "LIN");
}

void addEthSubscriptions(py::module_& m) {
    m.def(
        "subscribeEthFrame",
        [](const DeviceHandle& handle, const EthCallback& callback) {
            checkAddress(handle);
            return PySDKEntry::instance().subscribeEth(handle, callback.callback);
        },
        py::arg("handle"), py::arg("callback"),
        (forKind(kSubscribeText, "Ethernet") + kSubscribeEnd).c_str());
    addUnsubscribe<&PySDKEntry::unsubscribeEth>(m, "unsubscribeEthFrame", "Ethernet");
}

void addIdSubscriptions(py::module_& m) {
    m.def(
        "subscribeCanFrameById",
        [](CanId id, const CanCallback& callback) { registries().addId(id, callback.callback); },
        py::arg("id"), py::arg("callback"),
        R"(Count the CAN frames with an identifier and call a callable with them.

Frames of every box that is traced count, sent ones included; the call starts no tracing. An earlier
callable is replaced, the counter goes on.

Args:
    id: CAN identifier, 0 to 2**32 - 1.
    callback: takes one CANRawFrame; None counts without a call.)");
    m.def(
        "unsubscribeCanFrameById", [](CanId id) { registries().removeId(id); }, py::arg("id"),
        "Drop the callable and the counter of an identifier.");
    m.def(
        "getCanFrameCountById", [](CanId id) { return registries().countOf(id); }, py::arg("id"),
        "CAN frames with an identifier delivered since it was subscribed; 0 when it is not.");
}

void bindRecordingStatus(py::module_& m) {
    using Status = playback::RecordingStatus;
    py::class_<Status> type(
        m, "RecordingStatus",
        "Progress of a recording. After its end, offered = written + dropped + skipped.");
    type.def_readonly("recording", &Status::recording, "True: a recording runs.")
        .def_readonly("offered", &Status::offered, "Frames of the recorded channels so far.")
        .def_readonly("staged", &Status::staged, "Frames in memory, not yet handed over.")
        .def_readonly("converted", &Status::converted, "Frames laid out in the output format.")
        .def_readonly("written", &Status::written, "Frames in the file.")
        .def_readonly("dropped", &Status::dropped, "Frames lost; error tells why.")
        .def_readonly("skipped", &Status::skipped, "Frames of a kind that the format cannot hold.")
        .def_readonly("bytes", &Status::bytes, "Size of the file in bytes.")
        .def_readonly("seconds", &Status::seconds,
                      "Duration in s from the start to the stop, or until now.")
        .def_readonly("error", &Status::error, "Text of the first failure, empty without one.")
        .def("__repr__", [](const Status& self) { return toText(self); });
    addCopies(type);
}

void addRecording(py::module_& m) {
    m.def(
        "enableDataRecording",
        [](const std::string& path, ListOf<int32_t> channels, Ranged<"format", int64_t> format,
           const CanList& canFilter, const LinList& linFilter) {
            FrameViews& views = PySDKEntry::instance().delivery().views();
            if (!PySDKEntry::instance().delivery().recording().running()) {
                views.setRecordingFilters(sourceOf(canFilter), sourceOf(linFilter));
            }
            PySDKEntry::instance().enableRecording(path, std::move(channels), format);
        },
        py::arg("path"), py::arg("channels"), py::arg("format"), py::kw_only(),
        py::arg("canFilter") = py::none(), py::arg("linFilter") = py::none(),
        R"(Record frames into a trace file as they are delivered.

A second call while a recording runs changes nothing and says so on standard output.

Args:
    path: file to write; an existing one is replaced.
    channels: channel numbers, counted from 0, of any kind of bus; an empty list records all.
    format: 1 writes ASC, any other number BLF.
    canFilter: only CAN frames that this list passes; None for all.
    linFilter: only LIN frames that this list passes; None for all.

Raises:
    ValueError: the file cannot be made; the text gives the reason.)");
    m.def(
        "disableDataRecording", [] { PySDKEntry::instance().disableRecording(); },
        "End the recording and complete its file; does nothing without a recording.");
    m.def(
        "getRecordingStatus", [] { return PySDKEntry::instance().recordingStatus(); },
        "Progress of the running recording, else of the last one.");
}

}  // namespace
}  // namespace scripts

void bindReceive(py::module_& m) {
    scripts::addDeviceSubscriptions(m);
    scripts::addIdSubscriptions(m);
    scripts::addLinSubscriptions(m);
    scripts::addEthSubscriptions(m);
    scripts::bindRecordingStatus(m);
    scripts::addRecording(m);
}
