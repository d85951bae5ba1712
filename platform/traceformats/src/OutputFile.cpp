#include "quill_traceformats/OutputFile.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "quill_os/paths.h"

namespace quill::traceformats {

namespace {

std::string systemText(const char* action, int code) {
    return std::string(action) + ": " + std::generic_category().message(code);
}

}  // namespace

bool OutputFile::create(const std::string& utf8Path, std::span<const uint8_t> firstPiece,
                        std::string& reason) {
    errno = 0;
    m_file.reset(os::openFile(utf8Path, "wb"));
    if (!m_file) {
        reason = systemText("open", errno);
        return false;
    }
    m_size = 0;
    // Pieces are large, so a buffer would only copy them and hide failures until later.
    std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
    if (append(firstPiece)) return true;
    reason = m_error;
    m_file.reset();
    const auto path = os::pathFromUtf8(utf8Path);
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored)) std::filesystem::remove(path, ignored);
    return false;
}

bool OutputFile::append(std::span<const uint8_t> piece) {
    if (!m_file) return false;
    errno = 0;
    if (!os::seekFile(m_file.get(), static_cast<int64_t>(m_size))) return fail("seek");
    if (std::fwrite(piece.data(), 1, piece.size(), m_file.get()) != piece.size()) {
        return fail("write");
    }
    m_size += piece.size();
    return true;
}

bool OutputFile::rewriteStart(std::span<const uint8_t> bytes) {
    if (!m_file) return false;
    errno = 0;
    if (!os::seekFile(m_file.get(), 0)) return fail("seek");
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) != bytes.size()) {
        return fail("write");
    }
    return true;
}

bool OutputFile::close() {
    if (!m_file) return true;
    errno = 0;
    if (std::fclose(m_file.release()) == 0) return true;
    m_error = systemText("close", errno);
    return false;
}

bool OutputFile::fail(const char* action) {
    m_error = systemText(action, errno);
    std::clearerr(m_file.get());
    // Part of the piece may stand in the file; a refusal here leaves a torn end that readers skip.
    static_cast<void>(os::truncateFile(m_file.get(), static_cast<int64_t>(m_size)));
    return false;
}

}  // namespace quill::traceformats
