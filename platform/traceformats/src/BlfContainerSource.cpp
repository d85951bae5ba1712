#include "BlfContainerSource.h"

#include <algorithm>
#include <string>

#include "BlfScan.h"

namespace quill::traceformats {
namespace {
constexpr uint16_t kStored = 0;
constexpr uint16_t kDeflated = 2;
constexpr uint32_t kLargestWhole = 16U << 20U;  // of a container; common are 128 KiB
}  // namespace

BlfContainerSource::BlfContainerSource(ByteSource& file, DamageLog& damage)
    : m_file(file),
      m_damage(damage),
      m_whole(libdeflate_alloc_decompressor(), &libdeflate_free_decompressor) {
    m_zlibReady = inflateInit(&m_zlib) == Z_OK;
}

BlfContainerSource::~BlfContainerSource() {
    if (m_zlibReady) inflateEnd(&m_zlib);
}

bool BlfContainerSource::takeBreak() {
    const bool broken = m_break;
    m_break = false;
    return broken;
}

size_t BlfContainerSource::read(uint8_t* target, size_t room) {
    size_t done = 0;
    while (done < room && !m_break && m_state != State::AtEnd) {
        switch (m_state) {
            case State::BetweenObjects:
                openNext();
                break;
            case State::Copying:
                done += copySome(target + done, room - done);
                break;
            case State::Unpacked:
                done += takeUnpacked(target + done, room - done);
                break;
            case State::Inflating:
                done += inflateSome(target + done, room - done);
                break;
            case State::AtEnd:
                break;
        }
    }
    return done;
}

void BlfContainerSource::openNext() {
    auto bytes = m_file.ahead(blfscan::kContainerHead + blfscan::kMostPadding);
    if (bytes.empty()) {
        m_state = State::AtEnd;
        return;
    }
    const auto padding = blfscan::signatureNear(bytes);
    if (!padding) {
        if (bytes.size() <= blfscan::kMostPadding) {
            m_state = State::AtEnd;  // padding behind the last object
        } else {
            findNextObject("no object where one should begin");
        }
        return;
    }
    (void)m_file.skip(*padding);
    bytes = m_file.ahead(blfscan::kContainerHead);
    if (bytes.size() < blfscan::kBaseHeader) return endOfFile("object header");
    const uint32_t objectSize = bytes::little32(bytes.data() + 8);
    if (bytes::little32(bytes.data() + 12) == blfscan::kContainerType) {
        openContainer(bytes, objectSize);
    } else {
        openObject(objectSize);
    }
}

void BlfContainerSource::openContainer(std::span<const uint8_t> head, uint32_t objectSize) {
    if (head.size() < blfscan::kContainerHead) return endOfFile("container header");
    if (objectSize < blfscan::kContainerHead) {
        return findNextObject("container is smaller than its header");
    }
    const uint16_t method = bytes::little16(head.data() + 16);
    const uint32_t declaredSize = bytes::little32(head.data() + 24);
    if (method != kStored && method != kDeflated) {
        return findNextObject("container is packed in an unknown way");
    }
    (void)m_file.skip(blfscan::kContainerHead);
    m_remaining = objectSize - blfscan::kContainerHead;
    if (m_remaining == 0) return;  // the last container of a file may be empty
    m_state = State::Copying;
    if (method != kDeflated || unpackWhole(declaredSize)) return;
    m_state = State::Inflating;
    inflateReset(&m_zlib);
}

// False, with nothing used, when the container is unusually large or not what its header says.
bool BlfContainerSource::unpackWhole(uint32_t declaredSize) {
    if (m_whole == nullptr || m_remaining > kLargestWhole || declaredSize > kLargestWhole) {
        return false;
    }
    const auto bytes = m_file.ahead(static_cast<size_t>(m_remaining));
    const auto offered = static_cast<size_t>(std::min<uint64_t>(bytes.size(), m_remaining));
    if (m_contentRoom < declaredSize) {
        m_content = std::make_unique_for_overwrite<uint8_t[]>(declaredSize);
        m_contentRoom = declaredSize;
    }
    size_t used = 0;
    size_t made = 0;
    if (libdeflate_zlib_decompress_ex(m_whole.get(), bytes.data(), offered, m_content.get(),
                                      declaredSize, &used, &made) != LIBDEFLATE_SUCCESS) {
        return false;
    }
    (void)m_file.skip(used);
    m_remaining -= used;
    m_contentUsed = 0;
    m_contentEnd = made;
    m_state = State::Unpacked;
    return true;
}

size_t BlfContainerSource::takeUnpacked(uint8_t* target, size_t room) {
    const size_t count = std::min(room, m_contentEnd - m_contentUsed);
    if (count > 0) std::memcpy(target, m_content.get() + m_contentUsed, count);
    m_contentUsed += count;
    if (m_contentUsed == m_contentEnd) endOfCompressed();
    return count;
}

void BlfContainerSource::openObject(uint32_t objectSize) {
    if (objectSize < blfscan::kBaseHeader || objectSize > blfscan::kLargestObject) {
        return findNextObject("object length is impossible");
    }
    // The length is believed when the next object, or the end of the file, stands behind it.
    const auto bytes = m_file.ahead(objectSize + blfscan::kMostPadding + 4);
    const bool whole = bytes.size() >= objectSize;
    const auto behind = bytes.subspan(std::min<size_t>(objectSize, bytes.size()));
    if (!whole || (behind.size() > blfscan::kMostPadding && !blfscan::signatureNear(behind))) {
        return findNextObject(whole ? "object length leads to no other object"
                                    : "file ends inside an object");
    }
    m_remaining = objectSize;
    m_state = State::Copying;
}

size_t BlfContainerSource::copySome(uint8_t* target, size_t room) {
    const auto bytes = m_file.ahead(1);
    if (bytes.empty()) {
        endOfFile("container");
        return 0;
    }
    const size_t count = static_cast<size_t>(std::min<uint64_t>({bytes.size(), room, m_remaining}));
    std::memcpy(target, bytes.data(), count);
    (void)m_file.skip(count);
    m_remaining -= count;
    if (m_remaining == 0) m_state = State::BetweenObjects;
    return count;
}

size_t BlfContainerSource::inflateSome(uint8_t* target, size_t room) {
    const auto bytes = m_file.ahead(1);
    const size_t offered = static_cast<size_t>(std::min<uint64_t>(bytes.size(), m_remaining));
    // zlib does not write through next_in; its interface predates const.
    m_zlib.next_in = const_cast<uint8_t*>(bytes.data());
    m_zlib.avail_in = static_cast<uInt>(offered);
    m_zlib.next_out = target;
    m_zlib.avail_out = static_cast<uInt>(room);
    const int code = inflate(&m_zlib, Z_NO_FLUSH);
    const size_t used = offered - m_zlib.avail_in;
    const size_t made = room - m_zlib.avail_out;
    (void)m_file.skip(used);
    m_remaining -= used;
    if (code == Z_STREAM_END) {
        endOfCompressed();
    } else if (code != Z_OK && code != Z_BUF_ERROR) {
        findNextObject("compressed content is damaged");
    } else if (made == 0 && used == 0) {
        if (m_remaining == 0) {
            m_damage.add(m_file.position(), "compressed content ends early");
            m_break = true;
            m_state = State::BetweenObjects;
        } else {
            endOfFile("container");
        }
    }
    return made;
}

// The compressed data knows its own end. What the object size leaves behind it is skipped only when
// another object stands there, so that a size that is too large does not swallow what follows.
void BlfContainerSource::endOfCompressed() {
    m_state = State::BetweenObjects;
    if (m_remaining == 0 || m_remaining > blfscan::kLargestObject) return;
    const size_t rest = static_cast<size_t>(m_remaining);
    const auto bytes = m_file.ahead(rest + blfscan::kMostPadding + 4);
    if (bytes.size() > rest && blfscan::signatureNear(bytes.subspan(rest))) {
        (void)m_file.skip(rest);
    }
}

void BlfContainerSource::endOfFile(const char* what) {
    m_damage.add(m_file.position(), std::string("file ends inside a ") + what);
    m_state = State::AtEnd;
}

void BlfContainerSource::findNextObject(const char* reason) {
    const uint64_t start = m_file.position();
    m_state = State::BetweenObjects;
    m_break = true;
    uint64_t lost = m_file.skip(1);
    while (true) {
        const auto bytes = m_file.ahead(blfscan::kContainerHead);
        if (bytes.size() < blfscan::kBaseHeader) break;
        if (const auto at = blfscan::findHeader(bytes, 0)) {
            lost += m_file.skip(*at);
            m_damage.add(start, std::string(reason) + ", " + std::to_string(lost) +
                                    " bytes of the file lost");
            return;
        }
        lost += m_file.skip(bytes.size() - (blfscan::kBaseHeader - 1));
    }
    lost += m_file.skip(blfscan::kBaseHeader);
    m_damage.add(start, std::string(reason) + ", " + std::to_string(lost) +
                            " bytes lost up to the end of the file");
    m_state = State::AtEnd;
}

}  // namespace quill::traceformats
