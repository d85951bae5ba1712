#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "Block.h"

namespace rv {

// Blocks between the conversion loop and the persistence loop, which gets them in order although
// several threads pack them at once. At most `capacity` blocks are under way; a producer that is
// ahead waits, so memory stays bounded.
class BlockPipeline {
public:
    using Pack = std::function<void(Block&)>;

    // One thread per packer; without any, blocks pass through as they are.
    BlockPipeline(size_t capacity, std::vector<Pack> packers);
    ~BlockPipeline() { stop(); }
    BlockPipeline(const BlockPipeline&) = delete;
    BlockPipeline& operator=(const BlockPipeline&) = delete;

    // An empty block, its memory used before if possible.
    [[nodiscard]] std::unique_ptr<Block> take();

    // Hands a block on; waits for room. False after stop(), the block is then gone.
    bool submit(std::unique_ptr<Block> block);

    // No block will follow.
    void finish();

    // The oldest block once it is packed; null after finish() when none is left, and after stop().
    [[nodiscard]] std::unique_ptr<Block> next();

    // Gives a block that was written back for further use.
    void recycle(std::unique_ptr<Block> block);

    // Ends waits on both sides and joins the threads; may be called twice.
    void stop();

private:
    struct Slot {
        std::unique_ptr<Block> block;
        bool packed = false;
    };

    void runPacker(const Pack& pack);

    const size_t m_capacity;
    std::mutex m_mutex;
    std::condition_variable m_room;                // a slot became free
    std::condition_variable m_work;                // a block waits to be packed
    std::condition_variable m_ready;               // a block is packed, or none will come
    std::deque<std::unique_ptr<Slot>> m_slots;     // guarded by m_mutex, as all below; in order
    std::deque<Slot*> m_unpacked;                  // those that no thread has taken yet
    std::vector<std::unique_ptr<Block>> m_spares;  // at most m_capacity
    bool m_finished = false;
    bool m_stopped = false;
    std::vector<std::jthread> m_threads;
};

}  // namespace rv
