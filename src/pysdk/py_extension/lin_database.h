#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "databaseitem/LinLdfRecords.h"
#include "pysdk/py_extension/schedule_table.h"
#include "pysdk/py_extension/script_records.h"

namespace scripts {

// Content of an LDF file as scripts see it: schedule tables are their records, ready to be started.
struct LinLdfDatabaseItem {
    std::vector<LinScheduleTable> schedule_tables;
    Model::database::RecordList<Model::database::LDFFrame> frame;
};

// A received LIN frame with the database frame that it carries, if one is known.
struct LinMessage {
    uint64_t timestamp = 0;  // ns since the epoch
    uint16_t id = 0;
    uint16_t dir = 0;
    uint8_t channel = 0;
    std::vector<uint8_t> data;
    std::shared_ptr<Model::database::LDFFrame> frame;  // null when none is known

    [[nodiscard]] std::string toText() const;
};

[[nodiscard]] std::vector<LinScheduleTable> toScriptTables(
    const Model::database::RecordList<Model::LinScheduleTable>& tables);
[[nodiscard]] std::shared_ptr<LinLdfDatabaseItem> toScriptDatabase(
    const Model::database::LinLdfDatabase& database);
[[nodiscard]] LinMessage toLinMessage(const LinFrame& frame,
                                      std::shared_ptr<Model::database::LDFFrame> match);

}  // namespace scripts
