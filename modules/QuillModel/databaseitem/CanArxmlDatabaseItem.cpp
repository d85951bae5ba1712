#include "databaseitem/CanArxmlDatabaseItem.h"

#include <algorithm>
#include <map>
#include <utility>

#include "databaseitem/ArxmlPduReader.h"
#include "databaseitem/JsonObjectReader.h"

namespace Model::database {
namespace {

int32_t shortestCycle(const RecordList<CanFdPdu>& pdus) {
    int32_t shortest = 0;
    for (const auto& pdu : pdus) {
        if (pdu->cycleTime > 0 && (shortest == 0 || pdu->cycleTime < shortest)) {
            shortest = pdu->cycleTime;
        }
    }
    return shortest;
}

void readArxmlFrame(JsonObjectReader& json, CanFdDBCEntry& frame) {
    frame.id = json.integer("id");
    frame.dlc = json.integer("length");
    frame.name = json.text("name");
    frame.comment = json.text("comment");
    frame.isExtended = json.flag("is_extended_frame");
    frame.isFD = json.flag("is_canfd");
    frame.senders = json.texts("senders");
    frame.receivers = json.texts("receivers");
    json.eachObject("ipdus", [&](JsonObjectReader& element) {
        auto pdu = std::make_shared<CanFdPdu>();
        readPdu(element, *pdu);
        frame.pdus.push_back(std::move(pdu));
    });
    frame.cycleTime =
        json.has("cycle_time") ? toInt32(json.number("cycle_time")) : shortestCycle(frame.pdus);
    frame.channel = json.text("channel");
}

// Channels name their frames; a frame that several channels send is one record in all of them.
void readChannels(JsonObjectReader& json, CanFdCluster& cluster) {
    std::multimap<std::string, std::shared_ptr<CanFdDBCEntry>> byName;
    for (const auto& frame : cluster.dbcEntrys) byName.emplace(frame->name, frame);
    json.eachObject("channels", [&](JsonObjectReader& element) {
        auto channel = std::make_shared<CANFDPhyChannel>();
        channel->name = element.text("name");
        for (const std::string& name : element.texts("frames")) {
            const auto [first, last] = byName.equal_range(name);
            for (auto it = first; it != last; ++it) {
                const std::string& own = it->second->channel;
                if (!own.empty() && own != channel->name) continue;
                const auto& entrys = channel->entrys;
                if (std::find(entrys.begin(), entrys.end(), it->second) != entrys.end()) continue;
                channel->entrys.push_back(it->second);
            }
        }
        cluster.channels.push_back(std::move(channel));
    });
}

void readCluster(JsonObjectReader& json, CanFdCluster& cluster) {
    cluster.name = json.text("name");
    cluster.protocol = json.text("protocol");
    cluster.signature = json.textOrNumber("protoclo_version");  // the converters' own spelling
    cluster.baudRate = json.integer("baud_rate");
    cluster.fdBaudRate =
        json.integer(json.has("can_fd_baud_rate") ? "can_fd_baud_rate" : "fd_baud_rate");
    cluster.nodes = json.namesOrTexts("node_infos");
    json.eachObject("frames", [&](JsonObjectReader& element) {
        auto frame = std::make_shared<CanFdDBCEntry>();
        readArxmlFrame(element, *frame);
        cluster.dbcEntrys.push_back(std::move(frame));
    });
    readChannels(json, cluster);
}

void setHeaderOrder(const RecordList<CanFdPdu>& pdus, bool isLittleEndian) {
    for (const auto& pdu : pdus) {
        pdu->hasLittleEndianHeaders = isLittleEndian;
        setHeaderOrder(pdu->pdus, isLittleEndian);
    }
}

std::shared_ptr<CanArxmlDatabase> emptyArxmlDatabase() {
    auto database = std::make_shared<CanArxmlDatabase>();
    database->cluster = std::make_shared<CanFdCluster>();
    return database;
}

}  // namespace

CanArxmlDatabaseItem::CanArxmlDatabaseItem() : m_database(emptyArxmlDatabase()) {}

std::shared_ptr<CanFdDBCEntry> CanArxmlDatabaseItem::find(const FrameKey& key) const {
    return m_lookup.find(key);
}

bool CanArxmlDatabaseItem::readDocument(const QJsonObject& root, std::string& fault) {
    JsonObjectReader json(root, fault);
    auto database = emptyArxmlDatabase();
    RecordList<CanFdDBCEntry> frames;
    json.eachObject("can_cluster", [&](JsonObjectReader& element) {
        auto cluster = std::make_shared<CanFdCluster>();
        readCluster(element, *cluster);
        frames.insert(frames.end(), cluster->dbcEntrys.begin(), cluster->dbcEntrys.end());
        database->clusters.push_back(std::move(cluster));
    });
    const bool littleEndian =
        json.text("container_header_byte_order") == "MOST-SIGNIFICANT-BYTE-LAST";
    if (json.failed()) return false;
    for (const auto& frame : frames) setHeaderOrder(frame->pdus, littleEndian);
    if (!database->clusters.empty()) database->cluster = database->clusters.front();
    m_lookup = FrameLookup<CanFdDBCEntry>(std::move(frames));
    m_database = std::move(database);
    return true;
}

void CanArxmlDatabaseItem::clear() {
    m_database = emptyArxmlDatabase();
    m_lookup = {};
}

}  // namespace Model::database
