#include "deploy/state/OwnText.h"

#include "deploy/host/FileBytes.h"
#include "deploy/host/Remedy.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

void SaveOwnText(const std::string& name, const std::string& text, mode_t mode) {
    const std::string temporary = name + ZETTemporarySuffix;
    RemedyErrors("make room, or see to the rights of its directory; nothing was changed", [&] {
        // What a killed run left may be readable by others, and must not become so with the new text.
        if (RequireOwnName(temporary)) RemoveFile(temporary);
        WriteStagedFile(temporary, text, mode);
        RenameFile(temporary, name);
    });
}

}  // namespace ZET::Deploy
