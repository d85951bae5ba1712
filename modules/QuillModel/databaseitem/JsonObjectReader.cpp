#include "databaseitem/JsonObjectReader.h"

#include <QString>
#include <charconv>
#include <cmath>

#include "core/log/Log.h"

namespace Model::database {
namespace {

std::string utf8(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    return {bytes.constData(), static_cast<size_t>(bytes.size())};
}

// Decimal text to double, the same in every locale; 0 when the text is none.
double decimalNumber(const QJsonValue& value) {
    bool ok = false;
    const double number = value.toString().trimmed().toDouble(&ok);
    return ok ? number : 0.0;
}

// Whole number within what a 64-bit integer holds; false for fractions and anything beyond.
bool wholeNumber(const QJsonValue& value, int64_t& whole) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (!value.isDouble()) return false;
    const double number = value.toDouble();
    if (!(number >= -kLimit && number < kLimit) || number != std::floor(number)) return false;
    whole = value.toInteger(static_cast<qint64>(number));
    return true;
}

}  // namespace

JsonObjectReader::JsonObjectReader(const JsonObjectReader& parent, const char* key, qsizetype index,
                                   const QJsonValue& element)
    : m_object(element.toObject()),
      m_fault(parent.m_fault),
      m_parent(&parent),
      m_key(key),
      m_index(index) {
    if (!element.isObject()) m_fault = place() + ": expected an object";
}

QJsonValue JsonObjectReader::value(const char* key) const {
    return m_object.value(QLatin1String(key));
}

bool JsonObjectReader::has(const char* key) const {
    const QJsonValue found = value(key);
    return !found.isUndefined() && !found.isNull();
}

bool JsonObjectReader::isText(const char* key) const { return value(key).isString(); }

std::string JsonObjectReader::text(const char* key) {
    const QJsonValue found = value(key);
    if (found.isString()) return utf8(found.toString());
    if (!found.isUndefined() && !found.isNull()) fail(key, "a text");
    return {};
}

std::string JsonObjectReader::textOrNumber(const char* key) {
    const QJsonValue found = value(key);
    if (found.isDouble()) return utf8(QString::number(found.toDouble(), 'g', 17));
    return text(key);
}

bool JsonObjectReader::flag(const char* key) {
    const QJsonValue found = value(key);
    if (found.isDouble()) return found.toDouble() != 0.0;
    if (!found.isBool() && !found.isUndefined() && !found.isNull()) fail(key, "a boolean");
    return found.toBool();
}

int32_t JsonObjectReader::integer(const char* key) {
    const int64_t whole = longInteger(key);
    if (whole < INT32_MIN || whole > int64_t{UINT32_MAX}) {
        fail(key, "an integer of 32 bits");
        return 0;
    }
    return static_cast<int32_t>(static_cast<uint32_t>(whole));
}

int64_t JsonObjectReader::longInteger(const char* key) {
    const QJsonValue found = value(key);
    int64_t whole = 0;
    if (found.isUndefined() || found.isNull() || wholeNumber(found, whole)) return whole;
    if (found.isString()) return static_cast<int64_t>(parseHexString(utf8(found.toString())));
    fail(key, "an integer");
    return 0;
}

double JsonObjectReader::number(const char* key, double missing) {
    const QJsonValue found = value(key);
    if (found.isDouble()) return found.toDouble();
    if (found.isString()) return decimalNumber(found);
    if (!found.isUndefined() && !found.isNull()) fail(key, "a number");
    return missing;
}

std::vector<std::string> JsonObjectReader::texts(const char* key) const {
    std::vector<std::string> list;
    const QJsonArray elements = value(key).toArray();
    list.reserve(static_cast<size_t>(elements.size()));
    for (const QJsonValue element : elements) {
        if (element.isString()) list.push_back(utf8(element.toString()));
    }
    return list;
}

std::vector<std::string> JsonObjectReader::namesOrTexts(const char* key) const {
    std::vector<std::string> list;
    for (const QJsonValue element : value(key).toArray()) {
        const QJsonValue name =
            element.isObject() ? element.toObject().value(QLatin1String("name")) : element;
        if (name.isString()) list.push_back(utf8(name.toString()));
    }
    return list;
}

std::map<double, std::string> JsonObjectReader::valueTable(const char* key) {
    std::map<double, std::string> table;
    eachObject(key, [&](JsonObjectReader& entry) {
        table.insert_or_assign(entry.number("value"), entry.text("name"));
    });
    return table;
}

std::vector<std::pair<uint64_t, uint64_t>> JsonObjectReader::ranges(const char* key) {
    std::vector<std::pair<uint64_t, uint64_t>> list;
    for (const QJsonValue element : array(key)) {
        const QJsonArray pair = element.toArray();
        int64_t first = 0;
        int64_t last = 0;
        if (pair.size() != 2 || !wholeNumber(pair.at(0), first) || !wholeNumber(pair.at(1), last)) {
            fail(key, "pairs of integers");
            break;
        }
        list.emplace_back(static_cast<uint64_t>(first), static_cast<uint64_t>(last));
    }
    return list;
}

QJsonArray JsonObjectReader::array(const char* key) {
    const QJsonValue found = value(key);
    if (!found.isArray() && !found.isUndefined() && !found.isNull()) fail(key, "an array");
    return found.toArray();
}

std::string JsonObjectReader::place() const {
    std::string text = m_parent != nullptr ? m_parent->place() : std::string();
    if (m_key == nullptr) return text;
    if (!text.empty()) text += '.';
    text += m_key;
    if (m_index != kNoIndex) text += '[' + std::to_string(m_index) + ']';
    return text;
}

void JsonObjectReader::fail(const char* key, const char* expected) {
    if (failed()) return;
    const std::string outer = place();
    m_fault = outer + (outer.empty() ? "" : ".") + key + ": expected " + expected;
}

int32_t toInt32(double number) {
    if (!(number > -2147483648.0)) return number < 0.0 ? INT32_MIN : 0;
    return number < 2147483647.0 ? static_cast<int32_t>(number) : INT32_MAX;
}

int64_t toInt64(double number) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (!(number > -kLimit)) return number < 0.0 ? INT64_MIN : 0;
    return number < kLimit ? static_cast<int64_t>(number) : INT64_MAX;
}

uint64_t parseHexString(const std::string& text) {
    std::string_view digits = text;
    if (digits.starts_with("0x") || digits.starts_with("0X")) digits.remove_prefix(2);
    uint64_t value = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value, 16);
    if (error == std::errc() && stop == end) return value;
    QUILL_WARN(quill::log::kDatabase, "parseHexString  failed, text: {}", text);
    return 0;
}

}  // namespace Model::database
