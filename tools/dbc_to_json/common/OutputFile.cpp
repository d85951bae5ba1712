#include "common/OutputFile.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>

#include "quill_os/files.h"
#include "quill_os/paths.h"

namespace quill::dbjson {

OutputFile::~OutputFile() { discard(); }

bool OutputFile::open(const std::string& path) {
    constexpr int kAttempts = 64;
    m_path = path;
    uint64_t tag =
        static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    // Exclusive creation, since two programs may convert the same file at the same moment.
    for (int attempt = 0; attempt < kAttempts; ++attempt, ++tag) {
        m_temporaryPath = path + "." + std::to_string(tag) + ".tmp";
        m_file = os::openFile(m_temporaryPath, "wbx");
        if (m_file != nullptr) return true;
        if (errno != EEXIST) break;
    }
    return fail("cannot create the file", errno);
}

bool OutputFile::write(std::string_view bytes) {
    if (m_file == nullptr) return false;
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file) == bytes.size()) return true;
    return fail("cannot write the file", errno);
}

bool OutputFile::commit() {
    if (m_file == nullptr) return false;
    const int closed = std::fclose(m_file);
    m_file = nullptr;
    if (closed != 0) return fail("cannot write the file", errno);
    if (!os::replaceFile(m_temporaryPath, m_path)) {
        return fail("cannot put the file in place", errno);
    }
    m_temporaryPath.clear();
    return true;
}

bool OutputFile::fail(const char* what, int systemError) {
    m_error = std::string(what) + ": " + std::strerror(systemError);
    return false;
}

void OutputFile::discard() {
    if (m_file != nullptr) std::fclose(m_file);
    m_file = nullptr;
    if (!m_temporaryPath.empty()) os::removeFile(m_temporaryPath);
    m_temporaryPath.clear();
}

}  // namespace quill::dbjson
