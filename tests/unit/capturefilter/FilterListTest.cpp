#include <gtest/gtest.h>
#include <spdlog/spdlog.h>

#include <functional>

#include "core/capturefilter/model/CANFilterModel.h"
#include "core/capturefilter/model/LINFilterModel.h"

namespace rv {
namespace {

class FixedChannels final : public ChannelResolver {
public:
    [[nodiscard]] std::optional<NamedChannel> findChannel(const std::string& name) const override {
        if (name == "can1") return NamedChannel{"CAN", 4};
        if (name == "lin1") return NamedChannel{"LIN", 2};
        if (name == "gone") return NamedChannel{"CAN", -1};
        if (name == "linGone") return NamedChannel{"LIN", -1};
        return std::nullopt;
    }
};

struct Lists {
    CANFrameFilterList can{std::make_shared<FixedChannels>()};
    LINFrameFilterList lin{std::make_shared<FixedChannels>()};
    [[nodiscard]] size_t size() const {
        return can.passItems().size() + can.blockItems().size() + lin.passItems().size() +
               lin.blockItems().size();
    }
};

struct AdditionCase {
    const char* name;
    std::function<bool(Lists&)> add;
    const char* output;  // null: accepted, with nothing on standard output
};
class Addition : public ::testing::TestWithParam<AdditionCase> {};

TEST_P(Addition, isTakenOrRefusedWithItsText) {
    spdlog::set_level(spdlog::level::off);  // the log goes to standard output by default
    Lists lists;
    ::testing::internal::CaptureStdout();
    const bool taken = GetParam().add(lists);
    const std::string output = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(taken, GetParam().output == nullptr);
    EXPECT_EQ(output, GetParam().output == nullptr ? "" : GetParam().output + std::string("\n"));
    EXPECT_EQ(lists.size(), taken ? 1U : 0U);
}

const char* const kOutOfRange = "[CANFrameFilter]extended or dir out of range!";
const char* const kBadChannel = "[CANFrameFilter]channel nope is invalid!";

INSTANTIATE_TEST_SUITE_P(
    Can, Addition,
    ::testing::Values(
        AdditionCase{"lastStandard",
                     [](Lists& l) { return l.can.addPassList(0x7FF, 0, 0, "can1"); }, nullptr},
        AdditionCase{"beyondStandard",
                     [](Lists& l) { return l.can.addPassList(0x800, 0, 0, "can1"); },
                     "[CANFrameFilter]id 2048 is invalid!"},
        AdditionCase{"lastExtended",
                     [](Lists& l) { return l.can.addBlockList(0x1FFFFFFF, 1, 1, "can1"); },
                     nullptr},
        AdditionCase{"beyondExtended",
                     [](Lists& l) { return l.can.addBlockList(0x20000000, 1, 0, "can1"); },
                     "[CANFrameFilter]id 536870912x is invalid!"},
        AdditionCase{"dirBeforeId",
                     [](Lists& l) { return l.can.addPassList(0x20000000, 0, 2, "can1"); },
                     kOutOfRange},
        AdditionCase{"extendedTwo", [](Lists& l) { return l.can.addBlockList(1, 2, 0, "can1"); },
                     kOutOfRange},
        AdditionCase{"unknownChannel", [](Lists& l) { return l.can.addPassList(1, 0, 0, "nope"); },
                     kBadChannel},
        AdditionCase{"otherBus", [](Lists& l) { return l.can.addPassList(1, 0, 0, "lin1"); },
                     "[CANFrameFilter]channel lin1 is invalid!"},
        AdditionCase{"invalidIndex", [](Lists& l) { return l.can.addPassChannel("gone"); },
                     "[CANFrameFilter]channel gone is invalid!"},
        AdditionCase{"range", [](Lists& l) { return l.can.addPassRangeList(5, 5, 0, 0, "can1"); },
                     nullptr},
        AdditionCase{"rangeBackwards",
                     [](Lists& l) { return l.can.addBlockRangeList(6, 5, 0, 0, "can1"); },
                     "[CANFrameFilter]id start 6 id end 5 is invalid!"},
        AdditionCase{"rangeBeyond",
                     [](Lists& l) { return l.can.addPassRangeList(0, 0x800, 0, 0, "can1"); },
                     "[CANFrameFilter]id start 0 id end 2048 is invalid!"},
        AdditionCase{"rangeDir",
                     [](Lists& l) { return l.can.addPassRangeList(1, 2, 0, 2, "can1"); },
                     kOutOfRange},
        AdditionCase{"name", [](Lists& l) { return l.can.addNamePassList("Door", 1, "can1"); },
                     nullptr},
        AdditionCase{"emptyName", [](Lists& l) { return l.can.addNameBlockList("", 2, "can1"); },
                     "[CANFrameFilter]frame name is empty!"},
        AdditionCase{"nameDir", [](Lists& l) { return l.can.addNamePassList("Door", 2, "can1"); },
                     "[CANFrameFilter]dir out of range!"},
        AdditionCase{"channel", [](Lists& l) { return l.can.addBlockChannel("can1"); }, nullptr}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Lin, Addition,
    ::testing::Values(
        AdditionCase{"lastId", [](Lists& l) { return l.lin.addPassList(63, 1, "lin1"); }, nullptr},
        AdditionCase{"beyondId", [](Lists& l) { return l.lin.addBlockList(64, 0, "lin1"); },
                     "[LINFrameFilterList]id 64 is invalid!"},
        AdditionCase{"dirBeforeId", [](Lists& l) { return l.lin.addBlockList(64, 2, "lin1"); },
                     "[LINFrameFilterList]dir out of range!"},
        AdditionCase{"unknownChannel", [](Lists& l) { return l.lin.addPassList(1, 0, "nope"); },
                     "[LINFrameFilterList]channel nope is invalid!"},
        AdditionCase{"otherBus", [](Lists& l) { return l.lin.addBlockList(1, 0, "can1"); },
                     "[LINFrameFilterList]channel can1 is invalid!"},
        AdditionCase{"passRangeDir",
                     [](Lists& l) { return l.lin.addPassRangeList(1, 2, 2, "lin1"); },
                     "[LINFrameFilterList]dir out of range!"},
        AdditionCase{"blockRangeDir",
                     [](Lists& l) { return l.lin.addBlockRangeList(1, 2, 2, "lin1"); },
                     kOutOfRange},
        AdditionCase{"rangeBackwards",
                     [](Lists& l) { return l.lin.addPassRangeList(3, 2, 0, "lin1"); },
                     "[LINFrameFilterList]idStart 3, idEnd2 is invalid!"},
        AdditionCase{"rangeChannel",
                     [](Lists& l) { return l.lin.addBlockRangeList(1, 2, 0, "nope"); },
                     kBadChannel},
        AdditionCase{"emptyName", [](Lists& l) { return l.lin.addNamePassList("", 0, "lin1"); },
                     "[CANFrameFilter]frame name is empty!"},
        AdditionCase{"nameDir", [](Lists& l) { return l.lin.addNameBlockList("A", 2, "lin1"); },
                     "[CANFrameFilter]dir out of range!"},
        AdditionCase{"wholeChannel", [](Lists& l) { return l.lin.addPassChannel("lin1"); },
                     nullptr},
        AdditionCase{"channelGone", [](Lists& l) { return l.lin.addBlockChannel("linGone"); },
                     "[CANFrameFilter]channel linGone is invalid!"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(FilterLists, keepWhatWasAddedAndClearBothSides) {
    Lists lists;
    ASSERT_TRUE(lists.can.addPassRangeList(0x10, 0x1FFFFFFF, 1, 1, "can1"));
    ASSERT_TRUE(lists.lin.addBlockList(9, 1, "lin1"));
    CANFrameFilterItem range;
    range.isRange = true;
    range.extended = 1;
    range.idRangeStart = 0x10;
    range.idRangeEnd = 0x1FFFFFFF;
    range.dir = 1;
    range.channelId = 4;
    EXPECT_EQ(lists.can.passItems(), std::vector{range});
    LINFrameFilterItem nine;
    nine.id = 9;
    nine.dir = 1;
    nine.channelId = 2;
    EXPECT_EQ(lists.lin.blockItems(), std::vector{nine});
    lists.can.clearFilter();
    lists.lin.clearFilter();
    EXPECT_EQ(lists.size(), 0U);
}

}  // namespace
}  // namespace rv
