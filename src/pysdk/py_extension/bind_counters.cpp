// What the road of a frame counts, as one record.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <fmt/format.h>

#include "core/hardware/RoadCounters.h"
#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/pysdk_entry.h"

namespace py = pybind11;

namespace scripts {
namespace {

// The counters of the road from the boxes to the callables.
struct Counters {
    rv::RoadCounters road;
    DeliveryCounters delivery;
};

rv::HandOver handOverOf(const DeliveryCounters& delivery) {
    return {delivery.in, delivery.out, delivery.held, delivery.dropped};
}

std::string handOverText(const rv::HandOver& counters) {
    return fmt::format("<HandOverCounters received={} delivered={} held={} dropped={}>",
                       counters.in, counters.out, counters.held, counters.dropped);
}

void bindHandOver(py::module_& m) {
    py::class_<rv::HandOver> type(
        m, "HandOverCounters",
        "Frames that one hand-over has seen since the start. At any quiet moment received = "
        "delivered + held + dropped.");
    type.def_readonly("received", &rv::HandOver::in, "Frames that came in.")
        .def_readonly("delivered", &rv::HandOver::out, "Frames that were handed on.")
        .def_readonly("held", &rv::HandOver::held, "Frames that wait here now.")
        .def_readonly("dropped", &rv::HandOver::dropped, "Frames that end here.")
        .def("__repr__", [](const rv::HandOver& self) { return handOverText(self); });
    addCopies(type);
}

void bindChannelCounters(py::module_& m) {
    using Channel = rv::ChannelCounters;
    py::class_<Channel> type(m, "ChannelCounters", "Traffic of one channel of a box.");
    type.def_readonly("bus", &Channel::bus, "CAN, LIN, ETH or FLEXRAY.")
        .def_readonly("channel", &Channel::channel, "Index, counted from 0 per kind of bus.")
        .def_readonly("name", &Channel::name, "Name as getChannelNames gives it.")
        .def_readonly("received", &Channel::received,
                      "Frames read from the box, its own transmissions included.")
        .def_readonly("busLoad", &Channel::busLoad,
                      "Percent of the last whole second that the bus was busy, stuff bits left "
                      "out.")
        .def("__repr__", [](const Channel& self) {
            return fmt::format("<ChannelCounters {} received={} busLoad={:.1f}>", self.name,
                               self.received, self.busLoad);
        });
    addCopies(type);
}

void bindDeviceCounters(py::module_& m) {
    using Device = rv::DeviceCounters;
    py::class_<Device> type(m, "DeviceCounters", "Hand-overs and channels of one box.");
    type.def_readonly("mac", &Device::id, "MAC address, or serial number of a USB device.")
        .def_readonly("name", &Device::name, "Name of the box.")
        .def_readonly("library", &Device::library,
                      "Queue in the box; frames are dropped when it is full or tracing stops.")
        .def_readonly("readers", &Device::readers,
                      "Reader threads; frames are dropped when nobody has subscribed.")
        .def_readonly("clockOffsetUs", &Device::clockOffsetUs,
                      "Clock of the box less clock of the host in microseconds, some "
                      "milliseconds too small for the way of a frame; 0 before the first frame.")
        .def_readonly("channels", &Device::channels, "ChannelCounters of all channels.")
        .def("__repr__", [](const Device& self) {
            return fmt::format("<DeviceCounters {} {}>", self.name, self.id);
        });
    addCopies(type);
}

void bindCounterRecord(py::module_& m) {
    py::class_<Counters> type(
        m, "Counters",
        "Every hand-over on the road of the frames: library, readers, resort, dispatch, delivery. "
        "What one has delivered, the next has received.");
    type.def_property_readonly(
            "library", [](const Counters& self) { return self.road.library; },
            "Queues of all boxes, those that are gone included.")
        .def_property_readonly(
            "readers", [](const Counters& self) { return self.road.readers; },
            "Reader threads of all boxes, those that are gone included.")
        .def_property_readonly(
            "resort", [](const Counters& self) { return self.road.resort; },
            "Buffer that holds frames for 240 ms and merges all boxes in time order.")
        .def_property_readonly(
            "dispatch", [](const Counters& self) { return self.road.dispatch; },
            "Dispatch thread; frames are dropped after exit().")
        .def_property_readonly(
            "delivery", [](const Counters& self) { return handOverOf(self.delivery); },
            "Callables: delivered to one or more, held for a list, dropped when no callable wants "
            "the frame. Recording takes its frames before.")
        .def_property_readonly(
            "calls", [](const Counters& self) { return self.delivery.calls; },
            "Calls of callables, one for each frame or list.")
        .def_property_readonly(
            "callbackErrors", [](const Counters& self) { return self.delivery.errors; },
            "Calls that raised.")
        .def_property_readonly(
            "backlogAgeUs", [](const Counters& self) { return self.road.backlogAgeUs; },
            "Microseconds that the oldest waiting frame is late; near 0 when scripts keep up.")
        .def_property_readonly(
            "devices", [](const Counters& self) { return self.road.devices; },
            "DeviceCounters of the known boxes.")
        .def("__repr__", [](const Counters& self) {
            return fmt::format(
                "<Counters library={} readers={} resort={} dispatch={} delivery={} calls={} "
                "callbackErrors={} backlogAgeUs={} devices={}>",
                handOverText(self.road.library), handOverText(self.road.readers),
                handOverText(self.road.resort), handOverText(self.road.dispatch),
                handOverText(handOverOf(self.delivery)), self.delivery.calls, self.delivery.errors,
                self.road.backlogAgeUs, self.road.devices.size());
        });
    addCopies(type);
}

}  // namespace
}  // namespace scripts

void bindCounters(py::module_& m) {
    scripts::bindHandOver(m);
    scripts::bindChannelCounters(m);
    scripts::bindDeviceCounters(m);
    scripts::bindCounterRecord(m);
    m.def(
        "getCounters",
        [] {
            PySDKEntry& entry = PySDKEntry::instance();
            rv::RVBoxManager& boxes = entry.manager();
            const auto delivery = entry.deliveryPtr();
            const scripts::InterpreterRelease released;
            return scripts::Counters{boxes.counters(), delivery->counters()};
        },
        "Counters of all hand-overs between the boxes and the callables, since the start.");
}
