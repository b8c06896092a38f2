#include "deploy/state/LoginUser.h"

#include <fcntl.h>

#include <charconv>

#include "posix/Descriptor.h"
#include "posix/ReadWrite.h"

namespace ZET::Deploy {

std::optional<uid_t> LoginUser() {
    constexpr uid_t kUnset = static_cast<uid_t>(-1);
    const Descriptor file(open("/proc/self/loginuid", O_RDONLY | O_CLOEXEC));
    char text[16];
    const ssize_t size = file < 0 ? -1 : ReadSome(file, text, sizeof text);
    if (size <= 0) return std::nullopt;
    uid_t user = kUnset;
    std::from_chars(text, text + size, user);
    return user == kUnset ? std::nullopt : std::optional(user);
}

}  // namespace ZET::Deploy
