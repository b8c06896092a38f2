#include "deploy/state/Replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <new>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/GuardedRenames.h"
#include "deploy/state/OwnText.h"
#include "deploy/state/Writes.h"
#include "posix/CreationMask.h"
#include "posix/Descriptor.h"
#include "posix/ModeBits.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

constexpr char kLookAndRepeat[] = ZET_TEXT("look at it, and run the command again");

FileVersion FoundVersion(const FileInPlace& file) {
    return file.Found() ? VersionFrom(*file.Found()) : FileVersion();
}

/// While it lives, the core does not report an owner that it cannot give.
class OwnerGivenLater {
  public:
    explicit OwnerGivenLater(bool isGiven) : m_former(LeaveOwnersToHost(isGiven)) {}
    ~OwnerGivenLater() { LeaveOwnersToHost(m_former); }
    OwnerGivenLater(const OwnerGivenLater&) = delete;
    OwnerGivenLater& operator=(const OwnerGivenLater&) = delete;

  private:
    const bool m_former;
};

}  // namespace

void RequireSame(const std::string& path, const FileVersion& present, const FileVersion& version) {
    if (present == version) return;
    throw Failure({.file = path,
                   .text = _("another program wrote it at the same time, and nothing was changed"),
                   .remedy = _(kLookAndRepeat)});
}

void RequireVersion(const FileInPlace& file, const FileVersion& version) {
    RequireSame(file.Path(), file.Version(), version);
}

Replacement::Replacement(HostProduct& product, const FileInPlace& file, const FileVersion& version, Look look)
    : m_product(product),
      m_file(file),
      m_version(version),
      m_isVersionSeen(look == Look::WasFound),
      m_former(look == Look::WasFound ? StateFrom(file.Found()) : file.State()) {
    if (file.Holder() && m_former.owner != *file.Holder())
        throw Failure({.file = file.Path(),
                       .text = _("was replaced at the same time, and nothing was changed"),
                       .remedy = _(kLookAndRepeat)});
    if (look == Look::WasFound) RequireSame(file.Path(), FoundVersion(file), version);
}

Replacement::~Replacement() {
    if (m_isMade || m_newCompanions.empty()) return;
    try {
        // Something can fail after the rename, too; then the original is needed.
        if (!m_mayBeMade || m_file.Version() == m_version) TakeBackCompanions();
    } catch (const std::bad_alloc&) {
        // There is no memory to report it either; what ended the write is being reported.
    } catch (const std::exception& error) {
        TellIfPossible(error);
    }
}

void Replacement::TellIfPossible(const std::exception& error) noexcept {
    try {
        m_product.Out().Warning(Words("%s: its reserve stays: %s", m_file.Path(), FailureOf(error).what()));
    } catch (const std::bad_alloc&) {
        // As above.
    }
}

/// Copying takes time, in which another program may write the file: such a reserve is not the original.
void Replacement::KeepOriginal() {
    MakeReserve();
    RequireVersion(m_file, m_version);
    ConfirmReserve();
}

void Replacement::MakeReserve() {
    if (!std::exchange(m_isVersionSeen, false)) RequireVersion(m_file, m_version);
    m_hadReserve = m_file.State(ZETReserveSuffix).exists;
    const bool hadAbsence = m_file.State(ZETAbsenceSuffix).exists;
    if (!m_hadReserve) m_newCompanions.emplace_back(ZETReserveSuffix);
    m_makesReserve = !m_hadReserve && !hadAbsence && m_former.exists;
    if (!hadAbsence) m_newCompanions.emplace_back(ZETAbsenceSuffix);
    const CreationMask mask(kWrittenByOwnerAlone);
    const OwnerGivenLater owner(m_file.Holder().has_value());
    m_file.Within([&](const std::string& name) { m_product.Config().ReserveConfigFile(name); });
}

void Replacement::ConfirmReserve() {
    if (m_hadReserve || !m_file.Holder() || !m_file.State(ZETReserveSuffix).exists) return;
    RequireVersion(m_file, m_version);
    CompleteReserve();
}

std::string Replacement::Reserve() const {
    return m_hadReserve || m_makesReserve ? m_file.Path() + ZETReserveSuffix : "";
}

void Replacement::Make(mode_t mode, const Operation& operation, const Judge& judge) {
    const std::string made = m_file.Path() + ZETTemporarySuffix;
    Save(operation, [&](const ZETRename& rename) {
        FileInPlace::Outside([&] {
            Complete(rename.descriptor, made, mode);
            if (judge) judge(made);
        });
        RequireVersion(m_file, m_version);
    });
}

void Replacement::MakeOfText(const std::string& text, mode_t mode, const Judge& judge) {
    Make(
        mode, [&](const std::string& name) { SaveOwnText(name, text, mode); }, judge);
}

/// To leave the directory and come back, to find the file again, and to check once more for other writers,
/// which is done last of all anyway, took 12 system calls a file.
void Replacement::MakeOf(mode_t mode, const Operation& operation, const JudgeOfOpened& judge) {
    const std::string made = m_file.Path() + ZETTemporarySuffix;
    Save(operation, [&](const ZETRename& rename) {
        const auto complete = [&] {
            Complete(rename.descriptor, made, mode);
            judge(rename.descriptor, made);
        };
        m_file.Holder() || rename.descriptor < 0 ? FileInPlace::Outside(complete) : complete();
    });
}

/// `complete` is called once the file is made, before it takes its place.
void Replacement::Save(const Operation& operation,
                       const std::function<void(const ZETRename& rename)>& complete) {
    m_file.Within([&](const std::string& name) {
        const GuardedRenames renames([&](const ZETRename& rename) {
            if (rename.to != name || rename.from != name + ZETTemporarySuffix) return;
            rename.isReady ? RequireLastVersion() : complete(rename);
        });
        // Named before, since there may be no memory then.
        const std::string temporary = m_file.NameInDirectory() + ZETTemporarySuffix;
        try {
            operation(name);
        } catch (...) {
            RemoveTemporary(temporary);
            throw;
        }
    });
    m_isMade = true;
}

void Replacement::RequireLastVersion() {
    RequireVersion(m_file, m_version);
    IsAboutToWrite(m_file.Path());
    m_mayBeMade = true;
}

/// Sets the mode, and the former file's owner and group as far as that is safe and allowed. Returns whether
/// the file has these in the end.
bool Replacement::Complete(int descriptor, const std::string& path, mode_t mode) const {
    if (descriptor < 0) {
        RequireMode(descriptor, path, mode & ~kSetIdBits);
        return false;
    }
    struct stat made = {};
    if (fstat(descriptor, &made) != 0) FailOfCall(path, _("its owner cannot be read"));
    const bool isNewOwners = !m_former.exists && m_newOwner;
    if (isNewOwners) GiveToNewOwner(descriptor, path);
    const bool isOwners = made.st_uid == m_former.owner;
    const bool isGivable = made.st_nlink == 1 && (isOwners || (!m_file.Holder() && made.st_uid == geteuid()));
    bool isOwnerFinal = !m_former.exists || (isOwners && made.st_gid == m_former.group);
    const bool isOwnerAsMade = isOwnerFinal && !isNewOwners;
    if (!isOwnerFinal && isGivable) isOwnerFinal = fchown(descriptor, m_former.owner, m_former.group) == 0;
    const mode_t wanted = isOwnerFinal ? mode : mode & ~kSetIdBits;
    if (!isOwnerAsMade || made.st_mode != (S_IFREG | wanted)) RequireMode(descriptor, path, wanted);
    return isOwnerFinal;
}

void Replacement::GiveToNewOwner(int descriptor, const std::string& path) const {
    if (fchown(descriptor, m_newOwner->user, m_newOwner->group) == 0) return;
    const int error = errno;
    throw SystemFailure({.file = path,
                         .text = _("cannot be given to the owner that the list names"),
                         .remedy = _("run as root, or remove owner from the list")},
                        error);
}

void Replacement::CompleteReserve() const {
    const std::string reserve = m_file.Path() + ZETReserveSuffix;
    const Descriptor file(openat(m_file.Directory(), (m_file.NameInDirectory() + ZETReserveSuffix).c_str(),
                                 O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status = {};
    if (file < 0 || fstat(file, &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_uid != *m_file.Holder() || status.st_nlink != 1) {
        throw Failure({.file = reserve,
                       .text = _("was replaced at the same time, and nothing was changed"),
                       .remedy = _(kLookAndRepeat)});
    }
    if (Complete(file, reserve, m_former.mode)) return;
    const Problem notGiven = {.file = reserve,
                              .text = _("has not the owner and group of the file that it keeps"),
                              .remedy = _("chown it")};
    m_product.Out().Warning(notGiven.Describe());
}

/// Removes what a failed save left. The name was free before; what somebody else has put there since stays.
void Replacement::RemoveTemporary(const std::string& temporary) const noexcept {
    const int directory = m_file.Directory();
    struct stat made = {};
    if (fstatat(directory, temporary.c_str(), &made, AT_SYMLINK_NOFOLLOW) != 0) return;
    if (!S_ISREG(made.st_mode) || made.st_nlink != 1) return;
    const bool isOwners = m_former.exists && made.st_uid == m_former.owner;
    if (isOwners || made.st_uid == geteuid()) unlinkat(directory, temporary.c_str(), 0);
}

/// What cannot be removed is whole and harmless: the next commit takes it for the original, which it is as
/// long as the file was not written.
void Replacement::TakeBackCompanions() {
    m_file.Within([&](const std::string& name) {
        for (const std::string& suffix : m_newCompanions) {
            if (IsFileExist(name + suffix)) RemoveFile(name + suffix);
        }
    });
}

void RestoreOriginal(HostProduct& product, const FileInPlace& file, const FileVersion& version) {
    file.Within([&](const std::string& name) {
        const GuardedRenames renames([&](const ZETRename& rename) {
            if (rename.to != name) return;
            FileInPlace::Outside([&] { RequireVersion(file, version); });
            if (rename.isReady) IsAboutToWrite(file.Path());
        });
        product.Config().RestoreConfigFile(name);
    });
}

void PutBackAsItWas(HostProduct& product, const FileInPlace& file, const FileVersion& version) {
    const bool isToGo =
        !file.State(ZETReserveSuffix).exists && file.State(ZETAbsenceSuffix).exists && file.State().exists;
    RequireReplaceable(file.Path());
    if (!isToGo) return RestoreOriginal(product, file, version);
    RequireVersion(file, version);
    IsAboutToWrite(file.Path());
    file.Within([](const std::string& name) { RemoveFile(name); });
    RestoreOriginal(product, file, {});
}

}  // namespace ZET::Deploy
