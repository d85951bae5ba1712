#include "databaseitem/DatabaseQueries.h"

#include <optional>
#include <utility>

#include "core/log/Log.h"
#include "databaseitem/CanArxmlDatabaseItem.h"
#include "databaseitem/CanDbcDatabaseItem.h"
#include "databaseitem/DatabaseFiles.h"
#include "databaseitem/LinLdfDatabaseItem.h"
#include "databaseitem/LinScheduleTables.h"
#include "quill_textencoding/TextDecoding.h"
#include "signal/ScriptValue.h"
#include "signal/SignalValue.h"

namespace Model::database {
namespace {

template <class Item>
struct FrameOf;
template <>
struct FrameOf<CanDbcDatabaseItem> {
    using Type = CanDBCEntry;
};
template <>
struct FrameOf<CanArxmlDatabaseItem> {
    using Type = CanFdDBCEntry;
};

std::shared_ptr<CanDBCEntrySignal> findSignal(const CanDBCEntry& frame, const std::string& name) {
    for (const auto& signal : frame.signals) {
        if (signal->name == name) return signal;
    }
    return nullptr;
}

// In order: a PDU's signals, then those of its parts. PDUs behind headers are left out, as they
// have no fixed place in a frame.
std::shared_ptr<CanArxmlEntrySignal> findSignal(const RecordList<CanFdPdu>& pdus,
                                                const std::string& name) {
    for (const auto& pdu : pdus) {
        for (const auto& signal : pdu->signals) {
            if (signal->name == name) return signal;
        }
        if (hasHeaders(*pdu)) continue;
        if (auto signal = findSignal(pdu->pdus, name)) return signal;
    }
    return nullptr;
}

std::shared_ptr<CanArxmlEntrySignal> findSignal(const CanFdDBCEntry& frame,
                                                const std::string& name) {
    return findSignal(frame.pdus, name);
}

std::shared_ptr<LinSignal> findSignal(const LDFFrame& frame, const std::string& name) {
    for (const auto& signal : frame.signals) {
        if (signal->name == name) return signal;
    }
    return nullptr;
}

template <class Frame>
auto findSignalOrLog(const Frame& frame, const std::string& name) {
    auto signal = findSignal(frame, name);
    if (!signal) {
        QUILL_WARN(quill::log::kDatabase, "no signal {} in frame {}", name, frame.name);
    }
    return signal;
}

template <class Item, class Frame = typename FrameOf<Item>::Type>
QueryResult<std::shared_ptr<Frame>> findInFile(const std::string& path, const FrameKey& key) {
    Item item;
    if (!item.pyLoadDB(path)) return {kLoadFailed, std::make_shared<Frame>()};
    if (auto frame = item.find(key)) return {kQueryDone, std::move(frame)};
    return {kNotFound, std::make_shared<Frame>()};
}

FrameKey keyOfName(const std::string& name) { return {0, name, false, false}; }

// Identifiers are signed 32-bit inside; a script may write the same bits as an unsigned number.
template <class Item, class Frame = typename FrameOf<Item>::Type>
QueryResult<std::shared_ptr<Frame>> findById(const std::string& path, int64_t id) {
    if (id < INT32_MIN || id > int64_t{UINT32_MAX}) {
        Item item;  // a file that cannot be loaded is told first, whatever the id
        const int code = item.pyLoadDB(path) ? kNotFound : kLoadFailed;
        return {code, std::make_shared<Frame>()};
    }
    return findInFile<Item>(path,
                            {static_cast<int32_t>(static_cast<uint32_t>(id)), {}, false, false});
}

DecodedValue textOrNumber(codec::SignalValue decoded) {
    if (!decoded.description.empty()) return std::move(decoded.description);
    return decoded.physicalValue;
}

template <class Signal>
codec::SignalLayout layoutOf(const Signal& signal) {
    return {static_cast<uint32_t>(signal.startBit), static_cast<uint32_t>(signal.bitLength),
            signal.isBigEndian};
}

template <class Item>
QueryResult<DecodedValue> decodeFromFile(std::span<const uint8_t> data, const std::string& path,
                                         const std::string& frameName,
                                         const std::string& signalName) {
    const auto frame = findInFile<Item>(path, keyOfName(frameName));
    if (frame.code != kQueryDone) return {frame.code, {}};
    const auto signal = findSignalOrLog(*frame.value, signalName);
    if (!signal) return {kNotFound, {}};
    const codec::SignalLayout bits = layoutOf(*signal);
    return {kQueryDone, textOrNumber(codec::decodeSignal(data, bits.isBigEndian, bits.startBit,
                                                         bits.bitLength, signal->factor,
                                                         signal->offset, signal->mapValueTable))};
}

template <class Item>
int setInFrame(std::span<uint8_t> data, const std::string& path, const std::string& frameName,
               const std::string& signalName, double value, codec::ResultShown shown,
               std::ostream& out) {
    const auto frame = findInFile<Item>(path, keyOfName(frameName));
    if (frame.code != kQueryDone) return frame.code;
    const auto signal = findSignalOrLog(*frame.value, signalName);
    if (!signal) return kNotFound;
    codec::setSignalFromScriptValue(data, layoutOf(*signal), value, shown, out);
    return kQueryDone;
}

template <class Item, class Database>
QueryResult<std::shared_ptr<Database>> loadWhole(const std::string& path) {
    Item item;
    const bool done = item.pyLoadDB(path);
    return {done ? kQueryDone : kLoadFailed, item.database()};
}

QueryResult<std::string> readContents(const std::string& path) {
    std::string bytes;
    std::string reason;
    if (!readWholeFile(path, bytes, reason)) {
        QUILL_ERROR(quill::log::kDatabase, "{}: {}", path, reason);
        return {kLoadFailed, {}};
    }
    return {kQueryDone, quill::text::decodeText(std::move(bytes))};
}

const LDFFrame* frameOfScriptName(const LinLdfDatabase& database, const std::string& name) {
    if (const LDFFrame* frame = frameByName(database, name)) return frame;
    if (name == "MasterReq") return frameByName(database, "master_request");
    if (name == "SlaveResp") return frameByName(database, "slave_response");
    return nullptr;
}

}  // namespace

QueryResult<std::string> readCanDBCContents(const std::string& path) { return readContents(path); }

QueryResult<std::string> readCanArxmlContents(const std::string& path) {
    return readContents(path);
}

QueryResult<std::shared_ptr<CanDbcDatabase>> loadCanDBC(const std::string& path) {
    return loadWhole<CanDbcDatabaseItem, CanDbcDatabase>(path);
}

QueryResult<std::shared_ptr<CanArxmlDatabase>> loadCanArxml(const std::string& path) {
    return loadWhole<CanArxmlDatabaseItem, CanArxmlDatabase>(path);
}

QueryResult<std::shared_ptr<LinLdfDatabase>> loadLinLDF(const std::string& path) {
    return loadWhole<LinLdfDatabaseItem, LinLdfDatabase>(path);
}

QueryResult<RecordList<Model::LinScheduleTable>> getScheduleTableFromLDF(const std::string& path) {
    LinLdfDatabaseItem item;
    if (!item.pyLoadDB(path) || item.database()->schedule_tables.empty()) return {kLoadFailed, {}};
    return {kQueryDone, item.database()->schedule_tables};
}

QueryResult<std::shared_ptr<CanDBCEntry>> getCanFrameByNameFromDBC(const std::string& path,
                                                                   const std::string& name) {
    return findInFile<CanDbcDatabaseItem>(path, keyOfName(name));
}

QueryResult<std::shared_ptr<CanDBCEntry>> getCanFrameByIdFromDBC(const std::string& path,
                                                                 int64_t id) {
    return findById<CanDbcDatabaseItem>(path, id);
}

QueryResult<std::shared_ptr<CanFdDBCEntry>> getCanFrameByNameFromArxml(const std::string& path,
                                                                       const std::string& name) {
    return findInFile<CanArxmlDatabaseItem>(path, keyOfName(name));
}

QueryResult<std::shared_ptr<CanFdDBCEntry>> getCanFrameByIdFromArxml(const std::string& path,
                                                                     int64_t id) {
    return findById<CanArxmlDatabaseItem>(path, id);
}

QueryResult<DecodedValue> getCanSignalValueFromDBC(std::span<const uint8_t> data,
                                                   const std::string& path,
                                                   const std::string& frameName,
                                                   const std::string& signalName) {
    return decodeFromFile<CanDbcDatabaseItem>(data, path, frameName, signalName);
}

QueryResult<DecodedValue> getCanSignalValueFromArxml(std::span<const uint8_t> data,
                                                     const std::string& path,
                                                     const std::string& frameName,
                                                     const std::string& signalName) {
    return decodeFromFile<CanArxmlDatabaseItem>(data, path, frameName, signalName);
}

QueryResult<DecodedValue> getLinSignalValueFromLDF(std::span<const uint8_t> data,
                                                   const std::string& path,
                                                   const std::string& frameName,
                                                   const std::string& signalName) {
    LinLdfDatabaseItem item;
    if (!item.pyLoadDB(path)) return {kLoadFailed, {}};
    const LDFFrame* frame = frameOfScriptName(*item.database(), frameName);
    if (frame == nullptr) return {kNotFound, {}};
    const auto signal = findSignalOrLog(*frame, signalName);
    if (!signal) return {kNotFound, {}};
    const codec::SignalLayout bits = layoutOf(*signal);
    return {kQueryDone,
            textOrNumber(codec::decodeSignalUnscaled(data, bits.isBigEndian, bits.startBit,
                                                     bits.bitLength, signal->mapValueTable))};
}

int setCanFrameBySignalFromDBC(std::span<uint8_t> data, const std::string& path,
                               const std::string& frameName, const std::string& signalName,
                               double value, std::ostream& out) {
    return setInFrame<CanDbcDatabaseItem>(data, path, frameName, signalName, value,
                                          codec::ResultShown::Yes, out);
}

int setCanFrameBySignalFromArxml(std::span<uint8_t> data, const std::string& path,
                                 const std::string& frameName, const std::string& signalName,
                                 double value, std::ostream& out) {
    return setInFrame<CanArxmlDatabaseItem>(data, path, frameName, signalName, value,
                                            codec::ResultShown::No, out);
}

}  // namespace Model::database
