#include "StateFile.h"

#include <unistd.h>

#include "Diff.h"
#include "ExitStatus.h"
#include "FileBytes.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

void RequireStateFile(const std::string& file) {
    const FileState state = StateOf(file);
    if (state.exists && !state.IsRegular()) throw Failure(file + ": is no regular file (move it away)");
}

void ReplaceStateFile(const std::string& file, const std::string& text) {
    const std::string temporary = file + ZETTemporarySuffix;
    RequireOwnName(temporary);
    if (text.empty()) {
        unlink(temporary.c_str());  // a killed run may have left it
        if (IsFileExist(file)) RemoveFile(file);
        return;
    }
    constexpr mode_t kMode = 0644;
    try {
        WriteStagedFile(temporary, text, kMode);
        RenameFile(temporary, file);
    } catch (...) {
        unlink(temporary.c_str());
        throw;
    }
}

}  // namespace ZET
