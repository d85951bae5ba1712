#include "quill_os/files.h"

#include "quill_os/paths.h"

#ifdef _WIN32
#include <windows.h>
#include <cerrno>
#else
#include <cstdio>
#endif

namespace quill::os {

#ifdef _WIN32
bool replaceFile(const std::string& from, const std::string& to) {
    const DWORD flags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    if (MoveFileExW(wideFromUtf8(from).c_str(), wideFromUtf8(to).c_str(), flags)) return true;
    errno = GetLastError() == ERROR_ACCESS_DENIED ? EACCES : EIO;
    return false;
}

bool removeFile(const std::string& path) { return DeleteFileW(wideFromUtf8(path).c_str()) != 0; }
#else
bool replaceFile(const std::string& from, const std::string& to) {
    return std::rename(from.c_str(), to.c_str()) == 0;
}

bool removeFile(const std::string& path) { return std::remove(path.c_str()) == 0; }
#endif

}  // namespace quill::os
