#pragma once

#include "common/JsonWriter.h"
#include "dbc/DbcModel.h"

namespace quill::dbjson::dbc {

enum class ExportScope {
    Messages,  // version, nodes and messages
    All,       // also what else the file holds: definitions, variables, tables, groups, relations
};

void writeDbcJson(const Model& model, ExportScope scope, JsonWriter& json);

}  // namespace quill::dbjson::dbc
