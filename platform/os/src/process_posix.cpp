#include "quill_os/process.h"

#ifndef _WIN32
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

extern char** environ;  // NOLINT(readability-redundant-declaration): not declared by every libc

namespace quill::os {
namespace {

using Clock = std::chrono::steady_clock;

// A file descriptor that closes with its scope.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int get() const { return m_fd; }
    void close() {
        if (m_fd >= 0) ::close(m_fd);
        m_fd = -1;
    }

private:
    int m_fd;
};

// posix_spawn's two attribute objects with their release.
struct SpawnSetup {
    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};

    explicit SpawnSetup(int outputFd) {
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, outputFd, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, outputFd, STDERR_FILENO);
        posix_spawnattr_init(&attributes);
        // The interpreter ignores SIGPIPE, and ignored signals are inherited.
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
        sigset_t mask;
        sigemptyset(&mask);
        posix_spawnattr_setsigdefault(&attributes, &defaults);
        posix_spawnattr_setsigmask(&attributes, &mask);
        posix_spawnattr_setpgroup(&attributes, 0);  // its own group, so its children die with it
        posix_spawnattr_setflags(
            &attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    }
    ~SpawnSetup() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;
};

int openProcessDescriptor(pid_t pid) {
#ifdef SYS_pidfd_open
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
#else
    (void)pid;
    return -1;
#endif
}

// Waits for one running child and collects what it prints.
class ChildWatch {
public:
    ChildWatch(pid_t pid, Descriptor& output, const ProcessOptions& options, ProcessResult& result)
        : m_pid(pid),
          m_output(output),
          m_options(options),
          m_result(result),
          m_handle(openProcessDescriptor(pid)) {}

    void run() {
        const Clock::time_point deadline = Clock::now() + m_options.timeout;
        while (!reap(WNOHANG)) {
            const Clock::time_point now = Clock::now();
            if (now >= deadline) return end(ProcessEnd::TimedOut);
            if (m_options.interrupted && m_options.interrupted())
                return end(ProcessEnd::Interrupted);
            waitForEvent(std::chrono::ceil<std::chrono::milliseconds>(deadline - now));
        }
        readAvailable();
    }

private:
    // Returns when the child printed, ended, or a moment passed.
    void waitForEvent(std::chrono::milliseconds left) {
        std::array<pollfd, 2> watched{};
        nfds_t count = 0;
        if (m_output.get() >= 0) watched.at(count++) = {m_output.get(), POLLIN, 0};
        if (m_handle.get() >= 0) watched.at(count++) = {m_handle.get(), POLLIN, 0};
        // Without a process descriptor the end of a child is only seen by asking for it.
        const std::chrono::milliseconds step{m_handle.get() >= 0 ? 100 : 1};
        ::poll(watched.data(), count, static_cast<int>(std::min(left, step).count()));
        readAvailable();
    }

    void readAvailable() {
        std::array<char, 4096> buffer;
        while (m_output.get() >= 0) {
            const ssize_t got = ::read(m_output.get(), buffer.data(), buffer.size());
            if (got > 0) {
                const size_t room = m_options.maxOutputBytes - m_result.output.size();
                m_result.output.append(buffer.data(), std::min(room, static_cast<size_t>(got)));
            } else if (got == 0) {
                m_output.close();
            } else if (errno != EINTR) {
                return;
            }
        }
    }

    // True when the child is gone and its status (or the reason that there is none) is known.
    bool reap(int flags) {
        int status = 0;
        pid_t got = 0;
        do {
            got = ::waitpid(m_pid, &status, flags);
        } while (got < 0 && errno == EINTR);
        if (got == 0) return false;
        if (got < 0) {
            m_result.end = ProcessEnd::Crashed;
            m_result.error = std::strerror(errno);
        } else if (WIFEXITED(status)) {
            m_result.end = ProcessEnd::Exited;
            m_result.code = WEXITSTATUS(status);
        } else {
            m_result.end = ProcessEnd::Crashed;
            m_result.code = WTERMSIG(status);
        }
        return true;
    }

    void end(ProcessEnd reason) {
        ::kill(-m_pid, SIGKILL);
        ::kill(m_pid, SIGKILL);
        (void)reap(0);
        readAvailable();
        m_result.end = reason;
        m_result.code = 0;
    }

    pid_t m_pid;
    Descriptor& m_output;
    const ProcessOptions& m_options;
    ProcessResult& m_result;
    Descriptor m_handle;
};

}  // namespace

ProcessResult runProcess(const std::filesystem::path& program,
                         const std::vector<std::string>& argumentsUtf8,
                         const ProcessOptions& options) {
    ProcessResult result;
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        result.error = std::strerror(errno);
        return result;
    }
    Descriptor readEnd(ends[0]);
    Descriptor writeEnd(ends[1]);
    // Only our end: the child's must stay blocking, or a program that prints much would lose text.
    ::fcntl(readEnd.get(), F_SETFL, O_NONBLOCK);

    std::string programText = program.string();
    std::vector<std::string> arguments = argumentsUtf8;
    std::vector<char*> argv{programText.data()};
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);

    const SpawnSetup setup(writeEnd.get());
    pid_t pid = 0;
    const int failure = ::posix_spawn(&pid, programText.c_str(), &setup.actions, &setup.attributes,
                                      argv.data(), environ);
    if (failure != 0) {
        result.error = std::strerror(failure);
        return result;
    }
    writeEnd.close();
    ChildWatch(pid, readEnd, options, result).run();
    return result;
}

}  // namespace quill::os
#endif
