// One name for all kinds of members of a JSON object.
#pragma once

#include <concepts>
#include <cstdint>
#include <string_view>

#include "common/JsonWriter.h"

namespace quill::arxml {

inline void put(dbjson::JsonWriter& json, std::string_view key, std::string_view value) {
    json.text(key, value);
}
inline void put(dbjson::JsonWriter& json, std::string_view key, std::same_as<bool> auto value) {
    json.boolean(key, value);
}
inline void put(dbjson::JsonWriter& json, std::string_view key, std::same_as<double> auto value) {
    json.number(key, value);
}
template <std::integral Integer>
requires(!std::same_as<Integer, bool>) void put(dbjson::JsonWriter& json, std::string_view key,
                                                Integer value) {
    json.integer(key, static_cast<int64_t>(value));
}

}  // namespace quill::arxml
