#include "logs/LineSource.h"

#include "quill_os/paths.h"

namespace simcore::logs {

namespace {
constexpr size_t kBlock = 65536;
constexpr size_t kLongestLine = 65536;
}  // namespace

bool LineSource::open(const std::string& path) {
    m_file.reset(quill::os::openFile(path, "rb"));
    m_buffer.clear();
    m_at = 0;
    m_end = m_file == nullptr;
    m_skipping = false;
    return m_file != nullptr;
}

void LineSource::rewind() {
    if (m_file == nullptr) return;
    std::rewind(m_file.get());
    m_buffer.clear();
    m_at = 0;
    m_end = false;
    m_skipping = false;
}

bool LineSource::fill() {
    m_buffer.erase(0, m_at);
    m_at = 0;
    const size_t held = m_buffer.size();
    m_buffer.resize(held + kBlock);
    const size_t got = std::fread(m_buffer.data() + held, 1, kBlock, m_file.get());
    m_buffer.resize(held + got);
    m_end = got == 0;
    return got > 0;
}

bool LineSource::next(std::string_view& line) {
    while (m_file != nullptr) {
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
    return false;
}

}  // namespace simcore::logs
