#pragma once

#include <chrono>
#include <string>

namespace quill::os {

// A mutual exclusion between all threads and processes of one user, known by a name (letters,
// digits, '-' and '_'). Ends with its holder, also when that one crashes. To be released by the
// thread that took it.
class NamedLock {
public:
    // Waits at most `timeout`; held() tells whether the lock was got.
    NamedLock(const std::string& name, std::chrono::milliseconds timeout);
    ~NamedLock();
    NamedLock(const NamedLock&) = delete;
    NamedLock& operator=(const NamedLock&) = delete;

    [[nodiscard]] bool held() const;
    // False when the system gives no such lock at all, so that waiting longer is of no use.
    [[nodiscard]] bool usable() const { return m_usable; }

private:
#ifdef _WIN32
    void* m_mutex = nullptr;
#else
    enum class Attempt { Held, Busy, Failed };
    [[nodiscard]] Attempt tryLock();

    std::string m_path;
    int m_file = -1;
#endif
    bool m_usable = false;
};

}  // namespace quill::os
