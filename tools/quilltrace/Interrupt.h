#pragma once

namespace quilltrace {

// From now on Ctrl-C only sets a mark, so that the command can clean up. A second one ends the
// process at once.
void catchInterrupt();
[[nodiscard]] bool interrupted();

}  // namespace quilltrace
