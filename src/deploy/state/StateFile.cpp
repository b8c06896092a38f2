#include "deploy/state/StateFile.h"

#include <cstdint>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Words.h"

namespace ZET::Deploy {

void RequireSoundStateFile(const std::string& file) {
    constexpr std::int64_t kLargest = std::int64_t{64}
                                      << 20;  // ten times what a hundred thousand targets need
    const FileState state = StateOf(file);
    if (!state.exists) return;
    if (!state.IsRegular())
        throw Damage({.file = file, .text = _("is no regular file"), .remedy = _("move it away")});
    if (VersionOf(file).size > kLargest)
        throw Damage({.file = file,
                      .text = _("is larger than any that is written here"),
                      .remedy = _("move it away")});
}

}  // namespace ZET::Deploy
