#pragma once

#include "engine/Core.h"

namespace simcore::engine {

// Where traffic of outside nodes comes from. All calls with the engine's lock held.
class Source {
public:
    virtual ~Source() = default;
    // The network runs from now on.
    virtual void start() = 0;
    // A box began to trace.
    virtual void traceStarted() = 0;
    // Sources without a pace only: delivers what the receivers have room for; may give the lock
    // back while it prepares frames.
    virtual void burst(Lock& lock) = 0;
    [[nodiscard]] virtual bool unpaced() const = 0;
    // Unpaced only: burst() would deliver something.
    [[nodiscard]] virtual bool ready() const = 0;
};

}  // namespace simcore::engine
