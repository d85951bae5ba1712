#pragma once

#include <libdeflate.h>
#include <zlib.h>

#include <memory>

#include "quill_traceformats/DamageLog.h"
#include "quill_traceformats/SlicedInput.h"

namespace quill::traceformats {

// Joins the contents of a BLF file's containers, and the objects that stand outside of any, to one
// stream of objects. Where something of the file is lost the stream breaks: read answers 0 until
// takeBreak is called, since what follows does not continue what came before.
class BlfContainerSource final : public ByteSource {
public:
    BlfContainerSource(ByteSource& file, DamageLog& damage);
    ~BlfContainerSource() override;

    // The first `wanted` bytes of the file, before anything else is read.
    [[nodiscard]] std::span<const uint8_t> fileHead(size_t wanted) { return m_file.ahead(wanted); }
    [[nodiscard]] bool skipTo(uint64_t firstObject) {
        return m_file.skip(firstObject) == firstObject;
    }
    size_t read(uint8_t* target, size_t room) override;
    // True once for every break.
    [[nodiscard]] bool takeBreak();

private:
    enum class State { BetweenObjects, Copying, Unpacked, Inflating, AtEnd };

    void openNext();
    void openContainer(std::span<const uint8_t> head, uint32_t objectSize);
    void openObject(uint32_t objectSize);
    size_t copySome(uint8_t* target, size_t room);
    bool unpackWhole(uint32_t declaredSize);
    size_t takeUnpacked(uint8_t* target, size_t room);
    size_t inflateSome(uint8_t* target, size_t room);
    void endOfCompressed();
    void endOfFile(const char* what);
    void findNextObject(const char* reason);

    SlicedInput m_file;
    DamageLog& m_damage;
    State m_state = State::BetweenObjects;
    uint64_t m_remaining = 0;  // bytes of the open container that are not used yet
    // A sound container is unpacked at once, which is much faster than streaming it.
    std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> m_whole;
    std::unique_ptr<uint8_t[]> m_content;
    size_t m_contentRoom = 0;
    size_t m_contentEnd = 0;
    size_t m_contentUsed = 0;
    // One that is damaged is streamed, so that all in front of the damage comes out.
    z_stream m_zlib{};
    bool m_zlibReady = false;
    bool m_break = false;
};

}  // namespace quill::traceformats
