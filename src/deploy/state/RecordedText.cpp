#include "deploy/state/RecordedText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Remedy.h"
#include "deploy/host/Words.h"
#include "deploy/state/GuardedRenames.h"
#include "deploy/state/Writes.h"
#include "posix/Descriptor.h"
#include "posix/ModeBits.h"
#include "posix/ReadWrite.h"
#include "zet/ZETFiles.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

constexpr mode_t kModeBeforeGiven = S_IRUSR | S_IWUSR;
constexpr char kLabel[] = "security.selinux";

void SetMode(int descriptor, const std::string& path, mode_t mode) {
    if (fchmod(descriptor, mode) != 0) FailOfCall(path, _("its mode cannot be given back"));
}

void GiveOwner(int descriptor, const std::string& path, const RecordedState& wanted) {
    const struct stat now = StatusOfOpened(descriptor, path);
    if (now.st_uid == wanted.owner && now.st_gid == wanted.group) return;
    if (fchown(descriptor, wanted.owner, wanted.group) != 0)
        FailOfCall(path, Words("its owner %s:%s cannot be given back", std::to_string(wanted.owner),
                               std::to_string(wanted.group)));
}

void TellOfAttribute(const std::string& path, const std::string& name, Observer& observer) {
    const Failure failure = SystemFailure(
        {.file = path, .text = Words("its attribute \"%s\" cannot be given back", name)}, errno);
    if (name != kLabel) throw Failure(failure);
    observer.Warning(failure.what());
}

void GiveAttributes(int descriptor, const std::string& path, const RecordedState& wanted,
                    Observer& observer) {
    const std::map<std::string, std::string> now = AttributesOf(descriptor, path);
    for (const auto& [name, value] : wanted.attributes) {
        const auto found = now.find(name);
        if (found != now.end() && found->second == value) continue;
        if (fsetxattr(descriptor, name.c_str(), value.data(), value.size(), 0) != 0)
            TellOfAttribute(path, name, observer);
    }
    for (const auto& [name, value] : now) {
        if (wanted.attributes.count(name) != 0 || name == kLabel) continue;
        if (fremovexattr(descriptor, name.c_str()) != 0 && errno != ENODATA)
            TellOfAttribute(path, name, observer);
    }
}

/// Gives an open file the recorded owner, attributes and mode, and takes away other attributes of the
/// recorded kinds. Throws a `Failure` if it cannot; only the label may be refused by the system, which is
/// reported. Until the mode is set, nobody but the new owner can get at the text.
void GiveRecordedAttributes(int descriptor, const std::string& path, const RecordedState& wanted,
                            Observer& observer) {
    SetMode(descriptor, path, kModeBeforeGiven);
    GiveOwner(descriptor, path, wanted);
    GiveAttributes(descriptor, path, wanted, observer);
    SetMode(descriptor, path, wanted.mode & kModeBits);
}

}  // namespace

RecordedText::RecordedText(HostProduct& product, const FileInPlace& place, std::string suffix)
    : m_product(product),
      m_place(place),
      m_suffix(std::move(suffix)),
      m_temporaryName(place.NameInDirectory() + m_suffix + ZETTemporarySuffix) {}

void RecordedText::Put(const CapturedFile& wanted, const std::function<void()>& requireUnchanged) {
    m_place.Within([&](const std::string& name) {
        const std::string target = name + m_suffix;
        const std::string temporary = target + ZETTemporarySuffix;
        const GuardedRenames renames([&](const ZETRename& rename) {
            if (rename.to != target) return;
            FileInPlace::Outside([&] {
                if (rename.isReady) Complete(rename.descriptor, wanted.state);
                requireUnchanged();
            });
            if (rename.isReady) IsAboutToWrite(m_place.Path() + m_suffix);
        });
        try {
            Write(temporary, wanted.text);
            RenameFile(temporary, target);
        } catch (...) {
            RemoveTemporary();
            throw;
        }
    });
}

/// The name was free when it was checked; what somebody has put there since is not written to.
void RecordedText::Write(const std::string& temporary, const std::string& text) {
    constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const Descriptor file(Uninterrupted([&] { return open(temporary.c_str(), kFlags, kModeBeforeGiven); }));
    if (file < 0) FailOfCall(temporary, _("cannot be made"));
    if (!Identify(file)) {
        const int error = errno;
        Identify(file);  // tried again, as a file that is not identified is not removed
        throw SystemFailure({.file = temporary, .text = _("cannot be looked at")}, error);
    }
    if (!WriteAll(file, text)) FailOfCall(temporary, _("cannot be written"));
}

bool RecordedText::Identify(int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) return false;
    m_device = status.st_dev;
    m_inode = status.st_ino;
    return true;
}

/// It was synced before it got its attributes, so it is synced again.
void RecordedText::Complete(int descriptor, const RecordedState& wanted) const {
    const std::string path = m_place.Path() + m_suffix;
    if (descriptor < 0)
        throw Failure({.file = path, .text = _("cannot be read back"), .remedy = _("look at its directory")});
    const struct stat made = StatusOfOpened(descriptor, path);
    if (made.st_dev != m_device || made.st_ino != m_inode || made.st_nlink != 1) {
        throw Failure({.file = path + ZETTemporarySuffix,
                       .text = _("was replaced at the same time, and nothing was changed"),
                       .remedy = _("look at it, and run the command again")});
    }
    RecordedState given = wanted;
    if (!MayHaveSetIds(wanted, made.st_gid)) given.mode &= ~kSetIdBits;
    GiveRecordedAttributes(descriptor, path, given, m_product.Out());
    if (m_product.Flag("ZET_SYNC") && fsync(descriptor) != 0) FailOfCall(path, _("cannot be synced"));
}

/// In a directory of theirs, users could have written the text themselves: only their own IDs may be set.
bool RecordedText::MayHaveSetIds(const RecordedState& wanted, gid_t group) const {
    return !m_place.Holder() || (wanted.owner == *m_place.Holder() && wanted.group == group);
}

void RecordedText::RemoveTemporary() const noexcept {
    struct stat status = {};
    if (m_inode == 0 ||
        fstatat(m_place.Directory(), m_temporaryName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return;
    if (status.st_dev == m_device && status.st_ino == m_inode)
        unlinkat(m_place.Directory(), m_temporaryName.c_str(), 0);
}

}  // namespace ZET::Deploy
