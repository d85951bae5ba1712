#include "Mutator.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace quill::fuzz {

namespace {

constexpr size_t kMostChanges = 6;
constexpr size_t kLongestPiece = 64;

constexpr std::array<uint64_t, 16> kEdges{
    0,      1,      7,          8,          0x7F,       0x80,       0xFF,      0x100,
    0x7FFF, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFFFFF0, INT64_MAX, UINT64_MAX};

constexpr std::array<std::string_view, 17> kNumberTexts{
    "9000000000",

    "0",          "-1",  "65",   "256",       "4294967296",           "9223372036854775807",
    "1e308",      "-0",  "1e-9", "0.1",       "18446744073709551616", "9000000000.999999999",
    "nan",        "inf", "2049", "0x1FFFFFFF"};

}  // namespace

Mutator::Mutator(std::vector<Seed> inputs, uint64_t seed, size_t largest)
    : m_inputs(std::move(inputs)), m_random(seed), m_largest(largest) {}

const Seed& Mutator::next() {
    m_current = m_inputs[below(m_inputs.size())];
    for (size_t left = 1 + below(kMostChanges); left > 0; --left) changeOnce();
    if (m_current.size() > m_largest) m_current.resize(m_largest);
    return m_current;
}

void Mutator::changeOnce() {
    switch (below(6)) {
        case 0:
            return flip();
        case 1:
            return cut();
        case 2:
            return repeat();
        case 3:
            return splice();
        case 4:
            return putBinaryNumber();
        default:
            return putTextNumber();
    }
}

void Mutator::flip() {
    if (m_current.empty()) return;
    uint8_t& byte = m_current[below(m_current.size())];
    byte = below(2) == 0 ? static_cast<uint8_t>(byte ^ (1U << below(8)))
                         : static_cast<uint8_t>(below(256));
}

void Mutator::cut() {
    const size_t at = below(m_current.size());
    if (below(8) == 0) return m_current.resize(at);
    const size_t length = std::min(1 + below(kLongestPiece), m_current.size() - at);
    m_current.erase(m_current.begin() + static_cast<ptrdiff_t>(at),
                    m_current.begin() + static_cast<ptrdiff_t>(at + length));
}

void Mutator::repeat() {
    const size_t at = below(m_current.size());
    const size_t length = std::min(1 + below(kLongestPiece), m_current.size() - at);
    const Seed piece(m_current.begin() + static_cast<ptrdiff_t>(at),
                     m_current.begin() + static_cast<ptrdiff_t>(at + length));
    for (size_t times = 1 + below(4); times > 0; --times) {
        m_current.insert(m_current.begin() + static_cast<ptrdiff_t>(at), piece.begin(),
                         piece.end());
    }
}

void Mutator::splice() {
    const Seed& other = m_inputs[below(m_inputs.size())];
    const size_t from = below(other.size());
    const size_t length = std::min(1 + below(4 * kLongestPiece), other.size() - from);
    const size_t at = below(m_current.size() + 1);
    m_current.insert(m_current.begin() + static_cast<ptrdiff_t>(at),
                     other.begin() + static_cast<ptrdiff_t>(from),
                     other.begin() + static_cast<ptrdiff_t>(from + length));
}

void Mutator::putBinaryNumber() {
    const size_t width = size_t{1} << below(4);
    if (m_current.size() < width) return;
    const uint64_t value = kEdges[below(kEdges.size())] + below(3) - 1;
    const size_t at = below(m_current.size() - width + 1);
    const bool bigEndian = below(2) == 0;
    for (size_t i = 0; i < width; ++i) {
        const size_t shift = 8 * (bigEndian ? width - 1 - i : i);
        m_current[at + i] = static_cast<uint8_t>(value >> shift);
    }
}

// In place of a number where the next one stands, so that texts stay well formed.
void Mutator::putTextNumber() {
    const auto isDigit = [](uint8_t c) { return c >= '0' && c <= '9'; };
    const auto start = m_current.begin() + static_cast<ptrdiff_t>(below(m_current.size()));
    const auto first = std::find_if(start, m_current.end(), isDigit);
    const auto last = std::find_if_not(first, m_current.end(), isDigit);
    const std::string_view text = kNumberTexts[below(kNumberTexts.size())];
    const auto at = m_current.erase(first, last);
    m_current.insert(at, text.begin(), text.end());
}

size_t Mutator::below(size_t bound) {
    return bound == 0 ? 0 : static_cast<size_t>(m_random() % bound);
}

}  // namespace quill::fuzz
