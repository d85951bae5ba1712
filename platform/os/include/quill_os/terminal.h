#pragma once

#include <cstdio>

namespace quill::os {

// True when the stream is a screen that a person looks at, false for files and pipes.
[[nodiscard]] bool isTerminal(std::FILE* stream);

}  // namespace quill::os
