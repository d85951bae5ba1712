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

// The fields that entries for CAN and for LIN have in common, in the order in which scripts know
// them; `extended` comes second where there is one.
template <class Item, class Class>
void addItemFields(Class& type) {
    type.def_readwrite("id", &Item::id, "Identifier of an entry that is no range.")
        .def_readwrite("idRangeStart", &Item::idRangeStart, "First identifier of a range.")
        .def_readwrite("idRangeEnd", &Item::idRangeEnd,
                       "Last identifier of a range, which belongs to it.")
        .def_readwrite("dir", &Item::dir, "Direction: 0 received, 1 sent by the box itself.")
        .def_readwrite("channelId", &Item::channelId, "Channel of the box, counted from 0.")
        .def_readwrite("name", &Item::name, "Frame name of an entry by name, else empty.");
}

void bindItems(py::module_& m) {
    constexpr const char* kRange = "True: the entry is a range of identifiers.";
    using CanItem = rv::CANFrameFilterItem;
    py::class_<CanItem> can(m, "CANFrameFilterItem", "One entry of a CANFrameFilterList.");
    can.def(py::init<>())
        .def_readwrite("isRange", &CanItem::isRange, kRange)
        .def_readwrite("extended", &CanItem::extended, "1: 29-bit identifiers, 0: 11-bit.");
    addItemFields<CanItem>(can);
    can.def("__repr__", [](const CanItem& item) {
        return "CANFrameFilterItem(id=" + std::to_string(item.id) +
               ", channelId=" + std::to_string(item.channelId) + ")";
    });
    addEquality(can);
    addCopies(can);
    using LinItem = rv::LINFrameFilterItem;
    py::class_<LinItem> lin(m, "LINFrameFilterItem", "One entry of a LINFrameFilterList.");
    lin.def(py::init<>()).def_readwrite("isRange", &LinItem::isRange, kRange);
    addItemFields<LinItem>(lin);
    lin.def("__repr__", [](const LinItem& item) {
        return "LINFrameFilterItem(id=" + std::to_string(item.id) +
               ", channelId=" + std::to_string(item.channelId) + ")";
    });
    addEquality(lin);
    addCopies(lin);
}

template <class List>
std::string listText(const char* type, const List& list) {
    return std::string(type) + "(pass=" + std::to_string(list.passItems().size()) +
           ", block=" + std::to_string(list.blockItems().size()) + ")";
}

constexpr const char* kCanListText = R"(Pass and block entries for CAN and CAN FD frames.

A frame that a block entry matches is stopped; any other passes when there are no pass entries or
when one matches it. Every addition answers True, or False after telling the reason on standard
output; a refused entry changes nothing.

Arguments of the additions:
    id, idStart, idEnd: 0 to 0x7FF, or 0 to 0x1FFFFFFF with extended 1.
    extended: 1 for 29-bit identifiers, else 0.
    dir: 0 received, 1 sent by the box itself.
    name: frame name as an attached database gives it, see attachDatabase.
    channel_id: name of a CAN channel, see getChannelNames.)";

constexpr const char* kLinListText = R"(Pass and block entries for LIN frames.

What passes and what the additions answer is as for a CANFrameFilterList.

Arguments of the additions:
    id, idStart, idEnd: 0 to 63.
    dir: 0 received, 1 sent by the box itself.
    name: frame name as an attached database gives it, see attachDatabase.
    channel_id: name of a LIN channel, see getChannelNames.)";

constexpr const char* kPassId = "Pass frames with one identifier.";
constexpr const char* kBlockId = "Block frames with one identifier.";
constexpr const char* kPassName = "Pass frames with a name.";
constexpr const char* kBlockName = "Block frames with a name.";
constexpr const char* kPassRange = "Pass a range of identifiers; both bounds belong to it.";
constexpr const char* kBlockRange = "Block a range of identifiers; both bounds belong to it.";

// What lists for CAN and for LIN have in common, behind the additions by identifier.
template <class List, class Class>
void addListCalls(Class& type, const char* name) {
    const auto channel = py::arg("channel_id");
    type.def("add_pass_channel", &List::addPassChannel, channel,
             "Pass a whole channel, both directions.")
        .def("add_block_channel", &List::addBlockChannel, channel,
             "Block a whole channel, both directions.")
        .def("clear", &List::clearFilter, "Drop all entries.")
        .def_property_readonly("pass_items", &List::passItems, "Copies of the pass entries.")
        .def_property_readonly("block_items", &List::blockItems, "Copies of the block entries.")
        .def("__repr__", [name](const List& list) { return listText(name, list); });
}

void bindCanList(py::module_& m) {
    using List = rv::CANFrameFilterList;
    constexpr const char* kName = "CANFrameFilterList";
    const auto id = py::arg("id");
    const auto start = py::arg("idStart");
    const auto end = py::arg("idEnd");
    const auto extended = py::arg("extended");
    const auto dir = py::arg("dir");
    const auto channel = py::arg("channel_id");
    py::class_<List, std::shared_ptr<List>> type(m, kName, kCanListText);
    type.def(py::init([] { return std::make_shared<List>(std::make_shared<BoxChannels>()); }))
        .def("add_pass_list", &List::addPassList, id, extended, dir, channel, kPassId)
        .def("add_block_list", &List::addBlockList, id, extended, dir, channel, kBlockId)
        .def("add_name_pass_list", &List::addNamePassList, py::arg("name"), dir, channel, kPassName)
        .def("add_name_block_list", &List::addNameBlockList, py::arg("name"), dir, channel,
             kBlockName)
        .def("add_pass_range_list", &List::addPassRangeList, start, end, extended, dir, channel,
             kPassRange)
        .def("add_block_range_list", &List::addBlockRangeList, start, end, extended, dir, channel,
             kBlockRange);
    addListCalls<List>(type, kName);
}

void bindLinList(py::module_& m) {
    using List = rv::LINFrameFilterList;
    constexpr const char* kName = "LINFrameFilterList";
    const auto id = py::arg("id");
    const auto start = py::arg("idStart");
    const auto end = py::arg("idEnd");
    const auto dir = py::arg("dir");
    const auto channel = py::arg("channel_id");
    py::class_<List, std::shared_ptr<List>> type(m, kName, kLinListText);
    type.def(py::init([] { return std::make_shared<List>(std::make_shared<BoxChannels>()); }))
        .def("add_pass_list", &List::addPassList, id, dir, channel, kPassId)
        .def("add_block_list", &List::addBlockList, id, dir, channel, kBlockId)
        .def("add_name_pass_list", &List::addNamePassList, py::arg("name"), dir, channel, kPassName)
        .def("add_name_block_list", &List::addNameBlockList, py::arg("name"), dir, channel,
             kBlockName)
        .def("add_pass_range_list", &List::addPassRangeList, start, end, dir, channel, kPassRange)
        .def("add_block_range_list", &List::addBlockRangeList, start, end, dir, channel,
             kBlockRange);
    addListCalls<List>(type, kName);
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

constexpr const char* kAttachText =
    R"(Name the frames of a channel by a database; frames received later carry the name.

Args:
    handle: the box.
    channel: channel of the database's kind of bus, 0 to 255.
    path: database file; '.ldf' for LIN, '.dbc', '.arxml' or '.json' for CAN.

Returns:
    int: 0, or 1 when the file cannot be loaded; the log gives the reason.

Raises:
    ValueError: the handle's MAC address is malformed, or channel is out of range.)";

void addChannelCalls(py::module_& m) {
    m.def(
        "getChannelNames",
        [](const DeviceHandle& handle) {
            checkAddress(handle);
            return PySDKEntry::instance().manager().channelNames(
                QString::fromStdString(handle.deviceInfo.mac));
        },
        py::arg("handle"),
        R"(Names of a box's channels, for filter lists.

Returns:
    list of names such as 'RV-Hub4e.CAN1'; empty when the box is gone. Filter lists also take the
    short form 'CAN1', which is channel 0 of any box.

Raises:
    ValueError: the handle's MAC address is malformed.)");
    m.def("attachDatabase", &attachDatabase, py::arg("handle"), py::arg("channel"), py::arg("path"),
          kAttachText);
    m.def(
        "detachDatabase",
        [](const DeviceHandle& handle, Channel channel) {
            checkAddress(handle);
            FrameViews& views = PySDKEntry::instance().delivery().views();
            views.attachDatabase(handle.deviceInfo.mac, FrameViews::Bus::Can, channel, nullptr);
            views.attachDatabase(handle.deviceInfo.mac, FrameViews::Bus::Lin, channel, nullptr);
        },
        py::arg("handle"), py::arg("channel"),
        "Take the CAN and the LIN database of a channel away.");
    m.def(
        "toLinMessage",
        [](const DeviceHandle& handle, const LinFrame& frame) {
            checkAddress(handle);
            return toLinMessage(frame, PySDKEntry::instance().delivery().views().linFrame(
                                           handle.deviceInfo.mac, frame.channelId, frame.id));
        },
        py::arg("handle"), py::arg("frame"),
        R"(A received LinFrame together with what the channel's database knows of it.

Returns:
    LinMessage: its frame is the LDFFrame of the database, or None when none is attached or the
    database has no frame with this identifier.)");
}

}  // namespace
}  // namespace scripts

void bindFilterLists(py::module_& m) {
    scripts::bindItems(m);
    scripts::bindCanList(m);
    scripts::bindLinList(m);
}

void bindChannelCalls(py::module_& m) { scripts::addChannelCalls(m); }
