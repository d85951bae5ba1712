#include "quill_os/environment.h"

#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#include <vector>
#endif

namespace quill::os {

#ifdef _WIN32
namespace {
std::wstring widen(const std::string& text) {
    const int size =
        MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(), size);
    return wide;
}
}  // namespace

std::optional<std::string> getEnvironment(const std::string& name) {
    const wchar_t* value = _wgetenv(widen(name).c_str());
    if (value == nullptr) return std::nullopt;
    const int size = WideCharToMultiByte(CP_UTF8, 0, value, -1, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, value, -1, text.data(), size, nullptr, nullptr);
    text.resize(text.empty() ? 0 : text.size() - 1);  // drops the terminating zero
    return text;
}

bool setEnvironment(const std::string& name, const std::string& value) {
    return _wputenv((widen(name) + L"=" + widen(value)).c_str()) == 0;
}
#else
std::optional<std::string> getEnvironment(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) return std::nullopt;
    return std::string(value);
}

bool setEnvironment(const std::string& name, const std::string& value) {
    return ::setenv(name.c_str(), value.c_str(), 1) == 0;
}
#endif

}  // namespace quill::os
