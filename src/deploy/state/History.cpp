#include "deploy/state/History.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <iterator>
#include <set>
#include <string>
#include <utility>

#include "deploy/host/Failure.h"
#include "deploy/host/FileState.h"
#include "deploy/host/Words.h"
#include "deploy/state/Host.h"
#include "deploy/state/Lock.h"
#include "deploy/state/store/StoreDamage.h"
#include "deploy/state/store/StoreFile.h"
#include "zet/ZETHost.h"

namespace ZET::Deploy {

namespace {

/// Of a parameter that is no number, or one that is too large, its default: the check of the parameters tells
/// it.
template <typename Number>
Number NumberOf(Host& host, const char* key, Number otherwise) {
    const std::string text = host.Param(key);
    Number number = otherwise;
    if (!ProblemOfParam(key, text)) std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

bool History::KeepsTexts() const {
    return m_host.Flag("ZET_HISTORY");
}

StoreLimits History::Limits() const {
    StoreLimits limits;
    limits.entries = NumberOf(m_host, "ZET_HISTORY_KEEP", limits.entries);
    limits.entriesWithEdits = NumberOf(m_host, "ZET_HISTORY_KEEP_EDITS", limits.entriesWithEdits);
    limits.largestText = NumberOf(m_host, "ZET_HISTORY_MAX_FILE", limits.largestText);
    limits.keepsTexts = KeepsTexts();
    return limits;
}

bool History::KeepsEditOf(const FileVersion& version) const {
    return Limits().KeepEdit(static_cast<std::uint64_t>(version.size));
}

std::string History::File() const {
    return m_host.State().Store();
}

bool History::CanRecord() const {
    return access(m_host.State().Path().c_str(), W_OK | X_OK) == 0;
}

/// A first commit asks it for each target: looked up once, six system calls less for each.
bool History::IsDenied() const {
    if (!m_isDenied) m_isDenied = eaccess(File().c_str(), R_OK) != 0 && errno == EACCES;
    return *m_isDenied;
}

void History::TellDenied(const std::string& text) {
    if (m_isDenialTold || !IsDenied()) return;
    m_isDenialTold = true;
    const Problem denied = {.file = File(), .text = text, .remedy = _("run the command as a user who may")};
    m_host.Out().Warning(denied.Describe());
}

void History::TellDenied() {
    TellDenied(_("may not be read, so that what it knows is not told"));
}

bool History::IsBegun(const WriteLock& lock) {
    if (m_isToRecord) return true;
    m_found = Find();
    m_foundUnder = lock.Life();
    return m_found != FoundStore::Nothing;
}

/// Nobody begins one while the lock is held: six looks less each time, of which a rendering asked three.
bool History::IsKnownToBeNone() const {
    return m_found == FoundStore::Nothing && !m_foundUnder.expired();
}

Store& History::ToRecord() {
    if (!m_isToRecord) {
        m_store = nullptr;
        // From now on, there is one.
        const FoundStore found = std::exchange(m_foundUnder, {}).expired() ? Find() : m_found;
        auto store =
            std::make_unique<Store>(File(), Store::Access::Record, Limits(), m_host.Flag("ZET_SYNC"), found);
        if (found.isForOthers) TellReaders(!FindStore(File()).isForOthers);
        FollowDirectories(*store);
        m_store = std::move(store);
        TellLoss();
        m_store->GiveUpLost();
        TellNewKey();
        m_isToRecord = true;
    }
    return *m_store;
}

Store* History::ToLook() {
    if (m_store || IsKnownToBeNone() || IsDenied()) return m_store.get();
    const FoundStore found = Find();
    if (found != FoundStore::Whole) return nullptr;
    auto store = std::make_unique<Store>(File(), Store::Access::Look, Limits(), true, found);
    FollowDirectories(*store);
    m_store = std::move(store);
    if (found.isForOthers) TellReaders(false);
    TellLoss();
    return m_store.get();
}

/// A directory may have been moved since, with a link in its place: then its files are known under the names
/// that they have by now, as all who look them up have those. Damage of what is known is told by who needs
/// it.
void History::FollowDirectories(Store& store) const {
    std::set<std::string> directories;
    try {
        directories = store.KnownDirectories();
    } catch (const Damage&) {
        return;
    }
    NewDirectories moved;
    for (const std::string& directory : directories)
        if (auto name = m_host.HostPaths().NewNameOf(directory)) moved.emplace(directory, std::move(*name));
    if (!moved.empty()) store.Follow(moved);
}

/// A role that has committed has recorded it, so that nothing is in the store is damage then. One that is not
/// there at all may have been moved away.
FoundStore History::Find() {
    const FoundStore found = FindStore(File());
    const auto hasStatus = [&](Role role) { return StateOf(m_host.State().Status(role)).exists; };
    if (found == FoundStore::Blank && std::any_of(std::begin(kRoles), std::end(kRoles), hasStatus))
        FailOfDamage(File(), _("it is empty, though something is committed"));
    return found;
}

/// Which is why a text that comes again is compared once with the one that is kept.
void History::TellNewKey() {
    if (!m_store->IsKeyNew()) return;
    const Problem renewed = {.file = File(),
                             .text = _("its key was damaged; a new one is made, and nothing is lost"),
                             .remedy = _("look at the disk that it is on")};
    m_host.Out().Warning(renewed.Describe());
}

/// One of several names is named: what is said of it, and done, is so for all of them.
void History::TellReaders(bool isMended) {
    if (std::exchange(m_areReadersTold, true)) return;
    Problem readers = {.file = File(),
                       .text = _("others may read it, or what stands beside it"),
                       .remedy = _("chmod go-rwx: it holds what files held, passwords too")};
    if (isMended) {
        readers.text = _("others could read it, or what stands beside it, and cannot any more");
        readers.remedy = _("change the passwords that the files in it held, if others use this host");
    }
    m_host.Out().Warning(readers.Describe());
}

void History::TellLoss() {
    const std::optional<Store::Loss>& lost = m_store->Lost();
    if (!lost || m_isLossTold) return;
    m_isLossTold = true;
    const Problem loss = {.file = File(),
                          .text = Words("its last changes, %s to %s, are lost, as its journal is damaged",
                                        std::to_string(lost->first), std::to_string(lost->last)),
                          .remedy = _("look at \"status\": what they wrote may be told as edited")};
    m_host.Out().Warning(loss.Describe());
}

Store* History::ToLookIfUsable() {
    if (m_isUnusable) return nullptr;
    try {
        return ToLook();
    } catch (const Failure& failure) {
        m_isUnusable = true;
        TellUnusable(failure);
        return nullptr;
    }
}

void History::TryLook(const std::function<void(Store& store)>& call) {
    Store* const store = ToLookIfUsable();
    if (store == nullptr) return;
    try {
        call(*store);
    } catch (const Failure& failure) {
        TellUnusable(failure);
    }
}

bool History::IsOfStore(const Failure& failure) const {
    return failure.Facts().file.starts_with(File());
}

void History::TellUnusable(const Failure& failure) {
    m_host.Out().Warning(failure.what());
}

}  // namespace ZET::Deploy
