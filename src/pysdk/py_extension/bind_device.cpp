// Device enumeration, handles and configuration.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/device_records.h"
#include "pysdk/py_extension/pysdk_entry.h"
#include "pysdk/py_extension/script_arguments.h"
#include "pysdk/py_extension/script_values.h"

namespace py = pybind11;

namespace scripts {
namespace {

using CanSettings = rv::CanChannelSettings;
using LinSettings = rv::LinChannelSettings;
using EthSettings = rv::EthChannelSettings;
// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are names
#define QUILL_LIMITED(record, member, type, min, max)                                    \
#member,                                                                             \
        [](const record& self) { return self.member; },                                  \
                                                     [](record & self,                   \
                                                        Ranged <#member, type, min, max> \
                                                            value) { self.member = value.value; }
#define QUILL_PERCENT(record, member)                                                  \
#member,                                                                           \
        [](const record& self) { return self.member; },                                \
                                                     [](record & self,                 \
                                                        RangedDouble <#member, 50, 95> \
                                                            value) { self.member = value.value; }
// NOLINTEND(bugprone-macro-parentheses)
void bindDeviceType(py::module_& m) {
    py::enum_<DeviceType>(m, "DeviceType", py::arithmetic(), "Kind of box.")
        .value("All", All, "Every box.")
        .value("RV_Hub4e", RV_Hub4e, "The one box model, so the same as All.");
}

void bindDipData(py::module_& m) {
    py::class_<DipData> type(m, "DipData", "State of a box's DIP switches.");
    type.def(py::init<>())
        .def(makeFromKeywords<DipData>())
        .def_property(QUILL_LIMITED(DipData, program, uint8_t, 0, 255), "Program switch, 0 to 255.")
        .def_property(QUILL_LIMITED(DipData, sel2, uint8_t, 0, 255),
                      "Selection switch 2, 0 to 255.")
        .def_property(QUILL_LIMITED(DipData, sel1, uint8_t, 0, 255),
                      "Selection switch 1, 0 to 255.")
        .def_property(QUILL_LIMITED(DipData, sel0, uint8_t, 0, 255),
                      "Selection switch 0, 0 to 255.")
        .def("__repr__", [](const DipData& self) { return toText(self); });
    addEquality(type);
    addCopies(type);
}

void bindDeviceInfo(py::module_& m) {
    using Info = RVBoxDeviceInfo;
    constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
    constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
    py::class_<Info> type(m, "RVBoxDeviceInfo", "Identity of one box.");
    type.def(py::init<>())
        .def(makeFromKeywords<Info>())
        .def_property(QUILL_LIMITED(Info, com, int32_t, kMin, kMax),
                      "Number as the box reports it.")
        .def_readwrite("mac", &Info::mac,
                       "MAC address, which calls find the box by: six pairs of hexadecimal digits "
                       "separated by colons or hyphens.")
        .def_readwrite("model", &Info::model, "Name of the model.")
        .def_readwrite("networkCard", &Info::networkCard,
                       "Host network interface through which the box was found.")
        .def_readwrite("sn", &Info::sn, "Serial number.")
        .def_readwrite("dip", &Info::dip, "State of the DIP switches.")
        .def("__repr__", [](const Info& self) { return toText(self); });
    addEquality(type);
    addCopies(type);
}

void bindCanSettings(py::module_& m) {
    py::class_<CanSettings, std::shared_ptr<CanSettings>> type(m, "CanChannelConfig",
                                                               "Settings of one CAN channel.");
    type.def(py::init<>())
        .def(makeFromKeywords<CanSettings>())
        .def_property(QUILL_LIMITED(CanSettings, channel, int32_t, 0, 255),
                      "Channel of the box, counted from 0.")
        .def_readwrite("enabled", &CanSettings::enabled, "True: the channel takes part in traffic.")
        .def_readwrite("fd", &CanSettings::fd, "True: CAN FD frames are allowed.")
        .def_property(QUILL_LIMITED(CanSettings, bitrate, int32_t, 10'000, 1'000'000),
                      "Arbitration bit rate, 10000 to 1000000 bit/s.")
        .def_property(QUILL_LIMITED(CanSettings, dataBitrate, int32_t, 10'000, 10'000'000),
                      "Data bit rate, 10000 to 10000000 bit/s.")
        .def_property(QUILL_PERCENT(CanSettings, samplePoint),
                      "Sample point of the arbitration phase, 50 to 95 percent.")
        .def_property(QUILL_PERCENT(CanSettings, dataSamplePoint),
                      "Sample point of the data phase, 50 to 95 percent.")
        .def_readwrite("termination", &CanSettings::termination,
                       "True: the 120 ohm resistor is switched in.")
        .def_readwrite("listenOnly", &CanSettings::listenOnly,
                       "True: the channel neither sends nor acknowledges.")
        .def("__repr__", [](const CanSettings& self) { return toText(self); });
    addEquality(type);
    addCopies(type);
}

void bindLinSettings(py::module_& m) {
    py::class_<LinSettings, std::shared_ptr<LinSettings>> type(m, "LinChannelConfig",
                                                               "Settings of one LIN channel.");
    type.def(py::init<>())
        .def(makeFromKeywords<LinSettings>())
        .def_property(QUILL_LIMITED(LinSettings, channel, int32_t, 0, 255),
                      "Channel of the box, counted from 0.")
        .def_readwrite("enabled", &LinSettings::enabled, "True: the channel takes part in traffic.")
        .def_property(QUILL_LIMITED(LinSettings, baudrate, int32_t, 1'000, 20'000),
                      "Baud rate, 1000 to 20000 bit/s.")
        .def_readwrite("master", &LinSettings::master, "True: master, False: slave.")
        .def_property(QUILL_LIMITED(LinSettings, version, int32_t, 13, 22),
                      "Protocol version times ten: 13, 20, 21 or 22.")
        .def("__repr__", [](const LinSettings& self) { return toText(self); });
    addEquality(type);
    addCopies(type);
}

void bindEthSettings(py::module_& m) {
    py::class_<EthSettings, std::shared_ptr<EthSettings>> type(m, "EthChannelConfig",
                                                               "Settings of one Ethernet channel.");
    type.def(py::init<>())
        .def(makeFromKeywords<EthSettings>())
        .def_property(QUILL_LIMITED(EthSettings, channel, int32_t, 0, 255),
                      "Channel of the box, counted from 0.")
        .def_readwrite("enabled", &EthSettings::enabled, "True: the channel takes part in traffic.")
        .def_property(QUILL_LIMITED(EthSettings, speed, int32_t, 100, 1000),
                      "Speed in Mbit/s: 100 or 1000.")
        .def_readwrite("master", &EthSettings::master, "True: master, False: slave.")
        .def("__repr__", [](const EthSettings& self) { return toText(self); });
    addEquality(type);
    addCopies(type);
}

#undef QUILL_LIMITED
#undef QUILL_PERCENT

// A tuple of the list's own elements: changing an element changes the configuration, while the
// number of channels is the box's affair.
template <class Settings>
TupleOf<Settings> channelsOf(const ChannelList<Settings>& list) {
    TupleOf<Settings> all(list.items().size());
    for (size_t i = 0; i < list.items().size(); ++i) all[i] = py::cast(list.items()[i]);
    return all;
}

void bindConfig(py::module_& m) {
    using Config = DeviceConfig;
    py::class_<Config> type(m, "BoxConfig",
                            "Settings of a box's channels, by kind. See setDeviceConfig.");
    type.def(py::init<>())
        .def(makeFromKeywords<Config>())
        .def_property(
            "can", [](const Config& self) { return channelsOf(self.can); },
            [](Config& self, const ListOf<CanSettings>& all) {
                self.can = ChannelList<CanSettings>(all);
            },
            "Settings of the CAN channels; change elements, or set the whole.")
        .def_property(
            "lin", [](const Config& self) { return channelsOf(self.lin); },
            [](Config& self, const ListOf<LinSettings>& all) {
                self.lin = ChannelList<LinSettings>(all);
            },
            "Settings of the LIN channels; change elements, or set the whole.")
        .def_property(
            "eth", [](const Config& self) { return channelsOf(self.eth); },
            [](Config& self, const ListOf<EthSettings>& all) {
                self.eth = ChannelList<EthSettings>(all);
            },
            "Settings of the Ethernet channels; change elements, or set the whole.")
        .def("__repr__", [](const Config& self) { return toText(self); });
    addEquality(type);
    addCopies(type);
}

void bindHandle(py::module_& m) {
    py::class_<DeviceHandle> type(m, "DeviceHandle",
                                  "One box. A plain value: calls find the box by deviceInfo.mac.");
    type.def(py::init<>())
        .def(makeFromKeywords<DeviceHandle>())
        .def_readwrite("type", &DeviceHandle::type, "Kind of box.")
        .def_readwrite("deviceInfo", &DeviceHandle::deviceInfo, "Identity of the box.")
        .def_readwrite("config", &DeviceHandle::config, "Settings of its channels.")
        .def("__repr__",
             [](const DeviceHandle& self) { return toText(self, connectionStatus(self)); });
    addEquality(type);
    addCopies(type);
}

ListOf<DeviceHandle> getDeviceList(DeviceType type, Ranged<"timeout", int64_t> timeout) {
    if (type != All) {
        py::print("no support other type device!!!");
        return {};
    }
    PySDKEntry::instance().waitScanBoxResult(timeout);
    return PySDKEntry::instance().getDeviceList();
}

bool getDeviceConfig(DeviceHandle& handle) {
    checkAddress(handle);
    return PySDKEntry::instance().readConfig(handle);
}

bool setDeviceConfig(DeviceHandle& handle, const std::optional<DeviceConfig>& config) {
    checkAddress(handle);
    if (config) handle.config = *config;
    return PySDKEntry::instance().writeConfig(handle);
}

}  // namespace

std::string connectionStatus(const DeviceHandle& handle) {
    PySDKEntry* entry = PySDKEntry::existing();
    if (entry == nullptr || handle.deviceInfo.mac.empty()) return "unknown";
    return entry->statusText(handle);
}

void checkAddress(const DeviceHandle& handle) {
    const std::string& mac = handle.deviceInfo.mac;
    if (isMacAddress(mac)) return;
    throw py::value_error("handle.deviceInfo.mac: '" + mac + "' is not a MAC address");
}

}  // namespace scripts

void bindDevice(py::module_& m) {
    scripts::bindDeviceType(m);
    scripts::bindDipData(m);
    scripts::bindDeviceInfo(m);
    scripts::bindCanSettings(m);
    scripts::bindLinSettings(m);
    scripts::bindEthSettings(m);
    scripts::bindConfig(m);
    scripts::bindHandle(m);
    m.def("getDeviceList", &scripts::getDeviceList, py::arg("type"), py::arg("timeout"),
          "Get the list of devices");
    m.def("getDeviceConfig", &scripts::getDeviceConfig, py::arg("handle"),
          "Get device configuration");
    m.def("setDeviceConfig", &scripts::setDeviceConfig, py::arg("handle"),
          py::arg("config") = py::none(), "Set device configuration");
}
