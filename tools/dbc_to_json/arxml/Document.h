// An XML text parsed in place, element names freed of their namespace prefix.
#pragma once

#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>

#include "arxml/Model.h"

namespace quill::arxml {

class Document {
public:
    // Parses UTF-8 text in place: `text` is changed and must outlive the document and all that was
    // read from it. Document types are skipped and entities never expanded.
    [[nodiscard]] std::optional<ReadError> parse(std::string& text);

    [[nodiscard]] pugi::xml_node root() const { return m_document.document_element(); }
    // Namespace of the root element, empty when it has none.
    [[nodiscard]] std::string_view rootNamespace() const { return m_namespace; }

private:
    void dropPrefixes();

    pugi::xml_document m_document;
    std::string m_namespace;
};

}  // namespace quill::arxml
