#include "core/playback/recorder/RecordArena.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

namespace playback {

namespace {

constexpr size_t kSlabRoom = size_t{64} * 1024 - 64;
constexpr size_t kAlignment = 8;
constexpr size_t kLink = sizeof(void*);  // address of the slab before each record
// The arena's own share of a slab, taken back when it turns to the next one. It outnumbers every
// record of a slab, so the count cannot reach 0 before.
constexpr uint32_t kOwnShare = 1U << 30U;

}  // namespace

struct RecordArena::Slab {
    std::atomic<uint32_t> users{kOwnShare};

    void drop(uint32_t shares) noexcept {
        if (users.fetch_sub(shares, std::memory_order_acq_rel) != shares) return;
        this->~Slab();
        ::operator delete(static_cast<void*>(this));
    }
};

void RecordArena::open(size_t room) {
    retire();
    m_room = std::max(room, kSlabRoom);
    m_slab = ::new (::operator new(kAlignment + m_room)) Slab;
    static_assert(sizeof(Slab) <= kAlignment);
}

void RecordArena::retire() noexcept {
    if (m_slab != nullptr) m_slab->drop(kOwnShare - m_taken);
    m_slab = nullptr;
    m_used = m_room = m_taken = 0;
}

void* RecordArena::allocate(size_t size) {
    // The slab's address stands before each record, so that the record alone is enough to free it.
    const size_t needed = kLink + (size + kAlignment - 1) / kAlignment * kAlignment;
    if (needed > m_room - m_used) open(needed);
    uint8_t* at = reinterpret_cast<uint8_t*>(m_slab) + kAlignment + m_used;
    m_used += needed;
    ++m_taken;
    std::memcpy(at, &m_slab, kLink);
    return at + kLink;
}

void RecordArena::release(void* record) noexcept {
    Slab* slab = nullptr;
    std::memcpy(&slab, static_cast<uint8_t*>(record) - kLink, kLink);
    slab->drop(1);
}

}  // namespace playback
