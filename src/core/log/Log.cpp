#include "core/log/Log.h"

#include <spdlog/sinks/rotating_file_sink.h>

#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>

#include "quill_os/paths.h"

namespace quill::log {
namespace {
constexpr size_t kFileBytes = 10 * 1024 * 1024;
constexpr size_t kFileCount = 5;
constexpr const char* kPattern = "[%Y-%m-%d %H:%M:%S.%e][pid:%P][tid:%t][%s,%#,%!][%l]: %v";

// A path as the log library opens files: narrow, or wide where it was built so.
template <class Name>
Name fileName(const std::filesystem::path& path) {
    if constexpr (std::is_same_v<Name, std::wstring>) {
        return path.wstring();
    } else {
        return path.string();
    }
}
}  // namespace

bool setup(const std::string& name, const std::string& directoryUtf8, std::string& reason) {
    if (auto living = spdlog::get(name)) {
        spdlog::set_default_logger(living);
        return true;
    }
    std::error_code error;
    const std::filesystem::path directory = os::pathFromUtf8(directoryUtf8);
    std::filesystem::create_directories(directory, error);
    if (error) {
        reason = "cannot create log directory " + directoryUtf8 + ": " + error.message();
        return false;
    }
    try {
        const auto file = fileName<spdlog::filename_t>(directory / os::pathFromUtf8(name + ".log"));
        auto sink =
            std::make_shared<spdlog::sinks::rotating_file_sink_mt>(file, kFileBytes, kFileCount);
        auto logger = std::make_shared<spdlog::logger>(name, std::move(sink));
        logger->set_pattern(kPattern);
        logger->flush_on(spdlog::level::info);
        spdlog::set_default_logger(std::move(logger));
    } catch (const std::exception& e) {
        reason = e.what();
        return false;
    }
    return true;
}

}  // namespace quill::log
