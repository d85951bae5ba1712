#pragma once

#include <cstddef>
#include <cstdint>

namespace playback {

// Memory of records: cut from slabs by one thread, given back record by record from any thread. A
// slab is freed with its last record, so a record costs a few instructions and no lock.
class RecordArena {
public:
    RecordArena() = default;
    ~RecordArena() { retire(); }
    RecordArena(const RecordArena&) = delete;
    RecordArena& operator=(const RecordArena&) = delete;

    // Memory for one record, aligned to eight bytes. Throws std::bad_alloc without memory.
    [[nodiscard]] void* allocate(size_t size);

    // Gives a record back; has the signature of a record handle's release function.
    static void release(void* record) noexcept;

private:
    struct Slab;

    void open(size_t room);
    void retire() noexcept;

    Slab* m_slab = nullptr;  // the one that is being cut
    size_t m_used = 0;
    size_t m_room = 0;
    uint32_t m_taken = 0;  // records cut from it
};

}  // namespace playback
