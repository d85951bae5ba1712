#include "quill_os/terminal.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace quill::os {

#ifdef _WIN32
bool isTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }
#else
bool isTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }
#endif

}  // namespace quill::os
