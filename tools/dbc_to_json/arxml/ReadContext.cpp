#include "arxml/ReadContext.h"

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

constexpr size_t kMaxWarnings = 20;
constexpr size_t kMaxQuoted = 200;

std::string describe(pugi::xml_node reference) {
    std::string text(reference.name());
    text += " leads nowhere: ";
    text += textOf(reference).substr(0, kMaxQuoted);
    return text;
}

}  // namespace

bool ReadContext::fail(pugi::xml_node where, std::string text) {
    if (!m_error) m_error = ReadError{where.offset_debug(), std::move(text)};
    return false;
}

void ReadContext::warn(pugi::xml_node where, std::string text) {
    if (m_database.warnings.size() < kMaxWarnings) {
        m_database.warnings.push_back({where.offset_debug(), std::move(text)});
    }
}

pugi::xml_node ReadContext::require(pugi::xml_node reference,
                                    std::initializer_list<const char*> kinds) {
    const auto target = m_index.follow(reference, kinds);
    if (!target) fail(reference, describe(reference));
    return target;
}

pugi::xml_node ReadContext::wish(pugi::xml_node reference,
                                 std::initializer_list<const char*> kinds) {
    if (!reference || textOf(reference).empty()) return {};
    const auto target = m_index.follow(reference, kinds);
    if (!target) warn(reference, describe(reference));
    return target;
}

}  // namespace quill::arxml
