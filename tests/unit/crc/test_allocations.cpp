#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <new>

#include "core/hardware/crc/Crc.h"
#include "core/hardware/crc/FrameUpdate.h"

namespace {
size_t allocationCount = 0;
}  // namespace

// Not inlined: half an inlined pair looks like a mismatch to the compiler.
#if defined(__GNUC__)
#define QUILL_APART __attribute__((noinline))
#else
#define QUILL_APART
#endif

// Counts every allocation of this program.
QUILL_APART void* operator new(size_t size) {
    ++allocationCount;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
QUILL_APART void operator delete(void* memory) noexcept { std::free(memory); }
QUILL_APART void operator delete(void* memory, size_t) noexcept { std::free(memory); }

namespace {

TEST(Update, allocatesNothing) {
    RV::Crc::FrameUpdateSettings settings;
    settings.dataLength = 64;
    settings.counterEnabled = true;
    settings.counterStartBit = 8;
    settings.counterLength = 8;
    settings.crcLength = 8;
    settings.keyBytes.assign(64, 0x11);
    std::array<uint8_t, 64> data{};
    const size_t before = allocationCount;
    ASSERT_GT(before, 0U);
    bool all = true;
    for (const auto& algorithm : RV::Crc::kCrcCatalogue) {
        settings.crcType = algorithm.code;
        all = RV::Crc::updateFrame(data, settings) && all;
    }
    EXPECT_EQ(allocationCount, before);
    EXPECT_TRUE(all);
}

}  // namespace
