// Any bytes as a log to be played, whose format its first line tells. Reading it again must yield
// the same.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <variant>

#include "logs/LogReader.h"

namespace {

using simcore::logs::LogFrame;
using simcore::logs::LogReader;

struct Pass {
    uint64_t frames = 0;
    uint64_t sum = 0;
    uint64_t unreadable = 0;
    bool operator==(const Pass&) const = default;
};

void require(bool condition, const char* text) {
    if (condition) return;
    std::fprintf(stderr, "fuzz_log: %s\n", text);
    std::abort();
}

Pass readAll(LogReader& reader) {
    Pass pass;
    LogFrame frame;
    while (reader.next(frame)) {
        ++pass.frames;
        require(frame.number > 0 && !frame.channel.empty(), "a frame without a channel");
        pass.sum = pass.sum * 31U + static_cast<uint64_t>(frame.timeNs) + frame.number;
        std::visit(
            [&](const auto& content) {
                require(content.length <= sizeof content.data, "a payload beyond its room");
                for (size_t i = 0; i < content.length; ++i) {
                    pass.sum = pass.sum * 31U + content.data[i];
                }
            },
            frame.frame);
    }
    pass.unreadable = reader.unreadableLines();
    return pass;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    std::string reason;
    const auto reader = LogReader::openText("log", std::move(text), reason);
    require((reader == nullptr) == !reason.empty(), "a reader and a reason, or neither");
    if (reader == nullptr) return 0;
    const Pass first = readAll(*reader);
    require(first.frames > 0, "an opened log without a frame");
    reader->rewind();
    require(readAll(*reader) == first, "the second pass differs");
    return 0;
}
