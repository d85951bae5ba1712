#include "core/capturefilter/model/CANFilterModel.h"

#include <iostream>

#include "core/log/Log.h"

namespace rv {

using quill::log::kCaptureFilter;

namespace {

constexpr uint32_t kExtendedIdLimit = 0x20000000;
constexpr uint32_t kStandardIdLimit = 0x800;

bool isCanId(uint32_t id, uint32_t extended) {
    return id < kExtendedIdLimit && (extended != 0 || id < kStandardIdLimit);
}

bool checkExtendedAndDir(uint32_t extended, uint16_t dir) {
    if (extended <= 1 && dir <= 1) return true;
    std::cout << "[CANFrameFilter]extended or dir out of range!\n" << std::flush;
    return false;
}

}  // namespace

CANFrameFilterList::CANFrameFilterList(std::shared_ptr<const ChannelResolver> channels)
    : m_channels(std::move(channels)) {}

bool CANFrameFilterList::resolve(const std::string& channel, int32_t& index) const {
    const auto found = m_channels != nullptr ? m_channels->findChannel(channel) : std::nullopt;
    if (found && found->busKind == "CAN" && found->index >= 0) {
        index = found->index;
        return true;
    }
    std::cout << "[CANFrameFilter]channel " << channel << " is invalid!\n" << std::flush;
    return false;
}

bool CANFrameFilterList::makeIdItem(uint32_t id, uint32_t extended, uint16_t dir,
                                    const std::string& channel, CANFrameFilterItem& item) const {
    if (!checkExtendedAndDir(extended, dir)) return false;
    if (!isCanId(id, extended)) {
        std::cout << "[CANFrameFilter]id " << id << (extended == 1 ? "x" : "") << " is invalid!\n"
                  << std::flush;
        return false;
    }
    item.extended = extended;
    item.id = id;
    item.dir = dir;
    return resolve(channel, item.channelId);
}

bool CANFrameFilterList::addPassList(uint32_t id, uint32_t extended, uint16_t dir,
                                     const std::string& channel) {
    CANFrameFilterItem item;
    if (!makeIdItem(id, extended, dir, channel, item)) return false;
    QUILL_INFO(
        kCaptureFilter,
        "[CANFrameFilter]add pass list successed! id: {}, extended: {}, dir: {}, channelId {}", id,
        extended, dir, item.channelId);
    m_source->add(Side::Pass, std::move(item));
    return true;
}

bool CANFrameFilterList::addBlockList(uint32_t id, uint32_t extended, uint16_t dir,
                                      const std::string& channel) {
    CANFrameFilterItem item;
    if (!makeIdItem(id, extended, dir, channel, item)) return false;
    QUILL_INFO(
        kCaptureFilter,
        "[CANFrameFilter]add block list successed! id: {}, extended: {}, dir: {}, channelId {}", id,
        extended, dir, item.channelId);
    m_source->add(Side::Block, std::move(item));
    return true;
}

bool CANFrameFilterList::addRange(Side side, uint32_t idStart, uint32_t idEnd, uint32_t extended,
                                  uint16_t dir, const std::string& channel) {
    if (!checkExtendedAndDir(extended, dir)) return false;
    if (idStart > idEnd || !isCanId(idStart, extended) || !isCanId(idEnd, extended)) {
        std::cout << "[CANFrameFilter]id start " << idStart << " id end " << idEnd
                  << " is invalid!\n"
                  << std::flush;
        return false;
    }
    CANFrameFilterItem item;
    item.isRange = true;
    item.extended = extended;
    item.idRangeStart = idStart;
    item.idRangeEnd = idEnd;
    item.dir = dir;
    if (!resolve(channel, item.channelId)) return false;
    m_source->add(side, std::move(item));
    return true;
}

bool CANFrameFilterList::addPassRangeList(uint32_t idStart, uint32_t idEnd, uint32_t extended,
                                          uint16_t dir, const std::string& channel) {
    return addRange(Side::Pass, idStart, idEnd, extended, dir, channel);
}

bool CANFrameFilterList::addBlockRangeList(uint32_t idStart, uint32_t idEnd, uint32_t extended,
                                           uint16_t dir, const std::string& channel) {
    return addRange(Side::Block, idStart, idEnd, extended, dir, channel);
}

bool CANFrameFilterList::addName(Side side, const std::string& name, uint16_t dir,
                                 const std::string& channel) {
    if (name.empty()) {
        std::cout << "[CANFrameFilter]frame name is empty!\n" << std::flush;
        return false;
    }
    if (dir > 1) {
        std::cout << "[CANFrameFilter]dir out of range!\n" << std::flush;
        return false;
    }
    CANFrameFilterItem item;
    item.name = name;
    item.dir = dir;
    if (!resolve(channel, item.channelId)) return false;
    m_source->add(side, std::move(item));
    return true;
}

bool CANFrameFilterList::addNamePassList(const std::string& name, uint16_t dir,
                                         const std::string& channel) {
    return addName(Side::Pass, name, dir, channel);
}

bool CANFrameFilterList::addNameBlockList(const std::string& name, uint16_t dir,
                                          const std::string& channel) {
    return addName(Side::Block, name, dir, channel);
}

bool CANFrameFilterList::addChannel(Side side, const std::string& channel) {
    CANFrameFilterItem item;
    item.wholeChannel = true;
    if (!resolve(channel, item.channelId)) return false;
    m_source->add(side, std::move(item));
    return true;
}

bool CANFrameFilterList::addPassChannel(const std::string& channel) {
    return addChannel(Side::Pass, channel);
}

bool CANFrameFilterList::addBlockChannel(const std::string& channel) {
    return addChannel(Side::Block, channel);
}

void CANFrameFilterList::clearFilter() {
    m_source->clear();
    QUILL_INFO(kCaptureFilter, "CAN Frame filter cleared!");
}

std::vector<CANFrameFilterItem> CANFrameFilterList::passItems() const {
    return m_source->items(Side::Pass);
}

std::vector<CANFrameFilterItem> CANFrameFilterList::blockItems() const {
    return m_source->items(Side::Block);
}

}  // namespace rv
