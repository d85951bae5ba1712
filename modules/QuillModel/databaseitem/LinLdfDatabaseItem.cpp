#include "databaseitem/LinLdfDatabaseItem.h"

#include <utility>

#include "databaseitem/JsonObjectReader.h"
#include "databaseitem/LinScheduleTables.h"
#include "lin/lin.pb.h"

namespace Model::database {
namespace {

// Texts of an array, or the one text where the array is empty or there is none.
std::vector<std::string> textsOrText(JsonObjectReader& json, const char* key) {
    std::vector<std::string> list = json.texts(key);
    if (list.empty() && json.isText(key)) list.push_back(json.text(key));
    return list;
}

void readLinSignal(JsonObjectReader& json, LinSignal& signal) {
    signal.bitLength = json.integer("bit_length");
    signal.isBigEndian = json.flag("is_big_endian");
    signal.isSigned = json.flag("is_signed");
    signal.name = json.text("name");
    signal.startBit = json.integer("start_bit");
    signal.initValue = json.longInteger("init_value");
    signal.comment = json.text("comment");
    signal.unit = json.text("unit");
    signal.hasFactor = json.has("factor");
    if (signal.hasFactor) {
        signal.valMin = toInt64(json.number("value_min"));
        signal.valMax = toInt64(json.number("value_max"));
        signal.factor = json.number("factor");
        signal.offset = json.number("offset");
    }
    signal.subscribers = json.texts("subscribers");
    signal.mapValueTable = json.valueTable("value_table");
}

void readLdfFrame(JsonObjectReader& json, LDFFrame& frame) {
    frame.id = static_cast<uint16_t>(json.integer("id"));
    frame.length = static_cast<uint16_t>(json.integer("length"));
    frame.name = json.text("name");
    json.object("attributes", [&](JsonObjectReader& attributes) {
        frame.publishers = textsOrText(attributes, "publisher");
        frame.checksum = attributes.text("checksum");
        frame.type = attributes.text("type");
    });
    if (!frame.checksum.empty() && frame.checksum[0] >= 'a' && frame.checksum[0] <= 'z') {
        frame.checksum[0] = static_cast<char>(frame.checksum[0] - 'a' + 'A');
    }
    json.eachObject("signals", [&](JsonObjectReader& element) {
        auto signal = std::make_shared<LinSignal>();
        readLinSignal(element, *signal);
        frame.signals.push_back(std::move(signal));
    });
}

void readNodeAttributes(JsonObjectReader& json, LdfNodeAttributes& node) {
    node.name = json.text("name");
    node.linProtocol = json.text("lin_protocol");
    node.configuredNad = json.integer("configured_nad");
    node.initialNad = json.integer("initial_nad");
    json.object("product_id", [&](JsonObjectReader& product) {
        node.productId.supplierId = product.integer("supplier_id");
        node.productId.functionId = product.integer("function_id");
        node.productId.variant = product.integer("variant");
    });
    node.responseError = json.text("response_error");
    node.nAsTimeout = json.number("N_As_timeout");
    node.nCrTimeout = json.number("N_Cr_timeout");
    node.configurableFrames = json.texts("configurable_frames");
}

void readSchedule(JsonObjectReader& json, LdfSchedule& table) {
    table.name = json.text("name");
    json.eachObject("schedule", [&](JsonObjectReader& element) {
        LdfScheduleEntry& entry = table.entries.emplace_back();
        element.object("command", [&](JsonObjectReader& command) {
            entry.type = command.text("type");
            entry.frame = command.text("frame");
        });
        entry.delay = element.number("delay");
    });
}

void readNodes(JsonObjectReader& json, LinLdfDatabase& database) {
    json.object("master", [&](JsonObjectReader& master) {
        database.master.name = master.text("name");
        database.master.timebase = master.number("timebase");
        database.master.jitter = master.number("jitter");
    });
    database.slaves = json.texts("slaves");
}

}  // namespace

LinLdfDatabaseItem::LinLdfDatabaseItem() : m_database(std::make_shared<LinLdfDatabase>()) {}

bool LinLdfDatabaseItem::readDocument(const QJsonObject& root, std::string& fault) {
    JsonObjectReader json(root, fault);
    auto database = std::make_shared<LinLdfDatabase>();
    json.object("header", [&](JsonObjectReader& header) {
        database->header.protocolVersion = header.text("protocol_version");
        database->header.languageVersion = header.text("language_version");
        database->header.speed = toInt32(header.number("speed"));
    });
    json.object("nodes", [&](JsonObjectReader& nodes) { readNodes(nodes, *database); });
    json.eachObject("node_attributes", [&](JsonObjectReader& element) {
        readNodeAttributes(element, database->nodeAttributes.emplace_back());
    });
    json.eachObject("frames", [&](JsonObjectReader& element) {
        auto frame = std::make_shared<LDFFrame>();
        readLdfFrame(element, *frame);
        database->frame.push_back(std::move(frame));
    });
    json.eachObject("schedule_tables", [&](JsonObjectReader& element) {
        readSchedule(element, database->schedules.emplace_back());
    });
    if (json.failed()) return false;
    database->schedule_tables = makeScheduleTables(*database);
    m_database = std::move(database);
    return true;
}

void LinLdfDatabaseItem::clear() { m_database = std::make_shared<LinLdfDatabase>(); }

}  // namespace Model::database
