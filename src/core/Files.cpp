#include "zet/ZETFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "Batch.h"
#include "Message.h"
#include "PathArgument.h"
#include "Sync.h"
#include "posix/Descriptor.h"
#include "posix/PathNames.h"
#include "zet/ZETErrors.h"

namespace ZET::Core {

namespace {

/// True if the file is new.
bool CreateOrEmpty(const std::string& path, Descriptor& file) {
    constexpr int kFlags = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    constexpr mode_t kMode = 0666;
    file.Reset(::open(path.c_str(), kFlags | O_CREAT | O_EXCL, kMode));
    if (file.IsOpen()) return true;
    if (errno == EEXIST) file.Reset(::open(path.c_str(), kFlags));
    struct stat status;
    if (!file.IsOpen() || ::fstat(file.Number(), &status) != 0)
        FailSystem(path, "Failed to create file '%s': %m.", path.c_str());
    // A file with a second name may be anybody's.
    if (!S_ISREG(status.st_mode) || status.st_nlink != 1)
        FailKnowing({.path = path},
                    "Failed to create file '%s': not a regular file with one name (move it away).",
                    path.c_str());
    if (::ftruncate(file.Number(), 0) != 0) FailSystem(path, "Failed to create file '%s': %m.", path.c_str());
    return false;
}

}  // namespace

}  // namespace ZET::Core

namespace ZET {

void CreateFile(const std::string& path) {
    Core::RequirePath(path, "CreateFile");
    const Core::ParentDirectory directory(path);
    Descriptor file;
    const bool isNew = Core::CreateOrEmpty(path, file);
    try {
        Core::Batch* const batch = Core::Batch::Present();
        if (batch != nullptr && batch->IsCollecting() && directory.Opened().IsOpen())
            return batch->Collect({std::move(file), BaseNameOf(path)}, directory.Opened().Number(), path);
        Core::SyncFile(file, path);
        directory.Sync();
    } catch (const EZETError&) {
        if (isNew) ::unlink(path.c_str());
        throw;
    }
}

void RemoveFile(const std::string& path) {
    Core::RequirePath(path, "RemoveFile");
    const Core::ParentDirectory directory(path);
    if (::unlink(path.c_str()) != 0) Core::FailSystem(path, "Failed to remove file '%s': %m.", path.c_str());
    directory.Sync();
}

bool IsFileExist(const std::string& path) {
    Core::RequirePath(path, "IsFileExist");
    struct stat status;
    if (::lstat(path.c_str(), &status) == 0) return true;
    // A name that is too long for the file system cannot exist.
    if (errno != ENOENT && errno != ENOTDIR && errno != ENAMETOOLONG)
        Core::FailSystem(path, "Failed to check file '%s': %m.", path.c_str());
    return false;
}

}  // namespace ZET
