#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Model::database {

// Reads the members of one JSON object of a converter's document. A missing member (or null) leaves
// the default. A member of the wrong type stops the whole read: the first such fault is kept with
// its place ("messages[3].signals[0].start_bit: expected an integer"), as a half-read database
// would decode wrongly and say nothing.
//
// Readers of nested objects point to the reader around them, so they must not outlive it.
class JsonObjectReader {
public:
    JsonObjectReader(const QJsonObject& object, std::string& fault)
        : m_object(object), m_fault(fault) {}

    [[nodiscard]] bool failed() const { return !m_fault.empty(); }
    [[nodiscard]] bool has(const char* key) const;

    [[nodiscard]] bool isText(const char* key) const;

    [[nodiscard]] std::string text(const char* key);
    // Numbers too, as the text that they are written with.
    [[nodiscard]] std::string textOrNumber(const char* key);
    // Booleans; numbers count as true when they are not 0.
    [[nodiscard]] bool flag(const char* key);
    // Signed 32-bit; unsigned 32-bit numbers wrap around; texts are read as hexadecimal ("0x1A0").
    [[nodiscard]] int32_t integer(const char* key);
    [[nodiscard]] int64_t longInteger(const char* key);
    // Texts are read as decimal numbers; a text that is none gives 0.
    [[nodiscard]] double number(const char* key, double missing = 0.0);
    // Array of texts. Anything but an array is ignored and gives an empty list.
    [[nodiscard]] std::vector<std::string> texts(const char* key) const;
    // Array whose elements are texts or objects with a "name".
    [[nodiscard]] std::vector<std::string> namesOrTexts(const char* key) const;
    // Array of {"name": text, "value": number}.
    [[nodiscard]] std::map<double, std::string> valueTable(const char* key);
    // Array of pairs of whole numbers, [[0, 3], [5, 5]].
    [[nodiscard]] std::vector<std::pair<uint64_t, uint64_t>> ranges(const char* key);

    // Calls read(JsonObjectReader&) for each element of an array of objects, in order.
    template <class Read>
    void eachObject(const char* key, Read&& read) {
        const QJsonArray elements = array(key);
        for (qsizetype i = 0; i < elements.size() && !failed(); ++i) {
            JsonObjectReader inner(*this, key, i, elements.at(i));
            if (!failed()) read(inner);
        }
    }
    // Calls read(JsonObjectReader&) for a nested object when it is there.
    template <class Read>
    void object(const char* key, Read&& read) {
        if (!has(key) || failed()) return;
        JsonObjectReader inner(*this, key, kNoIndex, value(key));
        if (!failed()) read(inner);
    }

private:
    static constexpr qsizetype kNoIndex = -1;

    JsonObjectReader(const JsonObjectReader& parent, const char* key, qsizetype index,
                     const QJsonValue& element);
    [[nodiscard]] QJsonValue value(const char* key) const;
    [[nodiscard]] QJsonArray array(const char* key);
    [[nodiscard]] std::string place() const;
    void fail(const char* key, const char* expected);

    QJsonObject m_object;
    std::string& m_fault;
    const JsonObjectReader* m_parent = nullptr;
    const char* m_key = nullptr;
    qsizetype m_index = kNoIndex;
};

// Truncation toward zero, held within the type's range; not-a-number gives 0.
[[nodiscard]] int32_t toInt32(double number);
[[nodiscard]] int64_t toInt64(double number);

// Value of a hexadecimal text with or without "0x"; 0, and a line in the log, when it is none.
[[nodiscard]] uint64_t parseHexString(const std::string& text);

}  // namespace Model::database
