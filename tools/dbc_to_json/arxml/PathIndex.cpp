#include "arxml/PathIndex.h"

#include <cstring>

#include "arxml/XmlText.h"

namespace quill::arxml {
namespace {

// Bounds on what a single reference may cost, far above what real files need.
constexpr int kMaxBaseDepth = 8;
constexpr int kMaxAncestors = 64;
constexpr int kMaxBases = 64;
constexpr int kMaxSamePath = 1024;

size_t hashOf(uint32_t parent, std::string_view name) {
    uint64_t hash = 0x9E3779B97F4A7C15ULL ^ parent;
    size_t at = 0;
    for (; at + 8 <= name.size(); at += 8) {
        uint64_t chunk = 0;
        std::memcpy(&chunk, name.data() + at, 8);
        hash = (hash ^ chunk) * 0xFF51AFD7ED558CCDULL;
        hash ^= hash >> 32;
    }
    uint64_t rest = 0;
    std::memcpy(&rest, name.data() + at, name.size() - at);
    hash = (hash ^ rest ^ (uint64_t{name.size()} << 56)) * 0xC4CEB9FE1A85EC53ULL;
    return static_cast<size_t>(hash ^ (hash >> 29));
}

// The schema puts SHORT-NAME first; a few elements of tolerance for files written by hand.
std::string_view shortNameOf(pugi::xml_node node) {
    int tries = 4;
    for (auto child = node.first_child(); child && tries > 0; child = child.next_sibling()) {
        if (std::strcmp(child.name(), "SHORT-NAME") == 0) return textOf(child);
        --tries;
    }
    return {};
}

bool isAmong(const char* name, std::initializer_list<const char*> kinds) {
    if (kinds.size() == 0) return true;
    for (const char* kind : kinds) {
        if (std::strcmp(kind, name) == 0) return true;
    }
    return false;
}

}  // namespace

void PathIndex::build(pugi::xml_node root) {
    m_entries.assign(1, Entry{});
    m_slots.assign(1024, kNone);
    m_holders.clear();
    m_packages.clear();
    m_roots = Roots{};
    // Files may nest without end, so the pass keeps its own stack: the entry of each open element.
    std::vector<uint32_t> open{0};
    auto node = root.first_child();
    while (node) {
        uint32_t entry = open.back();
        const auto inner = node.first_child();
        if (inner && inner.type() == pugi::node_element) {
            if (const auto name = shortNameOf(node); !name.empty()) {
                entry = intern(entry, name);
                addHolder(entry, node);
                noteRoot(node, entry);
            }
            open.push_back(entry);
            node = inner;
            continue;
        }
        while (node != root && !node.next_sibling()) {
            node = node.parent();
            if (node != root) open.pop_back();
        }
        if (node == root) break;
        node = node.next_sibling();
    }
}

void PathIndex::noteRoot(pugi::xml_node node, uint32_t entry) {
    const std::string_view name = node.name();
    if (name == "AR-PACKAGE") {
        m_packages.emplace(node.internal_object(), entry);
    } else if (name == "CAN-CLUSTER") {
        m_roots.canClusters.push_back(node);
    } else if (name == "ECU-INSTANCE") {
        m_roots.ecus.push_back(node);
    } else if (name == "FLEXRAY-CLUSTER") {
        m_roots.flexRayClusters.push_back(node);
    } else if (name == "ETHERNET-CLUSTER") {
        m_roots.ethClusters.push_back(node);
    } else if (name.ends_with("-NM-NODE") || name == "NM-NODE") {
        m_roots.nmNodes.push_back(node);
    } else if (name == "END-TO-END-PROTECTION") {
        m_roots.protections.push_back(node);
    } else if (name == "SYSTEM") {
        m_roots.systems.push_back(node);
    } else if (name == "ECUC-MODULE-CONFIGURATION-VALUES") {
        m_roots.ecucModules.push_back(node);
    }
}

uint32_t PathIndex::lookUp(uint32_t parent, std::string_view name) const {
    const size_t mask = m_slots.size() - 1;
    for (size_t slot = hashOf(parent, name) & mask;; slot = (slot + 1) & mask) {
        const uint32_t entry = m_slots[slot];
        if (entry == kNone) return kNone;
        if (m_entries[entry].parent == parent && m_entries[entry].name == name) return entry;
    }
}

uint32_t PathIndex::intern(uint32_t parent, std::string_view name) {
    if (const uint32_t known = lookUp(parent, name); known != kNone) return known;
    if (m_entries.size() * 2 >= m_slots.size()) grow();
    const auto entry = static_cast<uint32_t>(m_entries.size());
    m_entries.push_back({name, parent, kNone});
    const size_t mask = m_slots.size() - 1;
    size_t slot = hashOf(parent, name) & mask;
    while (m_slots[slot] != kNone) slot = (slot + 1) & mask;
    m_slots[slot] = entry;
    return entry;
}

void PathIndex::grow() {
    m_slots.assign(m_slots.size() * 4, kNone);
    const size_t mask = m_slots.size() - 1;
    for (uint32_t entry = 1; entry < m_entries.size(); ++entry) {
        size_t slot = hashOf(m_entries[entry].parent, m_entries[entry].name) & mask;
        while (m_slots[slot] != kNone) slot = (slot + 1) & mask;
        m_slots[slot] = entry;
    }
}

void PathIndex::addHolder(uint32_t entry, pugi::xml_node node) {
    const auto holder = static_cast<uint32_t>(m_holders.size());
    m_holders.push_back({node, m_entries[entry].lastHolder});
    m_entries[entry].lastHolder = holder;
}

uint32_t PathIndex::walk(uint32_t from, std::string_view path) const {
    uint32_t entry = from;
    while (!path.empty()) {
        const size_t slash = path.find('/');
        const auto name = path.substr(0, slash);
        path = slash == std::string_view::npos ? std::string_view{} : path.substr(slash + 1);
        if (name.empty()) continue;
        entry = lookUp(entry, name);
        if (entry == kNone) return kNone;
    }
    return entry;
}

pugi::xml_node PathIndex::pick(uint32_t entry, std::initializer_list<const char*> kinds) const {
    if (entry == kNone || entry == 0) return {};
    int tries = kMaxSamePath;
    for (uint32_t at = m_entries[entry].lastHolder; at != kNone && tries > 0;
         at = m_holders[at].previous, --tries) {
        if (isAmong(m_holders[at].node.name(), kinds)) return m_holders[at].node;
    }
    return {};
}

pugi::xml_node PathIndex::find(std::string_view path,
                               std::initializer_list<const char*> kinds) const {
    return pick(walk(0, path), kinds);
}

pugi::xml_node PathIndex::follow(pugi::xml_node reference,
                                 std::initializer_list<const char*> kinds) const {
    const auto path = textOf(reference);
    if (path.empty()) return {};
    return path.front() == '/' ? find(path, kinds) : followRelative(reference, path, kinds);
}

// A relative path starts at the reference base that the reference names, or at the default one of
// the nearest package that has such; then, for files that forgot it, at the enclosing packages.
pugi::xml_node PathIndex::followRelative(pugi::xml_node reference, std::string_view path,
                                         std::initializer_list<const char*> kinds) const {
    const std::string_view label = reference.attribute("BASE").value();
    int levels = kMaxAncestors;
    for (auto at = reference.parent(); at && levels > 0; at = at.parent(), --levels) {
        if (std::strcmp(at.name(), "AR-PACKAGE") != 0) continue;
        if (const uint32_t base = baseOf(at, label, 0); base != kNone) {
            if (const auto found = pick(walk(base, path), kinds)) return found;
        }
    }
    levels = kMaxAncestors;
    for (auto at = reference.parent(); at && levels > 0; at = at.parent(), --levels) {
        if (std::strcmp(at.name(), "AR-PACKAGE") != 0) continue;
        const uint32_t start = pathOfPackage(at);
        if (start == kNone) continue;
        if (const auto found = pick(walk(start, path), kinds)) return found;
    }
    return find(path, kinds);
}

uint32_t PathIndex::baseOf(pugi::xml_node package, std::string_view label, int depth) const {
    if (depth > kMaxBaseDepth) return kNone;
    int tries = kMaxBases;
    for (const auto base : package.child("REFERENCE-BASES").children("REFERENCE-BASE")) {
        if (--tries < 0) break;
        const bool matches = label.empty() ? textOf(base, "IS-DEFAULT") == "true"
                                           : textOf(base, "SHORT-LABEL") == label;
        if (!matches) continue;
        if (textOf(base, "BASE-IS-THIS-PACKAGE") == "true") return pathOfPackage(package);
        const auto target = base.child("PACKAGE-REF");
        const auto path = textOf(target);
        if (path.empty()) continue;
        if (path.front() == '/') return walk(0, path);
        const std::string_view outer = target.attribute("BASE").value();
        int levels = kMaxAncestors / kMaxBaseDepth;
        for (auto at = package.parent(); at && levels > 0; at = at.parent(), --levels) {
            if (std::strcmp(at.name(), "AR-PACKAGE") != 0) continue;
            const uint32_t start = baseOf(at, outer, depth + 1);
            if (start != kNone) return walk(start, path);
        }
        return walk(0, path);
    }
    return kNone;
}

uint32_t PathIndex::pathOfPackage(pugi::xml_node package) const {
    const auto known = m_packages.find(package.internal_object());
    return known == m_packages.end() ? kNone : known->second;
}

}  // namespace quill::arxml
