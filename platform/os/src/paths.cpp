#include "quill_os/paths.h"

#include <string_view>
#include <utility>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <dlfcn.h>
#include <fcntl.h>
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

#ifdef _WIN32
std::wstring wideFromUtf8(const std::string& utf8) { return pathFromUtf8(utf8).wstring(); }

std::string utf8FromWide(const std::wstring& wide) {
    return pathToUtf8(std::filesystem::path(wide));
}

std::FILE* openFile(const std::string& utf8Path, const char* mode) {
    return _wfopen(wideFromUtf8(utf8Path).c_str(), wideFromUtf8(mode).c_str());
}

bool seekFile(std::FILE* file, int64_t position) {
    return _fseeki64(file, position, SEEK_SET) == 0;
}

bool truncateFile(std::FILE* file, int64_t length) {
    return std::fflush(file) == 0 && _chsize_s(_fileno(file), length) == 0;
}

bool isWritableFolder(const std::filesystem::path& folder) {
    const std::wstring name =
        (folder / (L"quill-" + std::to_wstring(GetCurrentThreadId()) + L".tmp")).wstring();
    HANDLE file = CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                              FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    CloseHandle(file);
    return true;
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
namespace {

// A byte that is no UTF-8 crosses as a lone surrogate, so that every file name survives the way
// there and back. The library's own conversion goes by the locale and refuses all but ASCII in "C".
constexpr uint32_t kByteEscape = 0xDC00;

// Bytes of the sequence that begins with `lead`; 0 when none does.
size_t sequenceLength(uint8_t lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
}

// Code point at the front of `text` and its length; an escaped byte of length 1 when there is none.
std::pair<uint32_t, size_t> firstCodePoint(std::string_view text) {
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<uint8_t>(text.front());
    const std::pair<uint32_t, size_t> escaped{kByteEscape + lead, 1};
    const size_t length = sequenceLength(lead);
    if (length == 0 || length > text.size()) return escaped;
    uint32_t code = length == 1 ? lead : lead & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
        const auto next = static_cast<uint8_t>(text[i]);
        if ((next & 0xC0U) != 0x80U) return escaped;
        code = (code << 6U) | (next & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kLeast[length] || code > 0x10FFFF || surrogate) return escaped;
    return {code, length};
}

void appendCodePoint(std::string& text, uint32_t code) {
    const auto put = [&text](uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (code >= kByteEscape + 0x80 && code <= kByteEscape + 0xFF) return put(code - kByteEscape);
    if (code < 0x80) return put(code);
    if (code < 0x800) {
        put(0xC0U | (code >> 6U));
        return put(0x80U | (code & 0x3FU));
    }
    if (code < 0x10000) {
        put(0xE0U | (code >> 12U));
    } else {
        put(0xF0U | ((code >> 18U) & 0x07U));
        put(0x80U | ((code >> 12U) & 0x3FU));
    }
    put(0x80U | ((code >> 6U) & 0x3FU));
    put(0x80U | (code & 0x3FU));
}

}  // namespace

std::wstring wideFromUtf8(const std::string& utf8) {
    std::wstring wide;
    for (std::string_view rest = utf8; !rest.empty();) {
        const auto [code, length] = firstCodePoint(rest);
        wide.push_back(static_cast<wchar_t>(code));
        rest.remove_prefix(length);
    }
    return wide;
}

std::string utf8FromWide(const std::wstring& wide) {
    std::string utf8;
    for (const wchar_t character : wide) appendCodePoint(utf8, static_cast<uint32_t>(character));
    return utf8;
}

std::FILE* openFile(const std::string& utf8Path, const char* mode) {
    return std::fopen(utf8Path.c_str(), mode);
}

bool seekFile(std::FILE* file, int64_t position) { return fseeko(file, position, SEEK_SET) == 0; }

bool truncateFile(std::FILE* file, int64_t length) {
    return std::fflush(file) == 0 && ::ftruncate(fileno(file), length) == 0;
}

bool isWritableFolder(const std::filesystem::path& folder) {
    return ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

std::filesystem::path fileOfCode(const void* address) {
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) return {};
    std::error_code error;
    return std::filesystem::absolute(info.dli_fname, error);
}
#endif

}  // namespace quill::os
