#include "core/capturefilter/model/LINFilterModel.h"

#include <iostream>

#include "core/log/Log.h"

namespace rv {

using quill::log::kCaptureFilter;

namespace {

constexpr uint32_t kMostLinId = 0x3F;
constexpr const char* kLinTag = "[LINFrameFilterList]";
// The tag of the CAN list, which most messages of this one carry too.
constexpr const char* kSharedTag = "[CANFrameFilter]";

bool refuseWith(const std::string& text) {
    std::cout << text << '\n' << std::flush;
    return false;
}

LINFrameFilterItem toLinItem(const CANFrameFilterItem& item) {
    return {item.isRange, item.id,        item.idRangeStart, item.idRangeEnd,
            item.dir,     item.channelId, item.name,         item.wholeChannel};
}

std::vector<LINFrameFilterItem> toLinItems(const FilterSource::Items& items) {
    std::vector<LINFrameFilterItem> result;
    for (const CANFrameFilterItem& item : items) result.push_back(toLinItem(item));
    return result;
}

}  // namespace

LINFrameFilterList::LINFrameFilterList(std::shared_ptr<const ChannelResolver> channels)
    : m_channels(std::move(channels)) {}

bool LINFrameFilterList::resolve(const char* tag, const std::string& channel,
                                 int32_t& index) const {
    const auto found = m_channels != nullptr ? m_channels->findChannel(channel) : std::nullopt;
    if (!found || found->busKind != "LIN" || found->index < 0) {
        return refuseWith(std::string(tag) + "channel " + channel + " is invalid!");
    }
    index = found->index;
    return true;
}

bool LINFrameFilterList::makeIdItem(uint32_t id, uint16_t dir, const std::string& channel,
                                    CANFrameFilterItem& item) const {
    if (dir > 1) return refuseWith("[LINFrameFilterList]dir out of range!");
    if (id > kMostLinId) {
        return refuseWith("[LINFrameFilterList]id " + std::to_string(id) + " is invalid!");
    }
    item.id = id;
    item.dir = dir;
    return resolve(kLinTag, channel, item.channelId);
}

bool LINFrameFilterList::addPassList(uint32_t id, uint16_t dir, const std::string& channel) {
    CANFrameFilterItem item;
    if (!makeIdItem(id, dir, channel, item)) return false;
    QUILL_INFO(kCaptureFilter,
               "[LINFrameFilterList]add pass list successed! id: {}, dir: {}, channelId {}", id,
               dir, item.channelId);
    m_source->add(Side::Pass, std::move(item));
    return true;
}

bool LINFrameFilterList::addBlockList(uint32_t id, uint16_t dir, const std::string& channel) {
    CANFrameFilterItem item;
    if (!makeIdItem(id, dir, channel, item)) return false;
    QUILL_INFO(kCaptureFilter,
               "[LINFrameFilterList]add block list successed! id: {}, dir: {}, channelId {}", id,
               dir, item.channelId);
    m_source->add(Side::Block, std::move(item));
    return true;
}

bool LINFrameFilterList::addRange(Side side, uint32_t idStart, uint32_t idEnd, uint16_t dir,
                                  const std::string& channel) {
    if (dir > 1) {
        // The block list reports a bad direction with the CAN list's text.
        return refuseWith(side == Side::Pass ? "[LINFrameFilterList]dir out of range!"
                                             : "[CANFrameFilter]extended or dir out of range!");
    }
    if (idStart > idEnd || idEnd > kMostLinId) {
        return refuseWith("[LINFrameFilterList]idStart " + std::to_string(idStart) + ", idEnd" +
                          std::to_string(idEnd) + " is invalid!");
    }
    CANFrameFilterItem item;
    item.isRange = true;
    item.idRangeStart = idStart;
    item.idRangeEnd = idEnd;
    item.dir = dir;
    if (!resolve(kSharedTag, channel, item.channelId)) return false;
    m_source->add(side, std::move(item));
    return true;
}

bool LINFrameFilterList::addPassRangeList(uint32_t idStart, uint32_t idEnd, uint16_t dir,
                                          const std::string& channel) {
    return addRange(Side::Pass, idStart, idEnd, dir, channel);
}

bool LINFrameFilterList::addBlockRangeList(uint32_t idStart, uint32_t idEnd, uint16_t dir,
                                           const std::string& channel) {
    return addRange(Side::Block, idStart, idEnd, dir, channel);
}

bool LINFrameFilterList::addName(Side side, const std::string& name, uint16_t dir,
                                 const std::string& channel) {
    if (name.empty()) return refuseWith("[CANFrameFilter]frame name is empty!");
    if (dir > 1) return refuseWith("[CANFrameFilter]dir out of range!");
    CANFrameFilterItem item;
    item.name = name;
    item.dir = dir;
    if (!resolve(kSharedTag, channel, item.channelId)) return false;
    m_source->add(side, std::move(item));
    return true;
}

bool LINFrameFilterList::addNamePassList(const std::string& name, uint16_t dir,
                                         const std::string& channel) {
    return addName(Side::Pass, name, dir, channel);
}

bool LINFrameFilterList::addNameBlockList(const std::string& name, uint16_t dir,
                                          const std::string& channel) {
    return addName(Side::Block, name, dir, channel);
}

bool LINFrameFilterList::addChannel(Side side, const std::string& channel) {
    CANFrameFilterItem item;
    item.wholeChannel = true;
    if (!resolve(kSharedTag, channel, item.channelId)) return false;
    m_source->add(side, std::move(item));
    return true;
}

bool LINFrameFilterList::addPassChannel(const std::string& channel) {
    return addChannel(Side::Pass, channel);
}

bool LINFrameFilterList::addBlockChannel(const std::string& channel) {
    return addChannel(Side::Block, channel);
}

void LINFrameFilterList::clearFilter() {
    m_source->clear();
    QUILL_INFO(kCaptureFilter, "CAN Frame filter cleared!");
}

std::vector<LINFrameFilterItem> LINFrameFilterList::passItems() const {
    return toLinItems(m_source->items(Side::Pass));
}

std::vector<LINFrameFilterItem> LINFrameFilterList::blockItems() const {
    return toLinItems(m_source->items(Side::Block));
}

}  // namespace rv
