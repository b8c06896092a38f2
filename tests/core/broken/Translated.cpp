// Its record is looked up in the catalogue of its library, which must be known by then.
#define MODULE_NAME "translated"
#define MODULE_GET_INFO                                                                         \
    const char* directory = ::bindtextdomain("Translated", nullptr);                            \
    if (std::string(directory != nullptr ? directory : "").find("locale") == std::string::npos) \
        return nullptr;                                                                         \
    return host->type == 0 ? &record : nullptr;
#include <libintl.h>

#include "ModuleParts.h"
