#pragma once

#include <cstdint>
#include <span>

#include "TraceFiles.h"

namespace quill::bench {

// Readers and decoders alone against the fastest thing that could replace them.
void runParseBenches(const TraceFiles& files, int rounds);
// The whole pipeline against a bare insert loop, and its memory against the size of the file.
void runImportBenches(const TraceFiles& files, int rounds);
void runMemoryBench(const TraceFiles& files, std::span<const uint64_t> frameCounts);

}  // namespace quill::bench
