#pragma once

#include "CommandLine.h"
#include "ExitStatus.h"

namespace quilltrace {

// Each command prints its result on standard output and its complaints on standard error.
[[nodiscard]] ExitStatus runImport(const CommandLine& line);
[[nodiscard]] ExitStatus runInfo(const CommandLine& line);
[[nodiscard]] ExitStatus runStats(const CommandLine& line);
[[nodiscard]] ExitStatus runExport(const CommandLine& line);

}  // namespace quilltrace
