#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "FrameCollector.h"
#include "TraceBuilder.h"

namespace quill::traceformats::test {
namespace {

// Numbers of the frames that were read, as canObject counts them.
std::vector<uint32_t> numbersOf(const Collected& got) {
    std::vector<uint32_t> numbers;
    for (const auto& frame : got.frames) numbers.push_back(frame.frame.id - 0x100);
    return numbers;
}

std::vector<uint32_t> range(uint32_t first, uint32_t end) {
    std::vector<uint32_t> numbers;
    for (uint32_t i = first; i < end; ++i) numbers.push_back(i);
    return numbers;
}

std::vector<uint32_t> joined(std::vector<uint32_t> a, const std::vector<uint32_t>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Header, then three containers of ten frames each.
struct ThreeContainers {
    Bytes bytes = blfHeader();
    size_t second = 0;  // offsets of the containers
    size_t third = 0;

    explicit ThreeContainers(uint16_t method = 2) {
        append(bytes, blfContainer(canObjects(0, 10), method));
        second = bytes.size();
        append(bytes, blfContainer(canObjects(10, 10), method));
        third = bytes.size();
        append(bytes, blfContainer(canObjects(20, 10), method));
    }
};

struct DamageCase {
    const char* name;
    std::function<Bytes()> make;
    std::vector<uint32_t> frames;
    bool damage;
};

Bytes withSecond(const std::function<void(Bytes&, size_t)>& harm, uint16_t method = 2) {
    ThreeContainers file(method);
    harm(file.bytes, file.second);
    return file.bytes;
}

class BlfDamage : public ::testing::TestWithParam<DamageCase> {};

TEST_P(BlfDamage, keepsExactlyWhatIsWhole) {
    const Bytes bytes = GetParam().make();
    for (const size_t unitsPerBatch : {size_t{1}, size_t{1000}}) {
        const Collected got = collect(Format::Blf, bytes, unitsPerBatch);
        ASSERT_TRUE(got.header);
        EXPECT_EQ(numbersOf(got), GetParam().frames);
        EXPECT_EQ(!got.damage.empty(), GetParam().damage)
            << (got.damage.empty() ? "" : got.damage.front().text);
    }
}

std::vector<DamageCase> containerCases() {
    return {
        {"whole", [] { return ThreeContainers().bytes; }, range(0, 30), false},
        {"lengthZero", [] { return withSecond([](Bytes& b, size_t at) { set32(b, at + 8, 0); }); },
         joined(range(0, 10), range(20, 30)), true},
        {"lengthBelowHeader",
         [] { return withSecond([](Bytes& b, size_t at) { set32(b, at + 8, 31); }); },
         joined(range(0, 10), range(20, 30)), true},
        {"lengthPastTheEnd",
         [] { return withSecond([](Bytes& b, size_t at) { set32(b, at + 8, 0x7FFFFFFF); }); },
         range(0, 30), false},
        {"unknownMethod", [] { return withSecond([](Bytes& b, size_t at) { b[at + 16] = 7; }); },
         joined(range(0, 10), range(20, 30)), true},
        {"declaredSizeBelow",
         [] { return withSecond([](Bytes& b, size_t at) { set32(b, at + 24, 5); }); }, range(0, 30),
         false},
        {"declaredSizeVastlyAbove",
         [] { return withSecond([](Bytes& b, size_t at) { set32(b, at + 24, 0xFFFFFFFF); }); },
         range(0, 30), false},
        {"wrongSignature", [] { return withSecond([](Bytes& b, size_t at) { b[at] = 'X'; }); },
         joined(range(0, 10), range(20, 30)), true},
        {"storedPlain", [] { return ThreeContainers(0).bytes; }, range(0, 30), false},
        {"storedWithWrongSignature",
         [] { return withSecond([](Bytes& b, size_t at) { b[at] = 'X'; }, 0); }, range(0, 30),
         true},
        {"emptyLastContainer",
         [] {
             Bytes b = ThreeContainers().bytes;
             append(b, blfContainer({}, 0));
             return b;
         },
         range(0, 30), false},
        {"rubbishBetweenContainers",
         [] {
             ThreeContainers file;
             file.bytes.insert(file.bytes.begin() + static_cast<long>(file.second), 5000, 0x55);
             return file.bytes;
         },
         range(0, 30), true},
        {"paddingToFour",
         [] {
             ThreeContainers file;
             file.bytes.insert(file.bytes.begin() + static_cast<long>(file.second), 3, 0);
             return file.bytes;
         },
         range(0, 30), false},
        {"nested",
         [] {
             Bytes content = canObjects(0, 3);
             append(content, blfContainer(canObjects(50, 3), 0));
             append(content, canObjects(3, 3));
             Bytes b = blfHeader();
             append(b, blfContainer(content));
             return b;
         },
         range(0, 6), true},
        {"withoutContainers",
         [] {
             Bytes b = blfHeader();
             append(b, canObjects(0, 20));
             return b;
         },
         range(0, 20), false},
        {"impossibleDate",
         [] {
             Bytes b = blfHeader(144, 13);
             append(b, blfContainer(canObjects(0, 5)));
             return b;
         },
         range(0, 5), false},
        {"longerFileHeader",
         [] {
             Bytes b = blfHeader(200);
             b.resize(200);
             append(b, blfContainer(canObjects(0, 5)));
             return b;
         },
         range(0, 5), false},
    };
}

// Content of one container in which object 5 of 10 is harmed.
Bytes harmed(const std::function<void(Bytes&, size_t)>& harm) {
    Bytes content = canObjects(0, 10);
    harm(content, 5 * 48);
    Bytes b = blfHeader();
    append(b, blfContainer(content));
    return b;
}

std::vector<DamageCase> objectCases() {
    const auto without5 = joined(range(0, 5), range(6, 10));
    std::vector<DamageCase> cases;
    for (const uint32_t length : {0U, 1U, 15U, 31U, 0xFFFFFFFFU, 10'000'000U}) {
        static std::vector<std::string> names;
        names.push_back("objectLength" + std::to_string(length));
        cases.push_back({nullptr,
                         [length] {
                             return harmed(
                                 [length](Bytes& b, size_t at) { set32(b, at + 8, length); });
                         },
                         without5, true});
    }
    static const char* kNames[] = {"objectLength0",  "objectLength1",       "objectLength15",
                                   "objectLength31", "objectLengthAllOnes", "objectLengthMillions"};
    for (size_t i = 0; i < cases.size(); ++i) cases[i].name = kNames[i];
    cases.push_back({"objectLengthOverTheNext",
                     [] { return harmed([](Bytes& b, size_t at) { set32(b, at + 8, 60); }); },
                     without5, true});
    cases.push_back({"objectLengthOverTheNextTwo",
                     [] { return harmed([](Bytes& b, size_t at) { set32(b, at + 8, 130); }); },
                     without5, true});
    cases.push_back({"headerLongerThanObject",
                     [] { return harmed([](Bytes& b, size_t at) { b[at + 4] = 60; }); }, without5,
                     true});
    cases.push_back({"objectSignature",
                     [] { return harmed([](Bytes& b, size_t at) { b[at + 2] = 0; }); }, without5,
                     true});
    cases.push_back({"unknownHeaderVersion",
                     [] { return harmed([](Bytes& b, size_t at) { b[at + 6] = 9; }); },
                     range(0, 10), false});
    cases.push_back({"unknownType",
                     [] { return harmed([](Bytes& b, size_t at) { set32(b, at + 12, 999); }); },
                     without5, false});
    cases.push_back(
        {"impossibleStamp",
         [] { return harmed([](Bytes& b, size_t at) { set32(b, at + 28, 0xFFFFFFFF); }); },
         without5, false});
    cases.push_back({"rubbishBetweenObjects",
                     [] {
                         return harmed([](Bytes& b, size_t at) {
                             b.insert(b.begin() + static_cast<long>(at), 100, 0x11);
                         });
                     },
                     range(0, 10), true});
    for (const size_t padding : {1U, 2U, 3U}) {
        cases.push_back({padding == 1   ? "padding1"
                         : padding == 2 ? "padding2"
                                        : "padding3",
                         [padding] {
                             return harmed([padding](Bytes& b, size_t at) {
                                 b.insert(b.begin() + static_cast<long>(at), padding, 0);
                             });
                         },
                         range(0, 10), false});
    }
    return cases;
}

const auto kCaseName = [](const auto& test) { return std::string(test.param.name); };
INSTANTIATE_TEST_SUITE_P(Containers, BlfDamage, ::testing::ValuesIn(containerCases()), kCaseName);
INSTANTIATE_TEST_SUITE_P(Objects, BlfDamage, ::testing::ValuesIn(objectCases()), kCaseName);

struct HeaderCase {
    const char* name;
    std::function<void(Bytes&)> harm;
};
class BlfHeaderDamage : public ::testing::TestWithParam<HeaderCase> {};

TEST_P(BlfHeaderDamage, isNoBlf) {
    Bytes bytes = ThreeContainers().bytes;
    GetParam().harm(bytes);
    EXPECT_FALSE(collect(Format::Blf, bytes).header);
}

INSTANTIATE_TEST_SUITE_P(
    Headers, BlfHeaderDamage,
    ::testing::Values(HeaderCase{"magic", [](Bytes& b) { b[0] = 'X'; }},
                      HeaderCase{"sizeZero", [](Bytes& b) { set32(b, 4, 0); }},
                      HeaderCase{"sizeTooSmall", [](Bytes& b) { set32(b, 4, 143); }},
                      HeaderCase{"sizePastTheEnd", [](Bytes& b) { set32(b, 4, 60'000); }},
                      HeaderCase{"sizeVast", [](Bytes& b) { set32(b, 4, 0xFFFFFFFF); }},
                      HeaderCase{"cutInside", [](Bytes& b) { b.resize(143); }}),
    kCaseName);

// Wherever a file ends inside its last container, everything before is kept, in order.
TEST(BlfCut, atEveryByteOfTheLastContainer) {
    for (const uint16_t method : {uint16_t{0}, uint16_t{2}}) {
        const ThreeContainers file(method);
        size_t most = 0;
        for (size_t end = file.third; end < file.bytes.size(); ++end) {
            const Collected got = collect(Format::Blf, {file.bytes.data(), end});
            ASSERT_GE(got.frames.size(), 20U) << end;
            ASSERT_EQ(numbersOf(got), range(0, static_cast<uint32_t>(got.frames.size())));
            ASSERT_GE(got.frames.size(), most) << "a longer piece gives no less";
            most = got.frames.size();
            if (method == 0 && end >= file.third + 32) {
                ASSERT_EQ(got.frames.size(), 20 + (end - file.third - 32) / 48);
            }
        }
        EXPECT_GE(most, 29U);
    }
}

// Containers cut anywhere, also inside object headers and so that an object lies in three of them.
TEST(BlfSplit, objectsMayLieInSeveralContainers) {
    const Bytes content = canObjects(0, 12);
    for (const size_t piece : {size_t{7}, size_t{17}, size_t{20}, size_t{47}, size_t{49}}) {
        for (const uint16_t method : {uint16_t{0}, uint16_t{2}}) {
            Bytes bytes = blfHeader();
            for (size_t at = 0; at < content.size(); at += piece) {
                const size_t size = std::min(piece, content.size() - at);
                append(bytes, blfContainer(std::span(content).subspan(at, size), method));
            }
            const Collected got = collect(Format::Blf, bytes);
            EXPECT_EQ(numbersOf(got), range(0, 12)) << piece;
            EXPECT_TRUE(got.damage.empty());
        }
    }
}

// Half an object before a lost container and half an object behind it must not become one.
TEST(BlfSplit, halvesAroundALossAreNotJoined) {
    const Bytes content = canObjects(0, 30);
    Bytes bytes = blfHeader();
    append(bytes, blfContainer(std::span(content).first(10 * 48 + 20)));
    const size_t second = bytes.size();
    append(bytes, blfContainer(std::span(content).subspan(10 * 48 + 20, 10 * 48)));
    append(bytes, blfContainer(std::span(content).subspan(20 * 48 + 20)));
    bytes[second + 40] ^= 0xFF;  // inside the compressed data
    bytes[second] = 'X';
    const Collected got = collect(Format::Blf, bytes);
    EXPECT_EQ(numbersOf(got), joined(range(0, 10), range(21, 30)));
    EXPECT_FALSE(got.damage.empty());
}

TEST(BlfDamagedData, whatInflatesBeforeTheDamageIsKept) {
    Bytes content = canObjects(0, 2000);
    uint32_t state = 1;
    for (size_t at = 0; at < content.size(); at += 48) {  // random payloads, so that it stays large
        for (size_t i = 40; i < 48; ++i) {
            state = state * 1664525U + 1013904223U;
            content[at + i] = static_cast<uint8_t>(state >> 24U);
        }
    }
    Bytes bytes = blfHeader();
    append(bytes, blfContainer(content));
    const size_t middle = bytes.size() / 2;
    append(bytes, blfContainer(canObjects(5000, 10)));
    for (size_t i = 0; i < 64; ++i) bytes[middle + i] = 0xFF;
    const Collected got = collect(Format::Blf, bytes);
    ASSERT_GE(got.frames.size(), 510U);
    EXPECT_LT(got.frames.size(), 2010U);
    EXPECT_EQ(got.frames.back().frame.id, 0x100U + 5009U) << "the container behind is found";
    for (uint32_t i = 0; i < 500; ++i) ASSERT_EQ(got.frames[i].frame.id, 0x100 + i);
}

// Every kind that carries a frame: whole it is read, one byte short of what it needs it is dropped,
// and no inner length leads outside the object.
struct KindCase {
    uint32_t type;
    size_t needed;
};
class BlfKinds : public ::testing::TestWithParam<KindCase> {};

TEST_P(BlfKinds, areBoundedByTheirObject) {
    const auto read = [](uint32_t type, size_t size, uint8_t fill) {
        Bytes bytes = blfHeader();
        append(bytes, blfContainer(blfObject(type, Bytes(size, fill))));
        return collect(Format::Blf, bytes);
    };
    const KindCase& kind = GetParam();
    EXPECT_EQ(read(kind.type, kind.needed, 0).frames.size(), 1U);
    EXPECT_EQ(read(kind.type, kind.needed - 1, 0).dropped, 1U);
    for (size_t size = 0; size <= kind.needed + 70; ++size) {
        const Collected got = read(kind.type, size, 0xFF);  // every length at its largest
        ASSERT_EQ(got.frames.size() + got.dropped, 1U) << size;
        if (!got.frames.empty()) {
            ASSERT_LE(got.frames[0].data.size(), std::max<size_t>(size, 64));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, BlfKinds,
                         ::testing::Values(KindCase{1, 16}, KindCase{2, 4}, KindCase{11, 20},
                                           KindCase{29, 24}, KindCase{30, 24}, KindCase{41, 96},
                                           KindCase{50, 44}, KindCase{57, 123}, KindCase{66, 84},
                                           KindCase{71, 32}, KindCase{73, 24}, KindCase{86, 16},
                                           KindCase{100, 20}, KindCase{101, 40}, KindCase{104, 44},
                                           KindCase{120, 32}, KindCase{121, 32}),
                         [](const auto& test) { return "type" + std::to_string(test.param.type); });

TEST(BlfChannels, extremesAndBackwardStampsAreKept) {
    Bytes content;
    for (const uint16_t channel : {uint16_t{0}, uint16_t{65535}, uint16_t{1}}) {
        Bytes object = canObject(channel == 1 ? 0 : 9);
        object[32] = static_cast<uint8_t>(channel);
        object[33] = static_cast<uint8_t>(channel >> 8U);
        append(content, object);
    }
    Bytes bytes = blfHeader();
    append(bytes, blfContainer(content));
    const Collected got = collect(Format::Blf, bytes);
    ASSERT_EQ(got.frames.size(), 3U);
    EXPECT_EQ(got.frames[0].frame.channel, 0);
    EXPECT_EQ(got.frames[1].frame.channel, 65535);
    EXPECT_EQ(got.frames[2].frame.timeNs, 0U);
}

}  // namespace
}  // namespace quill::traceformats::test
