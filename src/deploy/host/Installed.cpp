#include "deploy/host/Installed.h"

#include <unistd.h>

#include <climits>
#include <cstddef>
#include <filesystem>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {

std::string ProductVersion() {
    return ZET_VERSION;
}

std::string OwnModule() {
    char program[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program);
    if (length <= 0) throw Failure("the program cannot find its own place (name the module with --module)");
    const std::filesystem::path path(std::string(program, static_cast<std::size_t>(length)));
    return (path.parent_path() / ZET_WAY_TO_MODULE).lexically_normal();
}

}  // namespace ZET::Deploy
