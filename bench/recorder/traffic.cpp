#include "recorder/traffic.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

#include "core/playback/recorder/RecordBuilder.h"

namespace bench {

namespace {

constexpr uint64_t kStartNs = 1'700'000'000'000'000'000U;
constexpr size_t kListLength = 10'000;

struct Message {
    uint32_t id = 0;
    uint64_t cycleNs = 0, nextNs = 0;
    uint8_t counter = 0;
    double phase = 0;
};

std::vector<Message> makeMessages(std::mt19937& random) {
    constexpr uint64_t kCyclesMs[] = {10, 10, 20, 20, 50, 100, 100, 200, 500, 1000};
    std::vector<Message> messages(60);
    for (Message& message : messages) {
        message.id = static_cast<uint32_t>(random() % 0x7FF);
        message.cycleNs = kCyclesMs[random() % std::size(kCyclesMs)] * 1'000'000U;
        message.nextNs = kStartNs + random() % message.cycleNs;
        message.phase = static_cast<double>(random() % 1000) / 100;
    }
    return messages;
}

// Counter, checksum, two slow signals, one noisy one, constant bytes.
void fillPayload(Message& message, std::mt19937& random, TrafficFrame& frame) {
    const double t = static_cast<double>(frame.timeNs - kStartNs) * 1e-9;
    message.counter = static_cast<uint8_t>((message.counter + 1) & 0x0FU);
    for (size_t block = 0; block + 8 <= frame.length; block += 8) {
        uint8_t* to = frame.data + block;
        const double phase = message.phase + static_cast<double>(block);
        const auto speed = static_cast<uint16_t>(8000 + 4000 * std::sin(t / 9 + phase));
        const auto torque = static_cast<uint16_t>(2000 + 500 * std::sin(t / 2 + phase));
        to[0] = message.counter;
        std::memcpy(to + 1, &speed, 2);
        std::memcpy(to + 3, &torque, 2);
        to[5] = static_cast<uint8_t>(128 + random() % 4);
        to[6] = static_cast<uint8_t>(message.id);
        to[7] = static_cast<uint8_t>(to[0] ^ to[1] ^ to[2] ^ to[3] ^ to[4] ^ to[5] ^ to[6]);
    }
}

}  // namespace

std::vector<TrafficFrame> makeTraffic(size_t frames, bool fd) {
    std::mt19937 random(4711);
    std::vector<Message> messages = makeMessages(random);
    std::vector<TrafficFrame> traffic(frames);
    const auto later = [](const Message& a, const Message& b) { return a.nextNs > b.nextNs; };
    std::make_heap(messages.begin(), messages.end(), later);
    for (TrafficFrame& frame : traffic) {
        std::pop_heap(messages.begin(), messages.end(), later);
        Message& message = messages.back();
        frame.timeNs = message.nextNs + random() % 200'000;  // arbitration jitter
        frame.id = message.id;
        frame.length = fd ? 64 : 8;
        fillPayload(message, random, frame);
        message.nextNs += message.cycleNs;
        std::push_heap(messages.begin(), messages.end(), later);
    }
    return traffic;
}

std::vector<rv::FrameHolder> makeFrames(const std::vector<TrafficFrame>& traffic, bool fd) {
    std::vector<rv::FrameHolder> frames;
    frames.reserve(traffic.size());
    for (const TrafficFrame& source : traffic) {
        rv::FrameHolder frame = rv::makeFrame(source.length);
        frame->type = rv::FrameType::Can;
        frame->seconds = static_cast<uint32_t>(source.timeNs / 1'000'000'000U);
        frame->nanoseconds = static_cast<uint32_t>(source.timeNs % 1'000'000'000U);
        frame->id = source.id;
        frame->can.extend.setEDL(fd);
        frame->can.extend.setBRS(fd);
        frame->can.extend.setDLC(fd ? 15 : 8);
        std::memcpy(frame->payload().data(), source.data, source.length);
        frames.push_back(std::move(frame));
    }
    return frames;
}

std::vector<std::vector<rv::RecordHandle>> makeLists(const std::vector<rv::FrameHolder>& frames) {
    playback::RecordBuilder builder;
    std::vector<std::vector<rv::RecordHandle>> lists;
    for (size_t i = 0; i < frames.size(); ++i) {
        if (i % kListLength == 0) {
            lists.emplace_back();
            lists.back().reserve(kListLength);
        }
        lists.back().push_back(builder.build(*frames[i]));
    }
    return lists;
}

}  // namespace bench
