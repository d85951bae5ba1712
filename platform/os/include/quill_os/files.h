#pragma once

#include <string>

namespace quill::os {

// Gives a file a new name in the same folder, in place of a file that has it (UTF-8 paths). A
// reader of that name sees the old file or the new one, never a part. False with errno set.
[[nodiscard]] bool replaceFile(const std::string& from, const std::string& to);

// Removes a file (UTF-8 path); false when there is none or the system refuses.
bool removeFile(const std::string& path);

}  // namespace quill::os
