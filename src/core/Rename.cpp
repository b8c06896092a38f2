#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>

#include "Attributes.h"
#include "Message.h"
#include "PathArgument.h"
#include "Sync.h"
#include "posix/Descriptor.h"
#include "posix/PathNames.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"
#include "zet/ZETHost.h"

namespace ZET::Core {

namespace {

ZETRenameGuard& RenameGuard() {
    static ZETRenameGuard guard;
    return guard;
}

/// One rename. It holds the file open throughout, so that it concerns this file and not whatever gets its
/// name meanwhile.
class Renaming {
  public:
    Renaming(const std::string& from, const std::string& to) : m_to(to), m_file(from) { Open(); }

    void Run() {
        const bool isNewText = m_file.path == m_to + ZETTemporarySuffix;
        if (isNewText) RequirePlainFile();
        if (RenameGuard()) {
            AskGuard(false);
            // The guard may have set the file's mode.
            if (::fstat(m_file.descriptor.Number(), &m_file.status) != 0) Refuse();
        }
        const ParentDirectory target(m_to);
        std::optional<ParentDirectory> source;
        if (DirectoryOf(m_file.path) != DirectoryOf(m_to)) source.emplace(m_file.path);
        // A file with a new text keeps the attributes of the old one.
        if (isNewText && !TakeOverFrom(m_to)) TakeOverFrom(m_to + ZETReserveSuffix);
        if (S_ISREG(m_file.status.st_mode)) SyncAttributedFile(m_file);
        RequireSameFile();
        AskGuard(true);
        if (std::rename(m_file.path.c_str(), m_to.c_str()) != 0) Refuse();
        target.Sync();
        if (source) source->Sync();
    }

  private:
    /// The reason is in `errno`.
    [[noreturn]] void Refuse() const {
        FailSystem(m_to, "Failed to rename file '%s' to '%s': %m.", m_file.path.c_str(), m_to.c_str());
    }

    void Open() {
        if (OpenFor(O_RDONLY)) return;
        const int error = errno;
        if (!OpenFor(O_PATH)) Refuse();
        m_file.isPathOnly = true;
        if (!S_ISREG(m_file.status.st_mode)) return;
        // A user who may only write the file can still sync it and set its attributes.
        errno = error;
        if (error == EACCES) m_file.isPathOnly = !OpenFor(O_WRONLY);
        if (m_file.isPathOnly && errno != EACCES) Refuse();
    }

    void AskGuard(bool isReady) const {
        if (const ZETRenameGuard& guard = RenameGuard())
            guard({m_file.path, m_to, m_isReadable ? m_file.descriptor.Number() : -1, isReady});
    }

    bool OpenFor(int access) {
        constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
        Descriptor file(::open(m_file.path.c_str(), access | kFlags));
        if (!file.IsOpen()) return false;
        if (::fstat(file.Number(), &m_file.status) != 0) Refuse();
        m_file.descriptor = std::move(file);
        m_isReadable = access == O_RDONLY && S_ISREG(m_file.status.st_mode);
        return true;
    }

    void RequirePlainFile() const {
        if (S_ISREG(m_file.status.st_mode) && m_file.status.st_nlink == 1) return;
        FailKnowing(
            {.path = m_file.path},
            "Failed to rename file '%s' to '%s': not a regular file with one name (remove the former).",
            m_file.path.c_str(), m_to.c_str());
    }

    /// False if there is no regular file at `path`. Takes nothing over from a link: whoever may create one
    /// could point it to their own file and so become the owner of the new one.
    bool TakeOverFrom(const std::string& path) const {
        const std::optional<AttributedFile> former = OpenDonor(path);
        if (!former) return false;
        TakeOverAttributes(former->isLinked ? m_file : *former, m_file,
                           ModeAllowedBy(*former, m_file.status.st_mode));
        return true;
    }

    void RequireSameFile() const {
        struct stat present;
        if (::lstat(m_file.path.c_str(), &present) != 0) Refuse();
        if (present.st_dev == m_file.status.st_dev && present.st_ino == m_file.status.st_ino) return;
        FailKnowing({.path = m_file.path},
                    "Failed to rename file '%s' to '%s': the former was replaced at the same time.",
                    m_file.path.c_str(), m_to.c_str());
    }

    const std::string& m_to;
    AttributedFile m_file;
    bool m_isReadable = false;
};

}  // namespace

}  // namespace ZET::Core

namespace ZET {

ZETRenameGuard SetRenameGuard(ZETRenameGuard guard) {
    return std::exchange(Core::RenameGuard(), std::move(guard));
}

void RenameFile(const std::string& from, const std::string& to) {
    Core::RequirePath(from, "RenameFile");
    Core::RequirePath(to, "RenameFile");
    Core::Renaming(from, to).Run();
}

}  // namespace ZET
