#include "databaseitem/ConverterSettings.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "quill_os/environment.h"
#include "quill_os/paths.h"

namespace Model::database {
namespace {

#ifdef _WIN32
constexpr const char* kConverterFolder = "\\public\\dbc_to_json\\win\\";
constexpr const char* kProgramSuffix = ".exe";
#else
constexpr const char* kConverterFolder = "/public/dbc_to_json/linux/";
constexpr const char* kProgramSuffix = "";
#endif

// Sums of time points with them stay far from overflow.
constexpr std::chrono::milliseconds kShortestTimeout{1};
constexpr std::chrono::milliseconds kLongestTimeout{std::chrono::hours(24)};

struct SharedSettings {
    std::mutex mutex;
    ConverterSettings settings;  // guarded by mutex
};

SharedSettings& sharedSettings() {
    static SharedSettings shared;
    return shared;
}

bool exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(quill::os::pathFromUtf8(path), error);
}

// Folder of the module that this code is linked into.
std::string moduleFolder() {
    static const int kAnchor = 0;
    return quill::os::pathToUtf8(quill::os::fileOfCode(&kAnchor).parent_path());
}

}  // namespace

ConverterSettings converterSettings() {
    SharedSettings& shared = sharedSettings();
    const std::lock_guard lock(shared.mutex);
    return shared.settings;
}

void setConverterSettings(ConverterSettings settings) {
    settings.timeout = std::clamp(settings.timeout, kShortestTimeout, kLongestTimeout);
    SharedSettings& shared = sharedSettings();
    const std::lock_guard lock(shared.mutex);
    shared.settings = std::move(settings);
}

std::string rootFolderOf(const ConverterSettings& settings) {
    if (!settings.rootFolder.empty()) return settings.rootFolder;
    return quill::os::getEnvironment("QuillScriptsSDK_Root").value_or(std::string());
}

std::string converterPath(const ConverterSettings& settings, const std::string& root,
                          const std::string& program) {
    const std::string below = kConverterFolder + program + kProgramSuffix;
    std::string path = root + below;
    if (exists(path)) return path;
    const std::string fallback =
        settings.fallbackFolder.empty() ? moduleFolder() : settings.fallbackFolder;
    if (std::string beside = fallback + below; exists(beside)) return beside;
    return path;
}

}  // namespace Model::database
