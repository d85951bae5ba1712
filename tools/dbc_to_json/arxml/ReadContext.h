// What all readers of one file share: the index, the model under construction and the first error.
#pragma once

#include <initializer_list>
#include <optional>
#include <pugixml.hpp>
#include <string>

#include "arxml/Model.h"
#include "arxml/PathIndex.h"

namespace quill::arxml {

class ReadContext {
public:
    ReadContext(const PathIndex& index, Database& database)
        : m_index(index), m_database(database) {}

    [[nodiscard]] const PathIndex& index() const { return m_index; }
    [[nodiscard]] Database& database() { return m_database; }
    [[nodiscard]] const std::optional<ReadError>& error() const { return m_error; }

    // Keeps the first error; always false, so that readers can end with `return fail(...)`.
    bool fail(pugi::xml_node where, std::string text);
    // Something that the file lacks but a reader can do without.
    void warn(pugi::xml_node where, std::string text);

    // Target of a reference without which a frame has no layout: missing, it is an error.
    [[nodiscard]] pugi::xml_node require(pugi::xml_node reference,
                                         std::initializer_list<const char*> kinds = {});
    // Target of a reference that a reader can do without: missing, it is a warning.
    [[nodiscard]] pugi::xml_node wish(pugi::xml_node reference,
                                      std::initializer_list<const char*> kinds = {});

private:
    const PathIndex& m_index;
    Database& m_database;
    std::optional<ReadError> m_error;
};

}  // namespace quill::arxml
