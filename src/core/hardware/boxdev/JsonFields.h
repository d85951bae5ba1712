#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace RV::BoxDev {

// Reads the keys of a command document one by one. The first key that is missing, of the wrong kind
// or out of range is kept as the reason; later reads then change nothing.
class JsonFields {
public:
    explicit JsonFields(const nlohmann::json& object, std::string prefix = {})
        : m_object(object), m_prefix(std::move(prefix)) {
        if (!object.is_object()) m_reason = "\"" + m_prefix + "\" is not an object";
    }

    template <std::integral Int>
    void read(const char* key, Int& value, int64_t low = std::numeric_limits<Int>::min(),
              int64_t high = int64_t{std::numeric_limits<Int>::max()}) {
        const nlohmann::json* found = find(key);
        if (found == nullptr) return;
        if (!found->is_number_integer()) return fail(key, "is not an integer");
        const auto number = found->get<int64_t>();
        if (number < low || number > high) {
            return fail(key, "is out of range: " + std::to_string(number));
        }
        value = static_cast<Int>(number);
    }
    void read(const char* key, bool& value) {
        const nlohmann::json* found = find(key);
        if (found == nullptr) return;
        if (!found->is_boolean()) return fail(key, "is not true or false");
        value = found->get<bool>();
    }
    void read(const char* key, double& value, double low, double high) {
        const nlohmann::json* found = find(key);
        if (found == nullptr) return;
        if (!found->is_number()) return fail(key, "is not a number");
        const auto number = found->get<double>();
        if (!(number >= low && number <= high)) {
            return fail(key, "is out of range: " + std::to_string(number));
        }
        value = number;
    }
    void read(const char* key, std::string& value) {
        const nlohmann::json* found = find(key);
        if (found == nullptr) return;
        if (!found->is_string()) return fail(key, "is not a text");
        value = found->get<std::string>();
    }
    void readBytes(const char* key, std::vector<uint8_t>& bytes, size_t most) {
        const nlohmann::json* found = find(key);
        if (found == nullptr) return;
        if (!found->is_array()) return fail(key, "is not a list");
        if (found->size() > most) return fail(key, "has more than " + std::to_string(most));
        bytes.clear();
        for (const auto& item : *found) {
            if (!item.is_number_integer() || item.get<int64_t>() < 0 || item.get<int64_t>() > 255) {
                return fail(key, "holds something other than bytes");
            }
            bytes.push_back(item.get<uint8_t>());
        }
    }
    // The object or list under a key; an empty one when it is missing (and the read has failed).
    [[nodiscard]] const nlohmann::json& child(const char* key) {
        static const nlohmann::json kNothing = nlohmann::json::object();
        const nlohmann::json* found = find(key);
        return found == nullptr ? kNothing : *found;
    }
    [[nodiscard]] bool has(const char* key) const {
        return m_object.is_object() && m_object.contains(key);
    }

    void fail(const char* key, const std::string& what) {
        if (m_reason.empty()) m_reason = "\"" + m_prefix + key + "\" " + what;
    }
    [[nodiscard]] const std::string& reason() const { return m_reason; }
    [[nodiscard]] bool ok() const { return m_reason.empty(); }

private:
    const nlohmann::json* find(const char* key) {
        if (!m_reason.empty()) return nullptr;
        const auto found = m_object.find(key);
        if (found != m_object.end()) return &*found;
        fail(key, "is missing");
        return nullptr;
    }

    const nlohmann::json& m_object;
    std::string m_prefix;
    std::string m_reason;
};

}  // namespace RV::BoxDev
