// Signals with all that their types, system signals and compu methods tell of them.
#pragma once

#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <unordered_map>

#include "arxml/CompuReader.h"
#include "arxml/ReadContext.h"

namespace quill::arxml {

class SignalReader {
public:
    SignalReader(ReadContext& context, CompuReader& compu) : m_context(context), m_compu(compu) {}

    // Index of an I-SIGNAL in the database, read once; nothing after an error.
    [[nodiscard]] std::optional<uint32_t> read(pugi::xml_node iSignal);

private:
    // The places where a property of a signal may stand, the strongest first.
    struct Sources {
        pugi::xml_node system, systemProps, networkProps, type, typeProps;
    };

    [[nodiscard]] Sources sourcesOf(pugi::xml_node iSignal);
    [[nodiscard]] bool readCompu(const Sources& from, Signal& out);
    void readType(const Sources& from, Signal& out);
    void readTypeOfRelease3(const Sources& from, Signal& out);
    void readLimits(const Sources& from, Signal& out);
    void readInitValue(pugi::xml_node iSignal, const Sources& from, Signal& out);
    [[nodiscard]] std::string_view rawText(std::string_view text, const Signal& signal);

    ReadContext& m_context;
    CompuReader& m_compu;
    std::unordered_map<const void*, uint32_t> m_known;
};

}  // namespace quill::arxml
