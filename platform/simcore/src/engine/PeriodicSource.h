#pragma once

#include <memory>

#include "engine/Bus.h"
#include "engine/NetworkPlan.h"
#include "engine/Source.h"

namespace simcore::engine {

// A node outside every box that repeats one frame, optionally with a counter in its payload.
[[nodiscard]] std::shared_ptr<Source> makePeriodicSource(Core& core, Bus& bus,
                                                         const PeriodicPlan& plan);

}  // namespace simcore::engine
