#include "quill_os/paths.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <dlfcn.h>
#include <unistd.h>
#endif

namespace quill::os {

std::filesystem::path pathFromUtf8(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string pathToUtf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

std::wstring wideFromUtf8(const std::string& utf8) { return pathFromUtf8(utf8).wstring(); }

std::string utf8FromWide(const std::wstring& wide) {
    return pathToUtf8(std::filesystem::path(wide));
}

#ifdef _WIN32
std::FILE* openFile(const std::string& utf8Path, const char* mode) {
    return _wfopen(wideFromUtf8(utf8Path).c_str(), wideFromUtf8(mode).c_str());
}

bool seekFile(std::FILE* file, int64_t position) {
    return _fseeki64(file, position, SEEK_SET) == 0;
}

bool truncateFile(std::FILE* file, int64_t length) {
    return std::fflush(file) == 0 && _chsize_s(_fileno(file), length) == 0;
}

std::filesystem::path fileOfCode(const void* address) {
    HMODULE module = nullptr;
    const DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExW(flags, static_cast<LPCWSTR>(address), &module)) return {};
    std::wstring name(32768, L'\0');
    name.resize(GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size())));
    return std::filesystem::path(name);
}
#else
std::FILE* openFile(const std::string& utf8Path, const char* mode) {
    return std::fopen(utf8Path.c_str(), mode);
}

bool seekFile(std::FILE* file, int64_t position) { return fseeko(file, position, SEEK_SET) == 0; }

bool truncateFile(std::FILE* file, int64_t length) {
    return std::fflush(file) == 0 && ::ftruncate(fileno(file), length) == 0;
}

std::filesystem::path fileOfCode(const void* address) {
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) return {};
    std::error_code error;
    return std::filesystem::absolute(info.dli_fname, error);
}
#endif

}  // namespace quill::os
