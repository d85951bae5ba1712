#include "quill_os/process.h"

#ifdef _WIN32
#include <windows.h>

#include <algorithm>
#include <array>
#include <system_error>

#include "quill_os/paths.h"

namespace quill::os {
namespace {

using Clock = std::chrono::steady_clock;

// A kernel handle that closes with its scope.
class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE handle) : m_handle(handle) {}
    ~Handle() { close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    [[nodiscard]] HANDLE get() const { return m_handle; }
    [[nodiscard]] HANDLE* address() { return &m_handle; }
    void close() {
        if (m_handle != nullptr && m_handle != INVALID_HANDLE_VALUE) CloseHandle(m_handle);
        m_handle = nullptr;
    }

private:
    HANDLE m_handle = nullptr;
};

std::string lastErrorText() {
    return std::system_category().message(static_cast<int>(GetLastError()));
}

// Quotes one argument so that the C runtime of the child takes it apart into the same text:
// backslashes count only in front of a double quote.
void appendQuoted(std::wstring& line, const std::wstring& argument) {
    if (!line.empty()) line += L' ';
    line += L'"';
    size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        line.append(c == L'"' ? backslashes * 2 + 1 : backslashes, L'\\');
        backslashes = 0;
        line += c;
    }
    line.append(backslashes * 2, L'\\');
    line += L'"';
}

// Takes what the child has printed so far, without waiting for more.
void readAvailable(HANDLE pipe, size_t maxBytes, std::string& output) {
    std::array<char, 4096> buffer;
    DWORD waiting = 0;
    while (PeekNamedPipe(pipe, nullptr, 0, nullptr, &waiting, nullptr) && waiting > 0) {
        DWORD got = 0;
        const DWORD wanted = std::min<DWORD>(waiting, static_cast<DWORD>(buffer.size()));
        if (!ReadFile(pipe, buffer.data(), wanted, &got, nullptr) || got == 0) return;
        output.append(buffer.data(), std::min<size_t>(maxBytes - output.size(), got));
    }
}

// Pipe, empty input and job of one child. Only the two handles in the list are inherited, so
// children that start at the same time do not keep each other's pipes open.
class ChildSetup {
public:
    bool prepare() {
        SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        if (!CreatePipe(readEnd.address(), writeEnd.address(), &inherit, 0)) return false;
        SetHandleInformation(readEnd.get(), HANDLE_FLAG_INHERIT, 0);
        *input.address() = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       &inherit, OPEN_EXISTING, 0, nullptr);
        *job.address() = CreateJobObjectW(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                sizeof(limits));
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_listMemory.resize(size);
        m_list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_listMemory.data());
        if (!InitializeProcThreadAttributeList(m_list, 1, 0, &size)) {
            m_list = nullptr;
            return false;
        }
        m_inherited = {writeEnd.get(), input.get()};
        return UpdateProcThreadAttribute(m_list, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                         m_inherited.data(), sizeof(m_inherited), nullptr,
                                         nullptr) != 0;
    }
    bool start(const std::wstring& program, std::wstring& line) {
        STARTUPINFOEXW startup{};
        startup.StartupInfo.cb = sizeof(startup);
        startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
        startup.StartupInfo.hStdInput = input.get();
        startup.StartupInfo.hStdOutput = writeEnd.get();
        startup.StartupInfo.hStdError = writeEnd.get();
        startup.lpAttributeList = m_list;
        PROCESS_INFORMATION facts{};
        if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                            CREATE_NO_WINDOW | CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT,
                            nullptr, nullptr, &startup.StartupInfo, &facts)) {
            return false;
        }
        *process.address() = facts.hProcess;
        AssignProcessToJobObject(job.get(), facts.hProcess);
        ResumeThread(facts.hThread);
        CloseHandle(facts.hThread);
        writeEnd.close();
        return true;
    }
    ~ChildSetup() {
        if (m_list != nullptr) DeleteProcThreadAttributeList(m_list);
    }

    Handle readEnd, writeEnd, input, job, process;

private:
    std::vector<char> m_listMemory;
    LPPROC_THREAD_ATTRIBUTE_LIST m_list = nullptr;
    std::array<HANDLE, 2> m_inherited{};
};

// The pipe is read between short waits: a child that prints more than the pipe holds must not stop.
void watchChild(ChildSetup& child, const ProcessOptions& options, ProcessResult& result) {
    const Clock::time_point deadline = Clock::now() + options.timeout;
    DWORD stepMs = 1;
    while (WaitForSingleObject(child.process.get(), stepMs) == WAIT_TIMEOUT) {
        stepMs = std::min<DWORD>(stepMs * 2, 20);
        readAvailable(child.readEnd.get(), options.maxOutputBytes, result.output);
        const bool late = Clock::now() >= deadline;
        if (late || (options.interrupted && options.interrupted())) {
            TerminateJobObject(child.job.get(), 1);
            WaitForSingleObject(child.process.get(), INFINITE);
            result.end = late ? ProcessEnd::TimedOut : ProcessEnd::Interrupted;
            return;
        }
    }
    readAvailable(child.readEnd.get(), options.maxOutputBytes, result.output);
    DWORD code = 0;
    GetExitCodeProcess(child.process.get(), &code);
    result.code = static_cast<int>(code);
    // Unhandled exceptions end a process with a status in the error range of NTSTATUS.
    result.end = code >= 0xC0000000U ? ProcessEnd::Crashed : ProcessEnd::Exited;
}

}  // namespace

ProcessResult runProcess(const std::filesystem::path& program,
                         const std::vector<std::string>& argumentsUtf8,
                         const ProcessOptions& options) {
    ProcessResult result;
    std::wstring line;
    appendQuoted(line, program.wstring());
    for (const std::string& argument : argumentsUtf8) appendQuoted(line, wideFromUtf8(argument));
    ChildSetup child;
    if (!child.prepare() || !child.start(program.wstring(), line)) {
        result.error = lastErrorText();
        return result;
    }
    watchChild(child, options, result);
    return result;
}

}  // namespace quill::os
#endif
