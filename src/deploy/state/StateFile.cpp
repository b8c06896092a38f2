#include "deploy/state/StateFile.h"

#include <unistd.h>

#include <cstdint>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

bool HasStateFile(const std::string& file) {
    constexpr std::int64_t kLargest = std::int64_t{64}
                                      << 20;  // ten times what a hundred thousand targets need
    const FileState state = StateOf(file);
    if (!state.exists) return false;
    if (!state.IsRegular())
        throw Damage({.file = file, .text = "is no regular file", .remedy = "move it away"});
    if (VersionOf(file).size > kLargest)
        throw Damage(
            {.file = file, .text = "is larger than any that is written here", .remedy = "move it away"});
    return true;
}

void ReplaceStateFile(const std::string& file, const std::string& text) {
    const std::string temporary = file + ZETTemporarySuffix;
    const bool mayBeThere = RequireOwnName(temporary);
    if (text.empty()) {
        if (mayBeThere) unlink(temporary.c_str());  // a killed run may have left it
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

}  // namespace ZET::Deploy
