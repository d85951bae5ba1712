#pragma once

#include <string>

#include "core/tracestorage/FrameRecord.h"

namespace quill::bench {

// A bare loop over a prepared statement: the same rows, the same settings, one transaction, indices
// after it. Returns the number of rows.
[[nodiscard]] double insertRows(const std::string& database, const tracestorage::FrameBatch& rows);

}  // namespace quill::bench
