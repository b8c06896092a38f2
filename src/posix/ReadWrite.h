#ifndef ZET_POSIX_READ_WRITE_H
#define ZET_POSIX_READ_WRITE_H

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

namespace ZET {

/// Repeats a system call as long as signals interrupt it.
template <typename Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// Reads at most `size` bytes; returns 0 at the end of the file, -1 with `errno` on failure.
inline ssize_t ReadSome(int descriptor, void* bytes, std::size_t size) {
    return Uninterrupted([&] { return ::read(descriptor, bytes, size); });
}

/// False, with `errno`, if not everything could be written.
inline bool WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = Uninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
        if (count < 0) return false;
        if (count == 0) {
            // A file system that writes nothing and reports no error would be retried forever.
            errno = EIO;
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace ZET

#endif
