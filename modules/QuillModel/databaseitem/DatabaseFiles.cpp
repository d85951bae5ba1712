#include "databaseitem/DatabaseFiles.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QString>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#include "core/log/Log.h"
#include "quill_os/paths.h"

namespace Model::database {
namespace {

namespace fs = std::filesystem;
using FileHandle = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

constexpr size_t kHeadBytes = 64 * 1024;        // enough of a document to know it by its keys
constexpr qsizetype kMaxDocument = 0x7FFFFFF0;  // Qt's parser counts in 32 bits

FileHandle openForRead(const std::string& path) {
    return {quill::os::openFile(path, "rb"), &std::fclose};
}

// Position of a byte as "line:column", both from 1.
std::string lineAndColumn(const QByteArray& text, qsizetype offset) {
    const auto end = text.begin() + std::clamp<qsizetype>(offset, 0, text.size());
    const auto lines = std::count(text.begin(), end, '\n');
    const auto lineStart = std::find(std::reverse_iterator(end), text.rend(), '\n').base();
    return std::to_string(lines + 1) + ":" + std::to_string(end - lineStart + 1);
}

// Number of a name that stays the same between processes and runs (FNV-1a).
uint64_t stableHash(const std::string& text) {
    uint64_t hash = 14695981039346656037U;
    for (const char c : text) hash = (hash ^ static_cast<uint8_t>(c)) * 1099511628211U;
    return hash;
}

// "<begin><digits>.tmp"
bool isLeftover(const std::string& name, const std::string& begin) {
    constexpr std::string_view kEnd = ".tmp";
    if (name.size() <= begin.size() + kEnd.size()) return false;
    if (!name.starts_with(begin) || !name.ends_with(kEnd)) return false;
    return std::all_of(name.begin() + static_cast<ptrdiff_t>(begin.size()),
                       name.end() - static_cast<ptrdiff_t>(kEnd.size()),
                       [](char c) { return c >= '0' && c <= '9'; });
}

bool readInto(std::FILE* file, QByteArray& bytes) {
    constexpr qsizetype kStep = 256 * 1024;
    qsizetype used = 0;
    for (;;) {
        if (bytes.size() - used < kStep) bytes.resize(std::max(bytes.size() * 2, used + kStep));
        const size_t got =
            std::fread(bytes.data() + used, 1, static_cast<size_t>(bytes.size() - used), file);
        if (got == 0) break;
        used += static_cast<qsizetype>(got);
        if (used > kMaxDocument) return false;
    }
    bytes.resize(used);
    return std::ferror(file) == 0;
}

}  // namespace

PathCheck checkDatabasePath(const std::string& path) {
    if (path.empty()) return {PathState::Unusable, "empty path"};
    if (path.find('\0') != std::string::npos) return {PathState::Unusable, "zero byte in the path"};
    std::error_code error;
    const fs::file_status status = fs::status(quill::os::pathFromUtf8(path), error);
    if (status.type() == fs::file_type::not_found) return {PathState::Missing, {}};
    if (status.type() == fs::file_type::none) return {PathState::Unusable, error.message()};
    if (status.type() == fs::file_type::directory) return {PathState::Unusable, "is a directory"};
    if (status.type() != fs::file_type::regular) return {PathState::Unusable, "not a plain file"};
    if (!openForRead(path)) return {PathState::Unusable, std::strerror(errno)};
    return {};
}

std::string lowerSuffix(const std::string& path) {
    const size_t name = path.find_last_of("/\\");
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || (name != std::string::npos && dot < name)) return {};
    std::string suffix = path.substr(dot + 1);
    std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return suffix;
}

std::string withJsonSuffix(const std::string& path) {
    return path.substr(0, path.rfind('.')) + ".json";
}

bool isForeignDocument(const std::string& jsonPath, const char* key) {
    const FileHandle file = openForRead(jsonPath);
    if (!file) return false;
    std::string head(kHeadBytes, '\0');
    head.resize(std::fread(head.data(), 1, head.size(), file.get()));
    if (head.find('"' + std::string(key) + '"') != std::string::npos) return false;
    return !head.empty();
}

bool removeDocument(const std::string& jsonPath, std::string& reason) {
    std::error_code error;
    const fs::path path = quill::os::pathFromUtf8(jsonPath);
    if (fs::is_directory(path, error)) {
        reason = "is a directory";
        return false;
    }
    fs::remove(path, error);
    if (!error) return true;
    reason = error.message();
    return false;
}

void removeLeftovers(const std::string& jsonPath) {
    const fs::path document = quill::os::pathFromUtf8(jsonPath);
    const std::string begin = quill::os::pathToUtf8(document.filename()) + ".";
    std::error_code error;
    const fs::path folder = document.has_parent_path() ? document.parent_path() : ".";
    std::vector<fs::path> leftovers;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (isLeftover(quill::os::pathToUtf8(at->path().filename()), begin)) {
            leftovers.push_back(at->path());
        }
    }
    for (const fs::path& leftover : leftovers) {
        if (fs::remove(leftover, error)) {
            QUILL_INFO(quill::log::kDatabase, "{}: left by a converter, removed",
                       quill::os::pathToUtf8(leftover));
        }
    }
}

DocumentContent readDocumentFile(const std::string& jsonPath) {
    const FileHandle file = openForRead(jsonPath);
    if (!file) {
        const bool missing = errno == ENOENT;
        return {missing ? DocumentContent::State::Missing : DocumentContent::State::Broken,
                {},
                std::string(" ") + std::strerror(errno)};
    }
    QByteArray bytes;
    if (!readInto(file.get(), bytes))
        return {DocumentContent::State::Broken, {}, " cannot be read"};
    if (bytes.startsWith("\xEF\xBB\xBF")) bytes.remove(0, 3);
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError) {
        return {DocumentContent::State::Broken,
                {},
                lineAndColumn(bytes, error.offset) + ": " + error.errorString().toStdString()};
    }
    if (!document.isObject()) {
        return {DocumentContent::State::Broken, {}, "1:1: expected an object at the top"};
    }
    return {DocumentContent::State::Whole, document.object(), {}};
}

bool readWholeFile(const std::string& path, std::string& bytes, std::string& reason) {
    const PathCheck check = checkDatabasePath(path);
    const FileHandle file =
        check.state == PathState::Usable ? openForRead(path) : FileHandle{nullptr, &std::fclose};
    QByteArray content;
    if (!file) {
        reason = check.state == PathState::Missing ? "no such file" : check.reason;
        return false;
    }
    if (!readInto(file.get(), content)) {
        reason = "cannot be read";
        return false;
    }
    bytes.assign(content.constData(), static_cast<size_t>(content.size()));
    return true;
}

DocumentLock::DocumentLock(const std::string& jsonPath, std::chrono::milliseconds timeout,
                           const std::function<bool()>& interrupted) {
    using std::chrono::milliseconds;
    std::error_code error;
    const fs::path path = quill::os::pathFromUtf8(jsonPath);
    const fs::path folder = fs::canonical(path.has_parent_path() ? path.parent_path() : ".", error);
    const std::string name =
        "quill-db-" + std::to_string(stableHash(quill::os::pathToUtf8(folder / path.filename())));
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    constexpr milliseconds kStep{100};
    do {
        m_lock = std::make_unique<quill::os::NamedLock>(name, std::min(timeout, kStep));
        if (m_lock->held()) return;
        if (interrupted && interrupted()) return;
    } while (std::chrono::steady_clock::now() < deadline && m_lock->usable());
    m_lock.reset();
    QUILL_WARN(quill::log::kDatabase, "{}: no lock, loading without it", jsonPath);
}

}  // namespace Model::database
