#include "deploy/host/Installed.h"

#include <filesystem>
#include <system_error>

#include "deploy/host/Failure.h"
#include "deploy/host/Words.h"
#include "posix/OwnPlace.h"
#include "posix/PathNames.h"

namespace ZET::Deploy {

std::string ProductVersion() {
    return ZET_VERSION;
}

bool HasBuiltInModule() {
    return ZET_HAS_BUILT_IN_MODULE;
}

std::string OwnModule() {
    if (HasBuiltInModule()) return "";
    // A program is named as it was started, if the library is a part of it.
    const std::string place = LoadedFrom(reinterpret_cast<const void*>(&OwnModule));
    if (place.empty())
        throw Failure({.text = _("the library cannot find its own place"), .remedy = _("name the module")});
    std::error_code error;
    const bool isLibrary = BaseNameOf(place).starts_with("libzet-deploy.so");
    const std::string file =
        isLibrary ? place : std::filesystem::read_symlink("/proc/self/exe", error).string();
    if (error)
        throw Failure({.text = _("the program cannot find its own place"),
                       .remedy = _("name the module with --module")},
                      error.value());
    const char* const way = isLibrary ? ZET_WAY_FROM_LIBRARY : ZET_WAY_FROM_PROGRAM;
    return Normalised(PathIn(DirectoryOf(std::filesystem::absolute(file).string()), way));
}

}  // namespace ZET::Deploy
