#pragma once

#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "rvconverter/RecordHandle.h"
#include "rvconverter/Records.h"

namespace quill::testing {

// A record with its payload behind it, as a user of the converter library makes it.
template <class Record>
rv::RecordHandle makeRecord(Record record, rv::RecordKind kind, uint64_t timeNs,
                            const std::vector<uint8_t>& payload) {
    record.head.seconds = static_cast<uint32_t>(timeNs / 1'000'000'000U);
    record.head.nanoseconds = static_cast<uint32_t>(timeNs % 1'000'000'000U);
    record.head.kind = kind;
    record.head.length = static_cast<uint32_t>(payload.size());
    void* memory = ::operator new(sizeof(Record) + payload.size());
    auto* made = ::new (memory) Record(record);
    if (!payload.empty()) std::memcpy(made + 1, payload.data(), payload.size());
    return {[](void* owned) { ::operator delete(owned); }, memory, sizeof(Record) + payload.size()};
}

inline rv::RecordHandle makeCan(uint64_t timeNs, uint32_t id, uint8_t flags,
                                const std::vector<uint8_t>& payload, uint8_t dlc,
                                uint8_t channel = 0, bool transmitted = false) {
    rv::CanRecord record;
    record.id = id;
    record.flags = flags;
    record.dlc = dlc;
    record.head.channel = channel;
    record.head.transmitted = transmitted ? 1 : 0;
    return makeRecord(record, rv::RecordKind::Can, timeNs, payload);
}

}  // namespace quill::testing
