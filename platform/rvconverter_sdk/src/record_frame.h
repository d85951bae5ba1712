#pragma once

#include "quill_traceformats/TraceFrame.h"
#include "rvconverter/RecordHandle.h"

namespace rv {

// The neutral form of a record, its time in nanoseconds since the epoch; the data point into the
// record. False when the handle is empty or its size does not cover what the record claims.
[[nodiscard]] bool frameFromRecord(const RecordHandle& handle,
                                   quill::traceformats::TraceFrame& frame);

// Time of a record in nanoseconds since the epoch; 0 for an empty handle.
[[nodiscard]] uint64_t recordTimeNs(const RecordHandle& handle);

}  // namespace rv
