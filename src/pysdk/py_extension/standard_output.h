#pragma once

#include <string>

namespace scripts {

// Writes a line to standard output at once. Any thread, with or without the interpreter lock.
void writeLine(const std::string& line);

// Hands on what the interpreter still buffers, so that lines written after it come after it even
// when standard output is a file. With the interpreter lock held.
void flushScriptOutput();

}  // namespace scripts
