#pragma once

#include <memory>

#include "quill_traceformats/SlicedInput.h"
#include "quill_traceformats/UnitReader.h"

namespace quill::traceformats {

class BlfContainerSource;

// Cuts a BLF file into objects, whichever containers they lie in. Objects of all kinds become
// units. Behind damage it goes on with the next container or object that can be found.
class BlfReader final : public UnitReader {
public:
    explicit BlfReader(ByteSource& source);
    ~BlfReader() override;

    [[nodiscard]] bool readHeader(TraceHeader& header) override;
    void nextUnits(UnitBatch& batch, size_t maximum) override;
    [[nodiscard]] bool atEnd() override { return m_ended; }

private:
    [[nodiscard]] bool takeObject(UnitBatch& batch);
    void dropTail();
    void findNextObject(const char* reason);
    [[nodiscard]] bool swallowsNext(uint32_t objectSize);

    std::unique_ptr<BlfContainerSource> m_source;
    SlicedInput m_input;
    bool m_ended = false;
};

}  // namespace quill::traceformats
