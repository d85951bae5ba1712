#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quill::dbjson::dbc {

inline constexpr uint32_t kNone = 0xFFFFFFFFU;

// A run of elements in one of the model's pools. The pools keep a database of 100 MB at a few
// times its size, which a vector per signal would not.
struct Range {
    uint32_t first = 0;
    uint32_t count = 0;
};

struct ValueText {
    double value = 0.0;
    std::string_view text;
};

struct ValueRange {
    uint32_t first = 0;
    uint32_t last = 0;
};

enum class ObjectKind : uint8_t { Database, Node, Message, Signal, EnvironmentVariable, Relation };
enum class AttributeType : uint8_t { Integer, Hex, Float, String, Enumeration };

// A value as it goes into the JSON: enumeration values are already texts.
struct AttributeData {
    bool isText = false;
    double number = 0.0;
    std::string_view text;
};

struct AttributeDefinition {
    std::string_view name;
    ObjectKind kind = ObjectKind::Database;
    std::string_view relation;  // "BU_SG_REL_" and its kin; empty for the other kinds
    AttributeType type = AttributeType::String;
    double minimum = 0.0;
    double maximum = 0.0;
    Range enumeration;  // in names
    std::optional<AttributeData> defaultValue;
};

struct Attribute {
    uint32_t definition = kNone;
    uint32_t next = kNone;  // next attribute of the same object, in file order
    AttributeData data;
};

// Multiplexor and selecting values of a signal that is not always in the frame.
struct Multiplexing {
    std::string_view multiplexor;
    Range ranges;  // in valueRanges
};

struct Signal {
    std::string_view name;
    std::string_view nameInFile;
    std::string_view unit;
    std::string_view comment;
    double factor = 1.0;
    double offset = 0.0;
    double minimum = 0.0;
    double maximum = 0.0;
    uint32_t startBit = 0;  // least significant bit, for both byte orders
    uint32_t startBitInFile = 0;
    uint32_t bitLength = 0;
    uint32_t multiplexerId = kNone;  // the N of "mN"
    uint32_t multiplexing = kNone;   // in multiplexings
    uint32_t firstAttribute = kNone;
    Range receivers;  // in names
    Range values;     // in values
    bool isBigEndian = false;
    bool isSigned = false;
    bool isFloat = false;
    bool isMultiplexor = false;
    bool isMultiplexed = false;
};

struct Message {
    std::string_view name;
    std::string_view nameInFile;
    std::string_view comment;
    std::string_view sender;
    uint32_t idInFile = 0;  // bit 31 set for extended identifiers
    uint32_t length = 0;
    uint32_t firstAttribute = kNone;
    Range signals;      // in signals
    Range moreSenders;  // in names
};

struct Node {
    std::string_view name;
    std::string_view nameInFile;
    std::string_view comment;
    uint32_t firstAttribute = kNone;
};

struct EnvironmentVariable {
    std::string_view name;
    std::string_view nameInFile;
    std::string_view comment;
    std::string_view unit;
    std::string_view access;  // "DUMMY_NODE_VECTOR0" and its kin
    double minimum = 0.0;
    double maximum = 0.0;
    double initial = 0.0;
    uint32_t type = 0;
    uint32_t number = 0;
    uint32_t dataBytes = 0;  // of a data variable, else 0
    uint32_t firstAttribute = kNone;
    Range nodes;   // in names
    Range values;  // in values
};

struct ValueTable {
    std::string_view name;
    Range values;
};

struct SignalGroup {
    std::string_view name;
    uint32_t messageIdInFile = 0;
    uint32_t repetitions = 0;
    Range signals;  // in names
};

// Attribute of a relation between a node and a signal, message or environment variable.
struct Relation {
    uint32_t definition = kNone;
    std::string_view kind;
    Range objects;  // in names: node, then the words that name the other object
    AttributeData data;
};

// One bus database. All texts point into the parsed text or into ownedTexts, so both must outlive
// the use of the model.
struct Model {
    Model() = default;
    Model(Model&&) = default;
    Model& operator=(Model&&) = default;
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    std::string_view version;
    std::string_view comment;
    uint32_t firstAttribute = kNone;
    std::vector<Node> nodes;
    std::vector<Message> messages;
    std::vector<Signal> signals;
    std::vector<EnvironmentVariable> environmentVariables;
    std::vector<ValueTable> valueTables;
    std::vector<SignalGroup> signalGroups;
    std::vector<AttributeDefinition> definitions;
    std::vector<Attribute> attributes;
    std::vector<Relation> relations;
    std::vector<Multiplexing> multiplexings;

    std::vector<std::string_view> names;
    std::vector<ValueText> values;
    std::vector<ValueRange> valueRanges;
    std::deque<std::string> ownedTexts;
};

[[nodiscard]] constexpr bool isExtendedId(uint32_t idInFile) {
    return (idInFile & 0x80000000U) != 0;
}
// The 11- or 29-bit identifier. Without bit 31 the number is taken as it is.
[[nodiscard]] constexpr uint32_t identifier(uint32_t idInFile) {
    return isExtendedId(idInFile) ? idInFile & 0x1FFFFFFFU : idInFile;
}

// "nobody" in the place of a node.
[[nodiscard]] bool isNoNode(std::string_view name);

// Position of the least significant bit of a Motorola signal from that of its most significant
// one, both as 8 x byte + bit within the byte.
[[nodiscard]] constexpr uint64_t motorolaLeastSignificantBit(uint64_t startBit,
                                                             uint64_t bitLength) {
    const uint64_t sequential = startBit / 8 * 8 + (7 - startBit % 8) + bitLength - 1;
    return sequential / 8 * 8 + (7 - sequential % 8);
}

}  // namespace quill::dbjson::dbc
