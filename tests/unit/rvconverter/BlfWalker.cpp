#include "unit/rvconverter/BlfWalker.h"

#include <zlib.h>

#include <fstream>
#include <iterator>

namespace quill::testing {

namespace {

using Bytes = std::vector<uint8_t>;

uint64_t numberAt(const Bytes& bytes, size_t at, size_t count) {
    uint64_t value = 0;
    for (size_t i = count; i-- > 0;) value = value * 256 + bytes.at(at + i);
    return value;
}

bool textAt(const Bytes& bytes, size_t at, const std::string& text) {
    return at + text.size() <= bytes.size() &&
           std::string(bytes.begin() + static_cast<long>(at),
                       bytes.begin() + static_cast<long>(at + text.size())) == text;
}

Bytes inflated(const Bytes& file, size_t from, size_t count, size_t size) {
    Bytes out(size);
    uLongf got = size;
    if (uncompress(out.data(), &got, &file[from], count) != Z_OK) return {};
    out.resize(got);
    return out;
}

// Objects of one container, which must hold whole ones only.
void walkObjects(const Bytes& content, WalkedFile& walked) {
    size_t at = 0;
    while (at < content.size()) {
        if (!textAt(content, at, "LOBJ") || at + 32 > content.size()) {
            walked.fault = "no object at " + std::to_string(at);
            return;
        }
        const size_t size = numberAt(content, at + 8, 4);
        if (size < 32 || at + size > content.size()) {
            walked.fault = "object beyond its container";
            return;
        }
        WalkedObject object;
        object.type = static_cast<uint32_t>(numberAt(content, at + 12, 4));
        if (numberAt(content, at + 16, 4) != 2) walked.fault = "stamp not in nanoseconds";
        object.timeNs = numberAt(content, at + 24, 8);
        object.body.assign(content.begin() + static_cast<long>(at + 32),
                           content.begin() + static_cast<long>(at + size));
        walked.objects.push_back(std::move(object));
        at += size;
    }
}

std::vector<uint16_t> calendarAt(const Bytes& file, size_t at) {
    std::vector<uint16_t> fields;
    for (size_t i = 0; i < 8; ++i) {
        fields.push_back(static_cast<uint16_t>(numberAt(file, at + 2 * i, 2)));
    }
    return fields;
}

}  // namespace

uint64_t WalkedObject::number(size_t offset, size_t count) const {
    return numberAt(body, offset, count);
}

std::vector<uint8_t> WalkedObject::bytes(size_t offset, size_t count) const {
    return {body.begin() + static_cast<long>(offset),
            body.begin() + static_cast<long>(offset + count)};
}

std::vector<uint8_t> readWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::optional<WalkedFile> walkBlf(const std::string& path) {
    const Bytes file = readWholeFile(path);
    if (file.size() < 144 || !textAt(file, 0, "LOGG") || numberAt(file, 4, 4) != 144) return {};
    WalkedFile walked;
    walked.actualSize = file.size();
    walked.level = file[13];
    walked.headerFileSize = numberAt(file, 16, 8);
    walked.headerUncompressedSize = numberAt(file, 24, 8);
    walked.headerObjects = static_cast<uint32_t>(numberAt(file, 32, 4));
    walked.start = calendarAt(file, 40);
    walked.last = calendarAt(file, 56);
    walked.uncompressedSize = 144;
    walked.wholeEnd = 144;
    while (walked.wholeEnd + 32 <= file.size() && walked.fault.empty()) {
        const size_t at = walked.wholeEnd;
        if (!textAt(file, at, "LOBJ") || numberAt(file, at + 12, 4) != 10) {
            walked.fault = "no container at " + std::to_string(at);
            break;
        }
        const size_t size = numberAt(file, at + 8, 4);
        const size_t end = at + size + size % 4;
        if (end > file.size()) break;
        const size_t plainSize = numberAt(file, at + 24, 4);
        const bool stored = numberAt(file, at + 16, 2) == 0;
        const Bytes content = stored ? Bytes(file.begin() + static_cast<long>(at + 32),
                                             file.begin() + static_cast<long>(at + size))
                                     : inflated(file, at + 32, size - 32, plainSize);
        if (content.size() != plainSize) {
            walked.fault = "container of wrong size";
            break;
        }
        walkObjects(content, walked);
        walked.uncompressedSize += 32 + plainSize;
        ++walked.containers;
        walked.storedContainers += stored ? 1 : 0;
        walked.wholeEnd = end;
    }
    return walked;
}

}  // namespace quill::testing
