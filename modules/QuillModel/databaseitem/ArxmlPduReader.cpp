#include "databaseitem/ArxmlPduReader.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <utility>

#include "databaseitem/JsonObjectReader.h"

namespace Model::database {
namespace {

constexpr const char* kMotorola = "MOST-SIGNIFICANT-BYTE-FIRST";
constexpr std::array<const char*, 4> kHeaderTypes = {"", "NO-HEADER", "SHORT-HEADER",
                                                     "LONG-HEADER"};

constexpr int32_t kLongHeader = 3;

bool isSignedEncoding(const std::string& encoding) {
    return encoding == "2C" || encoding == "1C" || encoding == "SM";
}

void readCompuMethod(JsonObjectReader& json, CanArxmlEntrySignal& signal) {
    signal.compuMethod = json.text("name");
    signal.compuCategory = json.text("category");
    signal.unit = json.text("unit");
    signal.offset = json.number("compu_offset");
    const double denominator = json.number("compu_denominator", 1.0);
    signal.factor = json.number("compu_scale", 1.0) / (denominator != 0.0 ? denominator : 1.0);
    signal.mapValueTable = json.valueTable("value_table");
}

// One bound; a missing one is infinite, as are those that the converter writes so.
double bound(JsonObjectReader& json, const char* key, double missing) {
    if (json.isText(key)) {
        const std::string text = json.text(key);
        if (text == "INF") return std::numeric_limits<double>::infinity();
        if (text == "-INF") return -std::numeric_limits<double>::infinity();
    }
    return json.number(key, missing);
}

// Physical limits; where only those of the raw value are given, these scaled. Without any both are
// 0.
void readLimits(JsonObjectReader& json, CanArxmlEntrySignal& signal) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const bool physical = json.has("phy_lower_limit") || json.has("phy_upper_limit");
    if (!physical && !json.has("inter_lower_limit") && !json.has("inter_upper_limit")) return;
    const double lower =
        bound(json, physical ? "phy_lower_limit" : "inter_lower_limit", -kInfinity);
    const double upper = bound(json, physical ? "phy_upper_limit" : "inter_upper_limit", kInfinity);
    const double factor = physical ? 1.0 : signal.factor;
    const double offset = physical ? 0.0 : signal.offset;
    signal.valMin = std::min(lower * factor, upper * factor) + offset;
    signal.valMax = std::max(lower * factor, upper * factor) + offset;
}

void readArxmlSignal(JsonObjectReader& json, CanArxmlEntrySignal& signal) {
    signal.name = json.text("name");
    signal.comment = json.text("comment");
    signal.bitLength = json.integer("length");
    signal.isBigEndian = json.text("byte_order") == kMotorola;
    signal.startBit = json.integer("start_position");
    signal.transport = json.text("transport");
    signal.hasInitValue = json.has("init_value") && json.textOrNumber("init_value") != "";
    signal.initValue = signal.hasInitValue ? json.number("init_value") : 0.0;
    signal.dynamicLength = json.textOrNumber("dyn_length");
    json.object("compu_method", [&](JsonObjectReader& method) { readCompuMethod(method, signal); });
    json.object("dataconstr", [&](JsonObjectReader& limits) { readLimits(limits, signal); });
    json.object("sw_base_type", [&](JsonObjectReader& type) {
        signal.baseType = type.text("name");
        const std::string encoding = type.text("encoding");
        signal.isSigned = isSignedEncoding(encoding);
        signal.isFloat = encoding == "IEEE754";
    });
    // AUTOSAR 3 tells both by the kind of data type, which only the converter sees.
    if (json.has("is_signed")) signal.isSigned = json.flag("is_signed");
    if (json.has("is_float")) signal.isFloat = json.flag("is_float");
    signal.isSecured = json.flag("secured_signal");
    signal.receivers = json.texts("receivers");
}

void readSignals(JsonObjectReader& json, CanFdPdu& pdu) {
    json.eachObject("isignals", [&](JsonObjectReader& element) {
        auto signal = std::make_shared<CanArxmlEntrySignal>();
        readArxmlSignal(element, *signal);
        pdu.signals.push_back(std::move(signal));
    });
}

// Contained PDUs are known on the bus by the id that belongs to the container's kind of header.
void readHeaderId(JsonObjectReader& json, int32_t headerType, CanFdPdu& pdu) {
    if (json.has("header_id")) pdu.id = json.integer("header_id");
    const char* key =
        headerType == kLongHeader ? "header_id_long_header" : "header_id_short_header";
    json.object("contained_ipdu_pros", [&](JsonObjectReader& props) {
        if (props.has(key)) pdu.id = props.integer(key);
    });
}

void readContainedPdus(JsonObjectReader& json, CanFdPdu& container) {
    json.eachObject("ipdus", [&](JsonObjectReader& element) {
        auto inner = std::make_shared<CanFdPdu>();
        readPdu(element, *inner);
        readHeaderId(element, container.header_type, *inner);
        container.pdus.push_back(std::move(inner));
    });
}

void readMultiplexedParts(JsonObjectReader& json, CanFdPdu& pdu) {
    pdu.isMultiplexed = true;
    json.object("selector", [&](JsonObjectReader& selector) {
        pdu.selector.startBit = selector.integer("start_position");
        pdu.selector.bitLength = selector.integer("length");
        pdu.selector.isBigEndian = selector.text("byte_order") == kMotorola;
    });
    json.eachObject("ipdus", [&](JsonObjectReader& element) {
        auto part = std::make_shared<CanFdPdu>();
        readPdu(element, *part);
        if (element.has("selector_code")) part->selectorCode = element.longInteger("selector_code");
        pdu.pdus.push_back(std::move(part));
    });
}

// A secured PDU shows the signals of the PDU that it protects as its own: they lie at the same
// place, and the freshness value and authenticator behind them.
void readSecuredContent(JsonObjectReader& json, CanFdPdu& pdu) {
    json.eachObject("ipdu", [&](JsonObjectReader& element) {
        CanFdPdu inner;
        readPdu(element, inner);
        std::move(inner.signals.begin(), inner.signals.end(), std::back_inserter(pdu.signals));
        std::move(inner.pdus.begin(), inner.pdus.end(), std::back_inserter(pdu.pdus));
        if (pdu.cycleTime == 0) pdu.cycleTime = inner.cycleTime;
    });
}

}  // namespace

int32_t headerTypeCode(const std::string& text) {
    for (size_t code = 1; code < kHeaderTypes.size(); ++code) {
        if (text == kHeaderTypes.at(code)) return static_cast<int32_t>(code);
    }
    return 0;
}

std::string headerTypeText(int32_t code) {
    const auto index = static_cast<size_t>(code);
    return index < kHeaderTypes.size() ? kHeaderTypes.at(index) : "";
}

void readPdu(JsonObjectReader& json, CanFdPdu& pdu) {
    pdu.pdutype = json.text("type");
    pdu.name = json.text("name");
    pdu.comment = json.text("comment");
    pdu.startPosition = json.integer("start_position");
    pdu.length = json.integer("length");
    pdu.unusedBitPattern = json.textOrNumber("unused_bit_pattern");
    json.object("timing", [&](JsonObjectReader& timing) {
        pdu.cycleTime = toInt32(timing.number("cycle_time"));
    });
    pdu.trigger = json.text("trigger");
    pdu.header_type = headerTypeCode(json.text("header"));
    pdu.rxAccept = json.text("rx_accept");
    pdu.receivers = json.texts("receivers");
    pdu.senders = json.texts("senders");
    readSignals(json, pdu);
    if (pdu.pdutype == "SECURED-I-PDU") readSecuredContent(json, pdu);
    if (pdu.pdutype == "CONTAINER-I-PDU") readContainedPdus(json, pdu);
    if (pdu.pdutype == "MULTIPLEXED-I-PDU") readMultiplexedParts(json, pdu);
}

}  // namespace Model::database
