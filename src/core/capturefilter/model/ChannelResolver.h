#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace rv {

// A channel that a name stands for.
struct NamedChannel {
    std::string busKind;  // "CAN", "LIN", "ETH" or "FLEXRAY"
    int32_t index = -1;   // on its box, counted from 0; below 0 when the channel is not valid
};

// Where filter lists look channel names up: whoever knows the channels of the boxes.
class ChannelResolver {
public:
    virtual ~ChannelResolver() = default;
    [[nodiscard]] virtual std::optional<NamedChannel> findChannel(
        const std::string& name) const = 0;
};

}  // namespace rv
