// Converter documents of any content through every reader, and what was read through the lookups
// and the decoder. The first byte is the payload's length, the rest is the document.
#include <spdlog/spdlog.h>

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "databaseitem/CanArxmlDatabaseItem.h"
#include "databaseitem/CanDbcDatabaseItem.h"
#include "databaseitem/EthArxmlDatabaseItem.h"
#include "databaseitem/FlexRayArxmlDatabaseItem.h"
#include "databaseitem/FrameDecoding.h"
#include "databaseitem/LinLdfDatabaseItem.h"

namespace {

using namespace Model::database;

// Opens the document reader of an item, which is otherwise reached through files only.
template <class Item>
class OpenItem : public Item {
public:
    bool read(const QJsonObject& root) {
        std::string fault;
        return this->readDocument(root, fault);
    }
};

template <class Frame>
void decodeAll(const RecordList<Frame>& frames, const std::vector<uint8_t>& payload) {
    std::vector<DecodedSignal> decoded;
    for (const auto& frame : frames) decodeFrame(*frame, payload, decoded);
}

void readAll(const QJsonObject& root, const std::vector<uint8_t>& payload) {
    OpenItem<CanDbcDatabaseItem> dbc;
    if (dbc.read(root)) decodeAll(dbc.database()->dbcEntrys, payload);
    (void)dbc.find({0, "a", false, false});
    OpenItem<CanArxmlDatabaseItem> arxml;
    if (arxml.read(root)) decodeAll(arxml.database()->cluster->dbcEntrys, payload);
    OpenItem<LinLdfDatabaseItem> ldf;
    if (ldf.read(root)) decodeAll(ldf.database()->frame, payload);
    (void)OpenItem<EthArxmlDatabaseItem>().read(root);
    (void)OpenItem<FlexRayArxmlDatabaseItem>().read(root);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    spdlog::set_level(spdlog::level::off);
    if (size == 0) return 0;
    const std::vector<uint8_t> payload(data[0] % 65, 0xA5);
    const QByteArray text(reinterpret_cast<const char*>(data + 1),
                          static_cast<qsizetype>(size - 1));
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (document.isObject()) readAll(document.object(), payload);
    return 0;
}
