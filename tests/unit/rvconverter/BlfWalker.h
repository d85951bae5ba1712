#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quill::testing {

// A slow and obvious reader of BLF files, written apart from the writer's layouts, so that both
// would have to be wrong in the same way for a test to miss it.
struct WalkedObject {
    uint32_t type = 0;
    uint64_t timeNs = 0;        // since the start of measurement
    std::vector<uint8_t> body;  // behind the 32 bytes of header

    [[nodiscard]] uint64_t number(size_t offset, size_t bytes) const;
    [[nodiscard]] std::vector<uint8_t> bytes(size_t offset, size_t count) const;
};

struct WalkedFile {
    uint64_t actualSize = 0;
    uint64_t headerFileSize = 0;
    uint64_t headerUncompressedSize = 0;
    uint64_t uncompressedSize = 0;  // as the header should say for the whole containers
    uint32_t headerObjects = 0;
    uint8_t level = 0;
    std::vector<uint16_t> start;  // eight calendar fields
    std::vector<uint16_t> last;
    size_t containers = 0;
    size_t storedContainers = 0;  // not compressed
    uint64_t wholeEnd = 0;        // end of the last whole container
    std::vector<WalkedObject> objects;
    std::string fault;  // empty: nothing but whole containers (and at most one torn end)

    [[nodiscard]] bool tornEnd() const { return wholeEnd != actualSize; }
};

[[nodiscard]] std::vector<uint8_t> readWholeFile(const std::string& path);

// Empty without a file header.
[[nodiscard]] std::optional<WalkedFile> walkBlf(const std::string& path);

}  // namespace quill::testing
