#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

namespace quill::traceformats {

// Where a reader takes its bytes from.
class ByteSource {
public:
    ByteSource() = default;
    virtual ~ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    // Fills up to `room` bytes; fewer only at the end (or at a break, see UnitReader), 0 from then.
    virtual size_t read(uint8_t* target, size_t room) = 0;
};

// An open file that stays its owner's.
class FileSource final : public ByteSource {
public:
    explicit FileSource(std::FILE* file) : m_file(file) {}
    size_t read(uint8_t* target, size_t room) override {
        return m_file == nullptr ? 0 : std::fread(target, 1, room, m_file);
    }

private:
    std::FILE* m_file;
};

// Bytes in memory, which must outlive the source.
class MemorySource final : public ByteSource {
public:
    explicit MemorySource(std::span<const uint8_t> bytes) : m_rest(bytes) {}
    size_t read(uint8_t* target, size_t room) override;

private:
    std::span<const uint8_t> m_rest;
};

}  // namespace quill::traceformats
