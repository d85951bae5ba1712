#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

namespace quill::os {

// Paths cross the program as UTF-8 text; these two are the only places that convert.
[[nodiscard]] std::filesystem::path pathFromUtf8(const std::string& utf8);
[[nodiscard]] std::string pathToUtf8(const std::filesystem::path& path);

// Text between UTF-8 and the system's wide characters, for interfaces that take wide paths.
[[nodiscard]] std::wstring wideFromUtf8(const std::string& utf8);
[[nodiscard]] std::string utf8FromWide(const std::wstring& wide);

// Opens a file by UTF-8 path with a C mode text ("rb", "wb"); null with errno set on failure.
[[nodiscard]] std::FILE* openFile(const std::string& utf8Path, const char* mode);

// Moves to an absolute position, for files beyond 2 GiB too; false when the system refuses.
[[nodiscard]] bool seekFile(std::FILE* file, int64_t position);

// Cuts an open file off at a length; false when the system refuses. The position is left undefined.
[[nodiscard]] bool truncateFile(std::FILE* file, int64_t length);

// File that holds the code at this address (the loaded module or program); empty when unknown.
[[nodiscard]] std::filesystem::path fileOfCode(const void* address);

}  // namespace quill::os
