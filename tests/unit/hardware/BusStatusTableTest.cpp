#include "core/hardware/boxdev/BusStatusTable.h"

#include <gtest/gtest.h>

namespace RV::BoxDev {
namespace {

constexpr int32_t kStatus = RvConnectionEventTypeBusStatus;
constexpr int32_t kTimeout = RvConnectionEventTypeBusTimeout;

TEST(BusStatusTable, noticesWarningAndPassiveOnceForEachChange) {
    BusStatusTable table;
    const std::string warning = "bus is in warning state,check connections.";
    const std::string passive = "bus is in passive state,check connections.";
    struct Step {
        int32_t channel, status;
        std::optional<std::string> notice;
    };
    const Step steps[] = {{0, 0, {}},      {0, 2, warning}, {0, 2, {}}, {1, 2, warning},
                          {0, 3, passive}, {0, 4, {}},      {0, 1, {}}, {0, 2, warning},
                          {0, 5, {}},      {0, -1, {}}};
    for (const Step& step : steps) {
        EXPECT_EQ(table.handle(kStatus, step.channel, step.status), step.notice)
            << step.channel << ' ' << step.status;
    }
    EXPECT_EQ(table.status(0), 2);  // values outside the table change nothing
}

TEST(BusStatusTable, tellsOnlyTheFirstTimeOutOfAChannel) {
    BusStatusTable table;
    EXPECT_EQ(table.handle(kTimeout, 2, 0), "CAN3");
    EXPECT_EQ(table.handle(kTimeout, 2, 0), std::nullopt);
    EXPECT_EQ(table.handle(kTimeout, 0, 0), "CAN1");
    EXPECT_EQ(table.timeouts(2), 2U);
    table.clearTimeouts();
    EXPECT_EQ(table.handle(kTimeout, 2, 0), "CAN3");
}

TEST(BusStatusTable, ignoresSilentAndUnknownEvents) {
    BusStatusTable table;
    for (const int32_t type : {0, 1, 2, 3, 5, 7, -1}) {
        EXPECT_EQ(table.handle(type, 0, 2), std::nullopt) << type;
    }
    EXPECT_EQ(table.status(0), 0);
}

}  // namespace
}  // namespace RV::BoxDev
