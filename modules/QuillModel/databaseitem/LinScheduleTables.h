#pragma once

#include <optional>
#include <string>

#include "databaseitem/LinLdfRecords.h"

namespace Model {
class ScheduleTableSlot;
}

namespace Model::database {

// The schedule tables of a database as messages for a box, in order; channel_id is left to the
// caller. Entries whose frame the database does not have get no slot. An entry without a frame name
// stands for the master request frame or, whatever else its command is, the slave response frame.
[[nodiscard]] RecordList<Model::LinScheduleTable> makeScheduleTables(
    const LinLdfDatabase& database);

// The slot of one entry, if it has one.
[[nodiscard]] std::optional<Model::ScheduleTableSlot> makeSlot(const LdfScheduleEntry& entry,
                                                               const LinLdfDatabase& database);

// First frame of this exact name; null when there is none.
[[nodiscard]] const LDFFrame* frameByName(const LinLdfDatabase& database, const std::string& name);

}  // namespace Model::database
