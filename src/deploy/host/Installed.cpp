#include "deploy/host/Installed.h"

#include <cerrno>
#include <filesystem>

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
    // If the library is a part of the program, this is the name by which the program was started.
    const std::string place = LoadedFrom(reinterpret_cast<const void*>(&OwnModule));
    if (place.empty())
        throw Failure({.text = _("the library cannot find its own place"), .remedy = _("name the module")});
    if (BaseNameOf(place).starts_with("libzet-deploy.so")) {
        const std::string library = std::filesystem::absolute(place).string();
        return Normalised(PathIn(DirectoryOf(library), ZET_WAY_FROM_LIBRARY));
    }
    const std::string program = OwnProgram();
    if (program.empty())
        throw Failure({.text = _("the program cannot find its own place"),
                       .remedy = _("name the module with --module")},
                      errno);
    return Normalised(PathIn(DirectoryOf(program), ZET_WAY_FROM_PROGRAM));
}

}  // namespace ZET::Deploy
