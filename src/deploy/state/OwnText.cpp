#include "deploy/state/OwnText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "deploy/host/Failure.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "posix/Descriptor.h"
#include "posix/ModeBits.h"
#include "posix/ReadWrite.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

constexpr mode_t kModeWhileMade = 0600;

/// Whether a killed run left it: a plain file of the caller's, or of the owner of the file it was to become.
bool IsLeftOver(const std::string& temporary, const std::string& name) {
    struct stat found = {};
    struct stat former = {};
    if (lstat(temporary.c_str(), &found) != 0 || !S_ISREG(found.st_mode) || found.st_nlink != 1) return false;
    if (found.st_uid == geteuid()) return true;
    return lstat(name.c_str(), &former) == 0 && found.st_uid == former.st_uid;
}

/// Always a new file: another process may have a left-over open, if others could once read it.
Descriptor OpenNew(const std::string& temporary, const std::string& name) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const auto create = [&] {
        return Descriptor(Uninterrupted([&] { return open(temporary.c_str(), kFlags, kModeWhileMade); }));
    };
    Descriptor file = create();
    if (file.IsOpen()) return file;
    if (errno != EEXIST) FailOfCall(temporary, _("cannot be written"));
    if (IsLeftOver(temporary, name)) {
        RemoveFile(temporary);
        file = create();
        if (file.IsOpen()) return file;
    }
    throw Failure(
        {.file = temporary, .text = _("is in the way, and not from here"), .remedy = _("move it away")});
}

}  // namespace

void SaveOwnText(const std::string& name, const std::string& text, mode_t mode) {
    const std::string temporary = name + ZETTemporarySuffix;
    RemedyErrors(kRemedyOfSaving, [&] {
        {
            const Descriptor file = OpenNew(temporary, name);
            if (!WriteAll(file, text)) FailOfCall(temporary, _("cannot be written"));
            if (fchmod(file, mode & kModeBits) != 0) FailOfCall(temporary, _("cannot get its mode"));
        }
        RenameFile(temporary, name);
    });
}

}  // namespace ZET::Deploy
