#include "core/playback/recorder/RecordArena.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

namespace quill::testing {

namespace {

using playback::RecordArena;

// Every record keeps its bytes while others come and go on two threads; the sanitizers watch the
// memory itself.
TEST(RecordArena, keepsRecordsApartUntilEachIsGivenBack) {
    struct Piece {
        void* at;
        size_t size;
        uint8_t fill;
    };
    auto arena = std::make_unique<RecordArena>();
    std::vector<Piece> early, late;
    for (uint32_t i = 0; i < 20'000; ++i) {
        const size_t size = i % 997 == 0 ? 200'000 : 1 + i % 300;
        void* at = arena->allocate(size);
        ASSERT_EQ(reinterpret_cast<uintptr_t>(at) % 8, 0U);
        const auto fill = static_cast<uint8_t>(i);
        std::memset(at, fill, size);
        (i % 3 == 0 ? early : late).push_back({at, size, fill});
    }
    const auto check = [](const std::vector<Piece>& pieces) {
        for (const Piece& piece : pieces) {
            const auto* bytes = static_cast<const uint8_t*>(piece.at);
            ASSERT_EQ(bytes[0], piece.fill);
            ASSERT_EQ(bytes[piece.size - 1], piece.fill);
            RecordArena::release(piece.at);
        }
    };
    std::thread other([&] { check(early); });
    arena.reset();  // records outlive the arena that made them
    check(late);
    other.join();
}

}  // namespace

}  // namespace quill::testing
