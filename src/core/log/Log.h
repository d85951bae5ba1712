#pragma once

#include <spdlog/spdlog.h>

#include <string>

// One log facility for the whole program: spdlog's default logger, lines tagged by category.
namespace quill::log {

// Categories that log readers filter by.
inline constexpr const char* kPysdk = "pysdk";
inline constexpr const char* kHardware = "Hardware";
inline constexpr const char* kSimCore = "SimCore";
inline constexpr const char* kRecorder = "Recorder";
inline constexpr const char* kImporter = "Importer";
inline constexpr const char* kDatabase = "Database";
inline constexpr const char* kCaptureFilter = "CaptureFilter";

// Makes the default logger: rotating files "<name>.log" of bounded size (5 files of 10 MiB) in a
// directory given as UTF-8, which is created when missing. False with a reason when it cannot be.
// Calling it again with the same name keeps the logger that lives.
[[nodiscard]] bool setup(const std::string& name, const std::string& directoryUtf8,
                         std::string& reason);

}  // namespace quill::log

// Source file, line and function of the caller stand in every line. The category comes first in the
// text, in square brackets.
#define QUILL_LOG(level, category, text, ...)                                                      \
    ::spdlog::default_logger_raw()->log(::spdlog::source_loc{__FILE__, __LINE__, SPDLOG_FUNCTION}, \
                                        level, "[{}] " text, category __VA_OPT__(, ) __VA_ARGS__)
#define QUILL_INFO(category, ...) QUILL_LOG(::spdlog::level::info, category, __VA_ARGS__)
#define QUILL_WARN(category, ...) QUILL_LOG(::spdlog::level::warn, category, __VA_ARGS__)
#define QUILL_ERROR(category, ...) QUILL_LOG(::spdlog::level::err, category, __VA_ARGS__)
#define QUILL_CRITICAL(category, ...) QUILL_LOG(::spdlog::level::critical, category, __VA_ARGS__)
