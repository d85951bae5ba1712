#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/tracestorage/FileIdentity.h"
#include "core/tracestorage/FrameRecord.h"

namespace tracestorage {

// What the storage knows of a file. Only 0 and 4 are ever found on disk after a commit; the others
// live as long as the import that they describe, so a killed import leaves "not imported" behind.
enum class ImportState : uint32_t {
    NotImported = 0,  // unknown, or known with another size, time or content
    Importing = 1,    // an import of this file runs through this storage
    Ending = 2,       // its frames are in, indices are being built and the commit is under way
    Imported = 4      // all its frames are stored
};

// Something in the file that could not be used: `position` is a byte offset (a line number in
// text).
struct ImportNote {
    uint64_t position = 0;
    std::string text;
};

// Units that carry no frame, by kind ("SYS_VARIABLE", "link type 113").
struct SkippedKind {
    std::string kind;
    uint64_t count = 0;
};

// Facts that are known only when a file has been read to its end.
struct ImportSummary {
    std::string format;    // "BLF", "ASC", "PCAP", "PCAPNG"
    int64_t startNs = 0;   // start of measurement since 1970-01-01; 0 when the file has none
    uint64_t units = 0;    // raw pieces read from the file
    uint64_t dropped = 0;  // units that should have been frames and could not be read
    std::vector<SkippedKind> skipped;
    std::vector<ImportNote> notes;
};

// What an importer needs of the trace storage. One import at a time; begin, insert, finish and
// abandon are called from one thread.
class ImportStorage {
public:
    ImportStorage() = default;
    virtual ~ImportStorage() = default;
    ImportStorage(const ImportStorage&) = delete;
    ImportStorage& operator=(const ImportStorage&) = delete;

    [[nodiscard]] virtual ImportState lookUp(const FileIdentity& file) = 0;
    // Opens the one transaction of an import; false when another import holds the storage.
    [[nodiscard]] virtual bool beginImport(const FileIdentity& file) = 0;
    [[nodiscard]] virtual bool insertFrames(const FrameBatch& batch) = 0;
    // Builds the indices and commits; after false nothing of the import is left.
    [[nodiscard]] virtual bool finishImport(const ImportSummary& summary) = 0;
    // Takes back everything since beginImport; harmless when no import is open.
    virtual void abandonImport() = 0;
    // Makes a running insert or finish return false soon; any thread may call it.
    virtual void interrupt() {}
    // Reason of the last refusal.
    [[nodiscard]] virtual std::string lastError() const { return {}; }
};

}  // namespace tracestorage
