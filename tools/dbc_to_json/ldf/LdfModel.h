#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quill::dbjson::ldf {

using Names = std::vector<std::string_view>;

struct Master {
    std::string_view name;
    double timebaseMs = 0.0;
    double jitterMs = 0.0;
    std::optional<double> maxHeaderBits;         // J2602
    std::optional<double> responseTolerancePct;  // J2602
};

struct Signal {
    std::string_view name;
    uint32_t bitLength = 0;
    std::vector<uint64_t> initial;  // one value, or one for each byte of an array
    bool isArray = false;
    std::string_view publisher;  // empty for diagnostic signals
    Names subscribers;
    uint32_t encoding = 0xFFFFFFFFU;  // index of its encoding type, if it has one
};

struct SignalPlace {
    std::string_view name;
    uint32_t offset = 0;  // of the least significant bit, counted from the first byte
};

struct Frame {
    std::string_view name;
    uint32_t id = 0;
    std::string_view publisher;
    std::optional<uint32_t> length;
    std::vector<SignalPlace> signals;
};

struct SporadicFrame {
    std::string_view name;
    Names frames;
};

struct EventTriggeredFrame {
    std::string_view name;
    std::string_view collisionTable;
    uint32_t id = 0;
    Names frames;
};

// One "key = value, value;" of a node, with the unit of the last value when it has one.
struct NodeProperty {
    std::string_view key;
    Names values;
    std::string_view unit;
};

struct NodeAttributes {
    std::string_view name;
    std::vector<NodeProperty> properties;
    Names configurableFrames;
    std::vector<uint32_t> configurableIds;  // LIN 2.0: one for each frame, else empty
};

struct ScheduleEntry {
    std::string_view command;  // frame name or command word
    Names arguments;           // what stands in braces behind a command word
    double delayMs = 0.0;
};

struct ScheduleTable {
    std::string_view name;
    std::vector<ScheduleEntry> entries;
};

enum class EncodingKind : uint8_t { Logical, Physical, Bcd, Ascii };

struct EncodingValue {
    EncodingKind kind = EncodingKind::Logical;
    double minimum = 0.0;  // raw; the value itself of a logical one
    double maximum = 0.0;
    double scale = 1.0;
    double offset = 0.0;
    std::string_view text;  // of a logical value, or the unit
};

struct EncodingType {
    std::string_view name;
    std::vector<EncodingValue> values;
};

struct SignalGroup {
    std::string_view name;
    uint32_t bitLength = 0;
    std::vector<SignalPlace> signals;
};

struct DiagnosticAddress {
    std::string_view node;
    uint32_t address = 0;
};

// One LIN cluster. All texts point into the parsed text.
struct Model {
    std::string_view protocolVersion;
    std::string_view languageVersion;
    std::string_view fileRevision;
    std::string_view channelName;
    double speedKbps = 0.0;
    bool isBigEndian = false;
    Master master;
    Names slaves;
    std::vector<Signal> signals;  // diagnostic ones too
    std::vector<Frame> frames;
    std::vector<Frame> diagnosticFrames;
    std::vector<SporadicFrame> sporadicFrames;
    std::vector<EventTriggeredFrame> eventTriggeredFrames;
    std::vector<NodeAttributes> nodeAttributes;
    std::vector<ScheduleTable> scheduleTables;
    std::vector<EncodingType> encodings;
    std::vector<SignalGroup> signalGroups;
    std::vector<DiagnosticAddress> diagnosticAddresses;
};

}  // namespace quill::dbjson::ldf
