#include "BlockPipeline.h"

#include "quill_os/threads.h"

namespace rv {

BlockPipeline::BlockPipeline(size_t capacity, std::vector<Pack> packers) : m_capacity(capacity) {
    for (Pack& pack : packers) {
        m_threads.emplace_back([this, own = std::move(pack)] { runPacker(own); });
    }
}

std::unique_ptr<Block> BlockPipeline::take() {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_spares.empty()) {
            std::unique_ptr<Block> block = std::move(m_spares.back());
            m_spares.pop_back();
            return block;
        }
    }
    return std::make_unique<Block>();
}

bool BlockPipeline::submit(std::unique_ptr<Block> block) {
    const bool passThrough = m_threads.empty();
    {
        std::unique_lock lock(m_mutex);
        m_room.wait(lock, [this] { return m_stopped || m_slots.size() < m_capacity; });
        if (m_stopped) return false;
        m_slots.push_back(std::make_unique<Slot>());
        m_slots.back()->block = std::move(block);
        m_slots.back()->packed = passThrough;
        if (!passThrough) m_unpacked.push_back(m_slots.back().get());
    }
    (passThrough ? m_ready : m_work).notify_one();
    return true;
}

void BlockPipeline::finish() {
    {
        const std::lock_guard lock(m_mutex);
        m_finished = true;
    }
    m_ready.notify_all();
}

std::unique_ptr<Block> BlockPipeline::next() {
    std::unique_ptr<Block> block;
    {
        std::unique_lock lock(m_mutex);
        m_ready.wait(lock, [this] {
            return m_stopped || (m_slots.empty() ? m_finished : m_slots.front()->packed);
        });
        if (m_stopped || m_slots.empty()) return nullptr;
        block = std::move(m_slots.front()->block);
        m_slots.pop_front();
    }
    m_room.notify_one();
    return block;
}

void BlockPipeline::recycle(std::unique_ptr<Block> block) {
    block->reset();
    const std::lock_guard lock(m_mutex);
    if (m_spares.size() < m_capacity) m_spares.push_back(std::move(block));
}

void BlockPipeline::stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }
    m_room.notify_all();
    m_work.notify_all();
    m_ready.notify_all();
    m_threads.clear();  // joins
}

void BlockPipeline::runPacker(const Pack& pack) {
    quill::os::setCurrentThreadName("rv-deflate");
    std::unique_lock lock(m_mutex);
    while (true) {
        m_work.wait(lock, [this] { return m_stopped || !m_unpacked.empty(); });
        if (m_stopped) return;
        Slot* slot = m_unpacked.front();
        m_unpacked.pop_front();
        // The slot stays in the order until it is marked, so its block stays where it is.
        Block& block = *slot->block;
        lock.unlock();
        pack(block);
        lock.lock();
        slot->packed = true;
        m_ready.notify_one();
    }
}

}  // namespace rv
