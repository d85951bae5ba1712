#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rvconverter/RecordHandle.h"

namespace quill::testing {

// Writes records into a file of the type (0 BLF, 1 ASC) as a recording does, in lists and with both
// loops on threads of their own. Expects that every record is in the file.
void writeRecords(const std::string& path, uint32_t type, std::vector<rv::RecordHandle> records);

}  // namespace quill::testing
