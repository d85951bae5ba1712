#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/capturefilter/model/ChannelResolver.h"
#include "core/capturefilter/model/FilterSource.h"
#include "core/capturefilter/model/FrameFilterItem.h"

namespace rv {

// Pass and block entries for LIN frames; as CANFrameFilterList, without extended identifiers.
// Identifiers are 0 to 63. Several of its messages are those of the CAN list: log readers and
// scripts know them so.
class LINFrameFilterList {
public:
    explicit LINFrameFilterList(std::shared_ptr<const ChannelResolver> channels);

    bool addPassList(uint32_t id, uint16_t dir, const std::string& channel);
    bool addBlockList(uint32_t id, uint16_t dir, const std::string& channel);
    bool addNamePassList(const std::string& name, uint16_t dir, const std::string& channel);
    bool addNameBlockList(const std::string& name, uint16_t dir, const std::string& channel);
    bool addPassRangeList(uint32_t idStart, uint32_t idEnd, uint16_t dir,
                          const std::string& channel);
    bool addBlockRangeList(uint32_t idStart, uint32_t idEnd, uint16_t dir,
                           const std::string& channel);
    bool addPassChannel(const std::string& channel);
    bool addBlockChannel(const std::string& channel);
    void clearFilter();

    [[nodiscard]] std::vector<LINFrameFilterItem> passItems() const;
    [[nodiscard]] std::vector<LINFrameFilterItem> blockItems() const;
    [[nodiscard]] const std::shared_ptr<FilterSource>& source() const { return m_source; }

private:
    using Side = FilterSource::Side;

    bool resolve(const char* tag, const std::string& channel, int32_t& index) const;
    bool makeIdItem(uint32_t id, uint16_t dir, const std::string& channel,
                    CANFrameFilterItem& item) const;
    bool addRange(Side side, uint32_t idStart, uint32_t idEnd, uint16_t dir,
                  const std::string& channel);
    bool addName(Side side, const std::string& name, uint16_t dir, const std::string& channel);
    bool addChannel(Side side, const std::string& channel);

    std::shared_ptr<const ChannelResolver> m_channels;
    std::shared_ptr<FilterSource> m_source = std::make_shared<FilterSource>();
};

}  // namespace rv
