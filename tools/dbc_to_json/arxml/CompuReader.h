// Compu methods and units: how raw values become physical values and texts.
#pragma once

#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <unordered_map>

#include "arxml/ReadContext.h"

namespace quill::arxml {

class CompuReader {
public:
    explicit CompuReader(ReadContext& context) : m_context(context) {}

    // Index of the method in the database, read once; nothing after an error.
    [[nodiscard]] std::optional<uint32_t> read(pugi::xml_node method);
    // Text that a signal shows behind its value, empty when it has no unit.
    [[nodiscard]] std::string_view unitText(pugi::xml_node unitReference);

private:
    [[nodiscard]] bool readScales(pugi::xml_node method, CompuMethod& out);
    [[nodiscard]] bool readScale(pugi::xml_node scale, CompuMethod& out);
    [[nodiscard]] bool applyLinear(pugi::xml_node scale, const CompuScale& read, CompuMethod& out);
    void addTexts(const CompuScale& scale, CompuMethod& out);

    ReadContext& m_context;
    std::unordered_map<const void*, uint32_t> m_known;
    size_t m_rangeTexts = 0;
};

}  // namespace quill::arxml
