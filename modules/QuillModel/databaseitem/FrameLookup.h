#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "databaseitem/RecordList.h"

namespace Model::database {

// What the fixed queries look a frame up by. A query by id leaves the name empty, a query by name
// the id 0, and both leave isExtended false. Scripts rely on what follows from that: an extended
// frame is found by neither, and a standard frame with id 0 answers every query by name.
struct FrameKey {
    int32_t id = 0;
    std::string name;
    bool isFD = false;  // takes no part in the match
    bool isExtended = false;
};

// Frames in ascending order of their ids as signed numbers; frames of the same id in the order of
// the file.
template <class Frame>
class FrameLookup {
public:
    FrameLookup() = default;
    explicit FrameLookup(RecordList<Frame> frames) : m_frames(std::move(frames)) {
        std::stable_sort(m_frames.begin(), m_frames.end(),
                         [](const auto& a, const auto& b) { return a->id < b->id; });
    }

    // The first frame whose id is not below the key's, when id and isExtended are the key's,
    // whatever its name; else the first frame with the key's name and isExtended; else null.
    [[nodiscard]] std::shared_ptr<Frame> find(const FrameKey& key) const {
        const auto first =
            std::lower_bound(m_frames.begin(), m_frames.end(), key.id,
                             [](const auto& frame, int32_t id) { return frame->id < id; });
        if (first != m_frames.end() && (*first)->id == key.id &&
            (*first)->isExtended == key.isExtended) {
            return *first;
        }
        const auto named = std::find_if(m_frames.begin(), m_frames.end(), [&](const auto& frame) {
            return frame->isExtended == key.isExtended && frame->name == key.name;
        });
        return named != m_frames.end() ? *named : nullptr;
    }

private:
    RecordList<Frame> m_frames;
};

}  // namespace Model::database
