#include "rvconverter/ConvertToolkit.h"

#include <gtest/gtest.h>

#include <fstream>
#include <future>

#include "quill_os/environment.h"
#include "quill_os/paths.h"
#include "quill_traceformats/asc_layout.h"
#include "unit/rvconverter/BlfWalker.h"
#include "unit/rvconverter/RecordMaker.h"
#include "unit/rvconverter/ScratchFolder.h"

namespace quill::testing {

namespace {

std::shared_ptr<rv::ConvertContext> create(const std::string& path, uint32_t type,
                                           int32_t level = -1) {
    rv::ConvertInfo info;
    info.type = type;
    info.path = std::wstring(path.begin(), path.end());
    info.compressionLevel = level;
    return rv::ConvertToolkit::createConvertContextPtr(info);
}

class UnwrittenType : public ::testing::TestWithParam<uint32_t> {};

TEST_P(UnwrittenType, hasNoContextAndNoFile) {
    const ScratchFolder folder("types");
    EXPECT_EQ(create(folder.file("t"), GetParam()), nullptr);
    EXPECT_NE(rv::ConvertToolkit::lastError(), "");
    EXPECT_TRUE(folder.empty());
}

INSTANTIATE_TEST_SUITE_P(Types, UnwrittenType, ::testing::Values(2U, 3U, 4U, 7U, 8U, UINT32_MAX));

TEST(ConvertToolkit, refusesPlacesWhereNoFileCanBe) {
    const ScratchFolder folder("places");
    std::ofstream(folder.file("plain")) << "text";
    for (const uint32_t type : {0U, 1U}) {
        for (const std::string& path : {folder.file("missing/t.blf"), folder.file("plain/t.blf"),
                                        folder.file(""), std::string("/dev/full"), std::string()}) {
            EXPECT_EQ(create(path, type), nullptr) << path;
            EXPECT_NE(rv::ConvertToolkit::lastError(), "") << path;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(folder.file("missing")));
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
    ASSERT_NE(create(folder.file("t.blf"), 0), nullptr);
    EXPECT_EQ(rv::ConvertToolkit::lastError(), "");
}

TEST(ConvertToolkit, takesThePathAsUnicode) {
    const ScratchFolder folder("unicode");
    rv::ConvertInfo info;
    const std::string stem = folder.file("");
    info.path = std::wstring(stem.begin(), stem.end()) + L"F\u00e4hre \u4e2d.blf";
    ASSERT_NE(rv::ConvertToolkit::createConvertContextPtr(info), nullptr)
        << rv::ConvertToolkit::lastError();
    EXPECT_TRUE(std::filesystem::exists(stem + "F\xC3\xA4hre \xE4\xB8\xAD.blf"));
}

TEST(WideText, carriesEveryFileNameThereAndBack) {
    for (const std::string text :
         {"", "plain", "F\xC3\xA4hre \xE4\xB8\xAD \xF0\x9F\x9A\x97", "bad \xFF\xC3 \xE4\xB8",
          "overlong \xC0\x80 surrogate \xED\xA0\x80", "\xF4\x90\x80\x80"}) {
        EXPECT_EQ(quill::os::utf8FromWide(quill::os::wideFromUtf8(text)), text);
    }
    EXPECT_EQ(quill::os::wideFromUtf8("\xC3\xA4\xE4\xB8\xAD"), L"\u00e4\u4e2d");
}

TEST(FreshFile, isReadableBeforeTheFirstFrame) {
    const ScratchFolder folder("fresh");
    const auto blf = create(folder.file("t.blf"), 0);
    const auto asc = create(folder.file("t.asc"), 1);
    ASSERT_TRUE(blf && asc);
    const auto walked = walkBlf(folder.file("t.blf"));
    ASSERT_TRUE(walked);
    EXPECT_EQ(walked->headerFileSize, 144U);
    EXPECT_EQ(walked->headerUncompressedSize, 144U);
    EXPECT_GE(walked->start.at(0), 2024);
    EXPECT_EQ(readWholeFile(folder.file("t.asc")).size(), quill::traceformats::kAscHeaderSize);
    asc->close();
    const auto bytes = readWholeFile(folder.file("t.asc"));
    const std::string text(bytes.begin(), bytes.end());
    EXPECT_EQ(text.substr(0, 5), "date ");
    EXPECT_TRUE(text.ends_with("End TriggerBlock\n"));
}

TEST(ConvertContext, survivesEveryOrderOfItsOperations) {
    const ScratchFolder folder("orders");
    for (const uint32_t type : {0U, 1U}) {
        const auto context = create(folder.file("t"), type);
        std::vector<rv::RecordHandle> list;
        list.push_back(makeCan(1, 1, 0, {1}, 1));
        context->acceptRecords(std::move(list));
        EXPECT_EQ(context->pendingRecords(), 1U);
        context->close();  // loops never ran
        context->close();
        context->convertFrames();
        context->persistFrames();
        context->endOfInput();
        context->acceptRecords({});
        EXPECT_EQ(context->exportedFrames(), 0U);
    }
}

TEST(ConvertContext, closeEndsLoopsThatStillRun) {
    const ScratchFolder folder("close");
    const auto context = create(folder.file("t.blf"), 0);
    auto convert = std::async(std::launch::async, [&] { context->convertFrames(); });
    auto persist = std::async(std::launch::async, [&] { context->persistFrames(); });
    context->close();
    convert.wait();
    persist.wait();
    EXPECT_TRUE(walkBlf(folder.file("t.blf")));
}

TEST(ConvertContext, countsWhatNoFormatHolds) {
    const ScratchFolder folder("skipped");
    const auto context = create(folder.file("t.blf"), 0);
    std::vector<rv::RecordHandle> list;
    list.emplace_back();
    list.push_back(makeCan(5, 1, 0, {1, 2}, 2));
    list.push_back(makeRecord(rv::LinRecord{}, rv::RecordKind::Lin, 5, std::vector<uint8_t>(9)));
    list.push_back(
        makeRecord(rv::EthernetRecord{}, rv::RecordKind::Ethernet, 5, std::vector<uint8_t>(65536)));
    // A head that claims more payload than the record has.
    rv::RecordHandle lying = makeCan(5, 1, 0, {1, 2}, 2);
    list.emplace_back([](void*) {}, const_cast<void*>(lying.record()), lying.size() - 1);
    context->acceptRecords(std::move(list));
    context->endOfInput();
    context->convertFrames();
    context->persistFrames();
    context->close();
    const rv::ConvertStatistics statistics = context->statistics();
    EXPECT_EQ(statistics.accepted, 5U);
    EXPECT_EQ(statistics.skipped, 4U);
    EXPECT_EQ(statistics.converted, 1U);
    EXPECT_EQ(statistics.written, 1U);
    EXPECT_EQ(statistics.dropped, 0U);
    EXPECT_EQ(statistics.bytes, readWholeFile(folder.file("t.blf")).size());
}

struct LevelCase {
    const char* setting;  // environment
    int32_t level;        // of the info
    uint8_t expected;
};

TEST(CompressionLevel, comesFromInfoThenEnvironmentThenDefault) {
    const ScratchFolder folder("levels");
    for (const LevelCase& c : {LevelCase{"", -1, 1}, LevelCase{"6", -1, 6}, LevelCase{"x", -1, 1},
                               LevelCase{"6", 0, 0}, LevelCase{"", 9, 9}, LevelCase{"", 77, 9}}) {
        ASSERT_TRUE(quill::os::setEnvironment("RV_BLF_COMPRESSION_LEVEL", c.setting));
        const auto context = create(folder.file("t.blf"), 0, c.level);
        std::vector<rv::RecordHandle> list;
        for (uint64_t i = 0; i < 100; ++i) list.push_back(makeCan(i, 1, 0, {1, 2}, 2));
        context->acceptRecords(std::move(list));
        context->endOfInput();
        context->convertFrames();
        context->persistFrames();
        context->close();
        const auto walked = walkBlf(folder.file("t.blf"));
        ASSERT_TRUE(walked);
        EXPECT_EQ(walked->level, c.expected);
        EXPECT_EQ(walked->objects.size(), 100U);
        EXPECT_EQ(walked->storedContainers, c.expected == 0 ? 1U : 0U);
    }
}

}  // namespace

}  // namespace quill::testing
