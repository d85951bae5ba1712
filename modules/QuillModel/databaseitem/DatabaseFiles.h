#pragma once

#include <QJsonObject>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "quill_os/namedlock.h"

// Files of a load: the database that is named, and the converter's document beside it.
namespace Model::database {

enum class PathState { Usable, Missing, Unusable };

struct PathCheck {
    PathState state = PathState::Usable;
    std::string reason;  // when unusable
};

// Whether a path names a file that can be read.
[[nodiscard]] PathCheck checkDatabasePath(const std::string& path);

// Suffix of a file's name in small letters, without the dot; empty when it has none.
[[nodiscard]] std::string lowerSuffix(const std::string& path);
// The path with its suffix replaced by ".json".
[[nodiscard]] std::string withJsonSuffix(const std::string& path);

// True when a file of this path is there and does not begin like a converter's document: the key is
// one that such documents have at their top level.
[[nodiscard]] bool isForeignDocument(const std::string& jsonPath, const char* key);
// False with a reason when the file is there and cannot be removed, or its folder is read-only.
[[nodiscard]] bool removeDocument(const std::string& jsonPath, std::string& reason);

// Removes what converters that were killed left beside the document: each writes to a file of the
// document's name with a number and ".tmp" behind it. Nobody may be converting to that document.
void removeLeftovers(const std::string& jsonPath);

// A JSON document in memory, or why there is none.
struct DocumentContent {
    enum class State { Whole, Missing, Broken };
    State state = State::Broken;
    QJsonObject root;
    std::string fault;  // "line:column: message" or a message
};
[[nodiscard]] DocumentContent readDocumentFile(const std::string& jsonPath);

// Content of a file of any size that memory holds; false with a reason.
[[nodiscard]] bool readWholeFile(const std::string& path, std::string& bytes, std::string& reason);

// Keeps a document to one load at a time, over all threads and processes of the user. Ends its wait
// without the lock when the time is up or when it is interrupted.
class DocumentLock {
public:
    DocumentLock(const std::string& jsonPath, std::chrono::milliseconds timeout,
                 const std::function<bool()>& interrupted);
    [[nodiscard]] bool held() const { return m_lock != nullptr; }

private:
    std::unique_ptr<quill::os::NamedLock> m_lock;
};

}  // namespace Model::database
