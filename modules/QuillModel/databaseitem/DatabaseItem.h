#pragma once

#include <optional>
#include <string>
#include <vector>

#include "databaseitem/StorageSaver.h"

namespace Model::database {

enum class DatabaseKind : int { Dbc = 1, Arxml = 2, Ldf = 4, Fibex = 8 };

// A bus database that is loaded from a file. The file is turned into a JSON document by a converter
// program and read from that. Items are used by one thread at a time; different items may load at
// the same time, also the same file and in different processes.
class DatabaseItem : public StorageSaver {
public:
    // Loads a file (UTF-8 path) into this item. On failure the item is empty, the log tells why and
    // lastError() repeats it. A ".json" file is read as it is; any other leaves its document beside
    // it, under its own name with the suffix ".json", replacing what was there.
    [[nodiscard]] bool loadDB(const std::string& path, DatabaseKind kind);
    // loadDB with the item's own kind.
    [[nodiscard]] bool pyLoadDB(const std::string& path) { return loadDB(path, kind()); }

    [[nodiscard]] virtual DatabaseKind kind() const = 0;
    [[nodiscard]] const std::string& lastError() const { return m_lastError; }

    // Keeps the item's context blocks under the key "context".
    void saveTo(QJsonObject& storage) const override;
    [[nodiscard]] bool restoreFrom(const QJsonObject& storage) override;
    [[nodiscard]] const std::vector<std::string>& context() const { return m_context; }
    void setContext(std::vector<std::string> blocks) { m_context = std::move(blocks); }

protected:
    // Reads a whole document into the item; on failure gives the place and leaves the item alone.
    [[nodiscard]] virtual bool readDocument(const QJsonObject& root, std::string& fault) = 0;
    virtual void clear() = 0;
    // A key that the documents of this kind have at their top level.
    [[nodiscard]] virtual const char* documentKey() const = 0;

    // Program and arguments for a file, by its suffix; no program when the suffix is "json".
    struct Conversion {
        std::string program;
        std::vector<std::string> arguments;
        std::string jsonPath;
    };
    // Empty when no converter takes files of this suffix, or the suffix belongs to another kind.
    [[nodiscard]] virtual std::optional<Conversion> getExePath(const std::string& path,
                                                               DatabaseKind kind) const;
    // Runs the converter and waits for it; false, and the reason in the log, when it fails.
    [[nodiscard]] bool dbFile2Json(const std::string& program,
                                   const std::vector<std::string>& arguments);
    // Both log, keep the text as last error and give false.
    bool fail(const std::string& text);
    bool failPath(const std::string& path, const std::string& reason);

private:
    enum class ReadResult { Done, Failed, Vanished };

    [[nodiscard]] bool checkPath(const std::string& path);
    [[nodiscard]] bool convertAndRead(const std::string& path, const Conversion& conversion);
    [[nodiscard]] bool removeOldDocument(const std::string& jsonPath);
    [[nodiscard]] ReadResult parseJsonFile(const std::string& jsonPath);

    std::string m_lastError;
    std::vector<std::string> m_context;  // byte blocks that the project hands over and gets back
};

}  // namespace Model::database
