#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tracestorage {

// By what the storage recognises a file that it has imported already. A file that differs in size,
// time of change or content is another one and is imported anew.
struct FileIdentity {
    std::string path;  // absolute, UTF-8
    uint64_t size = 0;
    int64_t modifiedNs = 0;  // in the file clock's own epoch: compared, never shown
    std::string hash;        // of the first and the last 64 KiB, 16 hexadecimal digits

    bool operator==(const FileIdentity&) const = default;
};

// Reads the identity of a file by UTF-8 path; empty when it cannot be read.
[[nodiscard]] std::optional<FileIdentity> identifyFile(const std::string& path);

}  // namespace tracestorage
