#include "core/tracestorage/FileIdentity.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

#include "quill_os/paths.h"

namespace tracestorage {
namespace {
constexpr size_t kProbeBytes = 64 * 1024;

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { (void)std::fclose(file); }
};

// FNV-1a: distribution is all that is asked of it, nobody forges trace files.
uint64_t mixBytes(uint64_t hash, std::span<const uint8_t> bytes) {
    for (const uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001B3U;
    return hash;
}

std::string hexText(uint64_t value) {
    std::string text(16, '0');
    for (size_t i = text.size(); i-- > 0; value >>= 4U) text[i] = "0123456789abcdef"[value & 15U];
    return text;
}

std::optional<std::string> probeContent(const std::string& path, uint64_t size) {
    const std::unique_ptr<std::FILE, CloseFile> file(quill::os::openFile(path, "rb"));
    if (!file) return std::nullopt;
    std::vector<uint8_t> probe(kProbeBytes);
    size_t got = std::fread(probe.data(), 1, probe.size(), file.get());
    uint64_t hash = mixBytes(0xCBF29CE484222325U, std::span(probe).first(got));
    if (size > kProbeBytes) {
        const uint64_t tail = std::max<uint64_t>(size - kProbeBytes, kProbeBytes);
        if (!quill::os::seekFile(file.get(), static_cast<int64_t>(tail))) return std::nullopt;
        got = std::fread(probe.data(), 1, probe.size(), file.get());
        hash = mixBytes(hash, std::span(probe).first(got));
    }
    return hexText(hash);
}
}  // namespace

std::optional<FileIdentity> identifyFile(const std::string& path) {
    std::error_code error;
    const std::filesystem::path canonical =
        std::filesystem::weakly_canonical(quill::os::pathFromUtf8(path), error);
    if (error || !std::filesystem::is_regular_file(canonical, error)) return std::nullopt;
    FileIdentity identity;
    identity.path = quill::os::pathToUtf8(canonical);
    identity.size = std::filesystem::file_size(canonical, error);
    if (error) return std::nullopt;
    const auto modified = std::filesystem::last_write_time(canonical, error);
    if (error) return std::nullopt;
    identity.modifiedNs =
        std::chrono::duration_cast<std::chrono::nanoseconds>(modified.time_since_epoch()).count();
    auto hash = probeContent(identity.path, identity.size);
    if (!hash) return std::nullopt;
    identity.hash = std::move(*hash);
    return identity;
}

}  // namespace tracestorage
