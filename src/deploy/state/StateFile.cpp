#include "deploy/state/StateFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdint>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Words.h"
#include "posix/CreationMask.h"
#include "posix/Descriptor.h"

namespace ZET::Deploy {

void RequireSoundStateFile(const std::string& file) {
    constexpr std::int64_t kLargest = std::int64_t{64}
                                      << 20;  // ten times what a hundred thousand targets need
    const FileState state = StateOf(file);
    if (!state.exists) return;
    if (!state.IsRegular()) throw Damage(ProblemOfIrregular(file, state));
    if (VersionOf(file).size > kLargest)
        throw Damage({.file = file,
                      .text = _("is larger than any that is written here"),
                      .remedy = _("move it away")});
}

/// Only if the file exists. A failure does not keep it from being written.
static void LetEverybodyRead(const std::string& file) {
    constexpr mode_t kMode = 0666 & ~kWrittenByOwnerAlone;
    const Descriptor opened(open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status = {};
    if (opened < 0 || fstat(opened, &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink != 1) return;
    if ((status.st_mode & 0777) != kMode) static_cast<void>(fchmod(opened, kMode) == 0);
}

void SaveStateFile(const std::string& file, const std::function<void()>& save) {
    const CreationMask mask(kWrittenByOwnerAlone);
    LetEverybodyRead(file);
    save();
}

}  // namespace ZET::Deploy
