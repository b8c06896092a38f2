#include "Catalogues.h"

#include <libintl.h>

#include "posix/OwnPlace.h"

namespace ZET::Core {

namespace {

/// The translations are installed in the same prefix as the library. If the library is part of another
/// program, they are in the configured directory.
std::string Directory() {
    const std::string library =
        LibraryDirectory(reinterpret_cast<const void*>(&BindCatalogue), "libzet-core.so");
    return library.empty() ? ZET_LOCALE_DIR : library + "/" ZET_LOCALE_WAY;
}

}  // namespace

void BindCatalogue(const std::string& domain) {
    static const std::string directory = Directory();
    ::bindtextdomain(domain.c_str(), directory.c_str());
}

}  // namespace ZET::Core
