#pragma once

#include <array>
#include <optional>

#include "engine/TypedBus.h"

namespace simcore::engine {

// A LIN bus also remembers who answers which header: responders of the network document, and the
// frame that a channel published last for the identifier.
class LinBus : public TypedBus<RvLinFrame> {
public:
    using TypedBus<RvLinFrame>::TypedBus;

    void setResponder(const RvLinFrame& frame) { m_responders[frame.id & 0x3FU] = frame; }
    void publish(const Port& port, const RvLinFrame& frame) {
        m_published[frame.id & 0x3FU] = Publication{frame, &port};
    }
    // A master channel sends a header; the publisher's frame appears on the bus. False when nobody
    // answers.
    bool poll(const Port& master, uint8_t id) {
        const size_t at = id & 0x3FU;
        if (m_responders[at]) return send(nullptr, *m_responders[at]) == kRvOk;
        const auto& publication = m_published[at];
        if (!publication || publication->port == &master || !publication->port->enabled) {
            return false;
        }
        return send(publication->port, publication->frame) == kRvOk;
    }
    void dropPending(const Port& port) override {
        TypedBus<RvLinFrame>::dropPending(port);
        for (auto& publication : m_published) {
            if (publication && publication->port == &port) publication.reset();
        }
    }

private:
    struct Publication {
        RvLinFrame frame;
        const Port* port = nullptr;
    };
    std::array<std::optional<RvLinFrame>, 64> m_responders;
    std::array<std::optional<Publication>, 64> m_published;
};

}  // namespace simcore::engine
