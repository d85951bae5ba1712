// Pass and block lists, channel names and databases attached to channels.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "core/capturefilter/model/CANFilterModel.h"
#include "core/capturefilter/model/LINFilterModel.h"
#include "pysdk/py_extension/bindings.h"
#include "pysdk/py_extension/database_calls.h"
#include "pysdk/py_extension/lin_database.h"
#include "pysdk/py_extension/pysdk_entry.h"
#include "pysdk/py_extension/script_arguments.h"
#include "pysdk/py_extension/script_values.h"

namespace py = pybind11;

namespace scripts {
namespace {

// Channel names of the boxes that the entry knows at the time of the question.
class BoxChannels final : public rv::ChannelResolver {
public:
    [[nodiscard]] std::optional<rv::NamedChannel> findChannel(
        const std::string& name) const override {
        const auto found = PySDKEntry::instance().manager().findChannel(name);
        if (!found) return std::nullopt;
        return rv::NamedChannel{rv::channelKindText(found->first), found->second};
    }
};

#define QUILL_ITEM_FIELD(record, member) .def_readwrite(#member, &record::member)

void bindItems(py::module_& m) {
    using CanItem = rv::CANFrameFilterItem;
    py::class_<CanItem> can(m, "CANFrameFilterItem", "One entry of a CAN filter list.");
    can.def(py::init<>())  // clang-format off
        QUILL_ITEM_FIELD(CanItem, isRange)
        QUILL_ITEM_FIELD(CanItem, extended)
        QUILL_ITEM_FIELD(CanItem, id)
        QUILL_ITEM_FIELD(CanItem, idRangeStart)
        QUILL_ITEM_FIELD(CanItem, idRangeEnd)
        QUILL_ITEM_FIELD(CanItem, dir)
        QUILL_ITEM_FIELD(CanItem, channelId)
        QUILL_ITEM_FIELD(CanItem, name)  // clang-format on
                            .def("__repr__", [](const CanItem& item) {
                                return "CANFrameFilterItem(id=" + std::to_string(item.id) +
                                       ", channelId=" + std::to_string(item.channelId) + ")";
                            });
    addEquality(can);
    addCopies(can);
    using LinItem = rv::LINFrameFilterItem;
    py::class_<LinItem> lin(m, "LINFrameFilterItem", "One entry of a LIN filter list.");
    lin.def(py::init<>())  // clang-format off
        QUILL_ITEM_FIELD(LinItem, isRange)
        QUILL_ITEM_FIELD(LinItem, id)
        QUILL_ITEM_FIELD(LinItem, idRangeStart)
        QUILL_ITEM_FIELD(LinItem, idRangeEnd)
        QUILL_ITEM_FIELD(LinItem, dir)
        QUILL_ITEM_FIELD(LinItem, channelId)
        QUILL_ITEM_FIELD(LinItem, name)  // clang-format on
                        .def("__repr__", [](const LinItem& item) {
                            return "LINFrameFilterItem(id=" + std::to_string(item.id) +
                                   ", channelId=" + std::to_string(item.channelId) + ")";
                        });
    addEquality(lin);
    addCopies(lin);
}

#undef QUILL_ITEM_FIELD

template <class List>
std::string listText(const char* type, const List& list) {
    return std::string(type) + "(pass=" + std::to_string(list.passItems().size()) +
           ", block=" + std::to_string(list.blockItems().size()) + ")";
}

void bindCanList(py::module_& m) {
    using List = rv::CANFrameFilterList;
    const auto id = py::arg("id");
    const auto extended = py::arg("extended");
    const auto dir = py::arg("dir");
    const auto channel = py::arg("channel_id");
    py::class_<List, std::shared_ptr<List>>(
        m, "CANFrameFilterList",
        "Pass and block entries for CAN frames. An addition answers False and says why on standard "
        "output when it is refused. dir: 0 received, 1 sent by the box; channel_id: a channel's "
        "name, see getChannelNames.")
        .def(py::init([] { return std::make_shared<List>(std::make_shared<BoxChannels>()); }))
        .def("add_pass_list", &List::addPassList, id, extended, dir, channel)
        .def("add_block_list", &List::addBlockList, id, extended, dir, channel)
        .def("add_name_pass_list", &List::addNamePassList, py::arg("name"), dir, channel)
        .def("add_name_block_list", &List::addNameBlockList, py::arg("name"), dir, channel)
        .def("add_pass_range_list", &List::addPassRangeList, py::arg("idStart"), py::arg("idEnd"),
             extended, dir, channel, "Both bounds belong to the range.")
        .def("add_block_range_list", &List::addBlockRangeList, py::arg("idStart"), py::arg("idEnd"),
             extended, dir, channel, "Both bounds belong to the range.")
        .def("add_pass_channel", &List::addPassChannel, channel, "Both directions.")
        .def("add_block_channel", &List::addBlockChannel, channel, "Both directions.")
        .def("clear", &List::clearFilter, "Drop all entries.")
        .def_property_readonly("pass_items", &List::passItems, "Copies of the pass entries.")
        .def_property_readonly("block_items", &List::blockItems, "Copies of the block entries.")
        .def("__repr__", [](const List& list) { return listText("CANFrameFilterList", list); });
}

void bindLinList(py::module_& m) {
    using List = rv::LINFrameFilterList;
    const auto id = py::arg("id");
    const auto dir = py::arg("dir");
    const auto channel = py::arg("channel_id");
    py::class_<List, std::shared_ptr<List>>(
        m, "LINFrameFilterList", "Pass and block entries for LIN frames; see CANFrameFilterList.")
        .def(py::init([] { return std::make_shared<List>(std::make_shared<BoxChannels>()); }))
        .def("add_pass_list", &List::addPassList, id, dir, channel)
        .def("add_block_list", &List::addBlockList, id, dir, channel)
        .def("add_name_pass_list", &List::addNamePassList, py::arg("name"), dir, channel)
        .def("add_name_block_list", &List::addNameBlockList, py::arg("name"), dir, channel)
        .def("add_pass_range_list", &List::addPassRangeList, py::arg("idStart"), py::arg("idEnd"),
             dir, channel, "Both bounds belong to the range.")
        .def("add_block_range_list", &List::addBlockRangeList, py::arg("idStart"), py::arg("idEnd"),
             dir, channel, "Both bounds belong to the range.")
        .def("add_pass_channel", &List::addPassChannel, channel, "Both directions.")
        .def("add_block_channel", &List::addBlockChannel, channel, "Both directions.")
        .def("clear", &List::clearFilter, "Drop all entries.")
        .def_property_readonly("pass_items", &List::passItems, "Copies of the pass entries.")
        .def_property_readonly("block_items", &List::blockItems, "Copies of the block entries.")
        .def("__repr__", [](const List& list) { return listText("LINFrameFilterList", list); });
}

using Channel = Ranged<"channel", int32_t, 0, 255>;

int attachDatabase(const DeviceHandle& handle, Channel channel, const std::string& path) {
    checkAddress(handle);
    const std::string mac = handle.deviceInfo.mac;
    const auto views = PySDKEntry::instance().deliveryPtr();
    FrameViews::Bus bus{};
    auto database = runQuery([&] { return loadChannelDatabase(path, bus); });
    if (database == nullptr) return InvalidParam;
    views->views().attachDatabase(mac, bus, channel, std::move(database));
    return Success;
}

void addChannelCalls(py::module_& m) {
    m.def(
        "getChannelNames",
        [](const DeviceHandle& handle) {
            checkAddress(handle);
            return PySDKEntry::instance().manager().channelNames(
                QString::fromStdString(handle.deviceInfo.mac));
        },
        py::arg("handle"),
        "Names of a box's channels, such as 'RV-Hub4e.CAN1'; filter lists also take the short form "
        "'CAN1' for channel 0 of any box. Empty when the box is gone.");
    m.def("attachDatabase", &attachDatabase, py::arg("handle"), py::arg("channel"), py::arg("path"),
          "Name the frames of a channel by a database: LDF for LIN, DBC or ARXML for CAN. Frames "
          "received later carry the name. 0, or 1 when the file cannot be loaded.");
    m.def(
        "detachDatabase",
        [](const DeviceHandle& handle, Channel channel) {
            checkAddress(handle);
            FrameViews& views = PySDKEntry::instance().delivery().views();
            views.attachDatabase(handle.deviceInfo.mac, FrameViews::Bus::Can, channel, nullptr);
            views.attachDatabase(handle.deviceInfo.mac, FrameViews::Bus::Lin, channel, nullptr);
        },
        py::arg("handle"), py::arg("channel"), "Take the databases of a channel away.");
    m.def(
        "toLinMessage",
        [](const DeviceHandle& handle, const LinFrame& frame) {
            checkAddress(handle);
            return toLinMessage(frame, PySDKEntry::instance().delivery().views().linFrame(
                                           handle.deviceInfo.mac, frame.channelId, frame.id));
        },
        py::arg("handle"), py::arg("frame"),
        "A received LinFrame as a LinMessage, with the LDFFrame of the channel's database.");
}

}  // namespace
}  // namespace scripts

void bindFilterLists(py::module_& m) {
    scripts::bindItems(m);
    scripts::bindCanList(m);
    scripts::bindLinList(m);
}

void bindChannelCalls(py::module_& m) { scripts::addChannelCalls(m); }
