#include "deploy/state/Writing.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <set>

#include "deploy/host/Companions.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/state/CutShort.h"
#include "deploy/state/Instructions.h"
#include "posix/PathNames.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

/// Temporary files of recorded killed runs were cleared away, so what is still there is, or may be, somebody
/// else's. If this user could not record the runs, a plain file is taken for such a left-over.
void RequireFreeNames(const std::string& path, bool canRecord, const std::set<std::string>& leftOvers) {
    const bool isAnybodys = canRecord && leftOvers.count(AbsolutePath(path)) == 0;
    const std::string temporary = path + ZETTemporarySuffix;
    const FileState found = StateOf(temporary);
    if (found.exists && (!found.IsRegular() || found.links != 1 || isAnybodys)) {
        throw Failure({.file = temporary,
                       .text = Words("is in the way of writing %s, and not from here", path),
                       .remedy = _("move it away")});
    }
    for (const char* const suffix : kCompanionSuffixes) {
        const FileState companion = StateOf(path + suffix);
        if (companion.exists && !companion.IsRegular()) {
            throw Failure({.file = path + suffix,
                           .text = Words("is no regular file, so %s has no reserve", path),
                           .remedy = _("move it away")});
        }
    }
}

bool IsSameDirectory(const std::string& one, const std::string& other) {
    struct stat status = {};
    struct stat otherStatus = {};
    return stat(one.c_str(), &status) == 0 && stat(other.c_str(), &otherStatus) == 0 &&
           status.st_dev == otherStatus.st_dev && status.st_ino == otherStatus.st_ino;
}

/// The lock and the history's database would be lost if another file took their names.
void RequireNoStateFile(const StateDirectory& state, const std::string& path) {
    for (const std::string& file : state.Files()) {
        if (BaseNameOf(file) != BaseNameOf(path) || !IsSameDirectory(DirectoryOf(path), state.Path()))
            continue;
        throw Failure({.file = path, .text = _("is a file of the status"), .remedy = _("name another file")});
    }
}

/// Reports in a dry run what would keep the caller from locking.
void RequirePlaceOfLock(const StateDirectory& state) {
    struct stat status = {};
    if (stat(PathIn(state.Path(), ".").c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR))
        return;
    const int error = errno;
    throw SystemFailure(
        {.file = state.Lock(),
         .text = _("cannot be opened"),
         .remedy = _("create the directory ZET_VAR_LIB_DIR, or run as a user who may write there")},
        error);
}

}  // namespace

void RequireUsableDirectory(Host& host, const std::string& path) {
    const std::string directory = DirectoryOf(path);
    struct stat status = {};
    if (stat(directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        throw Failure(ProblemOfNoDirectory(path));
    if (access(directory.c_str(), W_OK | X_OK) == 0) return;
    const int error = errno;
    const Failure failure = SystemFailure(
        {.file = directory, .text = Words("cannot be written, so %s cannot be replaced", path)}, error);
    // What an attribute or a read-only file system forbids, nobody may do, whoever runs the command later.
    if (!host.Wanted().dryRun || error != EACCES) throw Failure(failure);
    host.Out().Warning(failure.what());
}

Writing::Writing(HostProduct& product, const std::vector<std::string>& paths, Right right, Purpose purpose)
    : m_product(product), m_records(right != Right::OfTheFiles || product.HostHistory().KeepsTexts()) {
    RequireOwnInstructions(product);
    for (const std::string& path : paths)
        RequireNoStateFile(product.State(), path);
    if (product.Wanted().dryRun) {
        if (right == Right::OfTheProduct) RequirePlaceOfLock(product.State());
        m_canRecord = product.HostHistory().CanRecord();
        m_records = m_records && m_canRecord;
        if (m_records && product.HostHistory().IsNeeded(purpose)) product.HostHistory().ToLook();
        if (m_records) m_cutShort = FilesOfCutShort(product);
    } else {
        Lock(product, paths, right);
        // Only the holder of the product's lock knows what killed runs left.
        m_canRecord = m_lock->IsProducts() && product.HostHistory().CanRecord();
        m_records = m_records && m_canRecord;
        // Staging directories may be in many places. Whoever writes a few files looks there only if the run
        // before may have left one.
        if (m_lock->MayFollowOneCutShort()) Staging::RemoveLeftOvers(product.State().Path(), true);
        if (m_records) SettleCutShort(product, *m_lock, purpose);
    }
    for (const std::string& path : paths)
        RequireRoom(path);
}

void Writing::RequireRoom(const std::string& path) const {
    RequireUsableDirectory(m_product, path);
    RequireFreeNames(path, m_canRecord, m_cutShort);
}

void Writing::Lock(HostProduct& product, const std::vector<std::string>& paths, Right right) {
    const LockSeeker seeker = product.Seeker();
    m_lock = right == Right::OfTheProduct
                 ? std::make_unique<WriteLock>(product.State(), seeker)
                 : std::make_unique<WriteLock>(product.State(), seeker, paths.front());
}

}  // namespace ZET::Deploy
