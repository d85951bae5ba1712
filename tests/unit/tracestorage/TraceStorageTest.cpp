#include "core/tracestorage/TraceStorage.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>

#include "core/tracestorage/TraceReader.h"

namespace tracestorage {
namespace {
namespace fs = std::filesystem;

class TraceStorageTest : public ::testing::Test {
protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        m_folder = fs::path(QUILL_BINARY_DIR) / "tests" / "tracestorage" / info->name();
        fs::remove_all(m_folder);
        fs::create_directories(m_folder);
    }
    void TearDown() override { fs::remove_all(m_folder); }

    [[nodiscard]] std::string path(const char* name) const { return (m_folder / name).string(); }
    std::unique_ptr<TraceStorage> openStorage() {
        std::string reason;
        auto storage = TraceStorage::open(path("t.qtrace"), reason);
        EXPECT_NE(storage, nullptr) << reason;
        return storage;
    }
    FileIdentity makeFile(const char* name, const std::string& content) {
        std::ofstream(path(name), std::ios::binary) << content;
        return identifyFile(path(name)).value();
    }
    int64_t count(const char* sql) {
        sqlite3* database = nullptr;
        sqlite3_open(path("t.qtrace").c_str(), &database);
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database, sql, -1, &statement, nullptr);
        const int64_t value =
            sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int64(statement, 0) : -1;
        sqlite3_finalize(statement);
        sqlite3_close(database);
        return value;
    }
    fs::path m_folder;
};

FrameBatch batchOf(size_t frames) {
    FrameBatch batch;
    for (size_t i = 0; i < frames; ++i) {
        FrameRecord record;
        record.timeNs = static_cast<int64_t>(i) * 1000;
        record.bus = i % 2 == 0 ? Bus::Can : Bus::Lin;
        record.channel = static_cast<uint16_t>(1 + i % 3);
        record.ident = static_cast<uint32_t>(i % 50);
        record.flags = flag::kExtended;
        record.dlc = 3;
        record.detail = 0xFFFFFFFF;
        const uint8_t data[3] = {static_cast<uint8_t>(i), 2, 3};
        batch.append(record, std::span(data).first(i % 4));
    }
    return batch;
}

ImportSummary summaryOf(const char* format) {
    ImportSummary summary;
    summary.format = format;
    summary.startNs = 5;
    summary.units = 9;
    summary.dropped = 1;
    summary.skipped = {{"SYS_VARIABLE", 8}};
    summary.notes = {{77, "12 bytes lost"}};
    return summary;
}

TEST_F(TraceStorageTest, whatIsStoredIsReadBack) {
    auto storage = openStorage();
    const FileIdentity file = makeFile("a.blf", "content");
    EXPECT_EQ(storage->lookUp(file), ImportState::NotImported);
    ASSERT_TRUE(storage->beginImport(file));
    EXPECT_EQ(storage->lookUp(file), ImportState::Importing);
    const FrameBatch batch = batchOf(100);
    ASSERT_TRUE(storage->insertFrames(batch));
    ASSERT_TRUE(storage->finishImport(summaryOf("BLF")));
    EXPECT_EQ(storage->lookUp(file), ImportState::Imported);

    std::string reason;
    auto reader = TraceReader::open(path("t.qtrace"), reason);
    ASSERT_NE(reader, nullptr) << reason;
    const auto files = reader->files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].frames, 100U);
    EXPECT_EQ(files[0].format, "BLF");
    EXPECT_EQ(files[0].lastNs, 99'000);
    ASSERT_EQ(reader->notes(files[0].id).size(), 1U);
    EXPECT_EQ(reader->skipped(files[0].id).at(0).count, 8U);
    size_t at = 0;
    ASSERT_TRUE(reader->forEachFrame(files[0].id, [&](const FrameRecord& got, auto payload) {
        const FrameRecord& want = batch.frames()[at++];
        EXPECT_EQ(got.timeNs, want.timeNs);
        EXPECT_EQ(got.bus, want.bus);
        EXPECT_EQ(got.channel, want.channel);
        EXPECT_EQ(got.ident, want.ident);
        EXPECT_EQ(got.flags, want.flags);
        EXPECT_EQ(got.detail, want.detail);
        const auto wanted = batch.payload(want);
        EXPECT_TRUE(std::equal(payload.begin(), payload.end(), wanted.begin(), wanted.end()));
        return true;
    }));
    EXPECT_EQ(at, 100U);
    EXPECT_EQ(count("SELECT count(*) FROM can_frame WHERE extended=1"), 50);
    EXPECT_EQ(count("SELECT count(*) FROM lin_frame"), 50);
    EXPECT_EQ(count("SELECT count(*) FROM sqlite_master WHERE type='index' AND tbl_name='frame'"),
              2);
}

TEST_F(TraceStorageTest, anAbandonedImportLeavesNothing) {
    auto storage = openStorage();
    const FileIdentity file = makeFile("a.blf", "content");
    ASSERT_TRUE(storage->beginImport(file));
    ASSERT_TRUE(storage->insertFrames(batchOf(5000)));
    storage->abandonImport();
    EXPECT_EQ(storage->lookUp(file), ImportState::NotImported);
    EXPECT_EQ(count("SELECT count(*) FROM frame"), 0);
    EXPECT_EQ(count("SELECT count(*) FROM file"), 0);
    ASSERT_TRUE(storage->beginImport(file)) << "it can be started again";
    ASSERT_TRUE(storage->finishImport(summaryOf("BLF")));
}

TEST_F(TraceStorageTest, aChangedFileReplacesItsOldFrames) {
    auto storage = openStorage();
    const FileIdentity old = makeFile("a.asc", "old content");
    ASSERT_TRUE(storage->beginImport(old));
    ASSERT_TRUE(storage->insertFrames(batchOf(10)));
    ASSERT_TRUE(storage->finishImport(summaryOf("ASC")));
    const FileIdentity changed = makeFile("a.asc", "new content");
    EXPECT_NE(old.hash, changed.hash);
    EXPECT_EQ(storage->lookUp(changed), ImportState::NotImported);
    ASSERT_TRUE(storage->beginImport(changed));
    ASSERT_TRUE(storage->insertFrames(batchOf(3)));
    EXPECT_EQ(count("SELECT count(*) FROM frame"), 10) << "others see the old frames until the end";
    ASSERT_TRUE(storage->finishImport(summaryOf("ASC")));
    EXPECT_EQ(count("SELECT count(*) FROM frame"), 3);
    EXPECT_EQ(count("SELECT count(*) FROM file"), 1);
    EXPECT_EQ(count("SELECT count(*) FROM note"), 1);
}

TEST_F(TraceStorageTest, twoImportsIntoOneDatabaseAreRefused) {
    auto first = openStorage();
    auto second = openStorage();
    const FileIdentity a = makeFile("a.blf", "a");
    const FileIdentity b = makeFile("b.blf", "b");
    ASSERT_TRUE(first->beginImport(a));
    EXPECT_FALSE(first->beginImport(b));
    EXPECT_FALSE(second->beginImport(b));
    EXPECT_FALSE(second->lastError().empty());
    ASSERT_TRUE(first->insertFrames(batchOf(10)));
    ASSERT_TRUE(first->finishImport(summaryOf("BLF")));
    ASSERT_TRUE(second->beginImport(b));
    ASSERT_TRUE(second->finishImport(summaryOf("BLF")));
    EXPECT_EQ(count("SELECT count(*) FROM frame"), 10);
}

TEST_F(TraceStorageTest, aForeignDatabaseIsNotTouched) {
    sqlite3* database = nullptr;
    sqlite3_open(path("t.qtrace").c_str(), &database);
    sqlite3_exec(database, "CREATE TABLE letters(a)", nullptr, nullptr, nullptr);
    sqlite3_close(database);
    std::string reason;
    EXPECT_EQ(TraceStorage::open(path("t.qtrace"), reason), nullptr);
    EXPECT_NE(reason.find("not a trace database"), std::string::npos) << reason;
    EXPECT_EQ(count("SELECT count(*) FROM sqlite_master"), 1);
    std::ofstream(path("text.qtrace")) << std::string(5000, 'x');
    EXPECT_EQ(TraceStorage::open(path("text.qtrace"), reason), nullptr);
}

TEST_F(TraceStorageTest, identityFollowsHeadTailAndSize) {
    const std::string base(300'000, 'a');
    const auto hashOf = [&](std::string content) { return makeFile("f", content).hash; };
    const std::string plain = hashOf(base);
    for (const size_t place : {size_t{0}, size_t{65535}, base.size() - 1, base.size() - 65536}) {
        std::string changed = base;
        changed[place] = 'b';
        EXPECT_NE(hashOf(changed), plain) << place;
    }
    EXPECT_FALSE(identifyFile(path("missing")).has_value());
    EXPECT_FALSE(identifyFile(m_folder.string()).has_value());
}

}  // namespace
}  // namespace tracestorage
