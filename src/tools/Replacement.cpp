#include "Replacement.h"

#include <sys/stat.h>
#include <unistd.h>

#include "Diff.h"
#include "ExitStatus.h"
#include "Remedy.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

constexpr mode_t kSetIdBits = S_ISUID | S_ISGID;

/// For as long as the object lives, each rename is seen by the guard before it is made.
class GuardedRenames {
  public:
    explicit GuardedRenames(const ZETRenameGuard& guard) { SetRenameGuard(guard); }
    ~GuardedRenames() { SetRenameGuard(nullptr); }
    GuardedRenames(const GuardedRenames&) = delete;
    GuardedRenames& operator=(const GuardedRenames&) = delete;
};

void RequireVersion(const FileInPlace& file, const FileVersion& version) {
    if (VersionOf(file.Path()) == version) return;
    throw Failure(file.Path() +
                  ": another program wrote it at the same time, and nothing was changed (look at it, and run "
                  "the command again)");
}

}  // namespace

Replacement::Replacement(Session& session, const FileInPlace& file, const FileVersion& version)
    : m_session(session), m_file(file), m_version(version) {}

Replacement::~Replacement() {
    if (!m_isMade && !m_newCompanions.empty()) TakeBackCompanions();
}

void Replacement::KeepOriginal() {
    RequireVersion(m_file, m_version);
    const bool hadReserve = IsFileExist(m_file.Path() + ZETReserveSuffix);
    const bool hadAbsence = IsFileExist(m_file.Path() + ZETAbsenceSuffix);
    if (!hadReserve) m_newCompanions.emplace_back(ZETReserveSuffix);
    if (!hadAbsence) m_newCompanions.emplace_back(ZETAbsenceSuffix);
    m_file.Within([&](const std::string& name) { m_session.Config().ReserveConfigFile(name); });
    // Copying takes its time, in which another program may write the file: such a reserve is not the
    // original.
    RequireVersion(m_file, m_version);
}

void Replacement::Make(mode_t mode, const Operation& operation, const Judge& judge) {
    m_file.Within([&](const std::string& name) {
        const GuardedRenames renames([&](const ZETRename& rename) {
            if (rename.to == name && rename.from == name + ZETTemporarySuffix) Guard(rename, mode, judge);
        });
        try {
            operation(name);
        } catch (...) {
            RemoveTemporary(name);
            throw;
        }
    });
    m_isMade = true;
}

void Replacement::Guard(const ZETRename& rename, mode_t mode, const Judge& judge) {
    const FileState made = StateOf(rename.from);
    const FileState former = StateOf(rename.to);
    const bool isOwnerFinal = !former.exists || (made.owner == former.owner && made.group == former.group);
    RequireMode(rename.descriptor, rename.from, isOwnerFinal ? mode : mode & ~kSetIdBits);
    FileInPlace::Outside([&] {
        judge(m_file.Path() + ZETTemporarySuffix);
        RequireVersion(m_file, m_version);
    });
}

/// What a failed save left. The name was free before; what somebody else has put there since stays.
void Replacement::RemoveTemporary(const std::string& name) {
    const std::string temporary = name + ZETTemporarySuffix;
    struct stat made = {};
    if (lstat(temporary.c_str(), &made) != 0 || !S_ISREG(made.st_mode) || made.st_nlink != 1) return;
    struct stat former = {};
    const bool isOwners = lstat(name.c_str(), &former) == 0 && made.st_uid == former.st_uid;
    if (isOwners || made.st_uid == geteuid()) unlink(temporary.c_str());
}

/// What could not be taken back is whole, and harmless: the next commit takes it for the original, which it
/// is as long as the file was not written.
void Replacement::TakeBackCompanions() noexcept {
    try {
        m_file.Within([&](const std::string& name) {
            for (const std::string& suffix : m_newCompanions) {
                if (IsFileExist(name + suffix)) RemoveFile(name + suffix);
            }
        });
    } catch (const std::exception& error) {
        m_session.Out().Warning(m_file.Path() + ": its reserve stays: " + WithRemedy(error.what()));
    }
}

void RestoreOriginal(Session& session, const FileInPlace& file, const FileVersion& version) {
    file.Within([&](const std::string& name) {
        const GuardedRenames renames([&](const ZETRename& rename) {
            if (rename.to == name) FileInPlace::Outside([&] { RequireVersion(file, version); });
        });
        session.Config().RestoreConfigFile(name);
    });
}

void PutBackAsItWas(Session& session, const FileInPlace& file, const FileVersion& version) {
    const bool isToGo = !IsFileExist(file.Path() + ZETReserveSuffix) && IsFileExist(file.Path());
    if (!isToGo) return RestoreOriginal(session, file, version);
    RequireVersion(file, version);
    file.Within([](const std::string& name) { RemoveFile(name); });
    RestoreOriginal(session, file, {});
}

}  // namespace ZET
