#include "arxml/Document.h"

#include <algorithm>
#include <cstring>

namespace quill::arxml {
namespace {

// No comments, processing instructions or document types in the tree, and the text of an element
// inside the element itself: both halve the memory of what readers never look at.
constexpr unsigned kParseOptions = pugi::parse_escapes | pugi::parse_eol | pugi::parse_cdata |
                                   pugi::parse_wconv_attribute | pugi::parse_trim_pcdata |
                                   pugi::parse_embed_pcdata;

// A node takes 64 bytes in memory. Text with less than this many bytes per tag is no description
// of a network but an attempt to fill the memory.
constexpr size_t kMinBytesPerTag = 4;
constexpr size_t kAlwaysAllowed = size_t{1} << 20;

std::optional<ReadError> refuseByContent(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return ReadError{-1, "the file is empty"};
    if (text[first] != '<') {
        return ReadError{static_cast<std::ptrdiff_t>(first), "this is not an XML file"};
    }
    if (const size_t zero = text.find('\0'); zero != std::string::npos) {
        return ReadError{static_cast<std::ptrdiff_t>(zero), "a zero byte cannot stand in XML"};
    }
    if (text.size() > kAlwaysAllowed) {
        const auto tags = static_cast<size_t>(std::count(text.begin(), text.end(), '<'));
        if (tags * kMinBytesPerTag > text.size()) {
            return ReadError{static_cast<std::ptrdiff_t>(first),
                             "the file has " + std::to_string(tags) +
                                 " tags with next to no content and is not read"};
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<ReadError> Document::parse(std::string& text) {
    if (auto refused = refuseByContent(text)) return refused;
    const auto result = m_document.load_buffer_inplace(text.data(), text.size(), kParseOptions,
                                                       pugi::encoding_utf8);
    if (!result) {
        return ReadError{result.offset,
                         std::string("not well-formed XML: ") + result.description()};
    }
    const auto top = root();
    const char* colon = std::strchr(top.name(), ':');
    const std::string attribute =
        colon ? "xmlns:" + std::string(top.name(), static_cast<size_t>(colon - top.name()))
              : std::string("xmlns");
    m_namespace = top.attribute(attribute.c_str()).value();
    // Files mix prefixes rarely, but a prefix anywhere is declared somewhere: mostly at the top.
    bool hasPrefixes = colon != nullptr;
    for (const auto declared : top.attributes()) {
        hasPrefixes = hasPrefixes || (std::strncmp(declared.name(), "xmlns:", 6) == 0 &&
                                      std::strcmp(declared.name(), "xmlns:xsi") != 0);
    }
    if (hasPrefixes) dropPrefixes();
    return std::nullopt;
}

void Document::dropPrefixes() {
    const auto top = root();
    auto node = top;
    std::string local;  // a copy, since the new name goes where the old one stands
    while (node) {
        if (const char* colon = std::strchr(node.name(), ':')) {
            local = colon + 1;
            node.set_name(local.c_str());
        }
        if (const auto inner = node.first_child()) {
            node = inner;
            continue;
        }
        while (node != top && !node.next_sibling()) node = node.parent();
        node = node == top ? pugi::xml_node{} : node.next_sibling();
    }
}

}  // namespace quill::arxml
