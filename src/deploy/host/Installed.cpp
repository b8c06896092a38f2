#include "deploy/host/Installed.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "deploy/host/Failure.h"

namespace ZET::Deploy {

std::string ProductVersion() {
    return ZET_VERSION;
}

std::string OwnModule() {
    Dl_info own = {};
    if (dladdr(reinterpret_cast<const void*>(&OwnModule), &own) == 0 || own.dli_fname == nullptr)
        throw Failure({.text = "the library cannot find its own place", .remedy = "name the module"});
    std::error_code error;
    // A program is named as it was started, if the library is a part of it.
    const std::filesystem::path place = own.dli_fname;
    const bool isLibrary = place.filename().string().starts_with("libzet-deploy.so");
    const std::filesystem::path file =
        isLibrary ? place : std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        throw Failure(
            {.text = "the program cannot find its own place", .remedy = "name the module with --module"},
            error.value());
    const std::filesystem::path way = isLibrary ? ZET_WAY_FROM_LIBRARY : ZET_WAY_FROM_PROGRAM;
    return (std::filesystem::absolute(file).parent_path() / way).lexically_normal();
}

}  // namespace ZET::Deploy
