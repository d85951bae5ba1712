#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/capturefilter/model/ChannelResolver.h"
#include "core/capturefilter/model/FilterSource.h"
#include "core/capturefilter/model/FrameFilterItem.h"

namespace rv {

// Pass and block entries for CAN frames. Each addition checks its arguments, writes what is wrong
// with them to standard output and answers false; the lists then stay as they are. Channel names
// are looked up through the resolver at the time of the addition. Thread-safe.
class CANFrameFilterList {
public:
    explicit CANFrameFilterList(std::shared_ptr<const ChannelResolver> channels);

    bool addPassList(uint32_t id, uint32_t extended, uint16_t dir, const std::string& channel);
    bool addBlockList(uint32_t id, uint32_t extended, uint16_t dir, const std::string& channel);
    bool addNamePassList(const std::string& name, uint16_t dir, const std::string& channel);
    bool addNameBlockList(const std::string& name, uint16_t dir, const std::string& channel);
    bool addPassRangeList(uint32_t idStart, uint32_t idEnd, uint32_t extended, uint16_t dir,
                          const std::string& channel);
    bool addBlockRangeList(uint32_t idStart, uint32_t idEnd, uint32_t extended, uint16_t dir,
                           const std::string& channel);
    bool addPassChannel(const std::string& channel);
    bool addBlockChannel(const std::string& channel);
    void clearFilter();

    [[nodiscard]] std::vector<CANFrameFilterItem> passItems() const;
    [[nodiscard]] std::vector<CANFrameFilterItem> blockItems() const;
    // What readers on the frames' road look at; follows every later change of the list.
    [[nodiscard]] const std::shared_ptr<FilterSource>& source() const { return m_source; }

private:
    using Side = FilterSource::Side;

    bool resolve(const std::string& channel, int32_t& index) const;
    bool makeIdItem(uint32_t id, uint32_t extended, uint16_t dir, const std::string& channel,
                    CANFrameFilterItem& item) const;
    bool addRange(Side side, uint32_t idStart, uint32_t idEnd, uint32_t extended, uint16_t dir,
                  const std::string& channel);
    bool addName(Side side, const std::string& name, uint16_t dir, const std::string& channel);
    bool addChannel(Side side, const std::string& channel);

    std::shared_ptr<const ChannelResolver> m_channels;
    std::shared_ptr<FilterSource> m_source = std::make_shared<FilterSource>();
};

}  // namespace rv
