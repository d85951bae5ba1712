#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

namespace scripts {

// The payload of a frame, stored in place. It holds bytes only, so it may lie at any address of a
// packed record, and a frame costs no second allocation.
class ByteList {
public:
    static constexpr size_t kCapacity = 64;

    ByteList() = default;
    ByteList(const ByteList& other) { copyFrom(other); }
    ByteList& operator=(const ByteList& other) {
        if (this != &other) copyFrom(other);
        return *this;
    }
    ~ByteList() = default;

    // False, with the list unchanged, when there are more bytes than a frame can carry.
    [[nodiscard]] bool assign(std::span<const uint8_t> bytes) {
        if (bytes.size() > kCapacity) return false;
        m_size = static_cast<uint8_t>(bytes.size());
        if (!bytes.empty()) std::memcpy(m_bytes, bytes.data(), bytes.size());
        return true;
    }
    [[nodiscard]] size_t size() const { return m_size; }
    [[nodiscard]] bool empty() const { return m_size == 0; }
    [[nodiscard]] const uint8_t* begin() const { return m_bytes; }
    [[nodiscard]] const uint8_t* end() const { return m_bytes + m_size; }
    [[nodiscard]] std::span<const uint8_t> bytes() const { return {m_bytes, m_size}; }

    bool operator==(const ByteList& other) const {
        return std::equal(begin(), end(), other.begin(), other.end());
    }

private:
    void copyFrom(const ByteList& other) {
        m_size = other.m_size;
        std::memcpy(m_bytes, other.m_bytes, m_size);
    }

    uint8_t m_size = 0;
    uint8_t m_bytes[kCapacity];  // the first m_size are set
};

// Bytes or text of any length on the heap. The address of the block is kept as bytes, so this too
// may lie at any address of a packed record.
class PackedBytes {
public:
    PackedBytes() { setBlock(nullptr); }
    explicit PackedBytes(std::string_view text) : PackedBytes() { assign(text); }
    PackedBytes(const PackedBytes& other) : PackedBytes() { assign(other.text()); }
    PackedBytes(PackedBytes&& other) noexcept : m_block(other.m_block) { other.setBlock(nullptr); }
    PackedBytes& operator=(const PackedBytes& other) {
        if (this != &other) assign(other.text());
        return *this;
    }
    PackedBytes& operator=(PackedBytes&& other) noexcept {
        std::swap(m_block, other.m_block);
        return *this;
    }
    ~PackedBytes() { delete[] block(); }

    void assign(std::string_view text) {
        char* fresh = nullptr;
        if (!text.empty()) {
            const size_t length = text.size();
            fresh = new char[sizeof(length) + length];
            std::memcpy(fresh, &length, sizeof(length));
            std::memcpy(fresh + sizeof(length), text.data(), length);
        }
        delete[] block();
        setBlock(fresh);
    }
    [[nodiscard]] size_t size() const {
        size_t length = 0;
        if (const char* from = block()) std::memcpy(&length, from, sizeof(length));
        return length;
    }
    [[nodiscard]] std::string_view text() const {
        const char* from = block();
        return from == nullptr ? std::string_view()
                               : std::string_view(from + sizeof(size_t), size());
    }
    [[nodiscard]] std::span<const uint8_t> bytes() const {
        const std::string_view all = text();
        return {reinterpret_cast<const uint8_t*>(all.data()), all.size()};
    }

    bool operator==(const PackedBytes& other) const { return text() == other.text(); }

private:
    [[nodiscard]] char* block() const {
        char* address = nullptr;
        std::memcpy(&address, m_block.data(), sizeof(address));
        return address;
    }
    void setBlock(char* address) { std::memcpy(m_block.data(), &address, sizeof(address)); }

    std::array<unsigned char, sizeof(char*)> m_block;
};

static_assert(alignof(ByteList) == 1 && alignof(PackedBytes) == 1);

}  // namespace scripts
