// Features and faults of AUTOSAR descriptions, each in a small text of its own.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "ArxmlTestSupport.h"
#include "quill_textencoding/TextDecoding.h"

namespace arxmltest {
namespace {

Json firstPdu(const Converted& read) {
    return read.json.at("can_cluster").at(0).at("frames").at(0).at("ipdus").at(0);
}

std::string signalPdu(std::string_view name, std::string_view extra = {},
                      std::string_view reference = "<I-SIGNAL-REF>/S/sig</I-SIGNAL-REF>") {
    return "<I-SIGNAL-I-PDU><SHORT-NAME>" + std::string(name) + "</SHORT-NAME><LENGTH>8</LENGTH>" +
           std::string(extra) +
           "<I-SIGNAL-TO-PDU-MAPPINGS><I-SIGNAL-TO-I-PDU-MAPPING><SHORT-NAME>m</SHORT-NAME>" +
           std::string(reference) +
           "<START-POSITION>8</START-POSITION></I-SIGNAL-TO-I-PDU-MAPPING>"
           "</I-SIGNAL-TO-PDU-MAPPINGS></I-SIGNAL-I-PDU>";
}

std::string signalPackages(std::string_view compuMethod, std::string_view init = {}) {
    return package("S", "<I-SIGNAL><SHORT-NAME>sig</SHORT-NAME>" + std::string(init) +
                            "<LENGTH>8</LENGTH><SYSTEM-SIGNAL-REF>/S/sys</SYSTEM-SIGNAL-REF>"
                            "</I-SIGNAL><SYSTEM-SIGNAL><SHORT-NAME>sys</SHORT-NAME>"
                            "<PHYSICAL-PROPS><SW-DATA-DEF-PROPS-VARIANTS>"
                            "<SW-DATA-DEF-PROPS-CONDITIONAL><COMPU-METHOD-REF>/S/cm"
                            "</COMPU-METHOD-REF></SW-DATA-DEF-PROPS-CONDITIONAL>"
                            "</SW-DATA-DEF-PROPS-VARIANTS></PHYSICAL-PROPS></SYSTEM-SIGNAL>"
                            "<COMPU-METHOD><SHORT-NAME>cm</SHORT-NAME>" +
                            std::string(compuMethod) + "</COMPU-METHOD>");
}

std::string scales(std::string_view category, std::string_view inner) {
    return "<CATEGORY>" + std::string(category) +
           "</CATEGORY><COMPU-INTERNAL-TO-PHYS><COMPU-SCALES>" + std::string(inner) +
           "</COMPU-SCALES></COMPU-INTERNAL-TO-PHYS>";
}

std::string rational(std::string_view numerators, std::string_view denominators) {
    return "<COMPU-SCALE><COMPU-RATIONAL-COEFFS><COMPU-NUMERATOR>" + std::string(numerators) +
           "</COMPU-NUMERATOR><COMPU-DENOMINATOR>" + std::string(denominators) +
           "</COMPU-DENOMINATOR></COMPU-RATIONAL-COEFFS></COMPU-SCALE>";
}

std::string text(std::string_view lower, std::string_view upper, std::string_view value,
                 std::string_view mask = {}) {
    std::string out = "<COMPU-SCALE>";
    if (!mask.empty()) out += "<MASK>" + std::string(mask) + "</MASK>";
    if (!lower.empty()) out += "<LOWER-LIMIT>" + std::string(lower) + "</LOWER-LIMIT>";
    if (!upper.empty()) out += "<UPPER-LIMIT>" + std::string(upper) + "</UPPER-LIMIT>";
    return out + "<COMPU-CONST><VT>" + std::string(value) + "</VT></COMPU-CONST></COMPU-SCALE>";
}

struct CompuCase {
    const char* name;
    std::string method;
    double offset, scale, denominator;
    std::string table;  // as JSON from number to text
};

TEST(CompuMethod, everyCategory) {
    const CompuCase cases[] = {
        {"identical", scales("IDENTICAL", rational("<V>3</V><V>4</V>", "<V>1</V>")), 0, 1, 1, "{}"},
        {"linear", scales("LINEAR", rational("<V>40</V><V>1e1</V>", "<V>4</V>")), 10, 10, 4, "{}"},
        {"noDenominator", scales("LINEAR", rational("<V>1</V><V>2</V>", "")), 1, 2, 1, "{}"},
        {"denominatorZero",
         scales("SCALE_LINEAR", rational("<V>1</V><V>2</V>", "<V>0</V><V>1</V>")), 0, 1, 1, "{}"},
        {"quadratic", scales("RAT_FUNC", rational("<V>1</V><V>2</V><V>3</V>", "<V>1</V>")), 0, 1, 1,
         "{}"},
        {"constantScale", scales("SCALE_RATIONAL_AND_TEXTTABLE", rational("<V>5</V>", "<V>1</V>")),
         0, 1, 1, "{}"},
        {"mixed",
         scales("SCALE_LINEAR_AND_TEXTTABLE",
                rational("<V>0</V><V>0.5</V>", "<V>1</V>") + text("255", "255", "invalid")),
         0, 0.5, 1, R"({"255":"invalid"})"},
        {"range", scales("TEXTTABLE", text("1", "3", "on") + text("", "9", "nine")), 0, 1, 1,
         R"({"1":"on","2":"on","3":"on","9":"nine"})"},
        {"hugeRange", scales("TEXTTABLE", text("0", "4294967295", "any")), 0, 1, 1,
         R"({"0":"any"})"},
        {"beyondExact", scales("TEXTTABLE", text("1e17", "100000000000000200", "far")), 0, 1, 1,
         R"({"100000000000000000":"far"})"},
        {"infinite", scales("TEXTTABLE", text("5", "INF", "high")), 0, 1, 1, R"({"5":"high"})"},
        {"bitField", scales("BITFIELD_TEXTTABLE", text("4", "4", "door", "0x4")), 0, 1, 1, "{}"},
    };
    for (const auto& row : cases) {
        const auto read = convertText(oneFrame(signalPdu("pdu"), signalPackages(row.method)));
        ASSERT_EQ(read.error, "") << row.name;
        const Json compu = firstPdu(read).at("isignals").at(0).at("compu_method");
        EXPECT_EQ(compu.at("compu_offset"), row.offset) << row.name;
        EXPECT_EQ(compu.at("compu_scale"), row.scale) << row.name;
        EXPECT_EQ(compu.at("compu_denominator"), row.denominator) << row.name;
        Json table = Json::object();
        for (const auto& entry : compu.at("value_table")) {
            table[std::to_string(std::llround(entry.at("value").get<double>()))] = entry.at("name");
        }
        EXPECT_EQ(table, Json::parse(row.table)) << row.name;
        if (std::string_view(row.name) == "bitField") {
            EXPECT_EQ(compu.at("scales").at(0).at("mask"), 4);
        }
    }
}

TEST(InitValue, textsOfTheTableAndConstantsBecomeNumbers) {
    const std::string method = scales("TEXTTABLE", text("2", "2", "two"));
    const struct {
        const char* init;
        const char* raw;
    } cases[] = {
        {"<NUMERICAL-VALUE-SPECIFICATION><VALUE>0x1F</VALUE></NUMERICAL-VALUE-SPECIFICATION>",
         "31"},
        {"<TEXT-VALUE-SPECIFICATION><VALUE>two</VALUE></TEXT-VALUE-SPECIFICATION>", "2"},
        {"<TEXT-VALUE-SPECIFICATION><VALUE>other</VALUE></TEXT-VALUE-SPECIFICATION>", "other"},
        {"<CONSTANT-REFERENCE><CONSTANT-REF>/K/c</CONSTANT-REF></CONSTANT-REFERENCE>", "6"},
        {"<CONSTANT-REFERENCE><CONSTANT-REF>/K/missing</CONSTANT-REF></CONSTANT-REFERENCE>", ""},
    };
    const std::string constants =
        package("K",
                "<CONSTANT-SPECIFICATION><SHORT-NAME>c</SHORT-NAME><VALUE-SPEC>"
                "<NUMERICAL-VALUE-SPECIFICATION><VALUE>6</VALUE></NUMERICAL-VALUE-SPECIFICATION>"
                "</VALUE-SPEC></CONSTANT-SPECIFICATION>");
    for (const auto& row : cases) {
        const std::string init = "<INIT-VALUE>" + std::string(row.init) + "</INIT-VALUE>";
        const auto read =
            convertText(oneFrame(signalPdu("pdu"), signalPackages(method, init) + constants));
        ASSERT_EQ(read.error, "");
        EXPECT_EQ(firstPdu(read).at("isignals").at(0).at("init_value"), row.raw) << row.init;
    }
}

TEST(References, relativePathsAndBases) {
    const std::string inner =
        "<AR-PACKAGES>" +
        package("Inner", "<I-SIGNAL><SHORT-NAME>sig</SHORT-NAME><LENGTH>5</LENGTH></I-SIGNAL>") +
        "</AR-PACKAGES>";
    const std::string outer =
        "<AR-PACKAGE><SHORT-NAME>Outer</SHORT-NAME>" + inner + "</AR-PACKAGE>";
    const struct {
        const char* base;
        const char* reference;
    } cases[] = {
        {"<SHORT-LABEL>B</SHORT-LABEL><IS-DEFAULT>false</IS-DEFAULT>"
         "<PACKAGE-REF DEST=\"AR-PACKAGE\">/Outer</PACKAGE-REF>",
         "<I-SIGNAL-REF BASE=\"B\">Inner/sig</I-SIGNAL-REF>"},
        {"<SHORT-LABEL>B</SHORT-LABEL><IS-DEFAULT>true</IS-DEFAULT>"
         "<PACKAGE-REF DEST=\"AR-PACKAGE\">/Outer/Inner</PACKAGE-REF>",
         "<I-SIGNAL-REF>sig</I-SIGNAL-REF>"},
        {"", "<I-SIGNAL-REF>\n  /Outer/Inner/sig\n</I-SIGNAL-REF>"},
        {"", "<I-SIGNAL-REF>Outer/Inner/sig</I-SIGNAL-REF>"},
    };
    for (const auto& row : cases) {
        std::string whole = oneFrame(signalPdu("pdu", {}, row.reference), outer);
        const std::string mark = "<SHORT-NAME>P</SHORT-NAME>";
        whole.insert(whole.find(mark) + mark.size(), "<REFERENCE-BASES><REFERENCE-BASE>" +
                                                         std::string(row.base) +
                                                         "</REFERENCE-BASE></REFERENCE-BASES>");
        const auto read = convertText(whole);
        ASSERT_EQ(read.error, "") << row.reference;
        EXPECT_EQ(firstPdu(read).at("isignals").at(0).at("length"), 5);
    }
}

TEST(Packages, mayBeRepeatedAndALaterDefinitionReplacesAnEarlierOne) {
    const std::string early =
        package("S", "<I-SIGNAL><SHORT-NAME>sig</SHORT-NAME><LENGTH>3</LENGTH></I-SIGNAL>");
    const std::string other = package("S", "<UNIT><SHORT-NAME>sig</SHORT-NAME></UNIT>");
    EXPECT_EQ(firstPdu(convertText(oneFrame(signalPdu("pdu"), early + other)))
                  .at("isignals")
                  .at(0)
                  .at("length"),
              3);
    const std::string later =
        package("S", "<I-SIGNAL><SHORT-NAME>sig</SHORT-NAME><LENGTH>4</LENGTH></I-SIGNAL>");
    EXPECT_EQ(firstPdu(convertText(oneFrame(signalPdu("pdu"), early + other + later)))
                  .at("isignals")
                  .at(0)
                  .at("length"),
              4);
}

constexpr std::string_view kPlainSignal =
    "<I-SIGNAL><SHORT-NAME>sig</SHORT-NAME><LENGTH>8</LENGTH></I-SIGNAL>";

TEST(Container, withoutHeadersHasFixedPlaces) {
    const std::string pdus =
        "<CONTAINER-I-PDU><SHORT-NAME>pdu</SHORT-NAME><HEADER-TYPE>NO-HEADER</HEADER-TYPE>"
        "<CONTAINED-PDU-TRIGGERING-REFS><CONTAINED-PDU-TRIGGERING-REF>/P/inner"
        "</CONTAINED-PDU-TRIGGERING-REF></CONTAINED-PDU-TRIGGERING-REFS></CONTAINER-I-PDU>" +
        signalPdu("inner", "<CONTAINED-I-PDU-PROPS><OFFSET>3</OFFSET></CONTAINED-I-PDU-PROPS>");
    const auto read = convertText(oneFrame(pdus, package("S", kPlainSignal)));
    ASSERT_EQ(read.error, "");
    const Json inner = firstPdu(read).at("ipdus").at(0);
    EXPECT_EQ(inner.at("start_position"), 24);
    EXPECT_EQ(inner.at("isignals").at(0).at("start_position"), 24 + 8);
}

TEST(Multiplexed, selectorThatNoPartMapsBecomesASignal) {
    const std::string pdus =
        "<MULTIPLEXED-I-PDU><SHORT-NAME>pdu</SHORT-NAME><DYNAMIC-PARTS><DYNAMIC-PART>"
        "<DYNAMIC-PART-ALTERNATIVES><DYNAMIC-PART-ALTERNATIVE><I-PDU-REF>/P/inner</I-PDU-REF>"
        "<SELECTOR-FIELD-CODE>7</SELECTOR-FIELD-CODE></DYNAMIC-PART-ALTERNATIVE>"
        "</DYNAMIC-PART-ALTERNATIVES></DYNAMIC-PART></DYNAMIC-PARTS>"
        "<SELECTOR-FIELD-BYTE-ORDER>MOST-SIGNIFICANT-BYTE-FIRST</SELECTOR-FIELD-BYTE-ORDER>"
        "<SELECTOR-FIELD-LENGTH>4</SELECTOR-FIELD-LENGTH>"
        "<SELECTOR-FIELD-START-POSITION>7</SELECTOR-FIELD-START-POSITION></MULTIPLEXED-I-PDU>" +
        signalPdu("inner");
    const Json pdu = firstPdu(convertText(oneFrame(pdus, package("S", kPlainSignal))));
    EXPECT_EQ(pdu.at("isignals").at(0).at("name"), "pdu_selector");
    EXPECT_EQ(pdu.at("isignals").at(0).at("start_position"), 4);
    EXPECT_EQ(pdu.at("ipdus").at(0).at("selector_code"), 7);
}

TEST(Faults, endTheReadingWithTheReason) {
    const std::string loop =
        "<SECURED-I-PDU><SHORT-NAME>pdu</SHORT-NAME><PAYLOAD-REF>/P/pdu</PAYLOAD-REF>"
        "</SECURED-I-PDU>";
    std::string chain;
    for (int level = 0; level < 20; ++level) {
        chain += "<SECURED-I-PDU><SHORT-NAME>" +
                 (level == 0 ? std::string("pdu") : "p" + std::to_string(level)) +
                 "</SHORT-NAME><PAYLOAD-REF>/P/p" + std::to_string(level + 1) +
                 "</PAYLOAD-REF></SECURED-I-PDU>";
    }
    std::string noId = oneFrame(signalPdu("pdu"), package("S", kPlainSignal));
    const std::string id = "<IDENTIFIER>5</IDENTIFIER>";
    std::string hugeId = noId;
    hugeId.replace(hugeId.find(id), id.size(), "<IDENTIFIER>0x20000000</IDENTIFIER>");
    noId.erase(noId.find(id), id.size());
    const struct {
        std::string text;
        const char* error;
    } cases[] = {
        {"", "the file is empty"},
        {"  \n", "the file is empty"},
        {"BO_ 5 F: 8", "this is not an XML file"},
        {"<?xml version='1.0'?>", "not well-formed XML: No document element found"},
        {"<A><B></A>", "not well-formed XML: Start-end tags mismatch"},
        {std::string("<A>\0</A>", 8), "a zero byte cannot stand in XML"},
        {"<AUTOSAR/>", "the root element has no namespace"},
        {"<AUTOSAR xmlns='http://autosar.org/schema/x4.0'/>",
         "unknown namespace http://autosar.org/schema/x4.0"},
        {oneFrame(loop), "PDU pdu contains itself"},
        {oneFrame(chain), "PDUs are nested more than 16 deep"},
        {oneFrame(signalPdu("other")), "PDU-REF leads nowhere: /P/pdu"},
        {oneFrame(signalPdu("pdu")), "I-SIGNAL-REF leads nowhere: /S/sig"},
        {noId, "frame triggering ft has no identifier of 29 bits or less"},
        {hugeId, "frame triggering ft has no identifier of 29 bits or less"},
        {oneFrame("<CAN-FRAME><SHORT-NAME>pdu</SHORT-NAME></CAN-FRAME>"),
         "PDU-REF leads to a CAN-FRAME, which is no PDU"},
    };
    for (const auto& row : cases) {
        const auto read = convertText(row.text);
        EXPECT_EQ(read.error.substr(0, std::string_view(row.error).size()), row.error);
        EXPECT_LE(read.errorOffset, row.text.size());
    }
}

TEST(Faults, nameTheByteOfTheReference) {
    const std::string whole = oneFrame(signalPdu("pdu"));
    EXPECT_EQ(convertText(whole).errorOffset, whole.find("I-SIGNAL-REF"));
}

TEST(Faults, lesserReferencesAreOnlyWarned) {
    std::string packages = signalPackages(scales("IDENTICAL", ""));
    const std::string method = "/S/cm";
    packages.replace(packages.find(method), method.size(), "/S/no");
    const auto read = convertText(oneFrame(signalPdu("pdu"), packages));
    EXPECT_EQ(read.error, "");
    EXPECT_EQ(read.warnings, std::vector<std::string>{"COMPU-METHOD-REF leads nowhere: /S/no"});
}

// A few kilobytes that would fill a disk: each level holds the next one many times.
TEST(Bombs, sharedPdusAreNotWrittenWithoutEnd) {
    std::string pdus;
    for (int level = 0; level < 8; ++level) {
        const std::string name = level == 0 ? "pdu" : "p" + std::to_string(level);
        pdus +=
            "<CONTAINER-I-PDU><SHORT-NAME>" + name + "</SHORT-NAME><CONTAINED-PDU-TRIGGERING-REFS>";
        for (int copy = 0; copy < 40; ++copy) {
            pdus += "<CONTAINED-PDU-TRIGGERING-REF>/P/p" + std::to_string(level + 1) +
                    "</CONTAINED-PDU-TRIGGERING-REF>";
        }
        pdus += "</CONTAINED-PDU-TRIGGERING-REFS></CONTAINER-I-PDU>";
    }
    const auto read = convertText(oneFrame(pdus + "<NM-PDU><SHORT-NAME>p8</SHORT-NAME></NM-PDU>"));
    EXPECT_EQ(read.error, "the database would fill more than 256 MB when written out");
}

// Groups that contain one another many times are walked once.
TEST(Bombs, groupsAreVisitedOncePerControlUnit) {
    std::string elements =
        "<ECU-INSTANCE><SHORT-NAME>ecu</SHORT-NAME><ASSOCIATED-COM-I-PDU-GROUP-REFS><R-REF>/E/g0"
        "</R-REF></ASSOCIATED-COM-I-PDU-GROUP-REFS></ECU-INSTANCE>";
    for (int level = 0; level < 8; ++level) {
        elements += "<I-SIGNAL-I-PDU-GROUP><SHORT-NAME>g" + std::to_string(level) +
                    "</SHORT-NAME><COMMUNICATION-DIRECTION>OUT</COMMUNICATION-DIRECTION>"
                    "<I-SIGNAL-I-PDUS><X><I-SIGNAL-I-PDU-REF>/P/pdu</I-SIGNAL-I-PDU-REF></X>"
                    "</I-SIGNAL-I-PDUS><CONTAINED-I-SIGNAL-I-PDU-GROUP-REFS>";
        for (int copy = 0; copy < 60; ++copy) {
            elements += "<R-REF>/E/g" + std::to_string((level + 1) % 8) + "</R-REF>";
        }
        elements += "</CONTAINED-I-SIGNAL-I-PDU-GROUP-REFS></I-SIGNAL-I-PDU-GROUP>";
    }
    const auto read = convertText(
        oneFrame(signalPdu("pdu"), package("S", kPlainSignal) + package("E", elements)));
    ASSERT_EQ(read.error, "");
    EXPECT_EQ(firstPdu(read).at("senders"), Json({"ecu"}));
}

TEST(Bombs, entitiesStayUnexpanded) {
    const std::string whole =
        "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b "
        "\"&a;&a;&a;&a;&a;&a;&a;&a;\">]>"
        "<AUTOSAR xmlns=\"http://autosar.org/schema/r4.0\"><AR-PACKAGES>"
        "<AR-PACKAGE><SHORT-NAME>&b;</SHORT-NAME></AR-PACKAGE></AR-PACKAGES></AUTOSAR>";
    EXPECT_EQ(convertText(whole).error, "");
}

TEST(Bombs, deepNestingIsReadWithoutRecursion) {
    std::string deep;
    for (int level = 0; level < 200000; ++level) deep += "<AR-PACKAGES>";
    std::string closing;
    for (int level = 0; level < 200000; ++level) closing += "</AR-PACKAGES>";
    const auto read = convertText(autosar(deep + closing));
    EXPECT_EQ(read.error, "");
    EXPECT_TRUE(read.json.at("can_cluster").empty());
}

TEST(Bombs, tagsWithoutContentAreRefused) {
    std::string tags;
    for (int at = 0; at < 400000; ++at) tags += "<a>";
    EXPECT_NE(convertText(tags).error.find("tags with next to no content"), std::string::npos);
}

// Whole samples with pieces cut out, doubled, moved and spoilt: an answer always, never a crash.
TEST(Bombs, spoiltSamplesNeverCrash) {
    constexpr unsigned kSeed = 20261121;
    std::mt19937 random(kSeed);
    for (const char* name : {"backbone.arxml", "chassis_fibex.xml"}) {
        const std::string whole = readText(dataFile(name));
        for (int round = 0; round < 300; ++round) {
            std::string spoilt = whole;
            for (int change = 0; change < 1 + round % 4; ++change) {
                const size_t at = random() % spoilt.size();
                const size_t length = 1 + random() % 60;
                const std::string piece = spoilt.substr(at, length);
                switch (random() % 4) {
                    case 0:
                        spoilt.erase(at, length);
                        break;
                    case 1:
                        spoilt.insert(at, piece);
                        break;
                    case 2:
                        spoilt.insert(random() % spoilt.size(), piece);
                        break;
                    default:
                        spoilt[at] = static_cast<char>('0' + random() % 10);
                        break;
                }
            }
            for (const auto format : {quill::arxml::Format::kArxml, quill::arxml::Format::kFibex}) {
                const auto read = convertText(quill::text::decodeText(spoilt), format);
                EXPECT_NE(read.error.empty(), read.json.is_null()) << "seed " << kSeed;
            }
        }
    }
}

TEST(Bombs, cutAnywhereNeverCrashes) {
    const std::string whole = oneFrame(signalPdu("pdu"), signalPackages(scales("LINEAR", "")));
    for (size_t length = 0; length < whole.size(); ++length) {
        EXPECT_NE(convertText(std::string_view(whole).substr(0, length)).error, "");
    }
}

}  // namespace
}  // namespace arxmltest
