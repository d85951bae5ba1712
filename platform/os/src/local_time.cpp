#include "quill_os/local_time.h"

#include <ctime>

namespace quill::os {

#ifdef _WIN32
int32_t localOffsetSeconds(int64_t epochSeconds) {
    const __time64_t moment = epochSeconds;
    std::tm local{};
    if (_localtime64_s(&local, &moment) != 0) return 0;
    return static_cast<int32_t>(_mkgmtime64(&local) - moment);
}
#else
int32_t localOffsetSeconds(int64_t epochSeconds) {
    const auto moment = static_cast<std::time_t>(epochSeconds);
    std::tm local{};
    if (localtime_r(&moment, &local) == nullptr) return 0;
    return static_cast<int32_t>(local.tm_gmtoff);
}
#endif

}  // namespace quill::os
