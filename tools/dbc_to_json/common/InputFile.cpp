#include "common/InputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "quill_os/paths.h"

namespace quill::dbjson {

namespace {

struct InputCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Size when the system tells it, so that the usual file is read with one call; 0 for a pipe.
size_t sizeHint(std::FILE* file) {
    if (std::fseek(file, 0, SEEK_END) != 0) return 0;
    const long end = std::ftell(file);
    std::rewind(file);
    return end > 0 && static_cast<unsigned long>(end) <= kMaxInputBytes ? static_cast<size_t>(end)
                                                                        : 0;
}

}  // namespace

std::optional<std::string> readInputFile(const std::string& path, std::string& error) {
    const std::unique_ptr<std::FILE, InputCloser> file(os::openFile(path, "rb"));
    if (!file) {
        error = std::string("cannot open the file: ") + std::strerror(errno);
        return std::nullopt;
    }
    constexpr size_t kFirstRead = 64U << 10;
    std::string bytes;
    size_t used = 0;
    size_t room = sizeHint(file.get()) + 1;  // one more byte finds the end in the same call
    if (room == 1) room = kFirstRead;
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    while (true) {
        bytes.resize(used + room);
        const size_t got = std::fread(bytes.data() + used, 1, room, file.get());
        used += got;
        if (got < room) break;
        if (used > kMaxInputBytes) {
            error = "the file is larger than 1 GiB";
            return std::nullopt;
        }
        room = used;
    }
    if (std::ferror(file.get()) != 0) {
        error = std::string("cannot read the file: ") + std::strerror(errno);
        return std::nullopt;
    }
    bytes.resize(used);
    return bytes;
}

}  // namespace quill::dbjson
