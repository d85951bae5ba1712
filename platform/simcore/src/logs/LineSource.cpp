#include "logs/LineSource.h"

#include <utility>

#include "quill_os/paths.h"

namespace simcore::logs {

namespace {
constexpr size_t kBlock = 65536;
constexpr size_t kLongestLine = 65536;
}  // namespace

bool LineSource::open(const std::string& path) {
    m_file.reset(quill::os::openFile(path, "rb"));
    m_text.clear();
    rewind();
    return m_file != nullptr;
}

void LineSource::openText(std::string text) {
    m_file.reset();
    m_text = std::move(text);
    rewind();
}

void LineSource::rewind() {
    if (m_file != nullptr) std::rewind(m_file.get());
    m_textAt = 0;
    m_buffer.clear();
    m_at = 0;
    m_end = false;
    m_skipping = false;
}

size_t LineSource::readBlock(char* to, size_t most) {
    if (m_file != nullptr) return std::fread(to, 1, most, m_file.get());
    const size_t got = m_text.copy(to, most, m_textAt);
    m_textAt += got;
    return got;
}

bool LineSource::fill() {
    m_buffer.erase(0, m_at);
    m_at = 0;
    const size_t held = m_buffer.size();
    m_buffer.resize(held + kBlock);
    const size_t got = readBlock(m_buffer.data() + held, kBlock);
    m_buffer.resize(held + got);
    m_end = got == 0;
    return got > 0;
}

bool LineSource::next(std::string_view& line) {
    while (true) {
        size_t end = m_buffer.find('\n', m_at);
        if (end == std::string::npos) {
            if (m_buffer.size() - m_at > kLongestLine) {
                m_at = m_buffer.size();
                m_skipping = true;
            }
            if (!m_end && fill()) continue;
            if (m_at == m_buffer.size()) return false;
            end = m_buffer.size();
        }
        line = std::string_view(m_buffer).substr(m_at, end - m_at);
        m_at = end == m_buffer.size() ? end : end + 1;
        if (m_skipping) {
            m_skipping = false;
            continue;
        }
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        return true;
    }
}

}  // namespace simcore::logs
