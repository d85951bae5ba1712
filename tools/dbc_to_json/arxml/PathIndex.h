// Finds elements by their path of short names and resolves references. Built in one pass over the
// document; names point into it, no path is ever copied.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <pugixml.hpp>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quill::arxml {

class PathIndex {
public:
    // Elements that readers start from, in document order.
    struct Roots {
        std::vector<pugi::xml_node> canClusters, flexRayClusters, ethClusters, ecus, nmNodes,
            protections, systems, ecucModules;
    };

    void build(pugi::xml_node root);

    [[nodiscard]] const Roots& roots() const { return m_roots; }

    // Target of a reference element, or an empty node. Several elements may share one path: the
    // last one whose element name is among `kinds` (any when empty) wins, as a later definition
    // replaces an earlier one.
    [[nodiscard]] pugi::xml_node follow(pugi::xml_node reference,
                                        std::initializer_list<const char*> kinds = {}) const;
    // The same for an absolute path.
    [[nodiscard]] pugi::xml_node find(std::string_view path,
                                      std::initializer_list<const char*> kinds = {}) const;

private:
    struct Entry {
        std::string_view name;
        uint32_t parent = 0;
        uint32_t lastHolder = kNone;  // chain of the elements with this path
    };
    struct Holder {
        pugi::xml_node node;
        uint32_t previous = kNone;
    };
    static constexpr uint32_t kNone = 0xFFFFFFFF;

    [[nodiscard]] uint32_t lookUp(uint32_t parent, std::string_view name) const;
    uint32_t intern(uint32_t parent, std::string_view name);
    void grow();
    void addHolder(uint32_t entry, pugi::xml_node node);
    void noteRoot(pugi::xml_node node, uint32_t entry);
    [[nodiscard]] uint32_t walk(uint32_t from, std::string_view path) const;
    [[nodiscard]] pugi::xml_node pick(uint32_t entry,
                                      std::initializer_list<const char*> kinds) const;
    [[nodiscard]] pugi::xml_node followRelative(pugi::xml_node reference, std::string_view path,
                                                std::initializer_list<const char*> kinds) const;
    [[nodiscard]] uint32_t baseOf(pugi::xml_node package, std::string_view label, int depth) const;
    [[nodiscard]] uint32_t pathOfPackage(pugi::xml_node package) const;

    std::vector<Entry> m_entries;
    std::vector<Holder> m_holders;
    std::vector<uint32_t> m_slots;  // open addressing, a power of two
    std::unordered_map<const void*, uint32_t> m_packages;
    Roots m_roots;
};

}  // namespace quill::arxml
