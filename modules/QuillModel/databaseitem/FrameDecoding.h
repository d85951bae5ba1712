#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "databaseitem/CanArxmlRecords.h"
#include "databaseitem/CanDbcRecords.h"
#include "databaseitem/LinLdfRecords.h"
#include "signal/PhysicalCodec.h"

// Decoding and lookup on records that are already loaded; no file is read. Signs, floats, scaling
// and multiplexing count here, as opposed to the fixed queries.
namespace Model::database {

// The physical value of one signal; nothing when it does not lie within the payload.
[[nodiscard]] std::optional<double> decodeSignalPhysical(const CanDBCEntrySignal& signal,
                                                         std::span<const uint8_t> payload);
[[nodiscard]] std::optional<double> decodeSignalPhysical(const CanArxmlEntrySignal& signal,
                                                         std::span<const uint8_t> payload);
[[nodiscard]] std::optional<double> decodeSignalPhysical(const LinSignal& signal,
                                                         std::span<const uint8_t> payload);

// Writes the raw value nearest to a physical value; other bits stay. On any status but Ok the
// payload stays as it is.
[[nodiscard]] codec::EncodeStatus encodeSignalPhysical(const CanDBCEntrySignal& signal,
                                                       std::span<uint8_t> payload, double value);
[[nodiscard]] codec::EncodeStatus encodeSignalPhysical(const CanArxmlEntrySignal& signal,
                                                       std::span<uint8_t> payload, double value);
[[nodiscard]] codec::EncodeStatus encodeSignalPhysical(const LinSignal& signal,
                                                       std::span<uint8_t> payload, double value);

// One signal found in a payload. The pointers lead into the frame record and live as long.
struct DecodedSignal {
    const std::string* name = nullptr;
    const std::string* unit = nullptr;
    const std::string* text = nullptr;  // from the value table; null when it has none
    double physical = 0.0;
    uint64_t raw = 0;
};

// All signals of a frame that the multiplexors of this payload select and that lie within it, in
// the order of the record. `decoded` is emptied first; handing in the same vector again saves its
// memory. A signal whose multiplexor the frame does not have counts as selected. Signals of a
// container's PDUs follow the headers that the payload has.
void decodeFrame(const CanDBCEntry& frame, std::span<const uint8_t> payload,
                 std::vector<DecodedSignal>& decoded);
void decodeFrame(const CanFdDBCEntry& frame, std::span<const uint8_t> payload,
                 std::vector<DecodedSignal>& decoded);
void decodeFrame(const LDFFrame& frame, std::span<const uint8_t> payload,
                 std::vector<DecodedSignal>& decoded);

// The first frame of this identifier or exact name, extended ones too; `extended` restricts to one
// of the two. Null when there is none.
using Extended = std::optional<bool>;
[[nodiscard]] std::shared_ptr<CanDBCEntry> findFrame(const CanDbcDatabase& database, int64_t id,
                                                     Extended extended = std::nullopt);
[[nodiscard]] std::shared_ptr<CanDBCEntry> findFrame(const CanDbcDatabase& database,
                                                     std::string_view name,
                                                     Extended extended = std::nullopt);
[[nodiscard]] std::shared_ptr<CanFdDBCEntry> findFrame(const CanArxmlDatabase& database, int64_t id,
                                                       Extended extended = std::nullopt);
[[nodiscard]] std::shared_ptr<CanFdDBCEntry> findFrame(const CanArxmlDatabase& database,
                                                       std::string_view name,
                                                       Extended extended = std::nullopt);
[[nodiscard]] std::shared_ptr<LDFFrame> findFrame(const LinLdfDatabase& database, int64_t id);
[[nodiscard]] std::shared_ptr<LDFFrame> findFrame(const LinLdfDatabase& database,
                                                  std::string_view name);

}  // namespace Model::database
