#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

#include "core/capturefilter/model/CaptureFilterManager.h"
#include "core/capturefilter/model/CompiledFilter.h"
#include "core/capturefilter/model/FilterSource.h"

namespace rv {
namespace {

using Items = std::vector<CANFrameFilterItem>;

// Entry by entry, as a reader of the rules would do it.
bool matchesItem(const CANFrameFilterItem& item, const FilterSubject& subject) {
    if (item.channelId != subject.channel) return false;
    if (item.wholeChannel) return true;
    if (item.dir != subject.dir) return false;
    if (!item.name.empty()) return item.name == subject.name;
    if ((item.extended != 0) != subject.extended) return false;
    if (item.isRange) return item.idRangeStart <= subject.id && subject.id <= item.idRangeEnd;
    return item.id == subject.id;
}

bool referencePasses(const Items& pass, const Items& block, const FilterSubject& subject) {
    for (const auto& item : block) {
        if (matchesItem(item, subject)) return false;
    }
    for (const auto& item : pass) {
        if (matchesItem(item, subject)) return true;
    }
    return pass.empty();
}

class RandomLists {
public:
    explicit RandomLists(uint64_t seed) : m_random(seed) {}
    uint64_t below(uint64_t limit) { return m_random() % limit; }
    // Few values, so that entries and frames meet often; the edges of both identifier kinds too.
    uint32_t id(bool extended) {
        const uint32_t most = extended ? 0x1FFFFFFF : 0x7FF;
        switch (below(4)) {
            case 0:
                return most - static_cast<uint32_t>(below(3));
            case 1:
                return static_cast<uint32_t>(below(3));
            default:
                return 0x100 + static_cast<uint32_t>(below(40));
        }
    }
    std::string name() {
        return below(3) == 0 ? "" : std::string(1, static_cast<char>('A' + below(3)));
    }
    CANFrameFilterItem item() {
        CANFrameFilterItem item;
        item.channelId = static_cast<int32_t>(below(3));
        item.dir = static_cast<uint16_t>(below(2));
        item.extended = static_cast<uint32_t>(below(2));
        item.id = id(item.extended != 0);
        switch (below(12)) {
            case 0:
                item.wholeChannel = true;
                break;
            case 1:
                item.name = name();
                break;
            case 2:
            case 3:
            case 4: {
                item.isRange = true;
                const uint32_t other = id(item.extended != 0);
                item.idRangeStart = std::min(item.id, other);
                item.idRangeEnd = std::max(item.id, other);
                break;
            }
            default:
                break;
        }
        return item;
    }
    Items items(uint64_t most) {
        Items list;
        for (uint64_t i = below(most + 1); i > 0; --i) list.push_back(item());
        return list;
    }

private:
    std::mt19937_64 m_random;
};

TEST(CompiledFilter, decidesAsAWalkOverTheEntriesDoes) {
    constexpr uint64_t kSeed = 7;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    RandomLists random(kSeed);
    for (int round = 0; round < 400; ++round) {
        const Items pass = random.items(12);
        const Items block = random.items(6);
        const CompiledFilter filter(pass, block);
        for (int frame = 0; frame < 200; ++frame) {
            const std::string name = random.name();
            FilterSubject subject;
            subject.extended = random.below(2) == 1;
            subject.id = random.id(subject.extended);
            subject.dir = static_cast<uint16_t>(random.below(2));
            subject.channel = static_cast<uint8_t>(random.below(3));
            subject.name = name;
            ASSERT_EQ(filter.passes(subject), referencePasses(pass, block, subject))
                << "round " << round << " id " << subject.id;
        }
    }
}

CANFrameFilterItem idItem(uint32_t id) {
    CANFrameFilterItem item;
    item.id = id;
    return item;
}

// A frame that comes after a change is judged by the changed list, while both go on at once.
TEST(FilterSource, changesTakeEffectWhileFramesFlow) {
    auto source = std::make_shared<FilterSource>();
    FilterReader reader(source);
    source->add(FilterSource::Side::Pass, idItem(1));
    EXPECT_FALSE(reader.passes({2, false, 0, 0, {}}));
    std::atomic<bool> stop{false};
    std::thread frames([&] {
        FilterReader own(source);
        while (!stop) EXPECT_TRUE(own.passes({1, false, 0, 0, {}}));
    });
    for (uint32_t id = 2; id < 300; ++id) {
        source->add(FilterSource::Side::Pass, idItem(id));
        EXPECT_TRUE(reader.passes({id, false, 0, 0, {}}));
    }
    source->add(FilterSource::Side::Block, idItem(2));
    EXPECT_FALSE(reader.passes({2, false, 0, 0, {}}));
    stop = true;
    frames.join();
    source->clear();
    EXPECT_TRUE(reader.passes({999, false, 1, 3, {}}));
}

TEST(CaptureFilterManager, givesEachViewItsOwnLists) {
    CaptureFilterManager manager;
    auto list = std::make_shared<FilterSource>();
    list->add(FilterSource::Side::Block, idItem(5));
    using Bus = CaptureFilterManager::Bus;
    EXPECT_FALSE(manager.setFilter("recorder", Bus::Can, list));  // no such view yet
    EXPECT_TRUE(manager.addView("recorder"));
    EXPECT_FALSE(manager.addView("recorder"));
    EXPECT_TRUE(manager.addView("script"));
    EXPECT_TRUE(manager.setFilter("recorder", Bus::Can, list));
    const FilterSubject five{5, false, 0, 0, {}};
    EXPECT_FALSE(manager.reader("recorder", Bus::Can).passes(five));
    EXPECT_TRUE(manager.reader("recorder", Bus::Lin).passes(five));
    EXPECT_TRUE(manager.reader("script", Bus::Can).passes(five));
    EXPECT_TRUE(manager.removeFilterFromView("recorder", Bus::Can));
    EXPECT_TRUE(manager.reader("recorder", Bus::Can).passes(five));
    EXPECT_TRUE(manager.removeView("script"));
    EXPECT_FALSE(manager.clearFilterFromView("script"));
}

}  // namespace
}  // namespace rv
