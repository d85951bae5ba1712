#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace Model::database {

// Where the converter programs are and how long they may run, for the whole process.
struct ConverterSettings {
    // Folder that holds "public/dbc_to_json". Empty: the environment variable QuillScriptsSDK_Root.
    std::string rootFolder;
    // Asked when the converter is not below the root. Empty: the folder of the running module.
    std::string fallbackFolder;
    // Then a converter is ended and the load fails; held between 1 ms and 24 h.
    std::chrono::milliseconds timeout{60'000};
    // Asked about every 100 ms during a load; true ends it with a failure (Ctrl-C of a script).
    std::function<bool()> interrupted;
};

[[nodiscard]] ConverterSettings converterSettings();
// For loads that begin later. Any thread may call it.
void setConverterSettings(ConverterSettings settings);

// Full path of a converter ("dbc2json"): the first place where it exists, else the place below the
// root, so that the failed start names where it was looked for.
[[nodiscard]] std::string converterPath(const ConverterSettings& settings, const std::string& root,
                                        const std::string& program);
// The folder that converters are looked for in first.
[[nodiscard]] std::string rootFolderOf(const ConverterSettings& settings);

}  // namespace Model::database
