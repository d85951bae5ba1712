// Subscriptions, by device and by identifier.
#include <pybind11/pybind11.h>

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
using CanId = Ranged<"id", uint32_t>;

ScriptRegistries& registries() { return PySDKEntry::instance().delivery().registries(); }

void addDeviceSubscriptions(py::module_& m) {
    m.def(
        "subscribeCanFrame",
        [](const DeviceHandle& handle, const CanCallback& callback) {
            checkAddress(handle);
            return PySDKEntry::instance().subscribeCan(handle, callback.callback);
        },
        py::arg("handle"), py::arg("callback"),
        "Call a callable with every CAN frame of a box, sent ones included; it replaces an "
        "earlier one. True when tracing could be started.");
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
        [](const DeviceHandle& handle, const LinCallback& callback) {
            checkAddress(handle);
            return PySDKEntry::instance().subscribeLin(handle, callback.callback);
        },
        py::arg("handle"), py::arg("callback"),
        "Call a callable with every LIN frame of a box, sent ones included; it replaces an "
        "earlier one. True when tracing could be started.");
    m.def(
        "unsubscribeLinFrame",
        [](const DeviceHandle& handle) {
            checkAddress(handle);
            return PySDKEntry::instance().unsubscribeLin(handle);
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

}  // namespace
}  // namespace scripts

void bindReceive(py::module_& m) {
    scripts::addDeviceSubscriptions(m);
    scripts::addIdSubscriptions(m);
    scripts::addLinSubscriptions(m);
}
