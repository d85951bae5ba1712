#pragma once

#include "databaseitem/CanDbcRecords.h"

namespace Model::database {

class JsonObjectReader;

// The multiplexing of one signal: "is_multiplexor", "multiplexer_id", "multiplexer_signal" and
// "multiplexer_ranges", which replaces the single id.
void readMultiplexRule(JsonObjectReader& json, MultiplexRule& rule);

// Notes for every multiplexed signal of a frame where its multiplexor is.
void resolveMultiplexors(RecordList<CanDBCEntrySignal>& signals);

// The signal that decides about another one of the same frame; null when there is none. Holds also
// when a script has changed the list since it was read.
[[nodiscard]] const CanDBCEntrySignal* multiplexorOf(const RecordList<CanDBCEntrySignal>& signals,
                                                     const MultiplexRule& rule);

}  // namespace Model::database
