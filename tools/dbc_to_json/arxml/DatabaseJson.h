// The whole model as JSON text.
#pragma once

#include <cstddef>
#include <optional>

#include "arxml/Model.h"
#include "common/JsonWriter.h"

namespace quill::arxml {

// Writes one object with the arrays can_cluster, flexray_cluster and eth_cluster. Refuses a
// database whose text would be longer than maxBytes.
[[nodiscard]] std::optional<ReadError> writeDatabase(const Database& database, size_t maxBytes,
                                                     dbjson::JsonWriter& json);

}  // namespace quill::arxml
