#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "dbc/DbcModel.h"
#include "dbc/DbcTokens.h"

namespace quill::dbjson::dbc {

// Object that a statement speaks of; statements may stand before the object itself.
struct ObjectName {
    ObjectKind kind = ObjectKind::Database;
    uint32_t messageId = 0;  // as in the file
    std::string_view name;
};

// Value as written, before the attribute's type is known.
struct RawValue {
    TokenKind kind = TokenKind::Text;
    std::string_view text;
};

struct CommentReference {
    ObjectName object;
    std::string_view text;
};
struct AttributeReference {
    ObjectName object;
    std::string_view name;
    RawValue value;
};
struct DefaultReference {
    std::string_view name;
    bool ofRelation = false;
    RawValue value;
};
struct ValuesReference {
    ObjectName object;
    Range values;
    std::string_view tableName;  // instead of values
};
struct SignalTypeReference {
    ObjectName object;
    uint32_t type = 0;
};
struct MultiplexingReference {
    ObjectName object;
    Multiplexing multiplexing;
};
struct SendersReference {
    uint32_t messageId = 0;
    Range nodes;
};
struct DataReference {
    std::string_view variable;
    uint32_t bytes = 0;
};
struct RelationReference {
    std::string_view name;
    Relation relation;
    RawValue value;
};

struct References {
    std::vector<CommentReference> comments;
    std::vector<AttributeReference> attributes;
    std::vector<DefaultReference> defaults;
    std::vector<ValuesReference> values;
    std::vector<SignalTypeReference> signalTypes;
    std::vector<MultiplexingReference> multiplexings;
    std::vector<SendersReference> senders;
    std::vector<DataReference> data;
    std::vector<RelationReference> relations;
};

// Gives every object what the statements say about it: comments, attributes with their types and
// defaults, value texts, float types, multiplexors, senders and long names. What speaks of unknown
// objects is dropped, since public databases are full of it.
void resolveReferences(Model& model, References& references);

}  // namespace quill::dbjson::dbc
