#include "Catalogues.h"

#include <dlfcn.h>
#include <libintl.h>

#include "posix/PathNames.h"

namespace ZET::Core {

namespace {

/// The translations are in the prefix that the library is in, wherever that was put; where the library is a
/// part of another program, they are where they were to be installed.
std::string Directory() {
    Dl_info own = {};
    if (dladdr(reinterpret_cast<const void*>(&BindCatalogue), &own) == 0 || own.dli_fname == nullptr)
        return ZET_LOCALE_DIR;
    const std::string library = own.dli_fname;
    const bool isLibrary = library.starts_with('/') && BaseNameOf(library).starts_with("libzet-core.so");
    return isLibrary ? DirectoryOf(library) + "/" ZET_LOCALE_WAY : ZET_LOCALE_DIR;
}

}  // namespace

void BindCatalogue(const std::string& domain) {
    static const std::string directory = Directory();
    ::bindtextdomain(domain.c_str(), directory.c_str());
}

}  // namespace ZET::Core
