#include "deploy/state/StateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <optional>

#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileState.h"
#include "deploy/host/FileVersion.h"
#include "deploy/host/Words.h"
#include "posix/CreationMask.h"
#include "posix/Descriptor.h"
#include "posix/ReadWrite.h"

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

static std::optional<std::string> TextIn(const std::string& file) {
    try {
        return ReadFileBytes(file);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

/// As far as that is possible. Of a file that was not there, nothing stays.
static void PutBack(const std::string& file, bool wasThere, const std::optional<std::string>& former) {
    if (!wasThere && StateOf(file).IsRegular()) unlink(file.c_str());
    if (!former || TextIn(file) == former) return;
    const Descriptor emptied(open(file.c_str(), O_WRONLY | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (emptied >= 0) static_cast<void>(WriteAll(emptied, *former));
}

void SaveStateFile(const std::string& file, const std::function<void()>& save) {
    const CreationMask mask(kWrittenByOwnerAlone);
    LetEverybodyRead(file);
    const bool wasThere = StateOf(file).exists;
    const std::optional<std::string> former = TextIn(file);
    try {
        save();
    } catch (...) {
        PutBack(file, wasThere, former);
        throw;
    }
}

}  // namespace ZET::Deploy
