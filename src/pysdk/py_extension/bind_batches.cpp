// Subscriptions whose callable takes lists of frames.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <string>
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

using Bus = FrameViews::Bus;
// The defaults keep up with a full box beside a script thread that holds the interpreter for whole
// switch intervals of 5 ms, and add less delay than the sorting in front of them.
constexpr int32_t kDefaultFrames = 4096;
constexpr int32_t kDefaultDelayMs = 20;
using MaxFrames = Ranged<"maxFrames", int32_t, 1, 100'000>;
using MaxDelay = Ranged<"maxDelayMs", int32_t, 0, 10'000>;

template <class Record>
using ListCallback = CallbackFor<std::vector<Record>>;

constexpr const char* kSubscribeDoc =
    R"(Call a callable with lists of the %s frames of a box, in time order, sent ones included.

The interpreter is entered once a list, so this keeps up with a busy bus beside script threads that
compute. A box can have a callable for single frames and one for lists.

Args:
    handle: the box.
    callback: takes a list of frames, which it may keep; it replaces an earlier one of this kind.
    maxFrames: a list is handed over when it holds so many, 1 to 100000.
    maxDelayMs: or when its first frame has waited about so long, in ms, 0 to 10000.
    filter: only frames that this list passes; None for all.

Returns:
    bool: True when tracing could be started.

Raises:
    ValueError: the handle's MAC address is malformed, or a number is out of its range.)";
constexpr const char* kUnsubscribeDoc =
    R"(Drop the callable that takes lists; frames that wait for it are dropped with it.

Tracing stops with the box's last subscription, unless a recording runs.

Returns:
    bool: True when that went well.

Raises:
    ValueError: the handle's MAC address is malformed.)";

template <class Record, class List, Bus bus>
void addBus(py::module_& m, const char* subscribe, const char* unsubscribe, const char* busText) {
    std::string doc = kSubscribeDoc;
    doc.replace(doc.find("%s"), 2, busText);
    m.def(
        subscribe,
        [](const DeviceHandle& handle, const ListCallback<Record>& callback, MaxFrames maxFrames,
           MaxDelay maxDelayMs, const std::shared_ptr<List>& filter) {
            checkAddress(handle);
            if (!callback.callback) throw py::type_error("callback must be callable");
            PySDKEntry& entry = PySDKEntry::instance();
            entry.delivery().views().setSubscriptionFilter(
                handle.deviceInfo.mac, bus, FrameViews::Form::Batch,
                filter == nullptr ? nullptr : filter->source());
            auto batch = std::make_shared<BatchSubscription>();
            batch->callback = callback.callback;
            batch->maxFrames = static_cast<size_t>(maxFrames.value);
            batch->maxDelay = std::chrono::milliseconds(maxDelayMs.value);
            return entry.subscribeBatch(handle, bus, std::move(batch));
        },
        py::arg("handle"), py::arg("callback"), py::kw_only(),
        py::arg("maxFrames") = kDefaultFrames, py::arg("maxDelayMs") = kDefaultDelayMs,
        py::arg("filter") = py::none(), doc.c_str());
    m.def(
        unsubscribe,
        [](const DeviceHandle& handle) {
            checkAddress(handle);
            return PySDKEntry::instance().unsubscribeBatch(handle, bus);
        },
        py::arg("handle"), kUnsubscribeDoc);
}

}  // namespace
}  // namespace scripts

void bindBatches(py::module_& m) {
    using scripts::addBus;
    using scripts::Bus;
    addBus<scripts::CANRawFrame, rv::CANFrameFilterList, Bus::Can>(m, "subscribeCanFrames",
                                                                   "unsubscribeCanFrames", "CAN");
    addBus<scripts::LinFrame, rv::LINFrameFilterList, Bus::Lin>(m, "subscribeLinFrames",
                                                                "unsubscribeLinFrames", "LIN");
}
