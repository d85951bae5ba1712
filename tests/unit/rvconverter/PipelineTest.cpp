#include <gtest/gtest.h>

#include <future>
#include <numeric>

#include "BlfSink.h"
#include "BlockPipeline.h"
#include "FileConvertContext.h"
#include "RecordQueue.h"
#include "unit/rvconverter/BlfWalker.h"
#include "unit/rvconverter/RecordMaker.h"
#include "unit/rvconverter/ScratchFolder.h"

namespace quill::testing {

namespace {

std::vector<rv::RecordHandle> listOf(size_t frames, uint64_t firstNs) {
    std::vector<rv::RecordHandle> list;
    for (size_t i = 0; i < frames; ++i) list.push_back(makeCan(firstNs + i, 1, 0, {1}, 1));
    return list;
}

// Work of very different length, so that blocks overtake each other between the packers.
void packUnevenly(rv::Block& block) {
    std::vector<uint64_t> work((block.frames % 7) * 20'000, block.frames);
    block.packedSize = std::accumulate(work.begin(), work.end(), uint64_t{0}) % 2;
    block.objects = 1;
}

TEST(BlockPipeline, keepsTheOrderOfItsInput) {
    constexpr uint64_t kBlocks = 500;
    rv::BlockPipeline pipeline(4, {packUnevenly, packUnevenly, packUnevenly});
    auto producer = std::async(std::launch::async, [&] {
        for (uint64_t i = 0; i < kBlocks; ++i) {
            auto block = pipeline.take();
            block->frames = i;
            EXPECT_TRUE(pipeline.submit(std::move(block)));
        }
        pipeline.finish();
    });
    uint64_t expected = 0;
    while (auto block = pipeline.next()) {
        ASSERT_EQ(block->frames, expected++);
        ASSERT_EQ(block->objects, 1U) << "handed on before it was packed";
        pipeline.recycle(std::move(block));
    }
    EXPECT_EQ(expected, kBlocks);
}

TEST(BlockPipeline, stopWakesAProducerThatWaitsForRoom) {
    rv::BlockPipeline pipeline(1, {});
    ASSERT_TRUE(pipeline.submit(std::make_unique<rv::Block>()));
    auto blocked = std::async(std::launch::async,
                              [&] { return pipeline.submit(std::make_unique<rv::Block>()); });
    pipeline.stop();
    EXPECT_FALSE(blocked.get());
    EXPECT_EQ(pipeline.next(), nullptr);
}

TEST(RecordQueue, dropsBeyondItsBoundAndRemembersWhere) {
    const auto sample = listOf(100, 0);
    size_t bytes = sample.capacity() * sizeof(rv::RecordHandle);
    for (const auto& record : sample) bytes += record.size();
    rv::RecordQueue queue(bytes);
    EXPECT_TRUE(queue.push(listOf(100, 0)));
    EXPECT_FALSE(queue.push(listOf(30, 1000)));
    EXPECT_FALSE(queue.push(listOf(40, 2000)));
    const auto first = queue.pop();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->before.frames, 0U);
    EXPECT_TRUE(queue.push(listOf(50, 3000)));
    const auto second = queue.pop();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->before.frames, 70U);
    EXPECT_EQ(second->before.firstNs, 1000U);
    EXPECT_EQ(second->before.lastNs, 2039U);
    EXPECT_EQ(second->records.size(), 50U);
    queue.close();
    EXPECT_FALSE(queue.pop());
}

TEST(Overrun, isCountedAndMarkedInTheFile) {
    const ScratchFolder folder("overrun");
    const std::string path = folder.file("t.blf");
    auto sink = std::make_unique<rv::BlfSink>(1, 1);
    std::string reason;
    ASSERT_TRUE(sink->create(path, 0, reason)) << reason;
    constexpr size_t kRoomForTwoLists = 50'000;
    rv::FileConvertContext context(std::move(sink), 0, kRoomForTwoLists);
    constexpr uint64_t kTime = 1'700'000'000'000'000'000U;
    for (uint64_t i = 0; i < 5; ++i) context.acceptRecords(listOf(400, kTime + 1'000'000 * i));
    context.endOfInput();
    context.convertFrames();
    context.persistFrames();
    context.close();
    const rv::ConvertStatistics statistics = context.statistics();
    EXPECT_GT(statistics.dropped, 0U);
    EXPECT_EQ(statistics.written + statistics.dropped, 2000U);
    EXPECT_NE(context.errorText(), "");
    const auto walked = walkBlf(path);
    ASSERT_TRUE(walked);
    ASSERT_FALSE(walked->objects.empty());
    const WalkedObject& last = walked->objects.back();
    ASSERT_EQ(last.type, 126U);
    EXPECT_EQ(last.number(12, 4), statistics.dropped);
    EXPECT_EQ(walked->headerObjects, statistics.written + 2);
}

}  // namespace

}  // namespace quill::testing
