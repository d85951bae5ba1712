#ifndef _WIN32

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ImporterFixture.h"

namespace playback::test {
namespace {

// A child process imports until it has frames in its transaction, and is then killed.
void killDuringImport(const std::string& database, const std::string& file, int ready) {
    std::string reason;
    const auto storage = tracestorage::TraceStorage::open(database, reason);
    const auto identity = tracestorage::identifyFile(file);
    if (!storage || !identity || !storage->beginImport(*identity)) _exit(1);
    tracestorage::FrameBatch batch;
    tracestorage::FrameRecord record;
    record.bus = tracestorage::Bus::Can;
    const std::vector<uint8_t> payload(64, 0xAA);
    for (int i = 0; i < 20'000; ++i) batch.append(record, payload);
    // Far more than the cache holds, so that pages of the transaction are in the file itself.
    for (int i = 0; i < 40; ++i) {
        if (!storage->insertFrames(batch)) _exit(2);
    }
    if (write(ready, "x", 1) != 1) _exit(3);
    while (true) pause();
}

TEST_F(ImporterTest, aKilledImportLeavesNothingAndCanBeStartedAgain) {
    writeFile("a.asc", ascTrace(1000));
    (void)openStorage();
    int pipes[2] = {};
    ASSERT_EQ(pipe(pipes), 0);
    const pid_t child = fork();
    if (child == 0) killDuringImport(path("t.qtrace"), path("a.asc"), pipes[1]);
    char ready = 0;
    ASSERT_EQ(read(pipes[0], &ready, 1), 1);
    ASSERT_GT(std::filesystem::file_size(path("t.qtrace")), 10'000'000U);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(pipes[0]);
    close(pipes[1]);
    const ImportResult result = import("a.asc");
    EXPECT_TRUE(result.success);
    EXPECT_EQ(storedFrames(), 1000U);
}

}  // namespace
}  // namespace playback::test

#endif
