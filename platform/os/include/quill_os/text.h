#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quill::os {

// Text in the Chinese national code (GB18030, which contains GBK and GB2312) as UTF-8, through the
// system's own tables; bytes that fit no character become U+FFFD. False when the system has no
// such tables.
[[nodiscard]] bool utf8FromGb18030(std::string_view bytes, std::string& utf8);

// The program's arguments as UTF-8, without its name.
[[nodiscard]] std::vector<std::string> utf8Arguments(int argc, char** argv);

}  // namespace quill::os
