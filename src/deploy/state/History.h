#ifndef ZET_HISTORY_H
#define ZET_HISTORY_H

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "deploy/host/FileVersion.h"
#include "deploy/state/store/Store.h"

namespace ZET::Deploy {

class Failure;
class Host;
class WriteLock;

/// What a command is about to do.
enum class Purpose {
    Writes,
    GoesBack  ///< needs no history: what was there before also stands beside the files
};

/// What the product remembers on this host: the store in its directory, which is opened on first use.
class History {
  public:
    explicit History(Host& host) : m_host(host) {}

    /// Whether texts are kept, as the parameter ZET_HISTORY says.
    bool KeepsTexts() const;

    /// Whether an unusable history stops a command. It does, unless nothing is to be kept or files go back.
    bool IsNeeded(Purpose purpose = Purpose::Writes) const {
        return purpose == Purpose::Writes && KeepsTexts();
    }

    StoreLimits Limits() const;

    /// Whether what somebody made of a file is kept when a command replaces this version of it.
    bool KeepsEditOf(const FileVersion& version) const;

    /// Whether this user can record: the directory exists, and the user may write there.
    bool CanRecord() const;

    /// Whether a store was begun. That there is none is looked up once while the product's lock is held.
    bool IsBegun(const WriteLock& lock);

    /// The store to record in. Only under the product's lock. Throws a `Failure` if it cannot be used.
    Store& ToRecord();

    /// The store to read; null if nothing was recorded on this host, or this user may not read it. Throws a
    /// `Failure` if it cannot be used.
    Store* ToLook();

    /// As `ToLook`, but returns null for an unusable store, and reports that once, as a warning. For callers
    /// that also find what they need beside the files.
    Store* ToLookIfUsable();
    bool IsUnusable() const { return m_isUnusable; }

    /// Calls `call` with that store, if there is one. If the store turns out to be unusable only then, that
    /// is reported, too, and the call ends early.
    void TryLook(const std::function<void(Store& store)>& call);

    /// For a command that writes: `ToLook` where the history is needed, else `ToLookIfUsable`.
    Store* ToLookForWriting() { return IsNeeded() ? ToLook() : ToLookIfUsable(); }

    /// Whether it is the store that failed.
    bool IsOfStore(const Failure& failure) const;

    /// Reports the failure as a warning.
    void TellUnusable(const Failure& failure);

    /// Whether there is a store that this user may not read, as it was when this was asked first.
    bool IsDenied() const;

    /// Reports once, as a warning, that this user may not read the store, and what is not told then.
    void TellDenied(const std::string& text);
    void TellDenied();

  private:
    std::string File() const;
    FoundStore Find();
    void FollowDirectories(Store& store) const;
    bool IsKnownToBeNone() const;
    void TellLoss();
    void TellNewKey();
    void TellReaders(bool isMended);

    Host& m_host;
    std::unique_ptr<Store> m_store;
    FoundStore m_found;
    std::weak_ptr<const void> m_foundUnder;  ///< the lock; `m_found` holds until it expires
    mutable std::optional<bool> m_isDenied;  ///< none: nobody asked
    bool m_isToRecord = false;
    bool m_isUnusable = false;
    bool m_isLossTold = false;
    bool m_areReadersTold = false;
    bool m_isDenialTold = false;
};

}  // namespace ZET::Deploy

#endif
