// Real traces, read, written anew through the converter library and read again.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "rvconverter/Records.h"
#include "unit/rvconverter/RecordMaker.h"
#include "unit/rvconverter/RecordWriting.h"
#include "unit/rvconverter/ScratchFolder.h"
#include "unit/traceformats_readers/FrameCollector.h"

namespace quill::testing {

namespace {

namespace tf = traceformats;
using tf::FrameKind;
using tf::TraceFrame;
using tf::test::Collected;
using tf::test::Format;
using tf::test::OwnedFrame;

// Of traces whose header tells no start: any day will do.
constexpr int64_t kSomeDay = 1'700'000'000'000'000'000;
// Records tell an error frame by its error word; frames without one get this.
constexpr uint16_t kSomeError = 0x0002;

template <class Record>
rv::RecordHandle recordOf(Record record, rv::RecordKind kind, const OwnedFrame& from,
                          uint64_t timeNs) {
    record.head.channel = static_cast<uint8_t>(from.frame.channel - 1);
    record.head.transmitted = from.frame.direction == tf::FrameDirection::Rx ? 0 : 1;
    return makeRecord(record, kind, timeNs, from.data);
}

rv::RecordHandle canRecord(const OwnedFrame& from, uint64_t timeNs) {
    const TraceFrame& frame = from.frame;
    rv::CanRecord record;
    record.id = frame.id;
    record.dlc = frame.dlc;
    if (frame.kind == FrameKind::CanError) {
        record.errorFlags = frame.errorFlags != 0 ? frame.errorFlags : kSomeError;
    }
    const std::pair<uint32_t, uint8_t> flags[] = {
        {tf::kCanExtended, rv::CanRecord::kExtended},
        {tf::kCanRemote, rv::CanRecord::kRemote},
        {tf::kCanFd, rv::CanRecord::kFd},
        {tf::kCanBitRateSwitch, rv::CanRecord::kBitRateSwitch},
        {tf::kCanErrorState, rv::CanRecord::kErrorState}};
    for (const auto& [ofFrame, ofRecord] : flags) {
        if ((frame.flags & ofFrame) != 0) record.flags |= ofRecord;
    }
    return recordOf(record, rv::RecordKind::Can, from, timeNs);
}

rv::RecordHandle recordOf(const OwnedFrame& from, uint64_t timeNs) {
    const TraceFrame& frame = from.frame;
    if (frame.kind == FrameKind::Lin) {
        rv::LinRecord record;
        record.id = static_cast<uint8_t>(frame.id);
        record.checkMode = (frame.flags & tf::kLinEnhancedChecksum) != 0 ? 1 : 0;
        record.checksum = frame.checksum;
        return recordOf(record, rv::RecordKind::Lin, from, timeNs);
    }
    if (frame.kind == FrameKind::Ethernet) {
        return recordOf(rv::EthernetRecord{}, rv::RecordKind::Ethernet, from, timeNs);
    }
    if (frame.kind == FrameKind::FlexRay) {
        rv::FlexRayRecord record;
        record.slot = static_cast<uint16_t>(frame.id);
        record.headerCrc = frame.headerCrc;
        record.flags = static_cast<uint16_t>(frame.flags);
        record.cycle = frame.cycle;
        record.channelMask = frame.channelMask;
        return recordOf(record, rv::RecordKind::FlexRay, from, timeNs);
    }
    return canRecord(from, timeNs);
}

// The frame as it comes back. Each line here is something that is lost on the way, with its reason.
OwnedFrame afterwards(OwnedFrame frame, Format format) {
    TraceFrame& fields = frame.frame;
    // Records know what was received and what was sent, not what was asked to be sent.
    if (fields.direction == tf::FrameDirection::TxRequest) {
        fields.direction = tf::FrameDirection::Tx;
    }
    if (fields.kind != FrameKind::CanError) return frame;
    // Records hold the box's error word, not the controller's code and position.
    if (fields.errorFlags == 0) fields.errorFlags = kSomeError;
    fields.errorCode = 0;
    fields.errorPosition = 0;
    fields.direction = tf::FrameDirection::Rx;  // both formats: errors have none
    if (format == Format::Blf) {
        // The object holds the form of the identifier and eight bytes, as a classic frame has.
        fields.flags &= tf::kCanExtended;
        frame.data.resize(std::min<size_t>(frame.data.size(), 8));
    } else {
        // The line has identifier and length, which other tools write in ways of their own and the
        // reader leaves alone; it has no payload.
        fields.id = 0;
        fields.flags = 0;
        fields.dlc = 0;
        frame.data.clear();
    }
    return frame;
}

std::string fieldsOf(const OwnedFrame& frame) {
    const TraceFrame& f = frame.frame;
    std::string text = "kind " + std::to_string(static_cast<int>(f.kind)) + " direction " +
                       std::to_string(static_cast<int>(f.direction));
    const std::pair<const char*, uint64_t> numbers[] = {
        {"channel", f.channel},       {"id", f.id},
        {"flags", f.flags},           {"dlc", f.dlc},
        {"checksum", f.checksum},     {"cycle", f.cycle},
        {"mask", f.channelMask},      {"crc", f.headerCrc},
        {"error", f.errorFlags},      {"code", f.errorCode},
        {"position", f.errorPosition}};
    for (const auto& [name, value] : numbers) {
        text += std::string(" ") + name + " " + std::to_string(value);
    }
    text += " data";
    for (const uint8_t byte : frame.data) text += " " + std::to_string(byte);
    return text;
}

int64_t startOf(const Collected& trace) {
    return trace.facts.startNs != 0 ? trace.facts.startNs : kSomeDay;
}

struct Source {
    Format format;
    const char* name;
    bool holdsFrames = true;
};

class Rewrite : public ::testing::TestWithParam<std::tuple<Source, Format>> {};

TEST_P(Rewrite, keepsEveryFrame) {
    const auto& [source, target] = GetParam();
    const char* kind = source.format == Format::Blf ? "blf/" : "asc/";
    const auto bytes = tf::test::corpusFile(std::string(kind) + source.name);
    if (!bytes) GTEST_SKIP() << "corpus is not here";
    const Collected before = collect(source.format, *bytes);
    ASSERT_EQ(!before.frames.empty(), source.holdsFrames);
    std::vector<rv::RecordHandle> records;
    std::vector<OwnedFrame> kept;
    for (const OwnedFrame& frame : before.frames) {
        // Records are frames; the loss of some is not one.
        if (frame.frame.kind == FrameKind::LossMarker) continue;
        kept.push_back(frame);
        const auto time = static_cast<uint64_t>(startOf(before)) + frame.frame.timeNs;
        records.push_back(recordOf(frame, time));
    }
    const ScratchFolder folder("rewrite");
    const bool blf = target == Format::Blf;
    const std::string path = folder.file(blf ? "t.blf" : "t.asc");
    writeRecords(path, blf ? 0 : 1, std::move(records));
    const auto written = tf::test::wholeFile(path);
    ASSERT_TRUE(written);
    const Collected after = collect(target, *written);
    ASSERT_TRUE(after.header);
    EXPECT_TRUE(after.damage.empty());
    EXPECT_EQ(after.dropped, 0U);
    ASSERT_EQ(after.frames.size(), kept.size());
    for (size_t i = 0; i < kept.size() && !HasFailure(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        EXPECT_EQ(fieldsOf(after.frames[i]), fieldsOf(afterwards(kept[i], target)));
        EXPECT_EQ(after.facts.startNs + static_cast<int64_t>(after.frames[i].frame.timeNs),
                  startOf(before) + static_cast<int64_t>(kept[i].frame.timeNs));
    }
}

std::string nameOf(const ::testing::TestParamInfo<Rewrite::ParamType>& info) {
    const auto& [source, target] = info.param;
    std::string name = source.name;
    for (char& c : name) {
        if (c == '.') c = '_';
    }
    return name + (target == Format::Blf ? "_as_blf" : "_as_asc");
}

INSTANTIATE_TEST_SUITE_P(
    Corpus, Rewrite,
    ::testing::Combine(
        ::testing::Values(
            Source{Format::Blf, "Logging.blf"}, Source{Format::Blf, "issue_1905.blf"},
            Source{Format::Blf, "gen_can_kinds.blf"}, Source{Format::Blf, "gen_lin.blf"},
            Source{Format::Blf, "gen_eth_flexray.blf"},
            Source{Format::Blf, "gen_small_containers.blf"},
            Source{Format::Blf, "gen_no_containers.blf"},
            Source{Format::Blf, "gen_ten_microseconds.blf"},
            Source{Format::Blf, "gen_large_can.blf"},
            Source{Format::Blf, "gen_uncompressed_can.blf"},
            Source{Format::Blf, "gen_truncated.blf"},
            Source{Format::Blf, "gen_header_only.blf", false}, Source{Format::Asc, "logfile.asc"},
            Source{Format::Asc, "issue_1256.asc"}, Source{Format::Asc, "test_CanFdMessage64.asc"},
            Source{Format::Asc, "test_CanErrorFrames.asc"},
            Source{Format::Asc, "test_CanRemoteMessage.asc"},
            Source{Format::Asc, "single_frame.asc"}, Source{Format::Asc, "EngineDiagData.asc"},
            Source{Format::Asc, "gen_mixed_buses.asc"}, Source{Format::Asc, "gen_crlf.asc"},
            Source{Format::Asc, "gen_dec_relative.asc"},
            Source{Format::Asc, "gen_no_frames.asc", false}),
        ::testing::Values(Format::Blf, Format::Asc)),
    nameOf);

}  // namespace

}  // namespace quill::testing
