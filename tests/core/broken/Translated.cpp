// Its record is looked up in the catalogue of its library, which must be known by then.
#include <libintl.h>

#include <filesystem>
#include <string>

#define MODULE_NAME "translated"
#define MODULE_GET_INFO return host->type == 0 && IsCatalogueBound() ? &record : nullptr;

namespace {

bool IsCatalogueBound() {
    const char* directory = ::bindtextdomain("Translated", nullptr);
    return directory != nullptr && std::filesystem::path(directory).lexically_normal() == ZET_LOCALE_DIR;
}

}  // namespace

#include "ModuleParts.h"
