#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <variant>

#include "databaseitem/CanArxmlRecords.h"
#include "databaseitem/CanDbcRecords.h"
#include "databaseitem/LinLdfRecords.h"

// The database functions that scripts call, without Python. Every call loads its file anew, so it
// answers from what the file holds now; it waits for the converter and may run on any thread.
namespace Model::database {

// Result codes of the queries. A signal that the frame does not have counts as not found.
inline constexpr int kQueryDone = 0;
inline constexpr int kLoadFailed = 1;
inline constexpr int kNotFound = 2;

// A code and a value. With another code than kQueryDone the value is an empty one, never null.
template <class Value>
struct QueryResult {
    int code = kLoadFailed;
    Value value{};
};

// The text of the raw value in the signal's value table, else the number: DBC and ARXML the
// unsigned raw value x factor + offset, LDF the unsigned raw value. Nothing when the query failed.
using DecodedValue = std::variant<std::monostate, double, std::string>;

// Whole content of a file as UTF-8 text, its encoding guessed as the converters guess it.
[[nodiscard]] QueryResult<std::string> readCanDBCContents(const std::string& path);
[[nodiscard]] QueryResult<std::string> readCanArxmlContents(const std::string& path);

[[nodiscard]] QueryResult<std::shared_ptr<CanDbcDatabase>> loadCanDBC(const std::string& path);
[[nodiscard]] QueryResult<std::shared_ptr<CanArxmlDatabase>> loadCanArxml(const std::string& path);
[[nodiscard]] QueryResult<std::shared_ptr<LinLdfDatabase>> loadLinLDF(const std::string& path);
// kLoadFailed also when the file has no schedule tables.
[[nodiscard]] QueryResult<RecordList<Model::LinScheduleTable>> getScheduleTableFromLDF(
    const std::string& path);

// Extended frames are found neither by name nor by id, and a standard frame with id 0 answers every
// query by name; findFrame (FrameDecoding.h) is free of both.
[[nodiscard]] QueryResult<std::shared_ptr<CanDBCEntry>> getCanFrameByNameFromDBC(
    const std::string& path, const std::string& name);
[[nodiscard]] QueryResult<std::shared_ptr<CanDBCEntry>> getCanFrameByIdFromDBC(
    const std::string& path, int64_t id);
[[nodiscard]] QueryResult<std::shared_ptr<CanFdDBCEntry>> getCanFrameByNameFromArxml(
    const std::string& path, const std::string& name);
[[nodiscard]] QueryResult<std::shared_ptr<CanFdDBCEntry>> getCanFrameByIdFromArxml(
    const std::string& path, int64_t id);

[[nodiscard]] QueryResult<DecodedValue> getCanSignalValueFromDBC(std::span<const uint8_t> data,
                                                                 const std::string& path,
                                                                 const std::string& frameName,
                                                                 const std::string& signalName);
[[nodiscard]] QueryResult<DecodedValue> getCanSignalValueFromArxml(std::span<const uint8_t> data,
                                                                   const std::string& path,
                                                                   const std::string& frameName,
                                                                   const std::string& signalName);
// "MasterReq" and "SlaveResp" also find frames named "master_request" and "slave_response".
[[nodiscard]] QueryResult<DecodedValue> getLinSignalValueFromLDF(std::span<const uint8_t> data,
                                                                 const std::string& path,
                                                                 const std::string& frameName,
                                                                 const std::string& signalName);

// Writes a value into a frame's payload as the unscaled raw value and two lines to `out`. The
// result is a query code. Throws std::out_of_range("invalid bitset position") for signals that
// reach beyond 64 bytes.
[[nodiscard]] int setCanFrameBySignalFromDBC(std::span<uint8_t> data, const std::string& path,
                                             const std::string& frameName,
                                             const std::string& signalName, double value,
                                             std::ostream& out);
[[nodiscard]] int setCanFrameBySignalFromArxml(std::span<uint8_t> data, const std::string& path,
                                               const std::string& frameName,
                                               const std::string& signalName, double value,
                                               std::ostream& out);

}  // namespace Model::database
