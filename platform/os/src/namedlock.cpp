#include "quill_os/namedlock.h"

#include "quill_os/paths.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <thread>

#include "quill_os/environment.h"
#endif

namespace quill::os {

#ifdef _WIN32
NamedLock::NamedLock(const std::string& name, std::chrono::milliseconds timeout) {
    HANDLE mutex = CreateMutexW(nullptr, FALSE, (L"Local\\" + wideFromUtf8(name)).c_str());
    if (mutex == nullptr) return;
    m_usable = true;
    const DWORD result = WaitForSingleObject(mutex, static_cast<DWORD>(timeout.count()));
    // An abandoned mutex is ours: its holder crashed and guarded nothing that it left half done.
    if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) {
        m_mutex = mutex;
    } else {
        CloseHandle(mutex);
    }
}

NamedLock::~NamedLock() {
    if (m_mutex == nullptr) return;
    ReleaseMutex(m_mutex);
    CloseHandle(m_mutex);
}

bool NamedLock::held() const { return m_mutex != nullptr; }
#else
namespace {

// A folder that only this user can write to, so nobody else can plant a link in it.
std::string lockFolder() {
    std::string base;
    if (const auto runtime = getEnvironment("XDG_RUNTIME_DIR"); runtime && !runtime->empty()) {
        base = *runtime;
    } else {
        std::error_code error;
        base = std::filesystem::temp_directory_path(error).string();
    }
    std::string folder = base + "/quill-locks-" + std::to_string(geteuid());
    struct stat facts {};
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return {};
    if (::lstat(folder.c_str(), &facts) != 0 || !S_ISDIR(facts.st_mode)) return {};
    if (facts.st_uid != geteuid() || (facts.st_mode & 0022) != 0) return {};
    return folder;
}

bool isSameFile(int file, const std::string& path) {
    struct stat opened {};
    struct stat there {};
    return ::fstat(file, &opened) == 0 && ::lstat(path.c_str(), &there) == 0 &&
           opened.st_dev == there.st_dev && opened.st_ino == there.st_ino;
}

}  // namespace

NamedLock::NamedLock(const std::string& name, std::chrono::milliseconds timeout) {
    const std::string folder = lockFolder();
    if (folder.empty()) return;
    m_path = folder + "/" + name + ".lock";
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    std::chrono::microseconds pause{100};
    Attempt attempt = tryLock();
    while (attempt == Attempt::Busy && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::microseconds{2000});
        attempt = tryLock();
    }
    m_usable = attempt != Attempt::Failed;
}

NamedLock::Attempt NamedLock::tryLock() {
    const int file = ::open(m_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0) return Attempt::Failed;
    if (::flock(file, LOCK_EX | LOCK_NB) != 0) {
        const bool busy = errno == EWOULDBLOCK || errno == EINTR;
        ::close(file);
        return busy ? Attempt::Busy : Attempt::Failed;
    }
    // The holder before removed the file when it was done. A lock on a file that is no longer there
    // keeps nobody away, so only the one behind the path counts.
    if (!isSameFile(file, m_path)) {
        ::close(file);
        return Attempt::Busy;
    }
    m_file = file;
    return Attempt::Held;
}

NamedLock::~NamedLock() {
    if (m_file < 0) return;
    ::unlink(m_path.c_str());  // while the lock is held, so it is still this file
    ::close(m_file);
}

bool NamedLock::held() const { return m_file >= 0; }
#endif

}  // namespace quill::os
