#include <charconv>
#include <unordered_map>

#include "ldf/LdfTokens.h"

namespace quill::dbjson::ldf {

namespace {
constexpr uint32_t kLargest = 0x7FFFFFFFU;
constexpr const char* kOutOfRange = "number out of range";
}  // namespace

std::string_view LdfBuilder::textAt(size_t index) const {
    return index < m_tokens.size() ? m_tokens[index].text : std::string_view();
}

uint64_t LdfBuilder::integerAt(size_t index) const {
    std::string_view text = textAt(index);
    const char* const place = text.data();
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    if (isHex) text.remove_prefix(2);
    uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value, isHex ? 16 : 10);
    if (result.ec != std::errc()) throw SyntaxError{place, kOutOfRange};
    if (result.ptr != end) throw SyntaxError{place, "expected a whole number"};
    return value;
}

uint32_t LdfBuilder::smallAt(size_t index) const {
    const uint64_t value = integerAt(index);
    if (value > kLargest) throw SyntaxError{textAt(index).data(), kOutOfRange};
    return static_cast<uint32_t>(value);
}

double LdfBuilder::realAt(size_t index) const {
    std::string_view text = textAt(index);
    if (text.starts_with("0x") || text.starts_with("0X")) {
        return static_cast<double>(integerAt(index));
    }
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) {
        throw SyntaxError{textAt(index).data(), kOutOfRange};
    }
    return value;
}

Names LdfBuilder::namesFrom(size_t first) const {
    Names names;
    if (first < m_tokens.size()) names.reserve(m_tokens.size() - first);
    for (size_t i = first; i < m_tokens.size(); ++i) names.push_back(m_tokens[i].text);
    return names;
}

SignalPlace LdfBuilder::placeHere() const { return {textAt(0), smallAt(1)}; }

void LdfBuilder::setting() {
    const std::string_view key = textAt(0);
    const std::string_view value = textAt(1);
    if (key == "LIN_protocol_version") m_model.protocolVersion = value;
    if (key == "LIN_language_version") m_model.languageVersion = value;
    if (key == "LDF_file_revision") m_model.fileRevision = value;
    if (key == "Channel_name") m_model.channelName = value;
    if (key == "LIN_speed") m_model.speedKbps = realAt(1);
    clear();
}

void LdfBuilder::master() {
    Master& master = m_model.master;
    master.name = textAt(0);
    if (m_tokens.size() > 1) master.timebaseMs = realAt(1);
    if (m_tokens.size() > 2) master.jitterMs = realAt(2);
    if (m_tokens.size() > 3) master.maxHeaderBits = realAt(3);
    if (m_tokens.size() > 4) master.responseTolerancePct = realAt(4);
    clear();
}

void LdfBuilder::slaves() {
    m_model.slaves = namesFrom(0);
    clear();
}

void LdfBuilder::signal() {
    Signal signal;
    signal.name = textAt(0);
    signal.bitLength = smallAt(1);
    size_t at = 2;
    if (at < m_tokens.size() && m_tokens[at].kind == TokenKind::Braces) {
        signal.isArray = true;
        ++at;
    }
    for (; at < m_tokens.size() && m_tokens[at].kind == TokenKind::Number; ++at) {
        signal.initial.push_back(integerAt(at));
    }
    signal.publisher = textAt(at);
    signal.subscribers = namesFrom(at + 1);
    m_model.signals.push_back(std::move(signal));
    clear();
}

void LdfBuilder::frameHead(bool isDiagnostic) {
    constexpr uint32_t kLastId = 63;
    Frame frame;
    frame.name = textAt(0);
    frame.id = smallAt(1);
    if (frame.id > kLastId) throw SyntaxError{textAt(1).data(), "a frame identifier is 0 to 63"};
    frame.publisher = textAt(2);
    if (m_tokens.size() > 3) frame.length = smallAt(3);
    if (frame.length && *frame.length > 8) {
        throw SyntaxError{textAt(3).data(), "a frame holds at most 8 bytes"};
    }
    (isDiagnostic ? m_model.diagnosticFrames : m_model.frames).push_back(std::move(frame));
    clear();
}

void LdfBuilder::framePlace(bool isDiagnostic) {
    (isDiagnostic ? m_model.diagnosticFrames : m_model.frames)
        .back()
        .signals.push_back(placeHere());
    clear();
}

void LdfBuilder::sporadicFrame() {
    m_model.sporadicFrames.push_back({textAt(0), namesFrom(1)});
    clear();
}

void LdfBuilder::eventTriggeredFrame() {
    EventTriggeredFrame frame;
    frame.name = textAt(0);
    size_t at = 1;
    if (m_tokens[at].kind == TokenKind::Name) frame.collisionTable = textAt(at++);
    frame.id = smallAt(at++);
    frame.frames = namesFrom(at);
    m_model.eventTriggeredFrames.push_back(std::move(frame));
    clear();
}

void LdfBuilder::diagnosticAddress() {
    m_model.diagnosticAddresses.push_back({textAt(0), smallAt(1)});
    clear();
}

void LdfBuilder::groupHead() {
    m_model.signalGroups.push_back({textAt(0), smallAt(1), {}});
    clear();
}

void LdfBuilder::groupPlace() {
    m_model.signalGroups.back().signals.push_back(placeHere());
    clear();
}

void LdfBuilder::nodeHead() {
    m_model.nodeAttributes.push_back({textAt(0), {}, {}, {}});
    clear();
}

void LdfBuilder::nodeProperty() {
    NodeProperty property;
    property.key = textAt(0);
    const size_t last = m_tokens.size() - 1;
    if (last >= 2 && m_tokens[last].kind == TokenKind::Name &&
        m_tokens[last - 1].kind == TokenKind::Number) {
        property.unit = m_tokens[last].text;
        m_tokens.pop_back();
    }
    property.values = namesFrom(1);
    m_model.nodeAttributes.back().properties.push_back(std::move(property));
    clear();
}

void LdfBuilder::configurableFrame() {
    NodeAttributes& node = m_model.nodeAttributes.back();
    node.configurableFrames.push_back(textAt(0));
    if (m_tokens.size() > 1) node.configurableIds.push_back(smallAt(1));
    clear();
}

void LdfBuilder::tableHead() {
    m_model.scheduleTables.push_back({textAt(0), {}});
    clear();
}

void LdfBuilder::tableEntry() {
    ScheduleEntry entry;
    entry.command = textAt(0);
    entry.delayMs = realAt(m_tokens.size() - 1);
    if (entry.delayMs < 0.0) throw SyntaxError{m_tokens.back().text.data(), kOutOfRange};
    m_tokens.pop_back();
    entry.arguments = namesFrom(1);
    m_model.scheduleTables.back().entries.push_back(std::move(entry));
    clear();
}

void LdfBuilder::encodingHead() {
    m_model.encodings.push_back({textAt(0), {}});
    clear();
}

void LdfBuilder::encodingValue(EncodingKind kind) {
    EncodingValue value;
    value.kind = kind;
    if (kind == EncodingKind::Logical) {
        value.minimum = value.maximum = realAt(0);
        value.text = textAt(1);
    } else if (kind == EncodingKind::Physical) {
        value.minimum = realAt(0);
        value.maximum = realAt(1);
        value.scale = realAt(2);
        value.offset = realAt(3);
        value.text = textAt(4);
    }
    m_model.encodings.back().values.push_back(value);
    clear();
}

void LdfBuilder::representation() {
    m_representations.push_back({textAt(0), namesFrom(1)});
    clear();
}

void LdfBuilder::finish() {
    std::unordered_map<std::string_view, uint32_t> encodings;
    for (uint32_t i = 0; i < m_model.encodings.size(); ++i) {
        encodings.emplace(m_model.encodings[i].name, i);
    }
    std::unordered_map<std::string_view, uint32_t> ofSignal;
    for (const Representation& representation : m_representations) {
        const auto encoding = encodings.find(representation.encoding);
        if (encoding == encodings.end()) continue;
        for (const std::string_view signal : representation.signals) {
            ofSignal.emplace(signal, encoding->second);
        }
    }
    for (Signal& signal : m_model.signals) {
        const auto found = ofSignal.find(signal.name);
        if (found != ofSignal.end()) signal.encoding = found->second;
    }
}

}  // namespace quill::dbjson::ldf
