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

template <class List>
void setFilter(const DeviceHandle& handle, FrameViews::Bus bus, const List& list) {
    PySDKEntry::instance().delivery().views().setSubscriptionFilter(
        handle.deviceInfo.mac, bus, FrameViews::Form::Single, sourceOf(list));
}

ScriptRegistries& registries() { return PySDKEntry::instance().delivery().registries(); }

void addDeviceSubscriptions(py::module_& m) {
    m.def(
        "subscribeCanFrame",
        [](const DeviceHandle& handle, const CanCallback& callback, const CanList& filter) {
            checkAddress(handle);
            setFilter(handle, FrameViews::Bus::Can, filter);
            return PySDKEntry::instance().subscribeCan(handle, callback.callback);
        },
        py::arg("handle"), py::arg("callback"), py::kw_only(), py::arg("filter") = py::none(),
        "Call a callable with every CAN frame of a box, sent ones included; it replaces an "
        "earlier one. With a filter list, only frames that it passes. True when tracing could be "
        "started.");
    m.def(
        "unsubscribeCanFrame",
        [](const DeviceHandle& handle) {
            checkAddress(handle);
            return PySDKEntry::instance().unsubscribeCan(handle);
        },
        py::arg("handle"), "Drop the callable and stop tracing on the box; True when it stopped.");
}

void addLinSubscriptions(py::module_& m) {
    m.def(
        "subscribeLinFrame",
        [](const DeviceHandle& handle, const LinCallback& callback, const LinList& filter) {
            checkAddress(handle);
            setFilter(handle, FrameViews::Bus::Lin, filter);
            return PySDKEntry::instance().subscribeLin(handle, callback.callback);
        },
        py::arg("handle"), py::arg("callback"), py::kw_only(), py::arg("filter") = py::none(),
        "Call a callable with every LIN frame of a box, sent ones included; it replaces an "
        "earlier one. With a filter list, only frames that it passes. True when tracing could be "
        "started.");
    m.def(
        "unsubscribeLinFrame",
        [](const DeviceHandle& handle) {
            checkAddress(handle);
            return PySDKEntry::instance().unsubscribeLin(handle);
        },
        py::arg("handle"), "Drop the callable and stop tracing on the box; True when it stopped.");
}

void addEthSubscriptions(py::module_& m) {
    m.def(
        "subscribeEthFrame",
        [](const DeviceHandle& handle, const EthCallback& callback) {
            checkAddress(handle);
            return PySDKEntry::instance().subscribeEth(handle, callback.callback);
        },
        py::arg("handle"), py::arg("callback"),
        "Call a callable with every Ethernet frame of a box, sent ones included; it replaces an "
        "earlier one. True when tracing could be started.");
    m.def(
        "unsubscribeEthFrame",
        [](const DeviceHandle& handle) {
            checkAddress(handle);
            return PySDKEntry::instance().unsubscribeEth(handle);
        },
        py::arg("handle"), "Drop the callable and stop tracing on the box; True when it stopped.");
}

void addIdSubscriptions(py::module_& m) {
    m.def(
        "subscribeCanFrameById",
        [](CanId id, const CanCallback& callback) { registries().addId(id, callback.callback); },
        py::arg("id"), py::arg("callback"),
        "Count the CAN frames with an identifier and call a callable with them, while a "
        "subscription of their box runs.");
    m.def(
        "unsubscribeCanFrameById", [](CanId id) { registries().removeId(id); }, py::arg("id"),
        "Drop the callable and the counter of an identifier.");
    m.def(
        "getCanFrameCountById", [](CanId id) { return registries().countOf(id); }, py::arg("id"),
        "CAN frames with an identifier delivered since it was subscribed; 0 when it is not.");
}

void bindRecordingStatus(py::module_& m) {
    using Status = playback::RecordingStatus;
    py::class_<Status> type(m, "RecordingStatus", "Progress of a recording, in frames.");
    type.def_readonly("recording", &Status::recording, "A recording runs.")
        .def_readonly("offered", &Status::offered, "Frames of the recorded channels so far.")
        .def_readonly("staged", &Status::staged, "In memory, not yet handed over.")
        .def_readonly("converted", &Status::converted, "Laid out in the output format.")
        .def_readonly("written", &Status::written, "In the file.")
        .def_readonly("dropped", &Status::dropped, "Lost; the error tells why.")
        .def_readonly("skipped", &Status::skipped, "Of a kind that the format cannot hold.")
        .def_readonly("bytes", &Status::bytes, "Size of the file.")
        .def_readonly("seconds", &Status::seconds, "Since the start, until the stop.")
        .def_readonly("error", &Status::error, "First failure, empty without one.")
        .def("__repr__", [](const Status& self) { return toText(self); });
    addCopies(type);
}

void addRecording(py::module_& m) {
    m.def(
        "enableDataRecording",
        [](const std::string& path, std::vector<int32_t> channels, Ranged<"format", int64_t> format,
           const CanList& canFilter, const LinList& linFilter) {
            FrameViews& views = PySDKEntry::instance().delivery().views();
            if (!PySDKEntry::instance().delivery().recording().running()) {
                views.setRecordingFilters(sourceOf(canFilter), sourceOf(linFilter));
            }
            PySDKEntry::instance().enableRecording(path, std::move(channels), format);
        },
        py::arg("path"), py::arg("channels"), py::arg("format"), py::kw_only(),
        py::arg("canFilter") = py::none(), py::arg("linFilter") = py::none(),
        "Record the received frames of channels, or of all channels when the list is empty, into "
        "a file: format 1 ASC, any other BLF. With filter lists, only frames that they pass. "
        "Raises "
        "ValueError when the file cannot be made.");
    m.def(
        "disableDataRecording", [] { PySDKEntry::instance().disableRecording(); },
        "End the recording and complete its file; does nothing without a recording.");
    m.def(
        "getRecordingStatus", [] { return PySDKEntry::instance().recordingStatus(); },
        "RecordingStatus of the running recording, else of the last one.");
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
