#include "databaseitem/CanDbcDatabaseItem.h"

#include <utility>

#include "databaseitem/JsonObjectReader.h"
#include "databaseitem/Multiplexing.h"

namespace Model::database {
namespace {

void readSignal(JsonObjectReader& json, CanDBCEntrySignal& signal) {
    signal.name = json.text("name");
    signal.comment = json.text("comment");
    signal.unit = json.text("unit");
    signal.startBit = json.integer("start_bit");
    signal.bitLength = json.integer("bit_length");
    signal.isSigned = json.flag("is_signed");
    signal.isBigEndian = json.flag("is_big_endian");
    signal.isFloat = json.flag("is_float");
    signal.valMax = json.number("value_max");
    signal.valMin = json.number("value_min");
    signal.offset = json.number("offset");
    signal.factor = json.number("factor", 1.0);
    signal.receivers = json.texts("receivers");
    json.eachObject("attributes", [&](JsonObjectReader& attribute) {
        if (attribute.text("name") != "GenSigStartValue") return;
        signal.initValue = attribute.number("value");
        signal.hasInitValue = true;
    });
    signal.mapValueTable = json.valueTable("value_table");
    readMultiplexRule(json, signal.multiplex);
}

void readFrame(JsonObjectReader& json, CanDBCEntry& frame) {
    frame.id = json.integer("id");
    frame.dlc = json.integer("dlc");
    frame.name = json.text("name");
    frame.comment = json.text("comment");
    frame.isExtended = json.flag("is_extended_frame");
    frame.isFD = json.flag("is_fd");
    frame.transmitters = json.texts("transmitters");
    std::string format;
    json.eachObject("attributes", [&](JsonObjectReader& attribute) {
        const std::string name = attribute.text("name");
        if (name == "GenMsgCycleTime") frame.cycleTime = toInt32(attribute.number("value"));
        if (name == "VFrameFormat") format = attribute.textOrNumber("value");
    });
    frame.frameFormat = frameFormatOf(format, frame.isExtended, frame.isFD);
    json.eachObject("signals", [&](JsonObjectReader& element) {
        auto signal = std::make_shared<CanDBCEntrySignal>();
        readSignal(element, *signal);
        signal->transmitters = frame.transmitters;
        frame.signals.push_back(std::move(signal));
    });
    resolveMultiplexors(frame.signals);
}

}  // namespace

CanFrameFormat frameFormatOf(const std::string& text, bool isExtended, bool isFD) {
    if (text == "StandardCAN") return CanFrameFormat::Standard;
    if (text == "StandardCAN_FD") return CanFrameFormat::StandardFd;
    if (text == "ExtendedCAN") return CanFrameFormat::Extended;
    if (text == "ExtendedCAN_FD") return CanFrameFormat::ExtendedFd;
    if (isExtended) return isFD ? CanFrameFormat::ExtendedFd : CanFrameFormat::Extended;
    return isFD ? CanFrameFormat::StandardFd : CanFrameFormat::Standard;
}

CanDbcDatabaseItem::CanDbcDatabaseItem() : m_database(std::make_shared<CanDbcDatabase>()) {}

std::shared_ptr<CanDBCEntry> CanDbcDatabaseItem::find(const FrameKey& key) const {
    return m_lookup.find(key);
}

bool CanDbcDatabaseItem::readDocument(const QJsonObject& root, std::string& fault) {
    JsonObjectReader json(root, fault);
    auto database = std::make_shared<CanDbcDatabase>();
    json.eachObject("messages", [&](JsonObjectReader& element) {
        auto frame = std::make_shared<CanDBCEntry>();
        readFrame(element, *frame);
        database->dbcEntrys.push_back(std::move(frame));
    });
    database->nodes = json.texts("nodes");
    if (json.failed()) return false;
    m_lookup = FrameLookup<CanDBCEntry>(database->dbcEntrys);
    m_database = std::move(database);
    return true;
}

void CanDbcDatabaseItem::clear() {
    m_database = std::make_shared<CanDbcDatabase>();
    m_lookup = {};
}

}  // namespace Model::database
