#include "core/playback/TraceFileImporter.h"

#include <random>
#include <thread>

#include "ImporterFixture.h"
#include "core/playback/importer/TraceAscFileParser.h"

namespace playback::test {
namespace {

struct TypeCase {
    const wchar_t* path;
    TraceFileType type;
};
class Classification : public ::testing::TestWithParam<TypeCase> {};

TEST_P(Classification, followsTheLastExtensionInAnyCase) {
    EXPECT_EQ(TraceFileImporter::classify(GetParam().path), GetParam().type);
}

INSTANTIATE_TEST_SUITE_P(Paths, Classification,
                         ::testing::Values(TypeCase{L"a.asc", TraceFileType::Asc},
                                           TypeCase{L"A.ASC", TraceFileType::Asc},
                                           TypeCase{L"x/y.BlF", TraceFileType::Blf},
                                           TypeCase{L"a.b.pcap", TraceFileType::Pcap},
                                           TypeCase{L"a.pcapng", TraceFileType::Pcapng},
                                           TypeCase{L"a.pcap.gz", TraceFileType::None},
                                           TypeCase{L"asc", TraceFileType::None},
                                           TypeCase{L"", TraceFileType::None},
                                           TypeCase{L"dir.asc/file", TraceFileType::None},
                                           TypeCase{L"dir.asc\\file", TraceFileType::None},
                                           TypeCase{L".blf", TraceFileType::Blf},
                                           TypeCase{L"a.", TraceFileType::None}));

TEST_F(ImporterTest, factoriesRefuseReservedAndUnknownTypes) {
    ImportOptions options;
    options.storage = openStorage();
    const TraceFileImporter importer(wide("a.asc"), {}, options);
    for (const auto type : {TraceFileType::Reserved, TraceFileType::None}) {
        EXPECT_EQ(importer.createTraceFileParser(type), nullptr);
        EXPECT_EQ(TraceFileImporter::createStandardFrameParser(type), nullptr);
    }
    EXPECT_EQ(m_log.count("error: [Importer] unsupport file extension 3"), 1U);
    EXPECT_EQ(m_log.count("error: [Importer] unsupport file extension 3 "), 1U);
    EXPECT_EQ(m_log.count("error: [Importer] unsupport file extension 255"), 1U);
    EXPECT_EQ(m_log.count("error: [Importer] unsupport file extension 255 "), 1U);
}

TEST_F(ImporterTest, storesEveryFrameAndLogsEveryStage) {
    writeFile("big.asc", ascTrace(20'000));
    const ImportResult result = import("big.asc");
    EXPECT_TRUE(result.success);
    EXPECT_EQ(result.stored, 20'000U);
    EXPECT_EQ(storedFrames(), 20'000U);
    for (const char* line :
         {"info: [Importer] begin async import",
          "info: [Importer] parseFile finish, unit nums 20000",
          "info: [Importer] parseFrame finish, frame nums 20000",
          "info: [Importer] import finish, store frames 20000", "info: [Importer] import success",
          "info: [Importer] prepare insert into db frames 2048",
          "info: [Importer] ~TraceFileImporter"}) {
        EXPECT_GE(m_log.count(line), 1U) << line;
    }
}

TEST_F(ImporterTest, theSameFileIsImportedOnce) {
    writeFile("a.asc", ascTrace(10));
    EXPECT_TRUE(import("a.asc").success);
    EXPECT_TRUE(import("a.asc").success);
    EXPECT_EQ(m_log.count("info: [Importer] import finish, file have imported"), 1U);
    EXPECT_EQ(storedFrames(), 10U);
    writeFile("a.asc", ascTrace(12));
    EXPECT_TRUE(import("a.asc").success);
    EXPECT_EQ(storedFrames(), 12U);
}

struct FailureCase {
    const char* name;
    const char* content;  // null: no such file
    uint32_t code;
    const char* line;
};
class Failures : public ImporterTest, public ::testing::WithParamInterface<FailureCase> {};

TEST_P(Failures, areReportedOnceWithTheirCode) {
    const FailureCase& failure = GetParam();
    if (failure.content != nullptr) writeFile(failure.name, failure.content);
    const ImportResult result = import(failure.name);
    EXPECT_FALSE(result.success);
    EXPECT_FALSE(result.cancelled);
    EXPECT_EQ(result.code, failure.code);
    EXPECT_GE(m_log.count(failure.line), 1U) << failure.line;
    EXPECT_EQ(storedFrames(), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, Failures,
    ::testing::Values(
        FailureCase{"missing.blf", nullptr, 0, "error: [Importer] importFail error code 0"},
        FailureCase{"empty.blf", "", 0, "error: [Importer] importFail error code 0"},
        FailureCase{"text.blf", "not a trace at all", 0,
                    "error: [Importer] importFail error code 0"},
        FailureCase{"prose.asc", "Dear reader,\nthis is a letter.\n", 0,
                    "error: [Importer] importFail error code 0"},
        FailureCase{"a.txt", "x", 2,
                    "error: [Importer] parse file fail, file parser pointer is nullptr!"},
        FailureCase{"b.txt", "x", 2,
                    "error: [Importer] frame parse fail, frame parser pointer is nullptr!"},
        FailureCase{"none.asc", "date Sat Sep 30 15:06:13.191 2017\nbase hex timestamps absolute\n",
                    6, "error: [Importer] file just have header, no frame"},
        FailureCase{"events.asc", "base hex  timestamps absolute\n1.0 CAN 1 Status:chip status\n",
                    6, "error: [Importer] file just have header, no frame"}));

TEST_F(ImporterTest, aMissingFileIsLoggedWithItsName) {
    EXPECT_FALSE(import("gone.pcap").success);
    EXPECT_EQ(m_log.count("error: [Importer] open file failed(Not present or file occupied), file "
                          "name " +
                          path("gone.pcap")),
              1U);
}

TEST_F(ImporterTest, aBusyStorageRefusesWithCodeFourAndIsLeftAlone) {
    writeFile("a.asc", ascTrace(10));
    writeFile("b.asc", ascTrace(7));
    const auto storage = openStorage();
    const auto other = tracestorage::identifyFile(path("b.asc")).value();
    ASSERT_TRUE(storage->beginImport(other));
    Outcome outcome;
    ImportOptions options;
    options.storage = storage;
    {
        TraceFileImporter importer(wide("a.asc"), outcome.callback(), options);
        importer.beginAsyncImport();
        EXPECT_EQ(outcome.wait().code, 4U);
    }
    EXPECT_EQ(m_log.count("error: [Importer] data provider begin import fail!"), 1U);
    EXPECT_EQ(storage->lookUp(other), tracestorage::ImportState::Importing);
    storage->abandonImport();
}

// A storage that holds the pipeline up until it is told to go on.
class GatedStorage final : public tracestorage::ImportStorage {
public:
    tracestorage::ImportState lookUp(const tracestorage::FileIdentity&) override { return state; }
    bool beginImport(const tracestorage::FileIdentity&) override { return true; }
    bool insertFrames(const tracestorage::FrameBatch& batch) override {
        entered = true;
        while (!open) std::this_thread::yield();
        frames += batch.size();
        return !failInsert;
    }
    bool finishImport(const tracestorage::ImportSummary&) override { return ++finished == 1; }
    void abandonImport() override { ++abandoned; }

    tracestorage::ImportState state = tracestorage::ImportState::NotImported;
    bool failInsert = false;
    std::atomic<bool> entered{false};
    std::atomic<bool> open{false};
    std::atomic<uint64_t> frames{0};
    std::atomic<int> finished{0};
    std::atomic<int> abandoned{0};
};

TEST_F(ImporterTest, ringsHoldNinetyNineBatchesWhileTheStorageWaits) {
    writeFile("a.asc", ascTrace(500));
    const auto storage = std::make_shared<GatedStorage>();
    Outcome outcome;
    ImportOptions options;
    options.storage = storage;
    options.ascOption = 1;  // a batch holds one line
    TraceFileImporter importer(wide("a.asc"), outcome.callback(), options);
    importer.beginAsyncImport();
    // 99 in each ring; the batch that the storage works on still fills its slot. The parser holds
    // none: it converts from one ring straight into the other.
    while (importer.progress().units < 198) std::this_thread::yield();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    EXPECT_EQ(importer.progress().units, 198U);
    EXPECT_EQ(importer.progress().frames, 99U);
    storage->open = true;
    EXPECT_TRUE(outcome.wait().success);
    importer.wait();
    EXPECT_EQ(storage->frames, 500U);
    EXPECT_EQ(outcome.calls(), 1);
}

TEST_F(ImporterTest, aSecondBeginFailsWithCodeFourAndEndsTheImport) {
    writeFile("a.asc", ascTrace(5000));
    const auto storage = std::make_shared<GatedStorage>();
    Outcome outcome;
    ImportOptions options;
    options.storage = storage;
    TraceFileImporter importer(wide("a.asc"), outcome.callback(), options);
    importer.beginAsyncImport();
    while (!storage->entered) std::this_thread::yield();
    importer.beginAsyncImport();
    storage->open = true;
    EXPECT_EQ(outcome.wait().code, 4U);
    importer.wait();
    EXPECT_EQ(outcome.calls(), 1);
    EXPECT_EQ(storage->abandoned, 1);
    EXPECT_EQ(storage->finished, 0);
    EXPECT_EQ(m_log.count("error: [Importer] import state 1"), 1U);
}

TEST_F(ImporterTest, aStorageThatFailsIsAbandonedAndReported) {
    writeFile("a.asc", ascTrace(100));
    const auto storage = std::make_shared<GatedStorage>();
    storage->failInsert = true;
    storage->open = true;
    Outcome outcome;
    ImportOptions options;
    options.storage = storage;
    TraceFileImporter importer(wide("a.asc"), outcome.callback(), options);
    importer.beginAsyncImport();
    EXPECT_EQ(outcome.wait().code, 4U);
    importer.wait();
    EXPECT_EQ(storage->abandoned, 1);
    storage->failInsert = false;
    Outcome none;
    importer.beginAsyncImport();  // it can be started again
    importer.wait();
    EXPECT_EQ(outcome.calls(), 2);
    EXPECT_EQ(storage->finished, 1);
}

TEST_F(ImporterTest, cancelAtAnyMomentLeavesAllOrNothing) {
    constexpr size_t kFrames = 30'000;
    writeFile("a.asc", ascTrace(kFrames));
    const uint32_t seed = std::random_device{}();
    std::mt19937 random(seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    int cancelled = 0;
    for (int round = 0; round < 25; ++round) {
        std::filesystem::remove(path("t.qtrace"));
        Outcome outcome;
        ImportOptions options;
        options.storage = openStorage();
        TraceFileImporter importer(wide("a.asc"), outcome.callback(), options);
        importer.beginAsyncImport();
        const uint64_t moment = random() % (kFrames + 2000);
        while (importer.progress().frames < moment && outcome.calls() == 0) {
            std::this_thread::yield();
        }
        importer.cancelImport();
        const ImportResult result = outcome.wait();
        EXPECT_EQ(outcome.calls(), 1);
        EXPECT_NE(result.success, result.cancelled);
        EXPECT_EQ(storedFrames(), result.success ? kFrames : 0U);
        if (!result.cancelled) continue;
        ++cancelled;
        importer.beginAsyncImport();
        importer.wait();
        EXPECT_EQ(storedFrames(), kFrames) << "started again after cancelling";
    }
    EXPECT_GE(m_log.count("critical: [Importer] cancel import, storeFrame finish"),
              static_cast<size_t>(cancelled));
    EXPECT_EQ(m_log.count("info: [Importer] cancelImport start"), 25U);
    EXPECT_EQ(m_log.count("info: [Importer] cancelImport success"), 25U);
}

TEST_F(ImporterTest, latestDateAndLongestTimeStillAddUp) {
    writeFile("a.asc",
              "date Sat Sep 30 15:06:13.191 2199\nbase hex  timestamps relative\n"
              "999999999.9 1 100 Rx d 0\n999999999.9 1 101 Rx d 0\n");
    EXPECT_EQ(import("a.asc").stored, 1U) << "the second time adds up to an impossible one";
    std::string reason;
    const auto reader = tracestorage::TraceReader::open(path("t.qtrace"), reason);
    EXPECT_GT(reader->files().at(0).firstNs, reader->files().at(0).startNs);
}

TEST_F(ImporterTest, damagedLinesAreDroppedOnceLoggedAndNoted) {
    writeFile("a.asc",
              "base hex  timestamps absolute\n"
              "0.1 1 100 Rx d 2 01 02\n0.2 1 100 Rx d 8 01\n0.3 1 100 Rx d 8 01\n"
              "0.4 1 101 Rx d 1 ff\n");
    EXPECT_EQ(import("a.asc").stored, 2U);
    EXPECT_EQ(m_log.count("warning: [Importer] unit at 3 dropped: fewer data bytes than announced"),
              1U);
    std::string reason;
    const auto reader = tracestorage::TraceReader::open(path("t.qtrace"), reason);
    const auto files = reader->files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].dropped, 2U);
    const auto notes = reader->notes(files[0].id);
    ASSERT_EQ(notes.size(), 2U);
    EXPECT_EQ(notes[1].position, 4U) << "line number";
}

}  // namespace
}  // namespace playback::test
