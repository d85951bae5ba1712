#pragma once

#include <string>

namespace Model::database {

// A file's bytes as UTF-8 text: a byte-order mark is dropped, bytes that are no valid UTF-8 are
// taken as Windows-1252, which the tools of the field write in Europe and America.
[[nodiscard]] std::string toUtf8(std::string bytes);

}  // namespace Model::database
