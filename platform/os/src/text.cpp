#include "quill_os/text.h"

#include "quill_os/paths.h"

#ifdef _WIN32
#include <windows.h>

#include <shellapi.h>  // needs the types of windows.h
#else
#include <iconv.h>
#include <array>
#include <cerrno>
#endif

namespace quill::os {

#ifdef _WIN32
bool utf8FromGb18030(std::string_view bytes, std::string& utf8) {
    constexpr UINT kGb18030 = 54936;
    const int length = static_cast<int>(bytes.size());
    const int size = MultiByteToWideChar(kGb18030, 0, bytes.data(), length, nullptr, 0);
    if (size == 0 && length != 0) return false;
    std::wstring wide(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(kGb18030, 0, bytes.data(), length, wide.data(), size);
    utf8 = utf8FromWide(wide);
    return true;
}

std::vector<std::string> utf8Arguments(int, char**) {
    // The narrow arguments are in the system's code page and lose what it lacks.
    int count = 0;
    LPWSTR* const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; wide != nullptr && i < count; ++i) arguments.push_back(utf8FromWide(wide[i]));
    LocalFree(wide);
    return arguments;
}
#else
bool utf8FromGb18030(std::string_view bytes, std::string& utf8) {
    const iconv_t converter = iconv_open("UTF-8", "GB18030");
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the value by which POSIX tells the failure
    if (converter == reinterpret_cast<iconv_t>(-1)) return false;
    utf8.clear();
    utf8.reserve(bytes.size() + bytes.size() / 2);
    std::array<char, 4096> piece;
    char* in = const_cast<char*>(bytes.data());  // iconv reads through a pointer to non-const
    size_t left = bytes.size();
    while (left > 0) {
        char* out = piece.data();
        size_t room = piece.size();
        const size_t result = iconv(converter, &in, &left, &out, &room);
        const bool badByte = result == static_cast<size_t>(-1) && errno != E2BIG;
        utf8.append(piece.data(), piece.size() - room);
        if (badByte && left > 0) {
            utf8 += "\xEF\xBF\xBD";
            ++in;
            --left;
        }
    }
    iconv_close(converter);
    return true;
}

std::vector<std::string> utf8Arguments(int argc, char** argv) {
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}
#endif

}  // namespace quill::os
