#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "common/Diagnostics.h"
#include "dbc/DbcJson.h"
#include "dbc/DbcReader.h"
#include "ldf/LdfJson.h"
#include "ldf/LdfReader.h"
#include "quill_textencoding/TextDecoding.h"

namespace corpus {

using Json = nlohmann::json;
namespace dbjson = quill::dbjson;

inline std::filesystem::path folder() {
    return std::filesystem::path(QUILL_SOURCE_DIR) / ".." / "shared" / "corpus";
}

// Names of the files of one kind ("dbc"); empty where the corpus is not there.
inline std::vector<std::string> files(const std::string& kind) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder() / kind, error)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    if (names.empty()) names.emplace_back();  // one case that skips, so that the lack is seen
    return names;
}

inline std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline Json golden(const std::string& kind, const std::string& name) {
    return Json::parse(bytesOf(folder() / "golden" / (kind + "__" + name + ".json")));
}

// A test name from a file name.
inline std::string testName(std::string name) {
    if (name.empty()) return "corpusAbsent";
    for (char& c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
    }
    return name;
}

struct Converted {
    dbjson::Diagnostics diagnostics;
    Json json;
};

inline Converted convertDbc(std::string bytes) {
    Converted result;
    const std::string text = quill::text::decodeText(std::move(bytes));
    const auto model = dbjson::dbc::readDbc(text, result.diagnostics);
    if (result.diagnostics.failed()) return result;
    dbjson::JsonWriter writer;
    dbjson::dbc::writeDbcJson(model, dbjson::dbc::ExportScope::All, writer);
    result.json = Json::parse(writer.text());
    return result;
}

inline Converted convertLdf(std::string bytes) {
    Converted result;
    const std::string text = quill::text::decodeText(std::move(bytes));
    const auto model = dbjson::ldf::readLdf(text, result.diagnostics);
    if (result.diagnostics.failed()) return result;
    dbjson::JsonWriter writer;
    dbjson::ldf::writeLdfJson(model, writer);
    result.json = Json::parse(writer.text());
    return result;
}

}  // namespace corpus
