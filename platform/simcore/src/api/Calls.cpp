#include "api/Calls.h"

#include <algorithm>

namespace simcore::api {

std::optional<Call> callByName(std::string_view name) {
    const auto* at = std::find(kCallNames.begin(), kCallNames.end(), name);
    if (at == kCallNames.end()) return std::nullopt;
    return static_cast<Call>(at - kCallNames.begin());
}

}  // namespace simcore::api
